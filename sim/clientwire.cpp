#include "sim/clientwire.h"

#include "sim/tcpreset.h"

#include <QHostAddress>
#include <QTcpSocket>

namespace outpost
{

namespace sim
{

namespace
{
constexpr int kReadBufferBytes = 128 * 1024;
constexpr int kLargestWriteQueueBytes = 16 << 20;
} // namespace

ClientWire::ClientWire(QTcpSocket *socket) : m_socket(socket)
{
    m_socket->setReadBufferSize(kReadBufferBytes);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
}

QString ClientWire::peerAddress() const
{
    return m_socket->peerAddress().toString();
}

qint64 ClientWire::waitingBytes() const
{
    return m_socket->bytesToWrite();
}

QByteArray ClientWire::read()
{
    return m_socket->readAll();
}

void ClientWire::send(const QByteArray &bytes)
{
    if (m_socket->state() == QAbstractSocket::UnconnectedState) {
        return;
    }
    if (m_socket->bytesToWrite() > kLargestWriteQueueBytes) {
        return drop();
    }
    m_socket->write(bytes);
}

void ClientWire::hangUp()
{
    m_socket->disconnectFromHost();
}

void ClientWire::drop()
{
    m_socket->abort();
}

void ClientWire::reset()
{
    resetOnClose(m_socket->socketDescriptor());
    drop();
}

} // namespace sim

} // namespace outpost
