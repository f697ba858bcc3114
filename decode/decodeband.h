#pragma once

#include <QVector>

namespace outpost
{

// The part of the audio spectrum, in Hz, that one of a period's four decode workers looks at.
struct DecodeBand {
    int lowHz;
    int highHz;
};

// Neighbours overlap by 100 Hz so that a signal on an edge is decoded whole by at least one
// worker; the merge removes the doubles. `worker` is 0..3; any other number gives 0 to 3000 Hz.
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
