#pragma once

#include <QVector>

namespace outpost
{

// A sub-band of the audio spectrum, in Hz. One worker decodes it.
struct DecodeBand {
    int lowHz;
    int highHz;
};

// Neighbouring sub-bands overlap by 100 Hz, so that at least one worker decodes a signal on an edge
// completely; the merge removes duplicates. `worker` is 0..3; any other number gives 0 to 3000 Hz.
inline DecodeBand decodeBand(int worker)
{
    constexpr DecodeBand bands[] = {{0, 825}, {725, 1550}, {1450, 2275}, {2175, 3000}};
    return worker >= 0 && worker < 4 ? bands[worker] : DecodeBand{0, 3000};
}

inline QVector<DecodeBand> usualDecodeBands()
{
    return {decodeBand(0), decodeBand(1), decodeBand(2), decodeBand(3)};
}

} // namespace outpost
