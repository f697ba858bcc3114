#pragma once

#include <QTcpSocket>
#include <QTest>

namespace outpost
{

// A client of the bridge, with everything it has received.
class BridgeClient
{
public:
    explicit BridgeClient(int port)
    {
        QObject::connect(&socket, &QTcpSocket::readyRead, &socket,
                         [this] { heard += socket.readAll(); });
        socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
    }

    bool waitForGreeting() const
    {
        return QTest::qWaitFor([this] { return heard == readyLine(); });
    }
    static QByteArray readyLine() { return "PELQBRIDGE2|READY\n"; }

    QTcpSocket socket;
    QByteArray heard;
};

// A client that reads one byte and then nothing more.
class LazyClient
{
public:
    explicit LazyClient(int port)
    {
        socket.setReadBufferSize(1);
        socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
        isConnected = socket.waitForConnected();
    }

    QTcpSocket socket;
    bool isConnected = false;
};

// The bridge's line for these fields, built without the program's code.
inline QByteArray decodeLine(const QByteArrayList &fields)
{
    return "PELQOUTPOST2|" + fields.join('\t').toBase64() + '\n';
}

} // namespace outpost
