#pragma once

#include <QByteArray>
#include <QString>
#include <array>
#include <optional>

namespace outpost
{

// Dial frequencies, in MHz throughout.

constexpr double lowestFrequencyMhz = 0.001;
constexpr double highestFrequencyMhz = 3000.0;

// Six decimals: "14.074000". What the frequency file holds and every view shows.
QString frequencyText(double mhz);

// A decimal number within the range above, both ends included; white space around it is ignored.
std::optional<double> parseFrequency(const QString &text);

// The same from the frequency file: UTF-8, up to the first NUL byte if there is one.
std::optional<double> parseFrequencyFile(const QByteArray &content);

// Less than half a hertz apart.
bool sameFrequency(double leftMhz, double rightMhz);

struct BandPreset {
    QString text; // as the band combo shows it
    double mhz;
};

// From 160 m to 2 m; no two are the same frequency.
const std::array<BandPreset, 12> &bandPresets();

// Index of the preset of that frequency, or -1.
int bandPresetIndex(double mhz);

} // namespace outpost
