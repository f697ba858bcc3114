#include "bench/fuzz/fuzzing.h"
#include "daemon/wsjtxmessages.h"

#include <QtEndian>

namespace outpost
{

namespace
{

// Taken apart by hand: magic, schema, type, length of the id, id, and what follows it.
quint32 wordAt(const QByteArray &bytes, int position)
{
    return qFromBigEndian<quint32>(bytes.constData() + position);
}

std::optional<WsjtxRequest> referenceRead(const QByteArray &bytes)
{
    if (bytes.size() < 16 || wordAt(bytes, 0) != 0xadbccbda || wordAt(bytes, 4) > 3) {
        return std::nullopt;
    }
    const quint32 type = wordAt(bytes, 8);
    const quint32 length = wordAt(bytes, 12) == 0xffffffff ? 0 : wordAt(bytes, 12);
    if ((type != 0 && type != 7) || length > static_cast<quint32>(bytes.size() - 16)) {
        return std::nullopt;
    }
    const int end = 16 + static_cast<int>(length);
    WsjtxRequest request;
    request.id = QString::fromUtf8(bytes.mid(16, static_cast<int>(length)));
    if (type == 7) {
        request.type = WsjtxRequest::Type::Replay;
    } else {
        request.maxSchema = bytes.size() < end + 4 ? 2 : wordAt(bytes, end);
    }
    return request;
}

void requireSame(const std::optional<WsjtxRequest> &request,
                 const std::optional<WsjtxRequest> &expected)
{
    require(request.has_value() == expected.has_value(), "requests are read, all else is not");
    if (!request) {
        return;
    }
    require(request->type == expected->type, "the type is the third word");
    require(request->id == expected->id, "the id is as long as it says");
    require(request->maxSchema == expected->maxSchema, "the schema follows the id");
}

} // namespace

// Input: a datagram.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray datagram = FuzzInput(data, size).rest();
    const std::optional<WsjtxRequest> request = readWsjtxRequest(datagram);
    requireSame(request, referenceRead(datagram));
    if (request) {
        require(!readWsjtxRequest(wsjtxClose({request->id, 2})), "a Close is no request");
    }
    return 0;
}

} // namespace outpost
