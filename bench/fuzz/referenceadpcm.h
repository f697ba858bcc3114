#pragma once

#include "kiwi/imaadpcm.h"

namespace outpost
{

// IMA ADPCM, written for clarity: the three low bits stand for step, step/2 and step/4, each
// truncated; step/8 is always added; the high bit is the sign.
inline int referenceSample(ImaAdpcmState &state, int nibble)
{
    int part = imaStepTable[state.adpcmIndex];
    int difference = 0;
    for (int bit = 4; bit >= 1; bit /= 2) {
        if (nibble & bit) {
            difference += part;
        }
        part /= 2;
    }
    difference += part;

    const int magnitude = nibble % 8;
    state.adpcmIndex += magnitude < 4 ? -1 : 2 * magnitude - 6;
    state.adpcmIndex = qBound(0, state.adpcmIndex, 88);
    state.adpcmPredictor += nibble >= 8 ? -difference : difference;
    state.adpcmPredictor = qBound(-32768, state.adpcmPredictor, 32767);
    return state.adpcmPredictor;
}

} // namespace outpost
