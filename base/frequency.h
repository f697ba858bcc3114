#pragma once

#include <QByteArray>
#include <QString>
#include <array>
#include <optional>

namespace outpost
{

// Dial frequencies, all in MHz.

constexpr double lowestFrequencyMhz = 0.001;
constexpr double highestFrequencyMhz = 3000.0;

// Six decimals, as in "14.074000". Used in the frequency file and in every view.
QString frequencyText(double mhz);

// A decimal number within the range above, limits included; surrounding white space is ignored.
std::optional<double> parseFrequency(const QString &text);

// Parses the frequency file: UTF-8, up to the first NUL byte.
std::optional<double> parseFrequencyFile(const QByteArray &content);

// Whether they differ by less than 0.5 Hz.
bool sameFrequency(double leftMhz, double rightMhz);

struct BandPreset {
    QString text; // shown in the band combo box
    double mhz;
};

// From 160 m to 2 m, each with a different frequency.
const std::array<BandPreset, 12> &bandPresets();

// Index of the preset with that frequency, or -1.
int bandPresetIndex(double mhz);

} // namespace outpost
