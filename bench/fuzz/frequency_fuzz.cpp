#include "base/frequency.h"
#include "bench/fuzz/fuzzing.h"

#include <QList>
#include <cmath>

namespace outpost
{

namespace
{
void checkFrequency(double mhz)
{
    require(mhz >= 0.001 && mhz <= 3000.0, "a frequency is in the range");
    const QString text = frequencyText(mhz);
    require(text.size() - text.indexOf(QLatin1Char('.')) == 7, "the text has six decimals");
    const std::optional<double> again = parseFrequency(text);
    require(again.has_value(), "a written frequency is read again");
    require(std::abs(*again - mhz) <= 0.5001e-6, "it is the same to the half of a hertz");
    require(frequencyText(*again) == text, "it is written the same again");
    require(parseFrequencyFile(text.toUtf8()) == again, "also from the file");

    const int preset = bandPresetIndex(mhz);
    for (int i = 0; i < static_cast<int>(bandPresets().size()); ++i) {
        require((i == preset) == sameFrequency(bandPresets().at(static_cast<size_t>(i)).mhz, mhz),
                "the preset is the one of this frequency");
    }
}

// An optional sign, digits with at most one decimal point, an optional exponent.
bool isDecimal(const QByteArray &text)
{
    int at = text.startsWith('+') || text.startsWith('-') ? 1 : 0;
    const auto digits = [&text, &at] {
        const int start = at;
        while (at < text.size() && text.at(at) >= '0' && text.at(at) <= '9') {
            ++at;
        }
        return at - start;
    };
    int mantissa = digits();
    if (at < text.size() && text.at(at) == '.') {
        ++at;
        mantissa += digits();
    }
    if (mantissa == 0) {
        return false;
    }
    if (at == text.size()) {
        return true;
    }
    if (text.at(at) != 'e' && text.at(at) != 'E') {
        return false;
    }
    ++at;
    if (at < text.size() && (text.at(at) == '+' || text.at(at) == '-')) {
        ++at;
    }
    return digits() > 0 && at == text.size();
}

std::optional<double> referenceFrequency(const QString &text)
{
    const QByteArray number = text.trimmed().toUtf8();
    if (number.contains('\0') || !isDecimal(number)) {
        return std::nullopt;
    }
    const double mhz = std::strtod(number.constData(), nullptr);
    return mhz >= 0.001 && mhz <= 3000.0 ? std::optional<double>(mhz) : std::nullopt;
}
} // namespace

// Input: an operator's input, or the frequency file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray content = FuzzInput(data, size).rest();
    const QString text = QString::fromUtf8(content);
    const std::optional<double> mhz = parseFrequency(text);
    require(mhz == referenceFrequency(text), "a decimal number in the range is a frequency");
    require(parseFrequency(QLatin1Char('\t') + text + QStringLiteral(" \r\n")) == mhz,
            "white space around it does not matter");
    const QByteArray beforeNul = content.split('\0').first();
    require(parseFrequencyFile(content) == parseFrequency(QString::fromUtf8(beforeNul)),
            "the file is read up to its first NUL byte");
    if (mhz) {
        checkFrequency(*mhz);
    }
    return 0;
}

} // namespace outpost
