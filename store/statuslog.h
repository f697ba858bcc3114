#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <optional>

namespace outpost
{

// The current receiver session; all fields have their defaults while there is none.
struct StatusSession {
    bool active = false;
    QString host; // trimmed, case kept
    int port = 0;
    double frequencyMhz = 0;
    qint64 startMs = 0; // UTC, ms since the epoch
    qint64 decodes = 0;
};

// Elapsed whole seconds; 0 if negative.
qint64 wholeSeconds(qint64 startMs, qint64 endMs);

// The log with a finished session added: a record at the end of "Sessions", and totals in the
// receiver's entry of "Receivers" (found by port and by host, case-insensitively). "FormatVersion"
// is 1. Unknown keys are kept.
QJsonObject withFinishedSession(QJsonObject log, const StatusSession &session, qint64 endMs);

// Totals per receiver and the latest 20 sessions, lines separated by LF. `file` is the log as read,
// or nothing if it cannot be opened.
QString statusHistoryText(const std::optional<QByteArray> &file);

// The text of the Status Log: the session as of `nowMs`, then the history. The path of the file is
// shown unchanged.
QString statusLogText(const StatusSession &session, qint64 nowMs, const QString &shownPath,
                      const QString &history);

} // namespace outpost
