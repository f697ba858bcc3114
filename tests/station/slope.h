#pragma once

#include <QVector>

namespace outpost
{

// A quantity that is measured repeatedly while a station runs.
struct Sample {
    double period = 0; // FT8 periods since the start
    double value = 0;
};

// Growth per 1000 periods, by least squares; 0 for fewer than two different periods.
double slopePer1000(const QVector<Sample> &samples);

// Whether the fitted line rises by more than `allowance` in total, and by more than `boundPer1000`
// per 1000 periods. The allowance is for the fluctuations of short runs.
bool grows(const QVector<Sample> &samples, double boundPer1000, double allowance);

} // namespace outpost
