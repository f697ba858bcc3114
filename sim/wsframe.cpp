#include "sim/wsframe.h"

#include <QCryptographicHash>
#include <QtEndian>

namespace outpost
{

namespace sim
{

HttpRequest parseRequest(const QByteArray &buffer)
{
    HttpRequest request;
    const int end = buffer.indexOf("\r\n\r\n");
    if (end < 0 || end > kLargestRequestBytes) {
        request.status = buffer.size() > kLargestRequestBytes ? Parse::Bad : Parse::NeedMore;
        return request;
    }
    request.consumed = end + 4;
    const QByteArray head = buffer.left(end + 2);
    const int firstLineEnd = head.indexOf("\r\n");
    const QList<QByteArray> words = head.left(firstLineEnd).split(' ');
    if (words.size() != 3 || !words.at(2).startsWith("HTTP/")) {
        request.status = Parse::Bad;
        return request;
    }
    request.method = words.at(0);
    request.path = words.at(1);
    for (const QByteArray &line : head.mid(firstLineEnd).split('\n')) {
        const int colon = line.indexOf(':');
        if (colon > 0) {
            request.headers.insert(line.left(colon).trimmed().toLower(),
                                   line.mid(colon + 1).trimmed());
        }
    }
    request.status = Parse::Done;
    return request;
}

ClientFrame parseClientFrame(const QByteArray &buffer)
{
    // Two bytes, then 0, 2 or 8 bytes of length, then the 4-byte mask.
    ClientFrame frame;
    if (buffer.size() < 2) {
        return frame;
    }
    const quint8 first = quint8(buffer.at(0));
    const quint8 second = quint8(buffer.at(1));
    const int shortLength = second & 0x7F;
    // Clients must mask; no client message here needs the 8-byte length.
    if (!(second & 0x80) || shortLength == 127 || (first & 0x70)) {
        frame.status = Parse::Bad;
        return frame;
    }
    const int maskAt = shortLength == 126 ? 4 : 2;
    if (buffer.size() < maskAt + 4) {
        return frame;
    }
    const int length =
        shortLength == 126 ? qFromBigEndian<quint16>(buffer.constData() + 2) : shortLength;
    if (buffer.size() < maskAt + 4 + length) {
        return frame;
    }
    frame.final = first & 0x80;
    frame.opcode = first & 0x0F;
    frame.payload = buffer.mid(maskAt + 4, length);
    for (int i = 0; i < length; ++i) {
        frame.payload[i] = char(frame.payload.at(i) ^ buffer.at(maskAt + i % 4));
    }
    frame.consumed = maskAt + 4 + length;
    frame.status = Parse::Done;
    return frame;
}

QByteArray acceptKey(const QByteArray &key)
{
    const QByteArray joined = key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
    return QCryptographicHash::hash(joined, QCryptographicHash::Sha1).toBase64();
}

QByteArray upgradeReply(const QByteArray &key)
{
    return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Accept: " +
           acceptKey(key) + "\r\n\r\n";
}

QByteArray httpReply(const QByteArray &statusLine, const QByteArray &extraHeaders)
{
    return "HTTP/1.1 " + statusLine + "\r\n" + extraHeaders +
           "Content-Length: 0\r\nConnection: close\r\n\r\n";
}

QByteArray frameHeader(Opcode opcode, quint64 payloadBytes, bool final)
{
    QByteArray header(1, char(opcode | (final ? 0x80 : 0)));
    if (payloadBytes < 126) {
        return header.append(char(payloadBytes));
    }
    const int lengthBytes = payloadBytes < 0x10000 ? 2 : 8;
    header.append(char(lengthBytes == 2 ? 126 : 127));
    for (int shift = 8 * (lengthBytes - 1); shift >= 0; shift -= 8) {
        header.append(char(payloadBytes >> shift & 0xFF));
    }
    return header;
}

QByteArray wsFrame(Opcode opcode, const QByteArray &payload, bool final)
{
    return frameHeader(opcode, quint64(payload.size()), final) + payload;
}

} // namespace sim

} // namespace outpost
