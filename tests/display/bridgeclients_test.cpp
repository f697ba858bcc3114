// Clients that misbehave, and a station that runs out of descriptors.

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include "bridgeclient.h"
#include "displaystation.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"

#ifdef Q_OS_WIN
#include <winsock2.h>
#else
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

// A client that takes one byte and then nothing more.
class LazyClient
{
public:
    explicit LazyClient(int port)
    {
        socket.setReadBufferSize(1);
        socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
        isConnected = socket.waitForConnected();
    }

    QTcpSocket socket;
    bool isConnected = false;
};

#ifndef Q_OS_WIN
// While it lives, this process can open no further descriptor.
class DescriptorShortage
{
public:
    DescriptorShortage()
    {
        getrlimit(RLIMIT_NOFILE, &before);
        // The event loop cannot wait for more descriptors than the limit.
        for (int i = 0; i < 300; ++i)
            fillers.append(dup(STDERR_FILENO));
        rlimit low = before;
        low.rlim_cur = static_cast<rlim_t>(fillers.last()) + 1;
        setrlimit(RLIMIT_NOFILE, &low);
        for (int next = dup(STDERR_FILENO); next >= 0; next = dup(STDERR_FILENO))
            fillers.append(next);
    }
    ~DescriptorShortage()
    {
        setrlimit(RLIMIT_NOFILE, &before);
        for (const int filler : qAsConst(fillers))
            close(filler);
    }
    DescriptorShortage(const DescriptorShortage &) = delete;
    DescriptorShortage &operator=(const DescriptorShortage &) = delete;

private:
    rlimit before{};
    QVector<int> fillers;
};

// Whether somebody is in the listener's queue.
static bool somebodyWaits(int listener)
{
    pollfd queue{listener, POLLIN, 0};
    return poll(&queue, 1, 0) == 1;
}
#endif

static const QString oneRemains =
    QStringLiteral("WSJT bridge client disconnected; 1 client(s) remain.");

class BridgeClientsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theStationSendsWithoutDelay();
    void aClientThatNeverReadsIsDroppedAtABound();
    void theReceiverIsRecordedBeforeAnyClientIsDropped();
    void whatDroppedTheOnlyClientIsTriedAgain();
    void aClientThatReadsSlowlyIsKept();
    void whatClientsSendIsThrownAway();
    void aClientThatVanishesIsGone();
    void aClientThatClosesIsGone();
    void aClientThatIsGoneBeforeItIsGreeted();
#ifndef Q_OS_WIN // where descriptors know no such limit
    void clientsComeInAgainAfterAShortageOfDescriptors();
    void clientsComeInAfterAShortageFromTheStart();
#endif

private:
    std::unique_ptr<LogTrace> trace;
    std::unique_ptr<DisplayStation> station;
    std::unique_ptr<BridgeClient> client; // an ordinary one, besides the other
    int delivered = 0;

    QList<QTcpSocket *> atTheStation() const
    {
        return (*station)->findChild<QTcpServer *>()->findChildren<QTcpSocket *>();
    }
    // About 60 kB on the wire.
    void deliverMuch()
    {
        QStringList lines;
        for (int i = 0; i < 20; ++i)
            lines.append(jt9Line(QString(2200, QLatin1Char('A')), ++delivered));
        (*station)->onDecodesDelivered(QStringLiteral("10:15:30"), lines);
    }
    QString shownLastOutput()
    {
        (*station)->showBridgeStatusDialog();
        auto *dialog = openDialog(QStringLiteral("PELQ Kiwi Outpost Bridge Status"));
        return dialog->findChild<QLabel *>()->text().section(QLatin1Char('\n'), 1);
    }
    // Whether the ordinary client hears the next decode.
    bool isHeard()
    {
        const QByteArray line = "CQ " + QByteArray::number(++delivered);
        (*station)->onDecodesDelivered(QStringLiteral("10:15:30"),
                                       {jt9Line(QString::fromLatin1(line))});
        const QByteArray sent = decodeLine({"101530", "-12", "0.3", "1234", line});
        return QTest::qWaitFor([&] { return client->heard.endsWith(sent); });
    }
};

void BridgeClientsTest::init()
{
    trace = std::make_unique<LogTrace>();
    station = std::make_unique<DisplayStation>();
    client = std::make_unique<BridgeClient>(station->bridgePort);
    QVERIFY(client->waitForGreeting());
}

void BridgeClientsTest::cleanup()
{
    client.reset();
    station.reset();
    trace.reset();
}

void BridgeClientsTest::theStationSendsWithoutDelay()
{
    QVERIFY(atTheStation().first()->socketOption(QAbstractSocket::LowDelayOption).toBool());
}

void BridgeClientsTest::aClientThatNeverReadsIsDroppedAtABound()
{
    const LazyClient lazy(station->bridgePort);
    QVERIFY(lazy.isConnected);
    QTRY_COMPARE(atTheStation().size(), 2);
    const BridgeClient third(station->bridgePort); // behind it in the list
    QVERIFY(third.waitForGreeting());
    qint64 mostWaiting = 0;
    const QString remain = QStringLiteral("WSJT bridge client disconnected; 2 client(s) remain.");
    for (int i = 0; i < 400 && trace->count(remain) == 0; ++i) {
        deliverMuch();
        for (const QTcpSocket *socket : atTheStation())
            mostWaiting = qMax(mostWaiting, socket->bytesToWrite());
        QCoreApplication::processEvents();
    }
    QCOMPARE(trace->count(remain), 1);
    QVERIFY(mostWaiting <= 4 * 1024 * 1024);
    QVERIFY(mostWaiting > 1024 * 1024);
    QVERIFY(isHeard());
    QCOMPARE(client->heard.count('\n'), delivered + 1); // nobody else missed a line
    QTRY_COMPARE(third.heard.size(), client->heard.size());
}

void BridgeClientsTest::theReceiverIsRecordedBeforeAnyClientIsDropped()
{
    const QString file = testHome().dataFile(QStringLiteral("good-kiwi-receivers.json"));
    const QString noneRemains =
        QStringLiteral("WSJT bridge client disconnected; 0 client(s) remain.");
    client->socket.close();
    QTRY_VERIFY(atTheStation().isEmpty());
    const LazyClient lazy(station->bridgePort);
    QTRY_COMPARE(atTheStation().size(), 1);
    trace->clear();
    for (int i = 0; i < 400 && trace->count(noneRemains) == 0; ++i) {
        QFile::remove(file); // so that every batch records the receiver
        trace->clear();
        deliverMuch();
    }
    QCOMPARE(
        trace->lines(),
        (QStringList{QStringLiteral("Good receiver recorded: receiver.test:8073"), noneRemains}));
}

void BridgeClientsTest::whatDroppedTheOnlyClientIsTriedAgain()
{
    client->socket.close();
    QTRY_VERIFY(atTheStation().isEmpty());
    const LazyClient lazy(station->bridgePort);
    QTRY_VERIFY(summaryLine(**station).contains(QStringLiteral("Bridge Connected")));
    const QString attached = QStringLiteral("Bridge Connected");
    QString lastOutput;
    for (int i = 0; i < 400 && summaryLine(**station).contains(attached); ++i) {
        lastOutput = shownLastOutput();
        station->nowMs += 1000;
        deliverMuch();
    }
    QVERIFY(!summaryLine(**station).contains(attached));
    QVERIFY(lastOutput.contains(QStringLiteral("20 FT8 decodes sent")));
    QCOMPARE(shownLastOutput(), lastOutput);
    client = std::make_unique<BridgeClient>(station->bridgePort);
    QVERIFY(client->waitForGreeting());
    delivered -= 20; // the same batch as the last
    deliverMuch();
    QVERIFY(isHeard());
    QVERIFY(client->heard.count('\n') > 2);
}

void BridgeClientsTest::aClientThatReadsSlowlyIsKept()
{
    BridgeClient slow(station->bridgePort);
    QVERIFY(slow.waitForGreeting());
    slow.socket.setReadBufferSize(1);
    slow.socket.blockSignals(true); // reads nothing for a while
    for (int i = 0; i < 30; ++i)
        deliverMuch(); // less than the bound
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
    QVERIFY(atTheStation().first()->readBufferSize() > 0); // 0 would be without bound
    QTRY_COMPARE(client->socket.bytesToWrite(), 0);
    QTRY_COMPARE(atTheStation().first()->bytesAvailable(), 0);
    QVERIFY(isHeard());
    client->socket.abort();
    QTRY_VERIFY(atTheStation().isEmpty());
}

void BridgeClientsTest::aClientThatVanishesIsGone()
{
    BridgeClient other(station->bridgePort);
    QVERIFY(other.waitForGreeting());
    const linger reset{1, 0};
    setsockopt(static_cast<int>(other.socket.socketDescriptor()), SOL_SOCKET, SO_LINGER,
               reinterpret_cast<const char *>(&reset), sizeof reset);
    other.socket.write(QByteArray(100000, 'x'));
    other.socket.abort();
    QTRY_COMPARE(trace->count(oneRemains), 1);
    QTRY_COMPARE(atTheStation().size(), 1);
    QVERIFY(isHeard());
}

void BridgeClientsTest::aClientThatClosesIsGone()
{
    BridgeClient other(station->bridgePort);
    QVERIFY(other.waitForGreeting());
    other.socket.disconnectFromHost();
    QTRY_COMPARE(trace->count(oneRemains), 1);
    QTRY_COMPARE(atTheStation().size(), 1);
    QVERIFY(isHeard());
}

void BridgeClientsTest::aClientThatIsGoneBeforeItIsGreeted()
{
    {
        const LazyClient hasty(station->bridgePort);
        QVERIFY(hasty.isConnected);
    }
#ifdef Q_OS_WIN
    QTRY_COMPARE(trace->lines().filter(QStringLiteral("client connected")).size(), 2);
    QVERIFY(isHeard()); // Wine tells that it is gone when something is sent to it
#endif
    QTRY_COMPARE(trace->count(oneRemains), 1);
    QVERIFY(isHeard());
}

#ifndef Q_OS_WIN
void BridgeClientsTest::clientsComeInAgainAfterAShortageOfDescriptors()
{
    const auto listener =
        static_cast<int>((*station)->findChild<QTcpServer *>()->socketDescriptor());
    QTcpSocket waiting;
    waiting.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station->bridgePort));
    {
        const DescriptorShortage shortage;
        QVERIFY(waiting.waitForConnected());
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents(); // the listener tries in vain
        QVERIFY(isHeard());                    // the other client does not suffer
        QVERIFY(somebodyWaits(listener));
        QCOMPARE(atTheStation().size(), 1);
    }
    QTRY_COMPARE(atTheStation().size(), 2);
    QTRY_COMPARE(waiting.bytesAvailable(), 18);
    QCOMPARE(waiting.readAll(), BridgeClient::readyLine());
}

void BridgeClientsTest::clientsComeInAfterAShortageFromTheStart()
{
    (*station)->stopBridge();
    QTRY_COMPARE(client->socket.state(), QAbstractSocket::UnconnectedState);
    QTRY_VERIFY((*station)->findChildren<QTcpServer *>().isEmpty());
    (*station)->startBridge(); // nobody has been accepted by this listener
    QTcpSocket waiting;
    waiting.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station->bridgePort));
    {
        const DescriptorShortage shortage;
        QTRY_VERIFY(trace->contains(QStringLiteral("WSJT bridge client not accepted: ")));
        QVERIFY(atTheStation().isEmpty());
    }
    QTRY_COMPARE(atTheStation().size(), 1);
    QTRY_COMPARE(waiting.bytesAvailable(), 18);
    QCOMPARE(waiting.readAll(), BridgeClient::readyLine());
    // From now on it is an ordinary listener again, which neither complains nor waits.
    const auto *pause = (*station)->findChild<QTcpServer *>()->findChild<QTimer *>(
        QString(), Qt::FindDirectChildrenOnly);
    for (int i = 0; i < 5; ++i) {
        const BridgeClient another(station->bridgePort);
        QVERIFY(another.waitForGreeting());
        QVERIFY(!pause->isActive());
    }
    QCOMPARE(trace->lines().filter(QStringLiteral("not accepted")).size(), 1);
}
#endif

OUTPOST_WINDOW_TEST_MAIN(BridgeClientsTest)
#include "bridgeclients_test.moc"
