#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace outpost
{

// Receiver and decoder settings as a profile file keeps them: one JSON object with the keys
// BridgePort, Host, Jt9Path, Port, Serial, UseProxy. The dial frequency is not among them; all
// profiles share the one in the frequency file.
struct Profile {
    QString serial = QStringLiteral("22727");   // forms the proxy host name
    QString kiwiHost = defaultKiwiHost(serial); // host name or address
    int kiwiPort = 8073;                        // TCP; not range-checked when read
    bool useProxy = true;
    QString jt9Path;        // empty: none chosen
    int bridgePort = 27777; // TCP; not range-checked when read

    // "<serial>.<domain>", the receiver network's proxy host name.
    static QString defaultKiwiHost(const QString &serial);
};

// A profile that was read, or why it cannot be used.
struct ProfileReading {
    std::optional<Profile> profile;
    QString error;           // one sentence without its full stop; empty when there is a profile
    bool isNoObject = false; // valid JSON, which `error` does not show
};

// Reads a profile document over `current`: a missing key, or one of the wrong JSON type, keeps
// the current value; unknown keys are ignored.
ProfileReading parseProfile(const QByteArray &json, const Profile &current);
ProfileReading readProfileFile(const QString &path, const Profile &current);

// The six keys, indented JSON in UTF-8.
QByteArray profileJson(const Profile &profile);

} // namespace outpost
