#include "display/bridgetexts.h"

#include <QtTest>

namespace outpost
{

namespace
{

BridgeState listeningBridge()
{
    BridgeState bridge;
    bridge.listening = true;
    bridge.port = 27777;
    bridge.clients = 2;
    return bridge;
}

} // namespace

class BridgeTextsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aStoppedBridgeShowsItsLastError_data();
    void aStoppedBridgeShowsItsLastError();
    void aListeningBridgeShowsPortClientsAndLastOutput();
    void beforeAnyOutputItIsNone();
    void whileListeningTheLastErrorIsNotShown();
    void theAttachmentBox();
    void theSummaryLine();
};

void BridgeTextsTest::initTestCase()
{
    qputenv("TZ", "IST-5:30"); // understood on every system; local time must not show
    QVERIFY(QDateTime::currentDateTime().offsetFromUtc() != 0);
}

void BridgeTextsTest::aStoppedBridgeShowsItsLastError_data()
{
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("shown");

    QTest::newRow("none") << QString() << QStringLiteral("None");
    QTest::newRow("blanks") << QStringLiteral(" \t") << QStringLiteral("None");
    QTest::newRow("trimmed") << QStringLiteral(" Port in use\n") << QStringLiteral("Port in use");
    QTest::newRow("placeholder-like") << QStringLiteral("%1 %2") << QStringLiteral("%1 %2");
}

void BridgeTextsTest::aStoppedBridgeShowsItsLastError()
{
    QFETCH(QString, error);
    QFETCH(QString, shown);
    BridgeState bridge;
    bridge.lastError = error;
    bridge.lastOutputMs = 1700000000000; // kept after a stop, but not shown
    QCOMPARE(bridgeStatusText(bridge), QStringLiteral("Bridge: Stopped\nLast error: ") + shown);
}

void BridgeTextsTest::aListeningBridgeShowsPortClientsAndLastOutput()
{
    BridgeState bridge = listeningBridge();
    const QDateTime output(QDate(2026, 1, 31), QTime(10, 15, 44, 999), Qt::UTC);
    bridge.lastOutputMs = output.toMSecsSinceEpoch();
    bridge.lastOutputCount = 7;
    QCOMPARE(bridgeStatusText(bridge),
             QStringLiteral("Bridge: Listening on 127.0.0.1:27777 — 2 client(s)\n"
                            "Last output: 10:15:44 UTC — 7 FT8 decodes sent"));
}

void BridgeTextsTest::beforeAnyOutputItIsNone()
{
    QCOMPARE(bridgeStatusText(listeningBridge()),
             QStringLiteral("Bridge: Listening on 127.0.0.1:27777 — 2 client(s)\n"
                            "Last output: None"));
}

void BridgeTextsTest::whileListeningTheLastErrorIsNotShown()
{
    BridgeState bridge = listeningBridge();
    bridge.lastError = QStringLiteral("Bridge failed to start");
    QVERIFY(!bridgeStatusText(bridge).contains(bridge.lastError));
}

void BridgeTextsTest::theAttachmentBox()
{
    QCOMPARE(bridgeAttachmentText(listeningBridge()),
             QStringLiteral("Listening on 127.0.0.1:27777\nConnected WSJT clients: 2\n"
                            "Ready handshake: PELQBRIDGE2|READY"));
    QCOMPARE(bridgeAttachmentText(BridgeState()),
             QStringLiteral("The local WSJT bridge is stopped."));
}

void BridgeTextsTest::theSummaryLine()
{
    BridgeState bridge = listeningBridge();
    QCOMPARE(bridgeSummaryText(bridge), QStringLiteral("Listening — 2 client(s)"));
    bridge.clients = 0;
    QCOMPARE(bridgeSummaryText(bridge), QStringLiteral("Listening — 0 client(s)"));
    QCOMPARE(bridgeSummaryText(BridgeState()), QStringLiteral("Stopped"));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::BridgeTextsTest)
#include "bridgetexts_test.moc"
