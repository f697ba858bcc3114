#pragma once

#include "sim/simwav.h"

namespace outpost
{

// Neighbouring samples differ, and so do the periods.
inline sim::Samples ramp(int period)
{
    sim::Samples samples(sim::kPeriodSamples);
    for (int i = 0; i < samples.size(); ++i) {
        samples[i] = qint16(5000 + 1000 * period + i % 997);
    }
    return samples;
}

} // namespace outpost
