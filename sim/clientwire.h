#pragma once

#include "sim/wsframe.h"

#include <QString>

class QTcpSocket;

namespace outpost
{

namespace sim
{

// The receiver's side of one client's TCP connection. Does not own the socket. Writes to a
// disconnected client are ignored; a client that never reads is dropped.
class ClientWire
{
public:
    explicit ClientWire(QTcpSocket *socket);

    QString peerAddress() const;
    qint64 waitingBytes() const; // not yet sent to the client
    QByteArray read();

    void send(const QByteArray &bytes);
    void sendBinary(const QByteArray &message) { send(wsFrame(Binary, message)); }
    void sendText(const QByteArray &message) { send(wsFrame(Text, message)); }

    void hangUp(); // after everything is sent
    void drop();   // immediately
    void reset();  // immediately, with a TCP reset

private:
    QTcpSocket *m_socket;
};

} // namespace sim

} // namespace outpost
