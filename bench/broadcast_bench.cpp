// Sends 100 decodes to the bridge's clients; the reference only writes the same bytes to sockets.

#include "bench/compare.h"
#include "bench/windowbenches.h"
#include "decode/ft8decode.h"
#include "display/wsjtbridge.h"
#include "fixture/freeport.h"

#include <QCoreApplication>
#include <QTcpSocket>
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace outpost
{

namespace
{
constexpr int decodes = 100;
const QString periodLabel = QStringLiteral("10:15:30");

int connectTo(int port)
{
    const int client = ::socket(AF_INET, SOCK_STREAM, 0);
    const int roomBytes = 1 << 20;
    ::setsockopt(client, SOL_SOCKET, SO_RCVBUF, &roomBytes, sizeof(roomBytes));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<quint16>(port));
    if (::connect(client, reinterpret_cast<sockaddr *>(&address), sizeof(address)) != 0) {
        qFatal("no connection to the bridge");
    }
    return client;
}

void takeBytes(int client, qint64 bytes)
{
    char buffer[65536];
    while (bytes > 0) {
        const ssize_t got = ::recv(client, buffer, sizeof(buffer), 0);
        if (got <= 0) {
            qFatal("a bridge client was dropped");
        }
        bytes -= got;
    }
}

QVector<QByteArray> bridgeLines(const QVector<Ft8Decode> &parsed)
{
    QVector<QByteArray> sent;
    for (const BridgeDecode &decode : bridgeDecodes(periodLabel, parsed)) {
        sent.append(bridgeLine(decode));
    }
    return sent;
}

class Clients
{
public:
    Clients(const WsjtBridge &bridge, int port, int count);
    ~Clients();
    void takeAll(qint64 bytesEach) const;
    QVector<int> serverSide; // descriptors

private:
    QVector<int> clients;
};

Clients::Clients(const WsjtBridge &bridge, int port, int count)
{
    while (clients.size() < count) {
        clients.append(connectTo(port));
        while (bridge.findChildren<QTcpSocket *>().size() < clients.size()) {
            QCoreApplication::processEvents();
        }
    }
    for (const QTcpSocket *socket : bridge.findChildren<QTcpSocket *>()) {
        serverSide.append(static_cast<int>(socket->socketDescriptor()));
    }
    takeAll(bridgeReadyLine().size());
}

Clients::~Clients()
{
    for (const int client : clients) {
        ::close(client);
    }
}

void Clients::takeAll(qint64 bytesEach) const
{
    for (const int client : clients) {
        takeBytes(client, bytesEach);
    }
}

void broadcast(benchmark::State &state)
{
    const int port = freePort();
    qint64 nowMs = 0;
    WsjtBridge bridge([port] { return port; }, {[](int) {}, [] {}}, [&nowMs] { return nowMs; });
    bridge.start();
    const Clients clients(bridge, port, static_cast<int>(state.range(0)));
    // Parsed once, for all who take the decodes.
    const QVector<Ft8Decode> parsed = parseDecodeLines(benchLines(decodes));
    const QVector<QByteArray> bytes = bridgeLines(parsed);
    qint64 bytesEach = 0;
    for (const QByteArray &line : bytes) {
        bytesEach += line.size();
    }

    bool sent = false;
    const auto prepare = [&] {
        if (sent) {
            clients.takeAll(bytesEach);
        }
        sent = true;
        nowMs += 2 * RecentDecodeKeys::keepMs;
        QCoreApplication::processEvents();
    };
    const auto own = [&] { bridge.broadcast(periodLabel, parsed); };
    const auto reference = [&] {
        for (const QByteArray &line : bytes) {
            for (const int client : clients.serverSide) {
                if (::send(client, line.constData(), static_cast<size_t>(line.size()), 0) < 0) {
                    qFatal("a bare write failed");
                }
            }
        }
    };
    compare(state, prepare, own, reference);
    clients.takeAll(bytesEach);
}
} // namespace

void registerBroadcastBench(int rounds)
{
    auto *bench = benchmark::RegisterBenchmark("broadcast", broadcast);
    for (const int clients : {1, 10, 100, 1000}) {
        bench->Arg(clients);
    }
    bench->UseManualTime()->Iterations(rounds);
}

} // namespace outpost
