// Many clients at the bridge: normal ones, some that do not read, some that flood. Every normal
// client receives every decode, and no resources are left behind.

#include "decode/ft8decode.h"
#include "tests/fixture/aftermath.h"
#include "tests/fixture/teststation.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>
#include <sys/resource.h>

namespace outpost
{

class BridgeCrowdTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aThousandClientsHearEveryDecode();
    void aHundredThatNeverReadAreDropped();
    void aHundredThatTalkWithoutEndDisturbNobody();
    void clientsThatComeAndGoLeaveNothing();
    void aTakenPortIsFreeAgainLater();
};

namespace
{
constexpr int readyBytes = 18;

using Crowd = std::vector<std::unique_ptr<QTcpSocket>>;

// Connects in groups that fit the listener's queue. The system retries a connection that finds it
// full only seconds later.
Crowd comeIn(const TestStation &station, int clients)
{
    Crowd crowd;
    while (static_cast<int>(crowd.size()) < clients) {
        crowd.push_back(std::make_unique<QTcpSocket>());
        QTcpSocket *client = crowd.back().get();
        client->connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station.bridgePort));
        const auto greeted = [client] { return client->bytesAvailable() >= readyBytes; };
        if (crowd.size() % 25 == 0 && !QTest::qWaitFor(greeted, 10000)) {
            qFatal("client %d is not greeted", static_cast<int>(crowd.size()));
        }
    }
    return crowd;
}

bool allGreeted(const Crowd &crowd)
{
    return std::all_of(crowd.begin(), crowd.end(),
                       [](const auto &client) { return client->bytesAvailable() >= readyBytes; });
}

QStringList decodes(int period, int count, const QString &message = QStringLiteral("CQ K1ABC FN42"))
{
    QStringList lines;
    for (int i = 0; i < count; ++i) {
        lines.append(QStringLiteral("%1 -12 0.3 %2 ~ %3")
                         .arg(period, 6, 10, QLatin1Char('0'))
                         .arg(i)
                         .arg(message));
    }
    return lines;
}

void judge(Aftermath &aftermath, qint64 maxExtraKb)
{
    QCOMPARE(aftermath.whatStayed(), QStringList());
    aftermath.print(QTest::currentTestFunction());
    QVERIFY(aftermath.staysWithin(maxExtraKb));
}
} // namespace

void BridgeCrowdTest::initTestCase()
{
    // This process has both ends of each connection.
    const rlimit enough = {4096, 4096};
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &enough), 0);
    const TestStation station;
    const Crowd crowd = comeIn(station, 1);
    QTRY_VERIFY(allGreeted(crowd));
}

void BridgeCrowdTest::aThousandClientsHearEveryDecode()
{
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    Crowd crowd = comeIn(*station, 1000);
    QTRY_VERIFY_WITH_TIMEOUT(allGreeted(crowd), 30000);
    QElapsedTimer timer;
    timer.start();
    station->window->onDecodesDelivered(QStringLiteral("14:23:15"),
                                        parseDecodeLines(decodes(142315, 40)));
    std::printf("FIGURE 40 decodes to 1000 clients: %lld ms\n",
                static_cast<long long>(timer.elapsed()));
    const auto linesOf = [](const std::unique_ptr<QTcpSocket> &client) {
        return client->peek(100000).count('\n');
    };
    QTRY_VERIFY_WITH_TIMEOUT(std::all_of(crowd.begin(), crowd.end(),
                                         [&](const auto &client) { return linesOf(client) == 41; }),
                             30000);
    crowd.clear();
    QTRY_COMPARE_WITH_TIMEOUT(station->trace.count(QStringLiteral(
                                  "WSJT bridge client disconnected; 0 client(s) remain.")),
                              1, 30000);
    station.reset();
    judge(aftermath, 100 * 1024);
}

void BridgeCrowdTest::aHundredThatNeverReadAreDropped()
{
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    Crowd crowd = comeIn(*station, 100);
    QTRY_VERIFY(allGreeted(crowd));
    for (const auto &client : crowd) {
        client->setReadBufferSize(1);
    }
    const QString longMessage(500, QLatin1Char('X'));
    const QString gone = QStringLiteral("WSJT bridge client disconnected; 0 client(s) remain.");
    int period = 0;
    while (station->trace.count(gone) == 0 && period < 1000) {
        ++period;
        station->clock.set(station->clock.now() + 91000);
        station->window->onDecodesDelivered(QString(),
                                            parseDecodeLines(decodes(period, 100, longMessage)));
        QCoreApplication::processEvents();
    }
    QCOMPARE(station->trace.count(gone), 1);
    crowd.clear();
    station.reset();
    judge(aftermath, 700 * 1024); // 4 MiB of each
}

void BridgeCrowdTest::aHundredThatTalkWithoutEndDisturbNobody()
{
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    Crowd crowd = comeIn(*station, 100);
    Crowd listener = comeIn(*station, 1);
    QTRY_VERIFY(allGreeted(crowd) && allGreeted(listener));
    qint64 told = 0;
    for (const auto &client : crowd) {
        const auto talk = [socket = client.get(), &told] {
            if (socket->bytesToWrite() < 65536) {
                told += socket->write(QByteArray(65536, 'x'));
            }
        };
        connect(client.get(), &QTcpSocket::bytesWritten, client.get(), talk);
        talk();
    }
    QTRY_VERIFY_WITH_TIMEOUT(told > 200 * 1024 * 1024, 30000);
    station->window->onDecodesDelivered(QStringLiteral("14:23:15"),
                                        parseDecodeLines(decodes(142315, 5)));
    QTRY_COMPARE(listener.front()->peek(10000).count('\n'), 6);
    crowd.clear();
    listener.clear();
    station.reset();
    judge(aftermath, 100 * 1024);
}

void BridgeCrowdTest::clientsThatComeAndGoLeaveNothing()
{
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    const Footprint started = footprintNow(station->window.get());
    for (int round = 0; round < 20; ++round) {
        Crowd crowd = comeIn(*station, 25);
        QTRY_VERIFY(allGreeted(crowd));
        crowd.clear();
        QTRY_COMPARE(footprintNow(station->window.get()).objects, started.objects);
    }
    station.reset();
    judge(aftermath, 100 * 1024);
}

void BridgeCrowdTest::aTakenPortIsFreeAgainLater()
{
    TestStation station;
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Bridge"),
                             QStringLiteral("Stop Local WSJT Bridge")});
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost, static_cast<quint16>(station.bridgePort)));
    const QStringList start = {QStringLiteral("Settings"), QStringLiteral("Bridge"),
                               QStringLiteral("Start Local WSJT Bridge")};
    choose(*station.window, start);
    QVERIFY(station.trace.contains(QStringLiteral("Local WSJT bridge failed on 127.0.0.1:")));
    other.close();
    choose(*station.window, start);
    const Crowd crowd = comeIn(station, 1);
    QTRY_VERIFY(allGreeted(crowd));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::BridgeCrowdTest)
#include "bridgecrowd_test.moc"
