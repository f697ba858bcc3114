#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <optional>

namespace outpost
{

// The receiver session being timed; all fields at rest while none is.
struct StatusSession {
    bool active = false;
    QString host; // trimmed, in the operator's own case
    int port = 0;
    double frequencyMhz = 0;
    qint64 startMs = 0; // UTC, ms since the epoch
    qint64 decodes = 0;
};

// Elapsed whole seconds, 0 below one second.
qint64 wholeSeconds(qint64 startMs, qint64 endMs);

// The log with the finished session added: its record at the end of "Sessions", its totals in
// the receiver's entry of "Receivers" (found by host without regard to case, and port).
// "FormatVersion" is 1. Keys that are not this program's own stay.
QJsonObject withFinishedSession(QJsonObject log, const StatusSession &session, qint64 endMs);

// Totals per receiver and the newest 20 sessions, lines joined by LF. `file` is the log as read;
// nothing when it cannot be opened.
QString statusHistoryText(const std::optional<QByteArray> &file);

// The whole Status Log: the session as it is at `nowMs`, then the history. The file's path is
// shown as given.
QString statusLogText(const StatusSession &session, qint64 nowMs, const QString &shownPath,
                      const QString &history);

} // namespace outpost
