#pragma once

#include <QVector>

namespace outpost
{

namespace sim
{

using Samples = QVector<qint16>; // mono, 12000 a second unless said otherwise

constexpr int kSampleRateHz = 12000;
constexpr int kPeriodMs = 15000;
constexpr int kPeriodSamples = 180000;         // what a listener counts as one period
constexpr double kNoiseRms = 300.0;            // the noise floor between and under the signals
constexpr double kPi = 3.14159265358979323846; // strict C++17 has none

} // namespace sim

} // namespace outpost
