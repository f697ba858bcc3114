#pragma once

#include "sim/samples.h"

#include <QByteArray>

namespace outpost
{

// IMA/DVI ADPCM as the receiver sends it: four bits a sample, low nibble first, 89 steps. The state
// is (0, 0) at connection and runs on from frame to frame.
namespace sim
{

struct AdpcmState {
    int predictor = 0; // -32768..32767, the last sample as a listener hears it
    int index = 0;     // 0..88 into the step table
};

// Advances the state by one nibble (0..15) and returns the sample that it stands for.
qint16 decodeNibble(AdpcmState *state, int nibble);

// Two samples a byte; the missing second sample of an odd count is taken as silence.
QByteArray encodeAdpcm(AdpcmState *state, const Samples &samples);
Samples decodeAdpcm(AdpcmState *state, const QByteArray &payload);

} // namespace sim

} // namespace outpost
