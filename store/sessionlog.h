#pragma once

#include "store/statuslog.h"

#include <QString>
#include <functional>

namespace outpost
{

// Times the session with a receiver and keeps the log of all that have ended, as a file in the data
// folder and as text.
class SessionLog
{
public:
    // The clock tells UTC in ms since the epoch. `onChange` is called when a session has started,
    // and when one has ended and is in the log.
    SessionLog(const QString &dataFolder, std::function<qint64()> clockToUse,
               std::function<void()> onChangeToCall);

    const StatusSession &session() const { return current; }

    // Does nothing while a session is active, or without a host.
    void startStatusSession(const QString &host, int port, double frequencyMhz);
    void addSessionDecodes(qint64 count);
    void finishStatusSession();

    // Of the sessions in the file; read there when a session ends, and when asked to.
    void rebuildStatusHistory();

    // The whole Status Log: the session as it is now, then the history.
    QString text() const;

private:
    const QString path;
    const std::function<qint64()> clock;
    const std::function<void()> onChange;
    StatusSession current;
    QString history;
};

} // namespace outpost
