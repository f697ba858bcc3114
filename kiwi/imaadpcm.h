#pragma once

#include <QtGlobal>
#include <algorithm>

namespace outpost
{

// IMA/DVI ADPCM, one nibble per sample, as the receiver sends it after "compression=1". There are
// no block headers: the state starts at (0, 0) and continues over all frames of a connection.
struct ImaAdpcmState {
    int adpcmIndex = 0;     // 0..88, into the step table
    int adpcmPredictor = 0; // -32768..32767, the last sample
};

extern const int imaStepTable[89];
extern const int imaIndexTable[16];

// Decodes one nibble (0..15) to a sample and updates the state.
inline qint16 decodeImaNibble(ImaAdpcmState &state, int nibble)
{
    const int step = imaStepTable[state.adpcmIndex];
    state.adpcmIndex = std::clamp(state.adpcmIndex + imaIndexTable[nibble], 0, 88);

    int diff = step >> 3;
    diff += (nibble & 1) != 0 ? step >> 2 : 0;
    diff += (nibble & 2) != 0 ? step >> 1 : 0;
    diff += (nibble & 4) != 0 ? step : 0;

    const int moved = state.adpcmPredictor + ((nibble & 8) != 0 ? -diff : diff);
    state.adpcmPredictor = std::clamp(moved, -32768, 32767);
    return static_cast<qint16>(state.adpcmPredictor);
}

} // namespace outpost
