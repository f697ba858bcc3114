#pragma once

#include <QFontMetricsF>
#include <vector>

namespace outpost
{

// Whether the text is printable ASCII. In one font, all such texts have the same height.
bool isPlainText(const QString &text);

// Calculates the widths of plain texts quickly. A width is the sum over pairs of characters, since
// a font may kern them.
class PlainWidths
{
public:
    explicit PlainWidths(const QFont &font);

    double of(const QString &plainText); // in pixels

private:
    double measured(const QString &pair) const;

    QFontMetricsF metrics;
    // By pair: the advance from the first character to the second; NaN until needed.
    std::vector<double> advances;
};

} // namespace outpost
