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

// Helpers for the data files: indented JSON documents with UTC times in ISO 8601 form.

// Opens `file` for reading; returns false if it cannot be opened. Waits for a locked file, so that
// it is not mistaken for a missing one.
bool openForReading(QFile &file, QIODevice::OpenMode textFlag = {}, int waitMs = lockedFileMs);

// The whole file, or nothing if it cannot be opened.
std::optional<QByteArray> readFile(const QString &path, int waitMs = lockedFileMs);

// Nothing if the bytes are not valid JSON, or are JSON of another type.
std::optional<QJsonArray> parseJsonArray(const QByteArray &json);
std::optional<QJsonObject> parseJsonObject(const QByteArray &json);

// UTC milliseconds since the epoch as "2026-01-31T18:04:15Z".
QString isoUtc(qint64 msSinceEpoch);

} // namespace outpost
