#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace outpost
{

// Receiver and decoder settings, as stored in a profile file: a JSON object with the keys
// BridgePort, Host, Jt9Path, Port, Serial, UseProxy. The dial frequency is not part of it; all
// profiles share the frequency file.
struct Profile {
    QString serial = QStringLiteral("22727");   // part of the proxy host name
    QString kiwiHost = defaultKiwiHost(serial); // host name or address
    int kiwiPort = 8073;                        // TCP; not range-checked when read
    bool useProxy = true;
    QString jt9Path;        // empty: none selected
    int bridgePort = 27777; // TCP; not range-checked when read

    // "<serial>.<domain>", the host name on the receiver network's proxy.
    static QString defaultKiwiHost(const QString &serial);
};

// A profile that was read, or why it cannot be used.
struct ProfileReading {
    std::optional<Profile> profile;
    QString error;           // a sentence without its full stop; empty if there is a profile
    bool isNoObject = false; // valid JSON, but not an object
};

// Reads a profile document on top of `current`: keys that are missing or have the wrong JSON type
// keep the current value; unknown keys are ignored.
ProfileReading parseProfile(const QByteArray &json, const Profile &current);
ProfileReading readProfileFile(const QString &path, const Profile &current);

// The six keys, indented JSON in UTF-8.
QByteArray profileJson(const Profile &profile);

} // namespace outpost
