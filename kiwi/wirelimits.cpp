#include "kiwi/wirelimits.h"

#include "base/logline.h"

#include <QTcpSocket>
#include <QWebSocket>

namespace outpost
{

namespace
{
// A full read buffer means that a larger frame is arriving.
void fitReadBuffer(QWebSocket *socket, qint64 waitingBytes)
{
    if (waitingBytes >= socket->readBufferSize()) {
        socket->setReadBufferSize(qMin(2 * waitingBytes, maxBufferBytes));
    } else if (waitingBytes < usualBufferBytes) {
        socket->setReadBufferSize(usualBufferBytes);
    }
}
} // namespace

void limitMessages(QWebSocket *socket)
{
    socket->setMaxAllowedIncomingFrameSize(maxMessageBytes);
    socket->setMaxAllowedIncomingMessageSize(maxMessageBytes);
    socket->setReadBufferSize(usualBufferBytes);
}

// QWebSocket answers pings without a signal; bytes arriving on the TCP socket are the only sign of
// them.
void limitBuffers(QWebSocket *socket)
{
    if (socket->state() == QAbstractSocket::UnconnectedState) {
        return; // opening has already failed
    }
    auto *wire = socket->findChild<QTcpSocket *>();
    if (wire == nullptr) {
        socket->setReadBufferSize(maxBufferBytes);
        logLine(
            QStringLiteral("The link's TCP socket was not found: its buffers are not watched."));
        return;
    }
    QObject::connect(wire, &QTcpSocket::readyRead, socket, [socket, wire] {
        if (socket->bytesToWrite() > maxUnsentBytes) {
            socket->abort();
        } else {
            fitReadBuffer(socket, wire->bytesAvailable());
        }
    });
}

} // namespace outpost
