#pragma once

#include <QtGlobal>

class QWebSocket;

namespace outpost
{

// What a receiver, or whoever answers in its place, can make the link store and send.

// A receiver's configuration message can exceed 64 kB; nothing real comes near this.
constexpr quint64 maxMessageBytes = quint64{4} * 1024 * 1024;
// Qt takes a frame out of the read buffer only when it is whole.
constexpr qint64 maxBufferBytes = maxMessageBytes + qint64{64} * 1024;
// Read in one turn of the event loop, unless a frame is larger: one or two sound frames, or some
// 170 empty ones of a peer that sends them without end. The operator gets a turn in between.
constexpr qint64 usualBufferBytes = 2048;
// Answers to pings pile up here when a peer asks without reading; commands are far smaller.
constexpr qint64 maxUnsentBytes = qint64{256} * 1024;

// Before open(): the largest frame and message, and the usual read buffer.
void limitMessages(QWebSocket *socket);

// After open(): the read buffer grows with the frame that is arriving, and the socket is aborted
// when too much waits to be sent. This needs the TCP socket inside the WebSocket; without it, the
// read buffer is opened to its limit, since a frame larger than the buffer would never arrive.
void limitBuffers(QWebSocket *socket);

} // namespace outpost
