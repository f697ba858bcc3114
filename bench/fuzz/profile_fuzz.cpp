#include "bench/fuzz/fuzzing.h"
#include "store/profile.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace outpost
{

namespace
{
bool same(const Profile &a, const Profile &b)
{
    return a.serial == b.serial && a.kiwiHost == b.kiwiHost && a.kiwiPort == b.kiwiPort &&
           a.useProxy == b.useProxy && a.jt9Path == b.jt9Path && a.bridgePort == b.bridgePort;
}

Profile anotherProfile()
{
    Profile profile;
    profile.serial = QStringLiteral("1");
    profile.kiwiHost = QStringLiteral("another.example");
    profile.kiwiPort = 1;
    profile.useProxy = false;
    profile.jt9Path = QStringLiteral("/another/jt9");
    profile.bridgePort = 2;
    return profile;
}

void requireText(const QJsonObject &keys, const char *key, const QString &read,
                 const QString &current)
{
    const QJsonValue value = keys.value(QLatin1String(key));
    require(read == (value.isString() ? value.toString() : current),
            "a text is read, or the current one kept");
}

void requireNumber(const QJsonObject &keys, const char *key, int read, int current)
{
    const QJsonValue value = keys.value(QLatin1String(key));
    const double number = value.toDouble();
    const bool isInt = value.isDouble() && number >= -2147483648.0 && number <= 2147483647.0 &&
                       number == static_cast<int>(number);
    require(read == (isInt ? static_cast<int>(number) : current),
            "a whole number is read, or the current one kept");
}

void checkFields(const QJsonObject &keys, const Profile &read, const Profile &current)
{
    requireText(keys, "Serial", read.serial, current.serial);
    requireText(keys, "Host", read.kiwiHost, current.kiwiHost);
    requireText(keys, "Jt9Path", read.jt9Path, current.jt9Path);
    requireNumber(keys, "Port", read.kiwiPort, current.kiwiPort);
    requireNumber(keys, "BridgePort", read.bridgePort, current.bridgePort);
    const QJsonValue proxy = keys.value(QLatin1String("UseProxy"));
    require(read.useProxy == (proxy.isBool() ? proxy.toBool() : current.useProxy),
            "a flag is read, or the current one kept");
}

// A written profile contains all six fields, so reading it gives the same values whatever was
// current.
void checkRoundTrip(const Profile &profile)
{
    const QByteArray json = profileJson(profile);
    require(QJsonDocument::fromJson(json).object().size() == 6, "six keys are written");
    const std::optional<Profile> again = parseProfile(json, anotherProfile()).profile;
    require(again.has_value(), "a written profile parses");
    require(same(*again, profile), "a written profile reads back");
    require(profileJson(*again) == json, "it is written the same again");
}
} // namespace

// Qt's JSON parser leaks memory if an object contains a key twice.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}

// Input: a profile file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json = FuzzInput(data, size).rest();
    const Profile current;
    const ProfileReading reading = parseProfile(json, current);
    const std::optional<Profile> &read = reading.profile;
    const QJsonDocument document = QJsonDocument::fromJson(json);
    require(read.has_value() == document.isObject(), "an object is a profile");
    require(read.has_value() == reading.error.isEmpty(), "all else has a reason");
    if (!read) {
        return 0;
    }
    checkFields(document.object(), *read, current);
    checkRoundTrip(*read);
    return 0;
}

} // namespace outpost
