// Misbehaving clients, and a bridge that runs out of descriptors.

#include "bridgeclient.h"
#include "display/acceptretry.h"
#include "jt9lines.h"
#include "lonebridge.h"
#include "sim/tcpreset.h"
#include "tests/fixture/logtrace.h"

#include <QtNetwork>
#include <QtTest>

#ifndef Q_OS_WIN
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace outpost
{

#ifndef Q_OS_WIN
// For its lifetime, this process cannot open any more descriptors.
class DescriptorShortage
{
public:
    DescriptorShortage()
    {
        getrlimit(RLIMIT_NOFILE, &before);
        // The event loop cannot poll more descriptors than the limit.
        for (int i = 0; i < 300; ++i) {
            fillers.append(dup(STDERR_FILENO));
        }
        rlimit low = before;
        low.rlim_cur = static_cast<rlim_t>(fillers.last()) + 1;
        setrlimit(RLIMIT_NOFILE, &low);
        for (int next = dup(STDERR_FILENO); next >= 0; next = dup(STDERR_FILENO)) {
            fillers.append(next);
        }
    }
    ~DescriptorShortage()
    {
        setrlimit(RLIMIT_NOFILE, &before);
        for (const int filler : qAsConst(fillers)) {
            close(filler);
        }
    }
    DescriptorShortage(const DescriptorShortage &) = delete;
    DescriptorShortage &operator=(const DescriptorShortage &) = delete;

private:
    rlimit before{};
    QVector<int> fillers;
};

namespace
{

// Whether a client is in the listener's queue.
bool somebodyWaits(int listener)
{
    pollfd queue{listener, POLLIN, 0};
    return poll(&queue, 1, 0) == 1;
}

} // namespace
#endif

namespace
{

const QString oneRemains = QStringLiteral("WSJT bridge client disconnected; 1 client(s) remain.");

} // namespace

class BridgeClientsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theStationSendsWithoutDelay();
    void aClientThatNeverReadsIsDroppedAtABound();
    void whatDroppedTheOnlyClientIsTriedAgain();
    void aClientThatReadsSlowlyIsKept();
    void whatClientsSendIsThrownAway();
    void aClientThatVanishesIsGone();
    void aClientThatClosesIsGone();
    void aClientThatIsGoneBeforeItIsGreeted();
    void aClientThatResetsBeforeItIsAccepted();
    void aClientThatIsFoundGoneCostsTheOthersNothing();
    void theGreetingLeavesAtOnce();
    void aDecodeLeavesAtOnce();
    void stoppingEndsTheConnectionThenClosesTheSocket();
#ifndef Q_OS_WIN // descriptors have no such limit there
    void clientsComeInAgainAfterAShortageOfDescriptors();
    void clientsComeInAfterAShortageFromTheStart();
    void anEmptyQueueIsNoErrorAfterAShortage();
    void aClientThatComesAfterTheLookAtTheQueueIsNoError();
#endif

private:
    std::unique_ptr<LogTrace> trace;
    std::unique_ptr<LoneBridge> bridge;
    std::unique_ptr<BridgeClient> client; // a normal one, besides the other
    int delivered = 0;

    // About 60 kB on the wire.
    void deliverMuch()
    {
        QStringList lines;
        for (int i = 0; i < 20; ++i) {
            lines.append(jt9Line(QString(2200, QLatin1Char('A')), ++delivered));
        }
        bridge->deliver(lines);
    }
#ifndef Q_OS_WIN
    // The first client connects while there is no descriptor for it.
    void startInAShortage(QTcpSocket &waiting)
    {
        (*bridge)->stop();
        QTRY_COMPARE(client->socket.state(), QAbstractSocket::UnconnectedState);
        QTRY_VERIFY(!bridge->listener());
        (*bridge)->start();
        waiting.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(bridge->port));
        {
            const DescriptorShortage shortage;
            QTRY_VERIFY(trace->contains(QStringLiteral("WSJT bridge client not accepted: ")));
            QVERIFY(bridge->sockets().isEmpty());
        }
        QTRY_COMPARE(bridge->sockets().size(), 1);
        QTRY_COMPARE(waiting.bytesAvailable(), 18);
        QCOMPARE(waiting.readAll(), BridgeClient::readyLine());
    }
#endif
    // Whether the normal client receives the next decode.
    bool isHeard()
    {
        const QByteArray line = "CQ " + QByteArray::number(++delivered);
        bridge->deliver({jt9Line(QString::fromLatin1(line))});
        const QByteArray sent = decodeLine({"101530", "-12", "0.3", "1234", line});
        return QTest::qWaitFor([&] { return client->heard.endsWith(sent); });
    }
};

void BridgeClientsTest::init()
{
    trace = std::make_unique<LogTrace>();
    bridge = std::make_unique<LoneBridge>();
    (*bridge)->start();
    client = std::make_unique<BridgeClient>(bridge->port);
    QVERIFY(client->waitForGreeting());
}

void BridgeClientsTest::cleanup()
{
    client.reset();
    bridge.reset();
    trace.reset();
}

void BridgeClientsTest::theStationSendsWithoutDelay()
{
    QVERIFY(bridge->sockets().first()->socketOption(QAbstractSocket::LowDelayOption).toBool());
}

void BridgeClientsTest::aClientThatNeverReadsIsDroppedAtABound()
{
    const LazyClient lazy(bridge->port);
    QVERIFY(lazy.isConnected);
    QTRY_COMPARE(bridge->sockets().size(), 2);
    const BridgeClient third(bridge->port); // after it in the list
    QVERIFY(third.waitForGreeting());
    qint64 maxWaiting = 0;
    const QString remain = QStringLiteral("WSJT bridge client disconnected; 2 client(s) remain.");
    for (int i = 0; i < 400 && trace->count(remain) == 0; ++i) {
        deliverMuch();
        for (const QTcpSocket *socket : bridge->sockets()) {
            maxWaiting = qMax(maxWaiting, socket->bytesToWrite());
        }
        QCoreApplication::processEvents();
    }
    QCOMPARE(trace->count(remain), 1);
    QVERIFY(maxWaiting <= 4 * 1024 * 1024);
    QVERIFY(maxWaiting > 1024 * 1024);
    QVERIFY(isHeard());
    QCOMPARE(client->heard.count('\n'), delivered + 1); // no other client missed a line
    QTRY_COMPARE(third.heard.size(), client->heard.size());
}

void BridgeClientsTest::whatDroppedTheOnlyClientIsTriedAgain()
{
    client->socket.close();
    QTRY_VERIFY(bridge->sockets().isEmpty());
    const LazyClient lazy(bridge->port);
    QTRY_COMPARE((*bridge)->state().clients, 1);
    qint64 lastOutputMs = 0;
    for (int i = 0; i < 400 && (*bridge)->state().clients == 1; ++i) {
        lastOutputMs = (*bridge)->state().lastOutputMs;
        bridge->nowMs += 1000;
        deliverMuch();
    }
    QCOMPARE((*bridge)->state().clients, 0);
    QCOMPARE(lastOutputMs, bridge->nowMs - 1000);
    QCOMPARE((*bridge)->state().lastOutputMs, lastOutputMs);
    QCOMPARE((*bridge)->state().lastOutputCount, 20);
    client = std::make_unique<BridgeClient>(bridge->port);
    QVERIFY(client->waitForGreeting());
    delivered -= 20; // the same batch as the last
    deliverMuch();
    QVERIFY(isHeard());
    QVERIFY(client->heard.count('\n') > 2);
}

void BridgeClientsTest::aClientThatReadsSlowlyIsKept()
{
    BridgeClient slow(bridge->port);
    QVERIFY(slow.waitForGreeting());
    slow.socket.setReadBufferSize(1);
    slow.socket.blockSignals(true); // stops reading for a while
    for (int i = 0; i < 30; ++i) {
        deliverMuch(); // less than the limit
    }
    QVERIFY(isHeard());
    slow.socket.blockSignals(false);
    slow.socket.setReadBufferSize(0);
    slow.heard += slow.socket.readAll();
    QTRY_COMPARE(slow.heard.size(), client->heard.size());
    QCOMPARE(slow.heard, client->heard);
}

void BridgeClientsTest::whatClientsSendIsThrownAway()
{
    const QByteArray megabyte(1024 * 1024, 'x');
    for (int i = 0; i < 20; ++i) {
        client->socket.write(megabyte);
        QTRY_VERIFY(client->socket.bytesToWrite() < megabyte.size());
    }
    QVERIFY(bridge->sockets().first()->readBufferSize() > 0); // 0 means no limit
    QTRY_COMPARE(client->socket.bytesToWrite(), 0);
    QTRY_COMPARE(bridge->sockets().first()->bytesAvailable(), 0);
    QVERIFY(isHeard());
    client->socket.abort();
    QTRY_VERIFY(bridge->sockets().isEmpty());
}

void BridgeClientsTest::aClientThatVanishesIsGone()
{
    BridgeClient other(bridge->port);
    QVERIFY(other.waitForGreeting());
    sim::resetOnClose(other.socket.socketDescriptor());
    other.socket.write(QByteArray(100000, 'x'));
    other.socket.abort();
    QTRY_COMPARE(trace->count(oneRemains), 1);
    QTRY_COMPARE(bridge->sockets().size(), 1);
    QVERIFY(isHeard());
}

void BridgeClientsTest::aClientThatClosesIsGone()
{
    BridgeClient other(bridge->port);
    QVERIFY(other.waitForGreeting());
    other.socket.disconnectFromHost();
    QTRY_COMPARE(trace->count(oneRemains), 1);
    QTRY_COMPARE(bridge->sockets().size(), 1);
    QVERIFY(isHeard());
}

void BridgeClientsTest::aClientThatIsGoneBeforeItIsGreeted()
{
    {
        const LazyClient hasty(bridge->port);
        QVERIFY(hasty.isConnected);
    }
#ifdef Q_OS_WIN
    QTRY_COMPARE(trace->lines().filter(QStringLiteral("client connected")).size(), 2);
    QVERIFY(isHeard()); // Wine notices that it is gone only when something is sent to it
#endif
    QTRY_COMPARE(trace->count(oneRemains), 1);
    QVERIFY(isHeard());
}

void BridgeClientsTest::aClientThatResetsBeforeItIsAccepted()
{
    trace->clear();
    {
        const LazyClient hasty(bridge->port);
        QVERIFY(hasty.isConnected);
        sim::resetOnClose(hasty.socket.socketDescriptor());
    }
    QTRY_COMPARE(trace->count(oneRemains), 1);
    // It is logged with its address, or not at all.
    for (const QString &line : trace->lines().filter(QStringLiteral("client connected"))) {
        QVERIFY2(line.contains(QStringLiteral(": 127.0.0.1:")), qPrintable(line));
    }
    QTRY_COMPARE(bridge->sockets().size(), 1);
    QVERIFY(isHeard());
}

// The bridge notices it in the middle of a broadcast.
void BridgeClientsTest::aClientThatIsFoundGoneCostsTheOthersNothing()
{
    LazyClient gone(bridge->port);
    QTRY_COMPARE(bridge->sockets().size(), 2);
    const BridgeClient third(bridge->port);
    QVERIFY(third.waitForGreeting());
    const BridgeClient fourth(bridge->port);
    QVERIFY(fourth.waitForGreeting());
    sim::resetOnClose(gone.socket.socketDescriptor());
    gone.socket.abort();
    deliverMuch();
    QVERIFY(isHeard());
    QTRY_COMPARE(third.heard, client->heard);
    QTRY_COMPARE(fourth.heard, client->heard);
    QCOMPARE(trace->lines().filter(QStringLiteral("client disconnected; 3 client(s)")).size(), 1);
}

// The next two run without the event loop, which would send what was not flushed.
void BridgeClientsTest::theGreetingLeavesAtOnce()
{
    QTcpSocket hasty;
    hasty.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(bridge->port));
    QVERIFY(hasty.waitForConnected());
    QVERIFY(bridge->listener()->waitForNewConnection(5000));
    QVERIFY(hasty.waitForReadyRead(5000));
    QCOMPARE(hasty.readAll(), BridgeClient::readyLine());
}

void BridgeClientsTest::aDecodeLeavesAtOnce()
{
    bridge->deliver({jt9Line(QStringLiteral("CQ"))});
    QVERIFY(client->socket.waitForReadyRead(5000));
    QCOMPARE(client->heard,
             BridgeClient::readyLine() + decodeLine({"101530", "-12", "0.3", "1234", "CQ"}));
}

void BridgeClientsTest::stoppingEndsTheConnectionThenClosesTheSocket()
{
    QByteArrayList ends;
    const QTcpSocket *socket = bridge->sockets().first();
    connect(socket, &QTcpSocket::disconnected, &client->socket, [&] { ends += "disconnected"; });
    connect(socket, &QTcpSocket::aboutToClose, &client->socket, [&] { ends += "aboutToClose"; });
    (*bridge)->stop();
    QCOMPARE(ends, (QByteArrayList{"disconnected", "aboutToClose"}));
}

#ifndef Q_OS_WIN
void BridgeClientsTest::clientsComeInAgainAfterAShortageOfDescriptors()
{
    const auto listener = static_cast<int>(bridge->listener()->socketDescriptor());
    QTcpSocket waiting;
    waiting.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(bridge->port));
    {
        const DescriptorShortage shortage;
        QVERIFY(waiting.waitForConnected());
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents(); // the listener fails to accept
        }
        QVERIFY(isHeard()); // the other client is not affected
        QVERIFY(somebodyWaits(listener));
        QCOMPARE(bridge->sockets().size(), 1);
    }
    QTRY_COMPARE(bridge->sockets().size(), 2);
    QTRY_COMPARE(waiting.bytesAvailable(), 18);
    QCOMPARE(waiting.readAll(), BridgeClient::readyLine());
}

void BridgeClientsTest::clientsComeInAfterAShortageFromTheStart()
{
    QTcpSocket waiting;
    startInAShortage(waiting);
    // From now on the listener works normally, without errors or pauses.
    const auto *pause = bridge->listener()->findChild<QTimer *>();
    for (int i = 0; i < 5; ++i) {
        const BridgeClient another(bridge->port);
        QVERIFY(another.waitForGreeting());
        QVERIFY(!pause->isActive());
    }
    QCOMPARE(trace->lines().filter(QStringLiteral("not accepted")).size(), 1);
}

// The client that woke the listener may be gone when the listener checks its queue.
void BridgeClientsTest::anEmptyQueueIsNoErrorAfterAShortage()
{
    QTcpSocket waiting;
    startInAShortage(waiting);
    trace->clear();
    auto *server = bridge->listener();
    for (int i = 0; i < 3; ++i) {
        QEvent wakeUp(QEvent::SockAct);
        QCoreApplication::sendEvent(server->findChild<QSocketNotifier *>(), &wakeUp);
        QVERIFY(!server->findChild<QTimer *>()->isActive());
    }
    QCOMPARE(trace->lines(), QStringList());
    const BridgeClient another(bridge->port);
    QVERIFY(another.waitForGreeting());
}

void BridgeClientsTest::aClientThatComesAfterTheLookAtTheQueueIsNoError()
{
    QTcpServer server;
    QTcpSocket first;
    QTcpSocket second;
    QTcpSocket late;
    const auto come = [&server](QTcpSocket &socket) {
        socket.connectToHost(QHostAddress::LocalHost, server.serverPort());
        return socket.waitForConnected();
    };
    bool isItsTurn = false;
    connect(&server, &QTcpServer::acceptError, this, [&] {
        if (std::exchange(isItsTurn, false)) {
            come(late);
        }
    });
    const auto *retry = new AcceptRetry(&server);
    QVERIFY(server.listen(QHostAddress::LocalHost));
    first.connectToHost(QHostAddress::LocalHost, server.serverPort());
    {
        const DescriptorShortage shortage;
        QTRY_VERIFY(retry->findChild<QTimer *>()->isActive());
    }
    int accepted = 0;
    connect(&server, &QTcpServer::newConnection, this, [&accepted] { ++accepted; });
    QTRY_COMPARE(accepted, 1);
    trace->clear();
    isItsTurn = true;
    QVERIFY(come(second));
    QTRY_COMPARE(accepted, 3);
    QCOMPARE(trace->lines(), QStringList());
}
#endif

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::BridgeClientsTest)
#include "bridgeclients_test.moc"
