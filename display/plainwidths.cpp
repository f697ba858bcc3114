#include "display/plainwidths.h"

#include <QString>
#include <algorithm>
#include <cmath>
#include <limits>

namespace outpost
{

namespace
{

constexpr int firstCharacter = ' ';
constexpr int lastCharacter = '~';
// After the last character of a text.
constexpr int noCharacter = lastCharacter - firstCharacter + 1;
constexpr int characters = noCharacter + 1;

} // namespace

bool isPlainText(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) {
        return c.unicode() >= firstCharacter && c.unicode() <= lastCharacter;
    });
}

PlainWidths::PlainWidths(const QFont &font)
    : metrics(font),
      advances(size_t{characters} * characters, std::numeric_limits<double>::quiet_NaN())
{
}

double PlainWidths::of(const QString &plainText)
{
    double width = 0;
    for (int i = 0; i < plainText.size(); ++i) {
        const bool isLast = i + 1 == plainText.size();
        const int next = isLast ? noCharacter : plainText.at(i + 1).unicode() - firstCharacter;
        const int pair = (plainText.at(i).unicode() - firstCharacter) * characters + next;
        double &advance = advances[static_cast<size_t>(pair)];
        if (std::isnan(advance)) {
            advance = measured(plainText.mid(i, 2));
        }
        width += advance;
    }
    return width;
}

double PlainWidths::measured(const QString &pair) const
{
    return metrics.horizontalAdvance(pair) - metrics.horizontalAdvance(pair.mid(1));
}

} // namespace outpost
