#include "base/datafile.h"

#include <QDateTime>
#include <QJsonDocument>

namespace outpost
{

bool openForReading(QFile &file, QIODevice::OpenMode textFlag, int waitMs)
{
    whileLocked(waitMs,
                [&] { return file.open(QIODevice::ReadOnly | textFlag) || !file.exists(); });
    return file.isOpen();
}

std::optional<QByteArray> readFile(const QString &path, int waitMs)
{
    QFile file(path);
    if (!openForReading(file, {}, waitMs)) {
        return std::nullopt;
    }
    return file.readAll();
}

std::optional<QJsonArray> parseJsonArray(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray()) {
        return std::nullopt;
    }
    return document.array();
}

std::optional<QJsonObject> parseJsonObject(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject()) {
        return std::nullopt;
    }
    return document.object();
}

QString isoUtc(qint64 msSinceEpoch)
{
    return QDateTime::fromMSecsSinceEpoch(msSinceEpoch, Qt::UTC).toString(Qt::ISODate);
}

} // namespace outpost
