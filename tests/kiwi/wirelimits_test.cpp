#include "kiwi/wirelimits.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/puppetreceiver.h"

#include <QTcpSocket>
#include <QWebSocket>
#include <QtTest>

namespace outpost
{

class WireLimitsTest : public QObject
{
    Q_OBJECT

private slots:
    void messagesAndTheReadBufferAreLimitedBeforeOpening();
    void aMessageLargerThanTheUsualBufferArrives_data();
    void aMessageLargerThanTheUsualBufferArrives();
    void aSocketThatCouldNotOpenIsNotSpokenOf();
};

namespace
{
const QString notFound =
    QStringLiteral("The link's TCP socket was not found: its buffers are not watched.");

QUrl urlOf(const PuppetReceiver &receiver)
{
    return QUrl(QStringLiteral("ws://127.0.0.1:%1/kiwi/0/SND").arg(receiver.port()));
}
} // namespace

void WireLimitsTest::messagesAndTheReadBufferAreLimitedBeforeOpening()
{
    QWebSocket socket;
    limitMessages(&socket);
    QCOMPARE(socket.maxAllowedIncomingFrameSize(), maxMessageBytes);
    QCOMPARE(socket.maxAllowedIncomingMessageSize(), maxMessageBytes);
    QCOMPARE(socket.readBufferSize(), usualBufferBytes);
}

void WireLimitsTest::aMessageLargerThanTheUsualBufferArrives_data()
{
    QTest::addColumn<bool>("hidden");
    QTest::newRow("buffers watched") << false;
    QTest::newRow("TCP socket not found") << true;
}

void WireLimitsTest::aMessageLargerThanTheUsualBufferArrives()
{
    QFETCH(bool, hidden);
    const PuppetReceiver receiver;
    const LogTrace trace;
    QWebSocket socket;
    QByteArray arrived;
    connect(&socket, &QWebSocket::binaryMessageReceived, this,
            [&](const QByteArray &message) { arrived = message; });
    limitMessages(&socket);
    socket.open(urlOf(receiver));
    auto *wire = socket.findChild<QTcpSocket *>();
    wire->setParent(hidden ? nullptr : &socket);
    limitBuffers(&socket);
    wire->setParent(&socket);
    QCOMPARE(trace.lines(), hidden ? QStringList{notFound} : QStringList());
    QCOMPARE(socket.readBufferSize(), hidden ? maxBufferBytes : usualBufferBytes);

    QTRY_COMPARE(receiver.paths().size(), 1);
    const QByteArray message(300 * 1024, 'x');
    receiver.sendBinary(message);
    QTRY_COMPARE(arrived.size(), message.size());
}

void WireLimitsTest::aSocketThatCouldNotOpenIsNotSpokenOf()
{
    const LogTrace trace;
    QWebSocket socket;
    limitMessages(&socket);
    socket.open(QUrl(QStringLiteral("ws://no host:8073/kiwi/0/SND")));
    limitBuffers(&socket);
    QCOMPARE(trace.lines(), QStringList());
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::WireLimitsTest)
#include "wirelimits_test.moc"
