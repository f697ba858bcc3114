#include "sim/unansweredconnects.h"

#include <winsock2.h>

namespace outpost
{

namespace sim
{

// With this option Windows answers a SYN only when the program accepts the connection.
bool leaveConnectsUnanswered(const QTcpSocket &bound, QTcpSocket *)
{
    const auto descriptor = SOCKET(bound.socketDescriptor());
    const BOOL on = TRUE;
    return setsockopt(descriptor, SOL_SOCKET, SO_CONDITIONAL_ACCEPT,
                      reinterpret_cast<const char *>(&on), sizeof on) == 0 &&
           listen(descriptor, SOMAXCONN) == 0;
}

} // namespace sim

} // namespace outpost
