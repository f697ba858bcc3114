#pragma once

#include "base/lockedfile.h"

#include <QByteArray>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <optional>

namespace outpost
{

// What the data files have in common: JSON documents, written indented, with UTC times in the
// ISO 8601 form.

// Opens it for reading; false when it cannot be opened. A file that is only locked is waited for,
// so that it is not taken for a missing one.
bool openForReading(QFile &file, QIODevice::OpenMode textFlag = {}, int waitMs = lockedFileMs);

// The whole file; nothing when it cannot be opened.
std::optional<QByteArray> readFile(const QString &path, int waitMs = lockedFileMs);

// Nothing when the bytes are not JSON, or JSON of another kind.
std::optional<QJsonArray> parseJsonArray(const QByteArray &json);
std::optional<QJsonObject> parseJsonObject(const QByteArray &json);

// "2026-01-31T18:04:15Z", from UTC milliseconds since the epoch.
QString isoUtc(qint64 msSinceEpoch);

} // namespace outpost
