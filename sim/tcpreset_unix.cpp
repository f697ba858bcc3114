#include "sim/tcpreset.h"

#include <sys/socket.h>

namespace outpost
{

namespace sim
{

void resetOnClose(qintptr socketDescriptor)
{
    const linger option{1, 0}; // on, and no time to send what is left
    setsockopt(int(socketDescriptor), SOL_SOCKET, SO_LINGER, &option, sizeof option);
}

} // namespace sim

} // namespace outpost
