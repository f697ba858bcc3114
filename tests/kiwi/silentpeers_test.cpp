// Receivers that keep a connection without ever sending sound. Each window gives up after all four
// endpoints and keeps no resources. The watchdog uses real time, so all windows wait at once, in
// one process.

#include "tests/fixture/aftermath.h"
#include "tests/fixture/memoryhome.h"
#include "tests/fixture/peerthread.h"
#include "tests/fixture/teststation.h"

#include <QtTest>

namespace outpost
{

class SilentPeersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyWindowGivesUpAndLeavesNothingBehind();
};

namespace
{
const QStringList silentBehaviours = {
    QStringLiteral("no-connect"),     QStringLiteral("badp-open"),
    QStringLiteral("down-open"),      QStringLiteral("busy-open"),
    QStringLiteral("no-answer"),      QStringLiteral("http-404"),
    QStringLiteral("http-307"),       QStringLiteral("http-503"),
    QStringLiteral("monitor"),        QStringLiteral("endless-headers"),
    QStringLiteral("open-silent"),    QStringLiteral("msg-only"),
    QStringLiteral("text-only"),      QStringLiteral("too-busy:0.1"),
    QStringLiteral("other-tags-only")};

// Peers that are not receivers: their first answer, and what they send for ever afterwards.
struct RawPeer {
    QByteArray first;
    QByteArray later;
};

QList<RawPeer> rawPeers()
{
    const QByteArray aMegabyte(1024 * 1024, 'x');
    return {
        {"HTTP/1.1 404 Not Found\r\n\r\n", aMegabyte},                // an endless body
        {"HTTP/1.1 101 Switching Protocols\r\nX: ", aMegabyte},       // an endless header line
        {"SSH-2.0-OpenSSH\r\n", ""},                                  // another protocol
        {upgradeReply().replace("%ACCEPT%", "d3Jvbmcga2V5"), "\x82"}, // the wrong key
        {upgradeReply(), QByteArray("\x89\x01p").repeated(10000)},    // nothing but pings
        {upgradeReply(), QByteArray("\x82\x03MSG", 5).repeated(10000)},
    };
}

// Uses the home of the first window, so it reads the profile written there.
std::unique_ptr<MainWindow> anotherWindow(const TestStation &station, int receiverPort)
{
    testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("127.0.0.1")},
                             {QStringLiteral("Port"), receiverPort},
                             {QStringLiteral("Jt9Path"), station.decoder.path()},
                             {QStringLiteral("BridgePort"), freePort()}});
    StationOptions options = testOptions();
    options.linkTimeouts = {2000, 2000};
    auto window = std::make_unique<MainWindow>(options);
    window->show();
    window->connectKiwi();
    return window;
}
} // namespace

void SilentPeersTest::initTestCase()
{
    adoptOrphans();
    PeerThread peers;
    TestStation station;
    station.connectTo(peers.addReceiver({QStringLiteral("all=open-silent")}));
    QTRY_VERIFY(station.trace.contains(QStringLiteral("Waiting for real SND data.")));
}

void SilentPeersTest::everyWindowGivesUpAndLeavesNothingBehind()
{
    auto peers = std::make_unique<PeerThread>();
    QList<int> ports;
    for (const QString &behaviour : silentBehaviours) {
        ports.append(peers->addReceiver({QStringLiteral("all=") + behaviour}));
    }
    for (const RawPeer &peer : rawPeers()) {
        ports.append(peers->addRawPeer(peer.first, peer.later));
    }
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>();
    std::vector<std::unique_ptr<MainWindow>> windows;
    for (const int port : ports) {
        windows.push_back(anotherWindow(*station, port));
    }
    const QString verdict = QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints.");
    QTRY_COMPARE_WITH_TIMEOUT(station->trace.count(verdict), ports.size(), 60000);
    for (const auto &window : windows) {
        QCOMPARE(window->kiwiStatusText(), QStringLiteral("Disconnected"));
        QVERIFY(summaryLine(*window).startsWith(QStringLiteral("Kiwi Disconnected | ")));
    }
    QVERIFY(!station->trace.contains(QStringLiteral("VERIFIED")));
    windows.clear();
    station.reset();
    QCOMPARE(aftermath.whatStayed(), QStringList());
    peers.reset(); // with everything still to be sent
    aftermath.print(qPrintable(QStringLiteral("%1 silent peers at once").arg(ports.size())));
    QVERIFY(aftermath.staysWithin(200 * 1024));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::SilentPeersTest)
#include "silentpeers_test.moc"
