#include "faultfixture.h"

#include <QtEndian>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace outpost
{

using namespace sim;

namespace
{

quint32 sequence(const QByteArray &frame)
{
    return qFromLittleEndian<quint32>(frame.constData() + 4);
}

#ifdef Q_OS_UNIX
struct NativeEnd {
    QByteArray received;
    int error = 0; // errno of the last read
};

// A client on a native socket; only there does a reset differ from an orderly end.
NativeEnd nativeListener(quint16 port)
{
    QByteArray bytes("GET /kiwi/0/SND HTTP/1.1\r\nSec-WebSocket-Key: key\r\n\r\n");
    for (const QString &command : SimClient::sevenCommands()) {
        bytes += QByteArray("\x81").append(char(0x80 | command.size())) + QByteArray(4, '\0') +
                 command.toLatin1();
    }
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::send(socket, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL) != bytes.size()) {
        qFatal("cannot speak to the simulator");
    }
    NativeEnd end;
    QByteArray buffer(65536, Qt::Uninitialized);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 5000) {
        const auto count = ::recv(socket, buffer.data(), size_t(buffer.size()), MSG_DONTWAIT);
        end.error = count < 0 ? errno : 0;
        if (count > 0) {
            end.received += buffer.left(int(count));
        } else if (count == 0 || errno != EAGAIN) {
            break;
        }
        QTest::qWait(5);
    }
    ::close(socket);
    return end;
}
#endif

} // namespace

// Faulty sound, and sound that ends.
class FaultsTest : public FaultFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void endings_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QByteArray>("lastMessage");
        const auto row = [](const char *behaviour, const char *message) {
            QTest::newRow(behaviour) << QByteArray(behaviour) << QByteArray(message);
        };
        const char *none = "MSG audio_init=0 audio_rate=12000"; // the greeting's last
        row("kick:40", "MSG too_busy=8");
        row("owner-kick:40", "MSG kiwi_kick=1,You%20were%20kicked!");
        row("inactivity:40", "MSG inactivity_timeout=1");
        row("close:40", none);
        row("drop:40", none);
        row("reset:40", none);
    }

    void endings()
    {
        QFETCH(QByteArray, behaviour);
        startSounding(behaviour.constData());
        QVERIFY(m_client->hasAnsweredAll());
        QCOMPARE(m_client->closes, 0);
        m_clock.jumpTo(m_clock.nowMs() + 39700);
        QTRY_COMPARE(m_client->closes, 1);
        QVERIFY(m_clock.nowMs() - m_client->firstSoundMs >= 39900);
        QTEST(m_client->messages.last(), "lastMessage");
        QTRY_COMPARE(m_receiver->liveClients(), 0);
    }

#ifdef Q_OS_UNIX
    void linksEndAsTheyShould_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<bool>("hasCloseFrame");
        QTest::addColumn<int>("error"); // of the last read
        QTest::newRow("kick") << QByteArray("kick:0") << true << 0;
        QTest::newRow("close") << QByteArray("close:0") << true << 0;
        QTest::newRow("refusal") << QByteArray("badp") << true << 0;
        QTest::newRow("end of TCP") << QByteArray("drop:0") << false << 0;
        QTest::newRow("reset") << QByteArray("reset:0") << false << ECONNRESET;
        QTest::newRow("refused") << QByteArray("refuse") << false << ECONNRESET;
    }

    void linksEndAsTheyShould()
    {
        QFETCH(QByteArray, behaviour);
        start(behaviour.constData());
        m_client->socket.abort();
        const NativeEnd end = nativeListener(m_receiver->port());
        QTEST(end.error, "error");
        // A close frame without a status code has no payload.
        QTEST(end.received.endsWith(QByteArray("\x88\0", 2)), "hasCloseFrame");
    }
#endif

    void stalls_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::newRow("stall") << QByteArray("stall:5");
        QTest::newRow("half a frame") << QByteArray("half-frame:5");
    }

    void stalls()
    {
        QFETCH(QByteArray, behaviour);
        startSounding(behaviour.constData());
        m_clock.jumpTo(m_clock.nowMs() + 6000);
        QTRY_VERIFY(m_client->sounds.size() >= 29);
        m_client->takeEverything();
        const int sounds = m_client->sounds.size();
        m_clock.jumpTo(m_clock.nowMs() + 6000);
        m_client->takeEverything();
        QCOMPARE(m_client->sounds.size(), sounds);
        QCOMPARE(m_client->socket.state(), QAbstractSocket::ConnectedState);
    }

    void burstsComeOnTheirGrid()
    {
        startSounding("bursty:3");
        jumpToBoundary();
        m_client->takeEverything();
        const int first = m_client->sounds.size();
        m_clock.jumpTo(m_client->boundaryMs + 2800);
        m_client->takeEverything();
        QCOMPARE(m_client->sounds.size(), first);
        m_clock.jumpTo(m_client->boundaryMs + 3000);
        QTRY_COMPARE(m_client->sounds.size(), first + 17); // 3 s of 170.67 ms each
    }

    void aMinuteAtOnce()
    {
        startSounding("minute-burst:2");
        jumpToBoundary();
        m_clock.jumpTo(m_client->boundaryMs + 2000);
        QTRY_VERIFY(m_client->sounds.size() > 352); // 60 s
        QVERIFY(m_client->sounds.size() < 480);
        QTRY_COMPARE(m_client->heard.size(), 4);
    }

    void bigMessages()
    {
        startSounding("big-msg:200");
        int big = 0;
        for (const QByteArray &message : qAsConst(m_client->messages)) {
            big += message.size() > 200000 ? 1 : 0;
        }
        QCOMPARE(big, 3);
    }

    void between_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QList<QByteArray>>("others");
        const QByteArray frame("SND\x10\0\0\0\0\0\0", 10);
        QTest::newRow("messages") << QByteArray("msg-between")
                                  << QList<QByteArray>{"MSG max_camp=4"};
        QTest::newRow("text") << QByteArray("text-between") << QList<QByteArray>{"MSG rx_chans=8"};
        QTest::newRow("tags") << QByteArray("other-tags")
                              << QList<QByteArray>{"W/F \1\2\3\4", "EXT name=value"};
        QTest::newRow("tiny") << QByteArray("tiny-frames") << QList<QByteArray>{"", "S", "SN"};
        QTest::newRow("short") << QByteArray("short-frames")
                               << QList<QByteArray>{frame.left(3), frame.left(4), frame.left(5),
                                                    frame.left(6), frame.left(7), frame.left(8),
                                                    frame.left(9), frame};
    }

    void between()
    {
        QFETCH(QByteArray, behaviour);
        QFETCH(QList<QByteArray>, others);
        startSounding(behaviour.constData());
        m_clock.jumpTo(m_clock.nowMs() + 2000);
        for (const QByteArray &other : qAsConst(others)) {
            QTRY_VERIFY(m_client->messages.count(other) + m_client->others.count(other) +
                            m_client->sounds.count(other) +
                            m_client->texts.count(QString::fromLatin1(other)) >
                        (other == "MSG max_camp=4" ? 1 : 0)); // once in the greeting
        }
        jumpToBoundary();
        m_client->takeEverything();
        m_clock.jumpTo(m_client->boundaryMs + 16000);
        QTRY_VERIFY(!m_client->heard.isEmpty());
        QVERIFY(m_client->heard.first() == m_receiver->periods().value(0).samples);
    }

    void firstFrameIsStale()
    {
        m_config.raw = true;
        startSounding("stale-first");
        const Samples first = fromLittleEndian(m_client->sounds.first().mid(10));
        QVERIFY(*std::max_element(first.begin(), first.end()) > 16000);
    }

    void rates_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QByteArray>("announced");
        QTest::addColumn<double>("rate");
        QTest::newRow("99 ppm") << QByteArray("rate") << QByteArray("MSG sample_rate=12001.060000")
                                << 12001.06;
        QTest::newRow("wide") << QByteArray("wide") << QByteArray("MSG sample_rate=20250.000000")
                              << 20250.0;
    }

    void rates()
    {
        QFETCH(QByteArray, behaviour);
        QFETCH(QByteArray, announced);
        QFETCH(double, rate);
        startSounding(behaviour.constData());
        QVERIFY(m_client->messages.contains(announced));
        jumpToBoundary();
        m_client->takeEverything();
        const quint32 first = sequence(m_client->sounds.last());
        m_clock.jumpTo(m_client->boundaryMs + 30000);
        m_clock.hold();
        const int expected = int(30 * rate / 2048);
        QTRY_VERIFY(int(sequence(m_client->sounds.last()) - first) >= expected - 1);
        m_client->takeEverything();
        QVERIFY(int(sequence(m_client->sounds.last()) - first) <= expected + 2);
    }

    void wideSoundDoesNotCarryThePeriodAsItIs()
    {
        m_config.raw = true;
        startSounding("wide");
        jumpToBoundary();
        m_clock.jumpTo(m_client->boundaryMs + 16000);
        QTRY_VERIFY(!m_client->heard.isEmpty());
        QVERIFY(m_client->heard.first() != ramp(0));
    }

    void samplesAreLostWithoutAGap()
    {
        m_config.raw = true;
        startSounding("lost-samples:4");
        jumpToBoundary();
        m_clock.jumpTo(m_client->boundaryMs + 16000);
        QTRY_VERIFY(!m_client->heard.isEmpty());
        QVERIFY(m_client->heard.first() != ramp(0));
        QVERIFY(m_client->heard.first() == m_receiver->periods().first().samples);
        for (int i = 1; i < m_client->sounds.size(); ++i) {
            QCOMPARE(sequence(m_client->sounds.at(i)), sequence(m_client->sounds.at(i - 1)) + 1);
        }
    }

    void sequenceHasGaps()
    {
        startSounding("sequence-gaps:4");
        jumpToBoundary();
        m_client->takeEverything();
        m_clock.jumpTo(m_client->boundaryMs + 17000);
        QTRY_VERIFY(!m_client->heard.isEmpty());
        int gaps = 0;
        for (int i = 1; i < m_client->sounds.size(); ++i) {
            gaps += sequence(m_client->sounds.at(i)) == sequence(m_client->sounds.at(i - 1)) + 2;
        }
        QVERIFY(gaps >= 3 && gaps <= 5);
        QVERIFY(m_client->heard.first() == m_receiver->periods().first().samples);
    }

    void overloadFlagToggles()
    {
        startSounding("overload");
        m_clock.jumpTo(m_clock.nowMs() + 1000);
        QTRY_VERIFY(m_client->sounds.size() >= 5);
        for (int i = 1; i < 5; ++i) {
            QVERIFY((m_client->sounds.at(i).at(3) & 2) != (m_client->sounds.at(i - 1).at(3) & 2));
        }
    }

    void samplesAreBigEndian()
    {
        startSounding("big-endian");
        jumpToBoundary();
        QTRY_VERIFY(m_client->sounds.last().mid(10, 4) != QByteArray() &&
                    qFromBigEndian<qint16>(m_client->sounds.last().constData() + 10) >= 5000);
        QCOMPARE(quint8(m_client->sounds.last().at(3)), quint8(0));
    }

    void payloadsAreOdd()
    {
        startSounding("odd-payload");
        QCOMPARE(m_client->sounds.first().size(), 1033);
    }

    void bytesAreRandom()
    {
        startSounding("random");
        m_clock.jumpTo(m_clock.nowMs() + 2000);
        QTRY_VERIFY(m_client->sounds.size() > 8);
        QSet<int> sizes;
        for (const QByteArray &frame : qAsConst(m_client->sounds)) {
            sizes.insert(frame.size());
        }
        QVERIFY(sizes.size() > 3);
    }

    void fragmentsMakeWholeFrames()
    {
        m_config.raw = true;
        startSounding("fragments");
        QSignalSpy fragments(&m_client->socket, &QWebSocket::binaryFrameReceived);
        jumpToBoundary();
        m_client->takeEverything();
        m_clock.jumpTo(m_client->boundaryMs + 16000);
        QTRY_VERIFY(!m_client->heard.isEmpty());
        QVERIFY(m_client->heard.first() == ramp(0));
        QVERIFY(fragments.size() > 2 * m_client->sounds.size());
    }

    void pingsAreNotAnswered()
    {
        startSounding("no-pong");
        QSignalSpy pong(&m_client->socket, &QWebSocket::pong);
        m_client->socket.ping("x");
        QVERIFY(laterListenerHears(*m_receiver, &m_clock));
        QCOMPARE(pong.size(), 0);
    }

    void oneHugeFrameThenSoundGoesOn()
    {
        m_client->others.clear();
        startSounding("huge:0");
        const auto hugeFrames = [this] {
            return std::count_if(
                m_client->sounds.begin(), m_client->sounds.end(),
                [](const QByteArray &frame) { return frame.size() == 10 + (16 << 20); });
        };
        QTRY_COMPARE_WITH_TIMEOUT(int(hugeFrames()), 1, 20000);
        const int sounds = m_client->sounds.size();
        QTRY_VERIFY(m_client->sounds.size() > sounds);
        QCOMPARE(int(hugeFrames()), 1);
    }

    void floodsAreBoundedAndEndWithTheClient_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("pings") << QByteArray("ping-flood:0") << QByteArray("pings without end");
        QTest::newRow("fragments")
            << QByteArray("endless-fragments:0") << QByteArray("fragments without end");
        QTest::newRow("headers") << QByteArray("endless-headers")
                                 << QByteArray("headers without end");
    }

    void floodsAreBoundedAndEndWithTheClient()
    {
        QFETCH(QByteArray, behaviour);
        QFETCH(QByteArray, sent);
        m_client->socket.setMaxAllowedIncomingMessageSize(8 << 20);
        start(behaviour.constData());
        QTRY_VERIFY(wasSent(*m_receiver, sent.constData()));
        // The event loop still turns.
        QTimer bell;
        bell.setSingleShot(true);
        bell.start(100);
        QTRY_VERIFY(!bell.isActive());
        m_client->socket.abort();
        QTRY_COMPARE(m_receiver->liveClients(), 0);
    }

    void pingsComeInFloods()
    {
        QTcpSocket socket;
        startSounding("ping-flood:0");
        QTRY_VERIFY(wasSent(*m_receiver, "pings without end"));
        QTRY_VERIFY(m_client->socket.bytesToWrite() > 100000); // pongs that nobody reads
    }

    void behaviourCanChangeBetweenConnections()
    {
        startSounding("stream");
        EndpointBehaviours endpoints;
        QString error;
        QVERIFY(endpoints.apply(text("all=open-silent"), &error));
        m_receiver->setEndpoints(endpoints);
        SimClient other(&m_clock);
        other.open(m_receiver->port(), text("/kiwi/1/SND"));
        QTRY_COMPARE(m_receiver->commands(text("/kiwi/1/SND")).size(), 7);
        QVERIFY(m_client->hasAnsweredAll());
        QVERIFY(other.messages.isEmpty());
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::FaultsTest)
#include "faults_test.moc"
