#include "store/profile.h"

#include "base/buildconfig.h"
#include "base/datafile.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace outpost
{

QString Profile::defaultKiwiHost(const QString &serial)
{
    return serial + QStringLiteral("." OUTPOST_PROXY_DOMAIN);
}

ProfileReading parseProfile(const QByteArray &json, const Profile &current)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isObject()) {
        return {std::nullopt,
                QStringLiteral("The profile is not valid JSON: %1").arg(error.errorString()),
                error.error == QJsonParseError::NoError};
    }
    const QJsonObject keys = document.object();
    Profile read;
    read.serial = keys.value(QLatin1String("Serial")).toString(current.serial);
    read.kiwiHost = keys.value(QLatin1String("Host")).toString(current.kiwiHost);
    read.kiwiPort = keys.value(QLatin1String("Port")).toInt(current.kiwiPort);
    read.useProxy = keys.value(QLatin1String("UseProxy")).toBool(current.useProxy);
    read.jt9Path = keys.value(QLatin1String("Jt9Path")).toString(current.jt9Path);
    read.bridgePort = keys.value(QLatin1String("BridgePort")).toInt(current.bridgePort);
    return {read, QString()};
}

ProfileReading readProfileFile(const QString &path, const Profile &current)
{
    QFile file(path);
    if (!openForReading(file)) {
        return {std::nullopt, file.errorString()};
    }
    return parseProfile(file.readAll(), current);
}

QByteArray profileJson(const Profile &profile)
{
    const QJsonObject keys{{QStringLiteral("Serial"), profile.serial},
                           {QStringLiteral("Host"), profile.kiwiHost},
                           {QStringLiteral("Port"), profile.kiwiPort},
                           {QStringLiteral("UseProxy"), profile.useProxy},
                           {QStringLiteral("Jt9Path"), profile.jt9Path},
                           {QStringLiteral("BridgePort"), profile.bridgePort}};
    return QJsonDocument(keys).toJson();
}

} // namespace outpost
