#pragma once

namespace outpost
{

// How long one endpoint may take, in ms.
struct LinkTimeouts {
    int openMs = 5000; // to open the WebSocket
    int dataMs = 6000; // from the open WebSocket to the first sound frame
};

} // namespace outpost
