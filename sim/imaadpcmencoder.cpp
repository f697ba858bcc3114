#include "sim/imaadpcmencoder.h"

namespace outpost
{

namespace sim
{

namespace
{

const int kSteps[89] = {
    7,     8,     9,     10,    11,    12,    13,    14,    16,    17,    19,   21,    23,
    25,    28,    31,    34,    37,    41,    45,    50,    55,    60,    66,   73,    80,
    88,    97,    107,   118,   130,   143,   157,   173,   190,   209,   230,  253,   279,
    307,   337,   371,   408,   449,   494,   544,   598,   658,   724,   796,  876,   963,
    1060,  1166,  1282,  1411,  1552,  1707,  1878,  2066,  2272,  2499,  2749, 3024,  3327,
    3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845,  8630,  9493, 10442, 11487,
    12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};

const int kIndexChange[8] = {-1, -1, -1, -1, 2, 4, 6, 8};

int nearestNibble(const AdpcmState &state, int sample)
{
    int step = kSteps[state.index];
    int difference = sample - state.predictor;
    int nibble = 0;
    if (difference < 0) {
        nibble = 8;
        difference = -difference;
    }
    for (int bit = 4; bit != 0; bit >>= 1, step >>= 1) {
        if (difference >= step) {
            nibble |= bit;
            difference -= step;
        }
    }
    return nibble;
}

int encodeSample(AdpcmState *state, int sample)
{
    const int nibble = nearestNibble(*state, sample);
    decodeNibble(state, nibble);
    return nibble;
}

} // namespace

qint16 decodeNibble(AdpcmState *state, int nibble)
{
    const int step = kSteps[state->index];
    state->index = qBound(0, state->index + kIndexChange[nibble & 7], 88);
    int difference = step >> 3;
    if (nibble & 1) {
        difference += step >> 2;
    }
    if (nibble & 2) {
        difference += step >> 1;
    }
    if (nibble & 4) {
        difference += step;
    }
    const int value = state->predictor + ((nibble & 8) ? -difference : difference);
    state->predictor = qBound(-32768, value, 32767);
    return qint16(state->predictor);
}

QByteArray encodeAdpcm(AdpcmState *state, const Samples &samples)
{
    QByteArray payload;
    payload.reserve((samples.size() + 1) / 2);
    for (int i = 0; i < samples.size(); i += 2) {
        const int low = encodeSample(state, samples.at(i));
        const int high = encodeSample(state, i + 1 < samples.size() ? samples.at(i + 1) : 0);
        payload.append(char(low | high << 4));
    }
    return payload;
}

Samples decodeAdpcm(AdpcmState *state, const QByteArray &payload)
{
    Samples samples;
    samples.reserve(payload.size() * 2);
    for (const char byte : payload) {
        samples.append(decodeNibble(state, quint8(byte) & 15));
        samples.append(decodeNibble(state, quint8(byte) >> 4));
    }
    return samples;
}

} // namespace sim

} // namespace outpost
