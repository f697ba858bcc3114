#include "simclient.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

namespace outpost
{

using namespace sim;

namespace
{

QByteArray maskedText(const QString &text)
{
    return QByteArray("\x81").append(char(0x80 | text.size())) + QByteArray(4, '\0') +
           text.toLatin1();
}

int periodsSent(const KiwiSim &receiver)
{
    const auto &events = receiver.events();
    return int(std::count_if(events.begin(), events.end(),
                             [](const SimEvent &event) { return event.kind == text("period"); }));
}

} // namespace

class ReceiverTest : public QObject
{
    Q_OBJECT

private:
    TestClock m_clock;

    SimConfig config()
    {
        SimConfig config;
        config.nowMs = [this] { return m_clock.nowMs(); };
        config.realTimePeriods = 0;
        config.speed = 1000;
        config.configKb = 2;
        return config;
    }

    static void jumpToBoundary(SimClient &client)
    {
        QTRY_VERIFY(client.boundaryMs != 0);
        client.jumpToBoundary();
    }

private slots:
    void greetsInTheReceiversOrder()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        client.open(receiver.port());
        QTRY_VERIFY(!client.sounds.isEmpty());
        const QVector<QByteArray> expected = {
            "MSG sample_rate=12000.000000",
            "MSG client_public_ip=127.0.0.1",
            "MSG rx_chans=8",
            "MSG chan_no_pwd=0",
            "MSG chan_no_pwd_true=0",
            "MSG is_local=0,0,0",
            "MSG max_camp=4",
            "MSG badp=0",
            "MSG version_maj=",
            "MSG load_cfg=",
            "MSG load_dxcfg=",
            "MSG load_dxcomm_cfg=",
            "MSG cfg_loaded",
            "MSG center_freq=15000000 bandwidth=30000000 adc_clk_nom=66666600",
            "MSG audio_init=0 audio_rate=12000"};
        QCOMPARE(client.messages.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            QVERIFY2(client.messages.at(i).startsWith(expected.at(i)), expected.at(i).constData());
        }
        QVERIFY(client.messages.at(8).endsWith(" freq_offset=0.000"));
        QVERIFY(client.messages.at(9).size() >= 2000);
        QVERIFY(client.texts.isEmpty());
    }

    void saysNothingBeforeTheFirstMessage()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        client.commands.clear();
        client.open(receiver.port());
        QTRY_COMPARE(client.socket.state(), QAbstractSocket::ConnectedState);
        QVERIFY(client.hasAnsweredAll());
        QVERIFY(client.messages.isEmpty());
        client.socket.sendTextMessage(text("SET auth t=kiwi p="));
        QTRY_COMPARE(client.messages.size(), 15);
        QVERIFY(laterListenerHears(receiver, &m_clock));
        QVERIFY(client.sounds.isEmpty());
    }

    void firstSoundComesAfterAThirdOfASecond()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        m_clock.jumpTo((m_clock.nowMs() / 15000 + 1) * 15000);
        const qint64 startMs = m_clock.nowMs();
        client.open(receiver.port());
        QTRY_VERIFY(!client.sounds.isEmpty());
        QVERIFY(client.firstSoundMs - startMs >= 300);
        QVERIFY(client.firstSoundMs - startMs < 700);
        QCOMPARE(quint8(client.sounds.first().at(3)), quint8(0x15));
        QCOMPARE(client.sounds.first().size(), 1034);
        QCOMPARE(receiver.commands(text("/kiwi/0/SND")), SimClient::sevenCommands());
    }

    void paths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("isAccepted");
        QTest::newRow("kiwi") << text("/kiwi/0/SND") << true;
        QTest::newRow("ws") << text("/ws/kiwi/1/SND") << true;
        QTest::newRow("short") << text("/2/SND") << true;
        QTest::newRow("time stamp") << text("/kiwi/1700006400000/SND") << true;
        QTest::newRow("lower case") << text("/kiwi/0/snd") << false;
        QTest::newRow("no number") << text("/kiwi/SND") << false;
        QTest::newRow("waterfall") << text("/kiwi/0/W/F") << false;
        QTest::newRow("ws without kiwi") << text("/ws/0/SND") << false;
        QTest::newRow("more behind") << text("/kiwi/0/SND/x") << false;
    }

    void paths()
    {
        QFETCH(QString, path);
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        QSignalSpy opened(&client.socket, &QWebSocket::connected);
        QSignalSpy refused(&client.socket,
                           QOverload<QAbstractSocket::SocketError>::of(&QWebSocket::error));
        client.open(receiver.port(), path);
        QTRY_VERIFY(opened.size() + refused.size() > 0);
        QTEST(opened.size() == 1, "isAccepted");
    }

    void plainRequestIsToldToUpgrade()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        QTcpSocket socket;
        socket.connectToHost(text("127.0.0.1"), receiver.port());
        QTRY_COMPARE(socket.state(), QAbstractSocket::ConnectedState);
        socket.write("GET /kiwi/0/SND HTTP/1.1\r\n\r\n");
        QTRY_COMPARE(socket.state(), QAbstractSocket::UnconnectedState);
        const QByteArray reply = socket.readAll();
        QVERIFY2(reply.startsWith("HTTP/1.1 426 "), reply.constData());
    }

    void uncompressedPeriodsArriveSampleForSample()
    {
        KiwiSim receiver;
        SimConfig settings = config();
        settings.raw = true;
        settings.audio = {ramp(0), ramp(1)};
        startSim(receiver, {}, settings);
        SimClient client(&m_clock);
        client.open(receiver.port());
        jumpToBoundary(client);
        QTRY_VERIFY_WITH_TIMEOUT(client.heard.size() >= 3, 10000);
        QVERIFY(client.heard.at(0) == ramp(0));
        QVERIFY(client.heard.at(1) == ramp(1));
        for (int i = 0; i < kPeriodSamples; ++i) {
            QVERIFY(qAbs(client.heard.at(2).at(i)) < 3000); // noise goes on
        }
        QCOMPARE(client.sounds.first().size(), 1034);
        QVERIFY(quint8(client.sounds.last().at(3)) & 0x80);
    }

    void compressedPeriodsAreTheOnesThatTheReceiverRecords()
    {
        KiwiSim receiver;
        QTemporaryDir folder;
        SimConfig settings = config();
        settings.audio = {ramp(0), ramp(1)};
        settings.logFile = folder.filePath(text("log"));
        QVector<SentPeriod> sent;
        settings.onPeriod = [&sent](const SentPeriod &period) { sent.append(period); };
        startSim(receiver, {}, settings);
        SimClient client(&m_clock);
        client.open(receiver.port());
        jumpToBoundary(client);
        QTRY_VERIFY_WITH_TIMEOUT(client.heard.size() >= 2, 10000);
        QVERIFY(sent.size() >= 2);
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(sent.at(i).number, i);
            QCOMPARE(sent.at(i).startMs, client.boundaryMs + i * 15000);
            QVERIFY(sent.at(i).samples == client.heard.at(i));
            const Samples played = ramp(i);
            for (int j = 2000; j < kPeriodSamples; ++j) {
                QVERIFY(qAbs(client.heard.at(i).at(j) - played.at(j)) < 2000);
            }
        }
        QVERIFY(!receiver.periods().isEmpty());
        const QByteArray hash = QCryptographicHash::hash(toLittleEndian(client.heard.at(1)),
                                                         QCryptographicHash::Sha256);
        QFile log(settings.logFile);
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray lines = log.readAll();
        QVERIFY(lines.contains("sha256 " + hash.toHex()));
        QVERIFY(lines.contains(" client 1 /kiwi/0/SND command SET keepalive\n"));
        QVERIFY(lines.contains("first sound frame\n"));
        QVERIFY(lines.contains("first frame of the period of 20"));
    }

    void boundaryIsMetAtEveryTimeOfArrival_data()
    {
        QTest::addColumn<int>("arrivalMs");
        for (const int ms : {0, 5000, 11600, 12000, 12100, 12300, 12700, 13500, 14600, 14990}) {
            QTest::addRow("%d ms into a period", ms) << ms;
        }
    }

    void boundaryIsMetAtEveryTimeOfArrival()
    {
        QFETCH(int, arrivalMs);
        KiwiSim receiver;
        SimConfig settings = config();
        settings.raw = true;
        settings.audio = {ramp(0)};
        startSim(receiver, {}, settings);
        m_clock.jumpTo((m_clock.nowMs() / 15000 + 1) * 15000 + arrivalMs);
        SimClient client(&m_clock);
        client.open(receiver.port());
        jumpToBoundary(client);
        QTRY_VERIFY_WITH_TIMEOUT(!client.heard.isEmpty(), 10000);
        QVERIFY(client.heard.first() == ramp(0));
    }

    void timersThatComeLateDoNotMoveThePeriod()
    {
        KiwiSim receiver;
        SimConfig settings = config();
        settings.raw = true;
        settings.audio = {ramp(0)};
        startSim(receiver, {}, settings);
        SimClient client(&m_clock);
        client.open(receiver.port());
        QTRY_VERIFY(client.boundaryMs != 0);
        m_clock.jumpTo(client.boundaryMs + 700); // all filler in between is overdue
        QTRY_VERIFY_WITH_TIMEOUT(!client.heard.isEmpty(), 10000);
        QVERIFY(client.heard.first() == ramp(0));
    }

    void leadComesBeforeTheFirstPeriod()
    {
        KiwiSim receiver;
        SimConfig settings = config();
        settings.raw = true;
        settings.audio = {ramp(0)};
        settings.leadPeriods = 1;
        startSim(receiver, {}, settings);
        SimClient client(&m_clock);
        client.open(receiver.port());
        jumpToBoundary(client);
        QTRY_VERIFY_WITH_TIMEOUT(client.heard.size() >= 2, 10000);
        QVERIFY(qAbs(client.heard.at(0).at(5)) < 3000);
        QVERIFY(client.heard.at(1) == ramp(0));
    }

    void firstPeriodIsDeliveredInRealTime()
    {
        KiwiSim receiver;
        SimConfig settings = config();
        settings.realTimePeriods = 1;
        startSim(receiver, {}, settings);
        SimClient client(&m_clock);
        client.open(receiver.port());
        jumpToBoundary(client);
        const int before = client.sounds.size();
        const qint64 beforeMs = m_clock.nowMs();
        QTRY_VERIFY(client.sounds.size() - before >= 4);
        const qint64 due = (m_clock.nowMs() - beforeMs) * 12 / 2048; // frames of 2048 samples
        QVERIFY(client.sounds.size() - before <= due + 2);
        QVERIFY(client.heard.isEmpty());
        m_clock.jumpTo(client.boundaryMs + 15000);
        QTRY_VERIFY_WITH_TIMEOUT(client.heard.size() >= 3, 10000);
    }

    void sameNumberIsRefusedSilentlyWhileLive()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        auto first = std::make_unique<SimClient>(&m_clock);
        first->open(receiver.port());
        QTRY_VERIFY(!first->sounds.isEmpty());
        SimClient second(&m_clock);
        second.open(receiver.port());
        SimClient other(&m_clock);
        other.open(receiver.port(), text("/kiwi/1/SND"));
        QTRY_VERIFY(!other.sounds.isEmpty());
        QCOMPARE(second.socket.state(), QAbstractSocket::ConnectedState);
        QVERIFY(second.messages.isEmpty() && second.sounds.isEmpty());
        first.reset();
        QTRY_COMPARE(receiver.liveClients(), 2);
        SimClient third(&m_clock);
        third.open(receiver.port());
        QTRY_VERIFY(!third.sounds.isEmpty());
    }

    void ninthListenerIsTooMany()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        std::vector<std::unique_ptr<SimClient>> clients;
        for (int i = 0; i < 8; ++i) {
            clients.push_back(std::make_unique<SimClient>(&m_clock));
            clients.back()->open(receiver.port(), QStringLiteral("/%1/SND").arg(i + 10));
            QTRY_VERIFY(!clients.back()->messages.isEmpty());
        }
        SimClient ninth(&m_clock);
        ninth.open(receiver.port());
        QTRY_COMPARE(ninth.closes, 1);
        QCOMPARE(ninth.messages, QList<QByteArray>{"MSG too_busy=8"});
    }

    void withoutKeepaliveTheStreamEndsSilently()
    {
        KiwiSim receiver;
        SimConfig settings = config();
        settings.speed = 1;
        startSim(receiver, {}, settings);
        SimClient client(&m_clock);
        client.open(receiver.port());
        jumpToBoundary(client);
        client.socket.sendTextMessage(text("SET keepalive"));
        QTRY_COMPARE(receiver.commands().count(text("SET keepalive")), 2);
        m_clock.jumpTo(m_clock.nowMs() + 50000);
        client.socket.sendTextMessage(text("SET keepalive"));
        QTRY_COMPARE(receiver.commands().count(text("SET keepalive")), 3);
        client.socket.sendTextMessage(text("SET keepalive please"));
        m_clock.jumpTo(m_clock.nowMs() + 59000);
        const int before = client.sounds.size();
        QTRY_VERIFY(client.sounds.size() > before + 300);
        m_clock.jumpTo(m_clock.nowMs() + 1500);
        QVERIFY(laterListenerHears(receiver, &m_clock));
        const int after = client.sounds.size();
        m_clock.jumpTo(m_clock.nowMs() + 5000);
        QVERIFY(laterListenerHears(receiver, &m_clock));
        QCOMPARE(client.sounds.size(), after);
        QCOMPARE(client.socket.state(), QAbstractSocket::ConnectedState);
    }

    void tooManyEarlyKeepalivesClose()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        client.commands = QStringList{text("SET auth t=kiwi p=")};
        for (int i = 0; i < 4; ++i) {
            client.commands.append(text("SET keepalive"));
        }
        client.open(receiver.port());
        QTRY_COMPARE(receiver.commands().size(), 5);
        QVERIFY(client.hasAnsweredAll());
        QCOMPARE(client.closes, 0);
        client.socket.sendTextMessage(text("SET keepalive"));
        QTRY_COMPARE(client.closes, 1);
    }

    void answersPings()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        client.open(receiver.port());
        QTRY_COMPARE(client.socket.state(), QAbstractSocket::ConnectedState);
        QSignalSpy pong(&client.socket, &QWebSocket::pong);
        client.socket.ping("here");
        QTRY_COMPARE(pong.size(), 1);
        QCOMPARE(pong.first().at(1).toByteArray(), QByteArray("here"));
    }

    void everythingGoesAwayWithTheClient()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        client.open(receiver.port());
        QTRY_VERIFY(!client.sounds.isEmpty());
        QCOMPARE(receiver.liveClients(), 1);
        client.socket.close();
        QTRY_COMPARE(receiver.liveClients(), 0);
        QCOMPARE(receiver.events().last().kind, text("closed"));
        QTRY_COMPARE(client.closes, 1);
    }

    void closingTheReceiverDropsItsClients()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimClient client(&m_clock);
        client.open(receiver.port());
        QTRY_VERIFY(!client.messages.isEmpty());
        receiver.close();
        QCOMPARE(receiver.liveClients(), 0);
        QTRY_COMPARE(client.closes, 1);
        startSim(receiver, {}, config()); // and can start again
    }

    void aClientThatDoesNotReadGetsABoundedQueue()
    {
        KiwiSim receiver;
        SimConfig settings = config();
        settings.raw = true; // 4 times the bytes
        startSim(receiver, {}, settings);
        QTcpSocket client;
        client.setReadBufferSize(1);
        client.connectToHost(text("127.0.0.1"), receiver.port());
        client.write("GET /0/SND HTTP/1.1\r\nSec-WebSocket-Key: key\r\n\r\n");
        for (const QString &command : SimClient::sevenCommands()) {
            client.write(maskedText(command));
        }
        QTRY_VERIFY(wasSent(receiver, "first sound frame"));
        m_clock.jumpTo(m_clock.nowMs() + 18000);
        int periods = -1; // sent so far; stops growing when the queue is full
        const auto standsStill = [&] {
            QTest::qWait(300);
            return std::exchange(periods, periodsSent(receiver)) == periodsSent(receiver);
        };
        QVERIFY(QTest::qWaitFor([&] { return standsStill() && periods > 0; }, 20000));
        QVERIFY(periods < 80); // 360 kB each
        QCOMPARE(receiver.liveClients(), 1);
    }

    void aClientThatDoesNotReadItsAnswersIsDropped()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        QTcpSocket client;
        client.setReadBufferSize(1);
        client.connectToHost(text("127.0.0.1"), receiver.port());
        client.write("GET /0/SND HTTP/1.1\r\nSec-WebSocket-Key: key\r\n\r\n");
        QByteArray ping = maskedText(QString(125, QChar(u'p')));
        ping[0] = char(0x89);
        QTRY_COMPARE(receiver.liveClients(), 1);
        const auto dropped = [&] {
            if (client.bytesToWrite() < (1 << 20)) {
                client.write(ping.repeated(4000));
            }
            return receiver.liveClients() == 0;
        };
        QTRY_VERIFY_WITH_TIMEOUT(dropped(), 30000);
    }

    void refusesToListen_data()
    {
        QTest::addColumn<QString>("wav");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("log");
        QTest::addColumn<double>("speed");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("no such WAV") << text("/nowhere/a.wav") << text("127.0.0.1") << QString()
                                     << 1.0 << text("/nowhere/a.wav: ");
        QTest::newRow("host name") << QString() << text("nowhere") << QString() << 1.0
                                   << text("\"nowhere\" is not an IP address to listen on");
        QTest::newRow("no log") << QString() << text("127.0.0.1") << text("/nowhere/log") << 1.0
                                << text("/nowhere/log: ");
        QTest::newRow("slow") << QString() << text("127.0.0.1") << QString() << 0.5
                              << text("the speed must be 1..1000");
    }

    void refusesToListen()
    {
        QFETCH(QString, wav);
        QFETCH(QString, host);
        QFETCH(QString, log);
        QFETCH(double, speed);
        QFETCH(QString, sentence);
        SimConfig settings = config();
        if (!wav.isEmpty()) {
            settings.wavFiles.append(wav);
        }
        settings.host = host;
        settings.logFile = log;
        settings.speed = speed;
        KiwiSim receiver;
        QString error;
        QVERIFY(!receiver.listen(settings, &error));
        QVERIFY2(error.startsWith(sentence), qPrintable(error));
    }

    void takenPortIsAnError()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        SimConfig settings = config();
        settings.port = receiver.port();
        KiwiSim second;
        QString error;
        QVERIFY(!second.listen(settings, &error));
        QVERIFY(error.startsWith(QStringLiteral("port %1: ").arg(receiver.port())));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ReceiverTest)
#include "receiver_test.moc"
