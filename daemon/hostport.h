#pragma once

#include <QString>
#include <optional>

namespace outpost
{

struct HostPort {
    QString host; // a name or an address, IPv6 without brackets
    int port = 0;
};

// A host as it is meant: an IPv6 address may stand in brackets, which are taken off.
std::optional<QString> parseHost(const QString &text);

// 1 to 65535, digits alone.
std::optional<int> parsePort(const QString &text);

// "HOST" or "HOST:PORT", with an IPv6 address in brackets.
std::optional<HostPort> parseHostPort(const QString &text, int defaultPort);

// "HOST:PORT", with an IPv6 address in brackets.
QString hostPortText(const QString &host, int port);

} // namespace outpost
