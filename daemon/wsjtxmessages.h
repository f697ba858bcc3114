#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <optional>

namespace outpost
{

struct Spot;

// The UDP messages that logging, map and alert programs understand. Each is one datagram, a
// big-endian QDataStream:
//   quint32 magic 0xadbccbda, quint32 schema, quint32 type, utf8 id, then the fields
// utf8 is a QByteArray: quint32 length and the bytes; length 0xffffffff is null.

// The schema tells the version of QDataStream: 2 is Qt_5_2, 3 is Qt_5_4. Every server takes 2.
constexpr quint32 minWsjtxSchema = 2;
constexpr quint32 maxWsjtxSchema = 3;

// Of a sender and the server that its messages go to.
struct WsjtxHeader {
    QString id;
    quint32 schema = minWsjtxSchema;
};

// What a station that only receives has to say.
struct WsjtxStatus {
    qint64 dialHz = 0;
    bool decoding = false;
    QString configuration; // name of the receiver
};

QByteArray wsjtxHeartbeat(const WsjtxHeader &header);
QByteArray wsjtxStatus(const WsjtxHeader &header, const WsjtxStatus &status);
QByteArray wsjtxDecode(const WsjtxHeader &header, const Spot &spot, bool isNew);
QByteArray wsjtxClear(const WsjtxHeader &header);
QByteArray wsjtxClose(const WsjtxHeader &header);

// What a server sends.
struct WsjtxRequest {
    enum class Type { Heartbeat, Replay };

    Type type = Type::Heartbeat;
    QString id;            // the sender that is meant
    quint32 maxSchema = 0; // of a Heartbeat: the highest schema that the server takes
};

// Absent for everything that is nothing to a station that only receives, and for noise. Bytes after
// the known fields do not matter.
std::optional<WsjtxRequest> readWsjtxRequest(const QByteArray &datagram);

} // namespace outpost
