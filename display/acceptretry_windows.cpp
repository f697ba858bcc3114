#include "display/acceptretry.h"

#include <winsock2.h>

namespace outpost
{

bool AcceptRetry::hasWaitingClient(qintptr listener)
{
    WSAPOLLFD queue{static_cast<SOCKET>(listener), POLLRDNORM, 0};
    return WSAPoll(&queue, 1, 0) == 1;
}

} // namespace outpost
