#include "bench/fuzz/fuzzing.h"
#include "bench/fuzz/referenceadpcm.h"
#include "kiwi/imaadpcm.h"

namespace outpost
{

// Input: the initial state (index, predictor), then the payload of a compressed frame.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    ImaAdpcmState state;
    state.adpcmIndex = input.byte() % 89;
    state.adpcmPredictor = static_cast<qint16>(input.word());
    ImaAdpcmState reference = state;

    while (!input.atEnd()) {
        const int byte = input.byte();
        for (const int nibble : {byte & 0x0f, byte >> 4}) {
            const int step = imaStepTable[state.adpcmIndex];
            const int before = state.adpcmPredictor;
            const int sample = decodeImaNibble(state, nibble);
            require(sample == referenceSample(reference, nibble), "the sample is the reference's");
            require(state.adpcmIndex == reference.adpcmIndex, "the index is the reference's");
            require(state.adpcmIndex >= 0 && state.adpcmIndex <= 88, "the index is in the table");
            require(sample == state.adpcmPredictor, "the sample is the new predictor");
            require(qAbs(sample - before) <= 2 * step, "no jump is higher than two steps");
        }
    }
    return 0;
}

} // namespace outpost
