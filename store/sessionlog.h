#pragma once

#include "store/statuslog.h"

#include <QString>
#include <functional>

namespace outpost
{

// Times the session with a receiver, and logs all finished sessions to a file in the data folder.
class SessionLog
{
public:
    // The clock returns UTC in ms since the epoch. `onChange` is called when a session has started,
    // and when a finished session is in the log.
    SessionLog(const QString &dataFolder, std::function<qint64()> clockToUse,
               std::function<void()> onChangeToCall);

    const StatusSession &session() const { return current; }

    // Does nothing if a session is active or the host is empty.
    void startStatusSession(const QString &host, int port, double frequencyMhz);
    void addSessionDecodes(qint64 count);
    void finishStatusSession();

    // The history of the sessions in the file. The file is read when a session ends and on request.
    void rebuildStatusHistory();

    // The text of the Status Log: the current session, then the history.
    QString text() const;

private:
    const QString path;
    const std::function<qint64()> clock;
    const std::function<void()> onChange;
    StatusSession current;
    QString history;
};

} // namespace outpost
