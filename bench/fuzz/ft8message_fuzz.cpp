#include "bench/fuzz/fuzzing.h"
#include "daemon/ft8message.h"

#include <QRegularExpression>
#include <algorithm>

namespace outpost
{

namespace
{

bool isCallLetter(QChar c)
{
    return (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) ||
           (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('/');
}

bool isLocator(const QString &text)
{
    const auto isBetween = [&text](int at, char low, char high) {
        return text.at(at) >= QLatin1Char(low) && text.at(at) <= QLatin1Char(high);
    };
    return text.size() == 4 && isBetween(0, 'A', 'R') && isBetween(1, 'A', 'R') &&
           isBetween(2, '0', '9') && isBetween(3, '0', '9');
}

} // namespace

// Input: a message.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString message = QString::fromUtf8(FuzzInput(data, size).rest());
    const Ft8Sender sender = senderOf(message);
    require(std::all_of(sender.callsign.begin(), sender.callsign.end(), isCallLetter),
            "a callsign has letters, digits and strokes");
    require(message.contains(sender.callsign), "the callsign stands in the message");
    require(sender.locator.isEmpty() || isLocator(sender.locator), "a locator has four characters");
    static const QRegularExpression longLocator(QStringLiteral("RR73[A-X]{2}"));
    require(sender.locator != QLatin1String("RR73") || message.contains(longLocator),
            "RR73 alone is no locator");
    require(message.contains(sender.locator), "the locator stands in the message");

    const Ft8Sender marked = senderOf(message.simplified() + QStringLiteral(" a3"));
    require(sender.callsign.isEmpty() || message.contains(QLatin1Char('a')) ||
                (marked.callsign == sender.callsign && marked.locator == sender.locator),
            "neither blanks nor a mark matter");
    return 0;
}

} // namespace outpost
