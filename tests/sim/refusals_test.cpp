#include "faultfixture.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace outpost
{

using namespace sim;

namespace
{
// How often the system has retransmitted an unanswered SYN.
int repeatedConnects(const QTcpSocket &socket)
{
    struct tcp_info info = {};
    socklen_t size = sizeof info;
    ::getsockopt(int(socket.socketDescriptor()), IPPROTO_TCP, TCP_INFO, &info, &size);
    return info.tcpi_retransmits;
}
} // namespace

// What happens before the sound, or instead of it.
class RefusalsTest : public FaultFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void refusesEveryConnectionWhenAllRefuse()
    {
        QString error;
        QVERIFY(m_config.endpoints.apply(text("all=refuse"), &error));
        QVERIFY2(m_receiver->listen(m_config, &error), qPrintable(error));
        QVERIFY(m_receiver->port() != 0);
        QTcpSocket socket;
        socket.connectToHost(text("127.0.0.1"), m_receiver->port());
        QTRY_COMPARE(socket.error(), QAbstractSocket::ConnectionRefusedError);
    }

    void answersNoConnectWhenNoneIsToBeAnswered()
    {
        QString error;
        QVERIFY(m_config.endpoints.apply(text("all=no-connect"), &error));
        QVERIFY2(m_receiver->listen(m_config, &error), qPrintable(error));
        std::array<QTcpSocket, 5> sockets;
        QVERIFY(sockets.front().bind(
            QHostAddress(QHostAddress::LocalHost))); // so that it has a descriptor
        for (QTcpSocket &socket : sockets) {
            socket.connectToHost(text("127.0.0.1"), m_receiver->port());
        }
        QTRY_VERIFY_WITH_TIMEOUT(repeatedConnects(sockets.front()) > 0, 20000);
        for (const QTcpSocket &socket : sockets) {
            QCOMPARE(socket.state(), QAbstractSocket::ConnectingState);
        }
        const quint16 port = m_receiver->port();
        m_receiver->close();
        QTcpSocket late;
        late.connectToHost(text("127.0.0.1"), port);
        QTRY_COMPARE(late.error(), QAbstractSocket::ConnectionRefusedError);
        m_config.endpoints = {};
        m_config.port = port;
        QVERIFY2(m_receiver->listen(m_config, &error), qPrintable(error));
        m_client->open(port);
        QTRY_VERIFY(!m_client->sounds.isEmpty());
    }

    void oneRefusedEndpointIsReset()
    {
        start("refuse");
        QTRY_VERIFY(m_client->closes > 0 ||
                    m_client->socket.error() != QAbstractSocket::UnknownSocketError);
        QTRY_COMPARE(m_receiver->liveClients(), 0);
        SimClient other(&m_clock);
        other.open(m_receiver->port(), text("/kiwi/1/SND"));
        QTRY_VERIFY(!other.sounds.isEmpty());
    }

    void neverAnswers_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        for (const char *behaviour : {"no-answer", "no-connect"}) {
            QTest::newRow(behaviour) << QByteArray(behaviour);
        }
    }

    void neverAnswers()
    {
        QFETCH(QByteArray, behaviour);
        start(behaviour.constData());
        QTcpSocket socket;
        request(&socket);
        QVERIFY(laterListenerHears(*m_receiver, &m_clock));
        QCOMPARE(socket.state(), QAbstractSocket::ConnectedState);
        QCOMPARE(socket.bytesAvailable(), qint64(0));
    }

    void httpErrors_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QByteArray>("status");
        QTest::newRow("404") << QByteArray("http-404") << QByteArray("HTTP/1.1 404 Not Found\r\n");
        QTest::newRow("307") << QByteArray("http-307")
                             << QByteArray("HTTP/1.1 307 Temporary Redirect\r\nLocation: ");
        QTest::newRow("503") << QByteArray("http-503")
                             << QByteArray("HTTP/1.1 503 Service Unavailable\r\n");
    }

    void httpErrors()
    {
        QFETCH(QByteArray, behaviour);
        QFETCH(QByteArray, status);
        start(behaviour.constData());
        QTcpSocket socket;
        request(&socket);
        QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
        QVERIFY(socket.readAll().startsWith(status));
    }

    void headersWithoutEnd()
    {
        start("endless-headers");
        QTcpSocket socket;
        request(&socket);
        QTRY_VERIFY(socket.bytesAvailable() > 50000);
        const QByteArray reply = socket.readAll();
        QVERIFY(reply.startsWith("HTTP/1.1 101 "));
        QVERIFY(!reply.contains("\r\n\r\n"));
        QVERIFY(m_client->socket.state() != QAbstractSocket::ConnectedState);
    }

    void slowOpen()
    {
        start("slow-open:600");
        QVERIFY(laterListenerHears(*m_receiver, &m_clock));
        QVERIFY(m_client->socket.state() != QAbstractSocket::ConnectedState);
        m_clock.jumpTo(m_clock.nowMs() + 600000);
        QTRY_VERIFY(!m_client->sounds.isEmpty());
    }

    void openButSilent()
    {
        start("open-silent");
        QTRY_COMPARE(m_receiver->commands().size(), 7);
        QVERIFY(laterListenerHears(*m_receiver, &m_clock));
        QCOMPARE(m_client->socket.state(), QAbstractSocket::ConnectedState);
        QVERIFY(m_client->messages.isEmpty() && m_client->sounds.isEmpty());
    }

    void neverSounds_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("monitor") << QByteArray("monitor") << QByteArray("MSG monitor");
        QTest::newRow("messages") << QByteArray("msg-only") << QByteArray("MSG max_camp=4");
        QTest::newRow("busy") << QByteArray("too-busy:0.1") << QByteArray("MSG too_busy=8");
        QTest::newRow("text") << QByteArray("text-only") << QByteArray("MSG rx_chans=8");
        QTest::newRow("W/F") << QByteArray("other-tags-only") << QByteArray("W/F \1\2\3\4");
        QTest::newRow("EXT") << QByteArray("other-tags-only") << QByteArray("EXT name=value");
    }

    void neverSounds()
    {
        QFETCH(QByteArray, behaviour);
        QFETCH(QByteArray, message);
        start(behaviour.constData());
        const auto count = [&] {
            return m_client->messages.count(message) + m_client->others.count(message) +
                   m_client->texts.count(QString::fromLatin1(message));
        };
        for (int i = 0; i < 3; ++i) { // repeatedly
            QTRY_VERIFY(count() > i);
            m_clock.jumpTo(m_clock.nowMs() + 501);
            QTest::qWait(10);
            m_clock.jumpTo(m_clock.nowMs() + 500);
        }
        QVERIFY(m_client->sounds.isEmpty());
        QCOMPARE(m_client->closes, 0);
        const bool audio = m_client->messages.contains("MSG audio_init=0 audio_rate=12000");
        QCOMPARE(audio, behaviour == "msg-only");
    }

    void refusalsThatStayOpen_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("badp") << QByteArray("badp-open") << QByteArray("MSG badp=1");
        QTest::newRow("down") << QByteArray("down-open") << QByteArray("MSG down=1");
        QTest::newRow("busy") << QByteArray("busy-open") << QByteArray("MSG too_busy=8");
    }

    void refusalsThatStayOpen()
    {
        QFETCH(QByteArray, behaviour);
        QFETCH(QByteArray, message);
        start(behaviour.constData());
        QTRY_COMPARE(m_client->messages, QList<QByteArray>{message});
        QTRY_COMPARE(m_receiver->commands().size(), 7); // read, but without effect
        const QSignalSpy pong(&m_client->socket, &QWebSocket::pong);
        m_client->socket.ping();
        m_clock.jumpTo(m_clock.nowMs() + 70000);
        QVERIFY(laterListenerHears(*m_receiver, &m_clock));
        QCOMPARE(m_client->messages, QList<QByteArray>{message});
        QVERIFY(m_client->sounds.isEmpty() && pong.isEmpty());
        QCOMPARE(m_client->socket.state(), QAbstractSocket::ConnectedState);
        QTRY_COMPARE(m_receiver->liveClients(), 1); // the later one is disconnected
    }

    void notices_data()
    {
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QByteArray>("message");
        const auto row = [](const char *behaviour, const char *message) {
            QTest::newRow(behaviour) << QByteArray(behaviour) << QByteArray(message);
        };
        row("badp", "MSG badp=1");
        row("one-per-address", "MSG badp=5");
        row("down", "MSG down=1");
        row("redirect", "MSG redirect=http://127.0.0.1:9");
        row("ip-limit", "MSG ip_limit=60,127.0.0.1");
    }

    void notices()
    {
        QFETCH(QByteArray, behaviour);
        QFETCH(QByteArray, message);
        start(behaviour.constData());
        QTRY_COMPARE(m_client->closes, 1);
        QCOMPARE(m_client->messages, QList<QByteArray>{message});
        QVERIFY(m_client->sounds.isEmpty());
        QTRY_COMPARE(m_receiver->liveClients(), 0);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::RefusalsTest)
#include "refusals_test.moc"
