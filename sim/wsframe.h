#pragma once

#include <QByteArray>
#include <QMap>

namespace outpost
{

// The server side of RFC 6455 as pure functions on bytes. They can send what an ordinary server
// class cannot: a close without a status code, half a frame, endless fragments.
namespace sim
{

enum class Parse {
    NeedMore, // nothing consumed; wait for more bytes
    Bad,      // protocol violation or limit exceeded; drop the connection
    Done,
};

enum Opcode : quint8 {
    Continuation = 0x0,
    Text = 0x1,
    Binary = 0x2,
    Close = 0x8,
    Ping = 0x9,
    Pong = 0xA,
};

constexpr int kLargestRequestBytes = 16 * 1024;
constexpr int kLargestClientPayload = 64 * 1024;

struct HttpRequest {
    Parse status = Parse::NeedMore;
    QByteArray method;
    QByteArray path;
    QMap<QByteArray, QByteArray> headers; // names in lower case
    int consumed = 0;                     // bytes
};
HttpRequest parseRequest(const QByteArray &buffer);

struct ClientFrame {
    Parse status = Parse::NeedMore;
    bool final = true;
    quint8 opcode = 0;
    QByteArray payload; // unmasked
    int consumed = 0;   // bytes
};
ClientFrame parseClientFrame(const QByteArray &buffer);

// The answer to Sec-WebSocket-Key (RFC 6455, 4.2.2).
QByteArray acceptKey(const QByteArray &key);
QByteArray upgradeReply(const QByteArray &key);
// A response with an empty body; `extraHeaders` are complete lines with CRLF.
QByteArray httpReply(const QByteArray &statusLine, const QByteArray &extraHeaders = {});

// Server frames are not masked. A header may announce more than is ever sent.
QByteArray frameHeader(Opcode opcode, quint64 payloadBytes, bool final = true);
QByteArray wsFrame(Opcode opcode, const QByteArray &payload, bool final = true);

} // namespace sim

} // namespace outpost
