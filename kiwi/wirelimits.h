#pragma once

#include <QtGlobal>

class QWebSocket;

namespace outpost
{

// Limits on what a receiver, or any other peer, can make the link store and send.

// A receiver's configuration message can exceed 64 kB; no real message comes near this limit.
constexpr quint64 maxMessageBytes = quint64{4} * 1024 * 1024;
// Qt removes a frame from the read buffer only when it is complete.
constexpr qint64 maxBufferBytes = maxMessageBytes + qint64{64} * 1024;
// Limit on what is read in one turn of the event loop, unless a frame is larger: one or two sound
// frames, or about 170 empty frames of a flooding peer. The user interface stays responsive.
constexpr qint64 usualBufferBytes = 2048;
// Answers to pings accumulate here if a peer sends pings without reading; commands are far smaller.
constexpr qint64 maxUnsentBytes = qint64{256} * 1024;

// Call before open(): sets the largest frame and message, and the usual read buffer.
void limitMessages(QWebSocket *socket);

// Call after open(): lets the read buffer grow with the arriving frame, and aborts the socket when
// too much waits to be sent. This needs the TCP socket inside the WebSocket. Without it, the read
// buffer gets its full size, since a frame larger than the buffer would never arrive.
void limitBuffers(QWebSocket *socket);

} // namespace outpost
