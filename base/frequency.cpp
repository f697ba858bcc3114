#include "base/frequency.h"

#include <algorithm>
#include <cmath>

namespace outpost
{

QString frequencyText(double mhz)
{
    return QString::number(mhz, 'f', 6);
}

std::optional<double> parseFrequency(const QString &text)
{
    bool converted = false;
    const double mhz = text.trimmed().toDouble(&converted);
    // "nan" and "inf" are valid doubles, but out of range.
    if (!converted || !(mhz >= lowestFrequencyMhz && mhz <= highestFrequencyMhz)) {
        return std::nullopt;
    }
    return mhz;
}

std::optional<double> parseFrequencyFile(const QByteArray &content)
{
    return parseFrequency(QString::fromUtf8(content.constData()));
}

bool sameFrequency(double leftMhz, double rightMhz)
{
    return std::abs(leftMhz - rightMhz) < 5e-07;
}

const std::array<BandPreset, 12> &bandPresets()
{
    static const std::array<BandPreset, 12> presets{{
        {QStringLiteral("160 m FT8 — 1.840000"), 1.840},
        {QStringLiteral("80 m FT8 — 3.573000"), 3.573},
        {QStringLiteral("60 m FT8 — 5.357000"), 5.357},
        {QStringLiteral("40 m FT8 — 7.074000"), 7.074},
        {QStringLiteral("30 m FT8 — 10.136000"), 10.136},
        {QStringLiteral("20 m FT8 — 14.074000"), 14.074},
        {QStringLiteral("17 m FT8 — 18.100000"), 18.100},
        {QStringLiteral("15 m FT8 — 21.074000"), 21.074},
        {QStringLiteral("12 m FT8 — 24.915000"), 24.915},
        {QStringLiteral("10 m FT8 — 28.074000"), 28.074},
        {QStringLiteral("6 m FT8 — 50.313000"), 50.313},
        {QStringLiteral("2 m FT8 — 144.174000"), 144.174},
    }};
    return presets;
}

int bandPresetIndex(double mhz)
{
    const auto &presets = bandPresets();
    const auto found =
        std::find_if(presets.begin(), presets.end(),
                     [mhz](const BandPreset &preset) { return sameFrequency(preset.mhz, mhz); });
    return found == presets.end() ? -1 : static_cast<int>(found - presets.begin());
}

} // namespace outpost
