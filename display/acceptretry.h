#pragma once

#include <QObject>

class QTcpServer;
class QTimer;

namespace outpost
{

// Lets a listener accept again after an error, at which Qt stops it for good. Belongs to the
// listener and ends with it.
//
// Qt keeps a listener's first error and reports it again for every later one: after a shortage of
// descriptors, an empty queue looks like another shortage. So the queue itself is asked.
class AcceptRetry : public QObject
{
public:
    explicit AcceptRetry(QTcpServer *listener);

private:
    enum class State {
        Accepting,
        Doubtful, // a client waits: it came in a moment ago, or it cannot be accepted
    };

    static bool hasWaitingClient(qintptr listener); // somebody is in its queue
    void onError();
    void onPauseOver();

    QTcpServer *const server;
    QTimer *const pause;
    State state = State::Accepting;
};

} // namespace outpost
