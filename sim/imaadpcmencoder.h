#pragma once

#include "sim/samples.h"

#include <QByteArray>

namespace outpost
{

// IMA/DVI ADPCM as the receiver sends it: four bits per sample, low nibble first, 89 steps. The
// state starts at (0, 0) when a client connects and continues from frame to frame.
namespace sim
{

struct AdpcmState {
    int predictor = 0; // -32768..32767, the last decoded sample
    int index = 0;     // 0..88, into the step table
};

// Decodes one nibble (0..15) to a sample and updates the state.
qint16 decodeNibble(AdpcmState *state, int nibble);

// Two samples per byte; an odd count is padded with silence.
QByteArray encodeAdpcm(AdpcmState *state, const Samples &samples);
Samples decodeAdpcm(AdpcmState *state, const QByteArray &payload);

} // namespace sim

} // namespace outpost
