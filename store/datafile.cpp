#include "store/datafile.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>

std::optional<QByteArray> readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

std::optional<QJsonArray> parseJsonArray(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return std::nullopt;
    return document.array();
}

std::optional<QJsonObject> parseJsonObject(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return std::nullopt;
    return document.object();
}

QString isoUtc(qint64 msSinceEpoch)
{
    return QDateTime::fromMSecsSinceEpoch(msSinceEpoch, Qt::UTC).toString(Qt::ISODate);
}
