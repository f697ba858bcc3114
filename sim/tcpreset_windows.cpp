#include "sim/tcpreset.h"

#include <winsock2.h>

namespace outpost
{

namespace sim
{

void resetOnClose(qintptr socketDescriptor)
{
    const linger option{1, 0}; // on, and no time to send what is left
    setsockopt(SOCKET(socketDescriptor), SOL_SOCKET, SO_LINGER,
               reinterpret_cast<const char *>(&option), sizeof option);
}

} // namespace sim

} // namespace outpost
