#include "sim/tcpreset.h"

#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

namespace outpost
{

namespace sim
{

void resetOnClose(qintptr socketDescriptor)
{
    linger option{};
    option.l_onoff = 1;
    option.l_linger = 0;
#ifdef Q_OS_WIN
    setsockopt(SOCKET(socketDescriptor), SOL_SOCKET, SO_LINGER,
               reinterpret_cast<const char *>(&option), sizeof option);
#else
    setsockopt(int(socketDescriptor), SOL_SOCKET, SO_LINGER, &option, sizeof option);
#endif
}

} // namespace sim

} // namespace outpost
