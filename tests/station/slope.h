#pragma once

#include <QVector>

namespace outpost
{

// One quantity, measured again and again while a station runs.
struct Sample {
    double period = 0; // FT8 periods since the start
    double value = 0;
};

// Growth for each 1000 periods, by least squares; 0 for fewer than two different periods.
double slopePer1000(const QVector<Sample> &samples);

// Whether the fitted line rises by more than `allowance` over the measured periods, and by more
// than `boundPer1000` for each 1000 of them: a short run may waver, but not as much as that.
bool grows(const QVector<Sample> &samples, double boundPer1000, double allowance);

} // namespace outpost
