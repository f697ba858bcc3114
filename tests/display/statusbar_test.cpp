#include "bridgeclient.h"
#include "decode/ft8decode.h"
#include "displaystation.h"
#include "sim/kiwisim.h"
#include "tests/fixture/operator.h"

#include <QtTest>
#include <QtWidgets>

namespace outpost
{

class StatusBarTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aBridgeWithoutClientsShowsAsDisconnected();
    void theBridgeIsConnectedWhileAClientIsAttached();
    void stoppingTheBridgeShowsAtOnce();
    void theReceiverIsConnectedWhileItsSoundArrives();
    void everyBatchShowsTheSessionsDecodes();
    void aSessionsStartAndEndShowItsDecodes();

private:
    std::unique_ptr<DisplayStation> station;

    QString summary() const { return summaryLine(**station); }
    void markSummary() const
    {
        (*station)->statusBar()->findChild<QLabel *>()->setText(QStringLiteral("not refreshed"));
    }
};

namespace
{

const QString nothingConnected =
    QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0");
const QString clientAttached = QStringLiteral("Kiwi Disconnected | Bridge Connected | TDecodes 0");

} // namespace

void StatusBarTest::init()
{
    station = std::make_unique<DisplayStation>();
}

void StatusBarTest::cleanup()
{
    station.reset();
}

void StatusBarTest::aBridgeWithoutClientsShowsAsDisconnected()
{
    QTcpSocket probe;
    probe.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station->bridgePort));
    QVERIFY(probe.waitForConnected()); // the bridge listens, but has not accepted the client yet
    QCOMPARE(summary(), nothingConnected);
    QVERIFY((*station)->statusBar()->currentMessage().isEmpty());
}

void StatusBarTest::theBridgeIsConnectedWhileAClientIsAttached()
{
    BridgeClient first(station->bridgePort);
    QTRY_COMPARE(summary(), clientAttached);
    BridgeClient second(station->bridgePort);
    QVERIFY(first.waitForGreeting() && second.waitForGreeting());
    markSummary();
    first.socket.close();
    QTRY_COMPARE(summary(), clientAttached);
    second.socket.close();
    QTRY_COMPARE(summary(), nothingConnected);
}

void StatusBarTest::stoppingTheBridgeShowsAtOnce()
{
    const BridgeClient client(station->bridgePort);
    QTRY_COMPARE(summary(), clientAttached);
    choose(**station, {QStringLiteral("Settings"), QStringLiteral("Bridge"),
                       QStringLiteral("Stop Local WSJT Bridge")});
    QCOMPARE(summary(), nothingConnected);
}

void StatusBarTest::theReceiverIsConnectedWhileItsSoundArrives()
{
    KiwiSim receiver;
    QString error;
    QVERIFY2(receiver.listen(SimConfig(), &error), qPrintable(error));
    QJsonObject profile = station->profile(station->bridgePort);
    profile.insert(QStringLiteral("Host"), QStringLiteral("127.0.0.1"));
    profile.insert(QStringLiteral("Port"), receiver.port());
    testHome().writeProfile(profile);
    QVERIFY((*station)->profileStore().loadProfile(profileFile()).profile);
    (*station)->connectKiwi();
    QCOMPARE(summary(), nothingConnected);
    QTRY_COMPARE_WITH_TIMEOUT(
        summary(), QStringLiteral("Kiwi Connected | Bridge Disconnected | TDecodes 0"), 15000);
    choose(**station, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    QCOMPARE(summary(), nothingConnected);
}

void StatusBarTest::everyBatchShowsTheSessionsDecodes()
{
    (*station)->startStatusSession();
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(7)));
    QVERIFY(summary().endsWith(QStringLiteral(" | TDecodes 7")));
    (*station)->appendDecodes(QStringLiteral("10:15:45"), parseDecodeLines(jt9Lines(30)));
    QVERIFY(summary().endsWith(QStringLiteral(" | TDecodes 37")));
    markSummary();
    (*station)->appendDecodes(QStringLiteral("10:16:00"), {});
    QVERIFY(summary().endsWith(QStringLiteral(" | TDecodes 67"))); // the latest period again
}

void StatusBarTest::aSessionsStartAndEndShowItsDecodes()
{
    markSummary();
    (*station)->startStatusSession();
    QCOMPARE(summary(), nothingConnected);
    (*station)->addSessionDecodes(1234567);
    (*station)->appendDecodes(QStringLiteral("10:15:30"), {});
    QVERIFY(summary().endsWith(QStringLiteral(" | TDecodes 1234567")));
    (*station)->finishStatusSession();
    QCOMPARE(summary(), nothingConnected);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StatusBarTest)
#include "statusbar_test.moc"
