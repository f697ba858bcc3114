#include "display/acceptretry.h"

#include <poll.h>

namespace outpost
{

bool AcceptRetry::hasWaitingClient(qintptr listener)
{
    pollfd queue{static_cast<int>(listener), POLLIN, 0};
    return poll(&queue, 1, 0) == 1;
}

} // namespace outpost
