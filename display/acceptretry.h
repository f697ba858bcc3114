#pragma once

#include <QObject>

class QTcpServer;
class QTimer;

namespace outpost
{

// Makes a listener accept again after an error, since Qt stops it for good. A child of the
// listener.
//
// Qt keeps a listener's first error and reports it again for every later one: after a shortage of
// descriptors, an empty queue looks like another shortage. So the queue itself is checked.
class AcceptRetry : public QObject
{
public:
    explicit AcceptRetry(QTcpServer *listener);

private:
    enum class State {
        Accepting,
        Doubtful, // a client waits: it has just arrived, or cannot be accepted
    };

    static bool hasWaitingClient(qintptr listener); // in the listener's queue
    void onError();
    void onPauseOver();

    QTcpServer *const server;
    QTimer *const pause;
    State state = State::Accepting;
};

} // namespace outpost
