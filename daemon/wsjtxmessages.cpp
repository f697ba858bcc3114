#include "daemon/wsjtxmessages.h"

#include "base/buildconfig.h"
#include "daemon/spot.h"

#include <QDataStream>
#include <QDateTime>
#include <QIODevice>

namespace outpost
{

namespace
{

constexpr quint32 magic = 0xadbccbda;
constexpr quint32 notApplicable = 0xffffffff;
constexpr quint32 periodSeconds = 15;

enum class Type : quint32 {
    Heartbeat = 0,
    Status = 1,
    Decode = 2,
    Clear = 3,
    Close = 6,
    Replay = 7,
};

QDataStream::Version streamVersion(quint32 schema)
{
    return schema <= minWsjtxSchema ? QDataStream::Qt_5_2 : QDataStream::Qt_5_4;
}

// One message in the making.
class Datagram
{
public:
    Datagram(const WsjtxHeader &header, Type type) : stream(&bytes, QIODevice::WriteOnly)
    {
        stream.setVersion(streamVersion(header.schema));
        *this << magic << header.schema << static_cast<quint32>(type) << header.id;
    }

    template <typename Field>
    Datagram &operator<<(const Field &field)
    {
        stream << field;
        return *this;
    }
    Datagram &operator<<(const QString &text)
    {
        const QByteArray utf8 = text.toUtf8();
        stream.writeBytes(utf8.constData(), static_cast<uint>(utf8.size())); // never null
        return *this;
    }

    QByteArray bytes;

private:
    QDataStream stream;
};

// A text as `utf8`; absent when the datagram is shorter than its length says.
std::optional<QString> readText(QDataStream *stream)
{
    quint32 length = 0;
    *stream >> length;
    if (stream->status() != QDataStream::Ok) {
        return std::nullopt;
    }
    if (length == notApplicable) {
        return QString();
    }
    if (length > stream->device()->bytesAvailable()) {
        return std::nullopt;
    }
    return QString::fromUtf8(stream->device()->read(length));
}

// A Heartbeat without the field is that of a server that takes the lowest schema.
quint32 readMaxSchema(QDataStream *stream)
{
    quint32 schema = 0;
    *stream >> schema;
    return stream->status() == QDataStream::Ok ? schema : minWsjtxSchema;
}

} // namespace

QByteArray wsjtxHeartbeat(const WsjtxHeader &header)
{
    Datagram datagram(header, Type::Heartbeat);
    datagram << maxWsjtxSchema << QStringLiteral(OUTPOST_VERSION).mid(1)
             << QString(); // no revision
    return datagram.bytes;
}

QByteArray wsjtxStatus(const WsjtxHeader &header, const WsjtxStatus &status)
{
    const QString ft8 = QStringLiteral("FT8");
    const QString none;
    const quint32 noMarker = 0;
    Datagram datagram(header, Type::Status);
    datagram << static_cast<quint64>(status.dialHz) << ft8;
    datagram << none << none;          // DX call, report
    datagram << ft8 << false << false; // Tx mode, Tx enabled, transmitting
    datagram << status.decoding;
    datagram << noMarker << noMarker;   // Rx and Tx, audio Hz
    datagram << none << none << none;   // DE call, DE grid, DX grid
    datagram << false << none << false; // Tx watchdog, sub-mode, fast mode
    datagram << quint8{0};              // no special operation
    datagram << notApplicable;          // frequency tolerance
    datagram << periodSeconds << status.configuration;
    datagram << none; // Tx message
    return datagram.bytes;
}

QByteArray wsjtxDecode(const WsjtxHeader &header, const Spot &spot, bool isNew)
{
    const QTime time = QDateTime::fromMSecsSinceEpoch(spot.periodStartMs, Qt::UTC).time();
    Datagram datagram(header, Type::Decode);
    datagram << isNew << time << qint32{spot.snr} << spot.dt
             << static_cast<quint32>(qMax(0, spot.audioHz)) << QStringLiteral("~") << spot.message
             << spot.lowConfidence << false; // on the air
    return datagram.bytes;
}

QByteArray wsjtxClear(const WsjtxHeader &header)
{
    return Datagram(header, Type::Clear).bytes;
}

QByteArray wsjtxClose(const WsjtxHeader &header)
{
    return Datagram(header, Type::Close).bytes;
}

std::optional<WsjtxRequest> readWsjtxRequest(const QByteArray &datagram)
{
    QDataStream stream(datagram);
    quint32 start = 0;
    quint32 schema = 0;
    quint32 type = 0;
    stream >> start >> schema >> type;
    if (start != magic || schema > maxWsjtxSchema) {
        return std::nullopt;
    }
    const std::optional<QString> id = readText(&stream);
    if (!id) {
        return std::nullopt;
    }
    if (type == static_cast<quint32>(Type::Heartbeat)) {
        return WsjtxRequest{WsjtxRequest::Type::Heartbeat, *id, readMaxSchema(&stream)};
    }
    if (type == static_cast<quint32>(Type::Replay)) {
        return WsjtxRequest{WsjtxRequest::Type::Replay, *id, 0};
    }
    return std::nullopt;
}

} // namespace outpost
