#include "daemon/hostport.h"

#include <QHostAddress>
#include <QRegularExpression>

namespace outpost
{

namespace
{
constexpr int maxNameLength = 253; // of DNS
constexpr int maxPort = 65535;

bool isIpv6(const QString &text)
{
    QHostAddress address;
    return text.contains(QLatin1Char(':')) && address.setAddress(text) &&
           address.protocol() == QAbstractSocket::IPv6Protocol;
}

bool isIpv4(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A((25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])(\\.(?!\\z)|\\z)){4}\\z"));
    return pattern.match(text).hasMatch();
}

// Letters of any language; no label begins or ends with a hyphen. A name that ends in digits would
// be an IPv4 address.
bool isName(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral(
            "\\A(?!.*(?<![^.])[0-9]+\\z)[\\p{L}\\p{N}_]([\\p{L}\\p{N}_-]*[\\p{L}\\p{N}_])?"
            "(\\.[\\p{L}\\p{N}_]([\\p{L}\\p{N}_-]*[\\p{L}\\p{N}_])?)*\\z"),
        QRegularExpression::UseUnicodePropertiesOption);
    return text.size() <= maxNameLength && pattern.match(text).hasMatch();
}

bool isInBrackets(const QString &text)
{
    return text.startsWith(QLatin1Char('[')) && text.endsWith(QLatin1Char(']'));
}
} // namespace

std::optional<QString> parseHost(const QString &text)
{
    if (isInBrackets(text)) {
        const QString address = text.mid(1, text.size() - 2);
        return isIpv6(address) ? std::optional(address) : std::nullopt;
    }
    return isIpv4(text) || isIpv6(text) || isName(text) ? std::optional(text) : std::nullopt;
}

std::optional<int> parsePort(const QString &text)
{
    static const QRegularExpression digits(QStringLiteral("\\A[0-9]{1,5}\\z"));
    const int port = digits.match(text).hasMatch() ? text.toInt() : 0;
    return port >= 1 && port <= maxPort ? std::optional(port) : std::nullopt;
}

std::optional<HostPort> parseHostPort(const QString &text, int defaultPort)
{
    const int colon = text.indexOf(QLatin1Char(':'), text.indexOf(QLatin1Char(']')) + 1);
    const auto host = parseHost(text.left(colon));
    const auto port = colon < 0 ? std::optional(defaultPort) : parsePort(text.mid(colon + 1));
    if (!host || !port) {
        return std::nullopt;
    }
    return HostPort{*host, *port};
}

QString hostPortText(const QString &host, int port)
{
    const auto *format = host.contains(QLatin1Char(':')) ? "[%1]:%2" : "%1:%2";
    return QString::fromLatin1(format).arg(host, QString::number(port));
}

} // namespace outpost
