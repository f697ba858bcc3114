#pragma once

#include <QVector>

namespace outpost
{

namespace sim
{

using Samples = QVector<qint16>; // mono, 12000 per second unless stated otherwise

constexpr int kSampleRateHz = 12000;
constexpr int kPeriodMs = 15000;
constexpr int kPeriodSamples = 180000;         // one period as the client counts it
constexpr double kNoiseRms = 300.0;            // noise floor between and below the signals
constexpr double kPi = 3.14159265358979323846; // strict C++17 has no M_PI

} // namespace sim

} // namespace outpost
