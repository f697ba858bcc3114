#include "slope.h"

namespace outpost
{

double slopePer1000(const QVector<Sample> &samples)
{
    double meanPeriod = 0;
    double meanValue = 0;
    for (const Sample &sample : samples) {
        meanPeriod += sample.period / samples.size();
        meanValue += sample.value / samples.size();
    }
    double covariance = 0;
    double variance = 0;
    for (const Sample &sample : samples) {
        const double distance = sample.period - meanPeriod;
        covariance += distance * (sample.value - meanValue);
        variance += distance * distance;
    }
    return variance > 0 ? 1000 * covariance / variance : 0;
}

bool grows(const QVector<Sample> &samples, double boundPer1000, double allowance)
{
    if (samples.isEmpty()) {
        return false;
    }
    const double slope = slopePer1000(samples);
    const double periods = samples.last().period - samples.first().period;
    return slope > boundPer1000 && slope * periods / 1000 > allowance;
}

} // namespace outpost
