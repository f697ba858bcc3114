#include "sim/unansweredconnects.h"

#include <QHostAddress>
#include <sys/socket.h>

namespace outpost
{

namespace sim
{

// A backlog of 0 has room for one connection; once that is taken, Linux drops every further SYN.
bool leaveConnectsUnanswered(const QTcpSocket &bound, QTcpSocket *firstInQueue)
{
    if (::listen(int(bound.socketDescriptor()), 0) != 0) {
        return false;
    }
    firstInQueue->connectToHost(bound.localAddress(), bound.localPort());
    return firstInQueue->waitForConnected();
}

} // namespace sim

} // namespace outpost
