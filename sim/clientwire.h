#pragma once

#include "sim/wsframe.h"

#include <QString>

class QTcpSocket;

namespace outpost
{

namespace sim
{

// The receiver's end of one client's TCP connection. Does not own the socket. Nothing is written to
// a client that has gone, and one that never reads is dropped.
class ClientWire
{
public:
    explicit ClientWire(QTcpSocket *socket);

    QString peerAddress() const;
    qint64 waitingBytes() const; // that the client has not taken yet
    QByteArray read();

    void send(const QByteArray &bytes);
    void sendBinary(const QByteArray &message) { send(wsFrame(Binary, message)); }
    void sendText(const QByteArray &message) { send(wsFrame(Text, message)); }

    void hangUp(); // once everything is sent
    void drop();   // at once
    void reset();  // at once, with a TCP reset

private:
    QTcpSocket *m_socket;
};

} // namespace sim

} // namespace outpost
