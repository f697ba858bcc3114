#pragma once

#include <QDataStream>
#include <QNetworkDatagram>
#include <QNetworkInterface>
#include <QTime>
#include <QUdpSocket>
#include <QVector>
#include <algorithm>

namespace outpost
{

// A datagram as a server reads it; the fields depend on its type.
struct WsjtxHeard {
    quint32 schema = 0;
    quint32 type = 99;
    QString id;
    int senderPort = 0;

    quint64 dialHz = 0;    // Status
    bool decoding = false; // Status
    bool isNew = false;    // Decode, as all below
    QTime time;
    qint32 snr = 0;
    double dt = 0;
    quint32 audioHz = 0;
    QString message;
};

// A server of logging and map programs on 127.0.0.1: keeps what it hears, answers when told.
class TestWsjtxServer
{
public:
    enum Type : quint32 { Heartbeat = 0, Status = 1, Decode = 2, Clear = 3, Close = 6, Replay = 7 };

    explicit TestWsjtxServer(int port = 0)
    {
        socket.bind(QHostAddress::LocalHost, static_cast<quint16>(port));
        listen();
    }
    // Of a group, through the loopback interface.
    TestWsjtxServer(const QHostAddress &group, int port)
    {
        socket.bind(QHostAddress::AnyIPv4, static_cast<quint16>(port),
                    QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint);
        const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
        for (const QNetworkInterface &each : interfaces) {
            if (each.flags().testFlag(QNetworkInterface::IsLoopBack)) {
                socket.joinMulticastGroup(group, each);
            }
        }
        listen();
    }

    int port() const { return socket.localPort(); }
    QVector<WsjtxHeard> heard() const { return all; }
    QVector<WsjtxHeard> heard(Type type) const
    {
        QVector<WsjtxHeard> some;
        std::copy_if(all.begin(), all.end(), std::back_inserter(some),
                     [type](const WsjtxHeard &each) { return each.type == type; });
        return some;
    }
    QStringList messages(bool areNew) const
    {
        QStringList found;
        for (const WsjtxHeard &each : heard(Decode)) {
            if (each.isNew == areNew) {
                found.append(each.message);
            }
        }
        return found;
    }
    void clear() { all.clear(); }

    void say(int toPort, const QByteArray &datagram)
    {
        socket.writeDatagram(datagram, QHostAddress::LocalHost, static_cast<quint16>(toPort));
    }
    void sayHeartbeat(int toPort, const QString &id, quint32 maxSchema)
    {
        say(toPort, message(Heartbeat, id) + bigEndian(maxSchema));
    }
    void askForReplay(int toPort, const QString &id) { say(toPort, message(Replay, id)); }

    static QByteArray bigEndian(quint32 value)
    {
        QByteArray bytes;
        QDataStream(&bytes, QIODevice::WriteOnly) << value;
        return bytes;
    }
    static QByteArray message(Type type, const QString &id)
    {
        const QByteArray utf8 = id.toUtf8();
        return bigEndian(0xadbccbda) + bigEndian(2) + bigEndian(type) +
               bigEndian(static_cast<quint32>(utf8.size())) + utf8;
    }

private:
    void listen()
    {
        QObject::connect(&socket, &QUdpSocket::readyRead, &socket, [this] {
            while (socket.hasPendingDatagrams()) {
                all.append(read(socket.receiveDatagram()));
            }
        });
    }
    static WsjtxHeard read(const QNetworkDatagram &datagram)
    {
        QDataStream stream(datagram.data());
        WsjtxHeard heard;
        heard.senderPort = datagram.senderPort();
        quint32 magic = 0;
        QByteArray text;
        stream >> magic >> heard.schema >> heard.type >> text;
        heard.id = QString::fromUtf8(text);
        if (heard.type == Status) {
            bool flag = false;
            stream >> heard.dialHz >> text >> text >> text >> text >> flag >> flag >>
                heard.decoding;
        } else if (heard.type == Decode) {
            stream >> heard.isNew >> heard.time >> heard.snr >> heard.dt >> heard.audioHz >> text;
            stream >> text;
            heard.message = QString::fromUtf8(text);
        }
        return heard;
    }

    QUdpSocket socket;
    QVector<WsjtxHeard> all;
};

} // namespace outpost
