#pragma once

#include <QFontMetricsF>
#include <vector>

namespace outpost
{

// Printable ASCII. In one font, each such text is as high as any other.
bool isPlainText(const QString &text);

// Tells quickly how wide plain texts are. Each is added up from its pairs of characters, for a font
// may move a pair closer together.
class PlainWidths
{
public:
    explicit PlainWidths(const QFont &font);

    double of(const QString &plainText); // in pixels

private:
    double measured(const QString &pair) const;

    QFontMetricsF metrics;
    // By pair: from the first character to the second; NaN until needed.
    std::vector<double> advances;
};

} // namespace outpost
