#include "sim/greeting.h"
#include "simclient.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTimer>
#include <QtEndian>
#include <QtTest>

namespace outpost
{

using namespace sim;

namespace
{

QJsonObject percentDecodedJson(const QByteArray &value)
{
    return QJsonDocument::fromJson(QByteArray::fromPercentEncoding(value)).object();
}

} // namespace

// A recording client as others write them: it identifies itself, reads the configuration, tunes
// when it is told the sample rate, requests sound when it is told the audio rate, and reports
// everything that it does not understand.
class Recorder : public QObject
{
public:
    Recorder(const QStringList &tuning, const QStringList &start) : m_tuning(tuning), m_start(start)
    {
        connect(&m_socket, &QWebSocket::connected, this, [this] {
            say({text("SET auth t=kiwi p="), text("SERVER DE CLIENT recorder SND")});
            m_keepalive.start(30);
        });
        connect(&m_keepalive, &QTimer::timeout, this, [this] {
            if (!sequences.isEmpty()) {
                say({text("SET keepalive"), text("SET GET_USERS"), text("SET STATS_UPD ch=0")});
            }
        });
        connect(&m_socket, &QWebSocket::textMessageReceived, this,
                [this](const QString &message) { complaints.append(message); });
        connect(&m_socket, &QWebSocket::disconnected, this,
                [this] { complaints.append(text("closed")); });
        connect(&m_socket, &QWebSocket::binaryMessageReceived, this,
                [this](const QByteArray &message) { take(message); });
    }
    ~Recorder() override { m_socket.disconnect(this); }

    void open(quint16 port)
    {
        m_socket.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/1700006400000/SND").arg(port)));
    }

    QStringList complaints;
    QVector<double> position; // degrees, latitude first
    QJsonObject configuration;
    QVector<quint32> sequences;
    Samples heard;

private:
    void say(const QStringList &commands)
    {
        for (const QString &command : commands) {
            m_socket.sendTextMessage(command);
        }
    }

    void take(const QByteArray &message)
    {
        if (message.startsWith("SND")) {
            return takeSound(message);
        }
        if (!message.startsWith("MSG ")) {
            return complaints.append(QString::fromLatin1(message.left(80)));
        }
        for (const QByteArray &pair : message.mid(4).split(' ')) {
            takePair(pair.left(pair.indexOf('=')), pair.mid(pair.indexOf('=') + 1));
        }
    }

    void takePair(const QByteArray &name, const QByteArray &value)
    {
        if (name == "load_cfg") {
            takeConfiguration(percentDecodedJson(value));
        } else if (name == "load_dxcfg" || name == "load_dxcomm_cfg") {
            complainUnless(!percentDecodedJson(value).isEmpty(), name);
        } else if (name == "badp") {
            complainUnless(value == "0", name);
        } else if (name == "sample_rate") {
            say(m_tuning);
        } else if (name == "audio_rate") {
            say(m_start);
        }
    }

    void takeConfiguration(const QJsonObject &received)
    {
        static const QRegularExpression pattern(
            QStringLiteral("\\A\\(([-0-9.]+), ([-0-9.]+)\\)\\z"));
        configuration = received;
        const auto match = pattern.match(received.value(text("rx_gps")).toString());
        complainUnless(match.hasMatch(), "rx_gps");
        position = {match.captured(1).toDouble(), match.captured(2).toDouble()};
    }

    void takeSound(const QByteArray &frame)
    {
        complainUnless(frame.size() == 1034, "frame");
        sequences.append(qFromLittleEndian<quint32>(frame.data() + 4));
        const auto flags = quint8(frame.at(3));
        const QByteArray payload = frame.mid(10);
        if (flags & 0x10) {
            heard += decodeAdpcm(&m_adpcm, payload);
        } else if (flags & 0x80) {
            heard += fromLittleEndian(payload);
        } else {
            complainUnless(false, "byte order");
        }
    }

    void complainUnless(bool good, const QByteArray &about)
    {
        if (!good) {
            complaints.append(QString::fromLatin1(about));
        }
    }

    const QStringList m_tuning; // sent after the sample rate
    const QStringList m_start;  // sent after the audio rate
    QWebSocket m_socket;
    QTimer m_keepalive;
    AdpcmState m_adpcm;
};

// Clients other than the station, which send more than its seven commands, and in another order.
class RecorderTest : public QObject
{
    Q_OBJECT

private:
    TestClock m_clock;

    SimConfig config()
    {
        SimConfig config;
        config.nowMs = [this] { return m_clock.nowMs(); };
        config.audio = {ramp(0), ramp(1)};
        return config;
    }

    static QStringList manners()
    {
        return {text("SET ident_user=recorder"),
                text("SET geo=Somewhere"),
                text("SET browser=Mozilla/5.0%20(X11)"),
                text("SET squelch=0 max=0"),
                text("SET genattn=0"),
                text("SET gen=0 mix=-1"),
                text("SET lms_autonotch=0"),
                text("SET nonsense"),
                text("SET"),
                QString()};
    }

    static QStringList tune()
    {
        return {text("SET mod=usb low_cut=300 high_cut=3000 freq=14074.000"),
                text("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50")};
    }

    static QStringList sound() { return {text("SET AR OK in=12000 out=44100")}; }

private slots:
    void recordsWithoutAComplaint_data()
    {
        QTest::addColumn<QStringList>("tuning");
        QTest::addColumn<QStringList>("start");
        QTest::addColumn<int>("frameSamples");
        const QStringList compressed{text("SET compression=1")};
        const QStringList plain{text("SET compression=0")};
        QTest::newRow("compressed") << manners() + compressed + tune() << sound() << 2048;
        QTest::newRow("uncompressed") << manners() + plain + tune() << sound() << 512;
        QTest::newRow("nothing said of compression") << manners() + tune() << sound() << 2048;
        QTest::newRow("everything when told the audio rate")
            << QStringList() << manners() + sound() + tune() + compressed << 2048;
        QTest::newRow("compression turned off last")
            << manners() + tune() << sound() + plain << 512;
    }

    void recordsWithoutAComplaint()
    {
        QFETCH(QStringList, tuning);
        QFETCH(QStringList, start);
        QFETCH(int, frameSamples);
        KiwiSim receiver;
        startSim(receiver, {}, config());
        Recorder recorder(tuning, start);
        recorder.open(receiver.port());
        QTRY_VERIFY(!recorder.sequences.isEmpty());
        for (int seconds = 0; seconds < 40; seconds += 5) {
            const int before = receiver.commands().count(text("SET keepalive"));
            QTRY_VERIFY(receiver.commands().count(text("SET keepalive")) > before);
            m_clock.jumpTo(m_clock.nowMs() + 5000);
        }
        const int minFrames = 38 * 12000 / frameSamples;
        QTRY_VERIFY(recorder.sequences.size() >= minFrames);
        QCOMPARE(recorder.complaints, QStringList());
        QCOMPARE(recorder.heard.size(), recorder.sequences.size() * frameSamples);
        for (int i = 0; i < recorder.sequences.size(); ++i) {
            QCOMPARE(recorder.sequences.at(i), quint32(i + 1));
        }
        QCOMPARE(receiver.liveClients(), 1);
    }

    void readsWhereTheReceiverStands()
    {
        KiwiSim receiver;
        startSim(receiver, {}, config());
        Recorder recorder(tune(), sound());
        recorder.open(receiver.port());
        QTRY_VERIFY(!recorder.sequences.isEmpty());
        const QJsonObject &told = recorder.configuration;
        QCOMPARE(told.value(text("rx_gps")).toString(), text("(47.100000, 8.500000)"));
        QCOMPARE(recorder.position, (QVector<double>{47.1, 8.5}));
        QCOMPARE(told.value(text("rx_grid")).toString(), text("JN47gc"));
        for (const char *key : {"rx_name", "rx_location", "rx_antenna", "owner_info"}) {
            QVERIFY2(!told.value(text(key)).toString().isEmpty(), key);
        }
        const QJsonObject page = told.value(text("index_html_params")).toObject();
        QCOMPARE(page.value(text("RX_QRA")), told.value(text("rx_grid")));
        QCOMPARE(page.value(text("RX_LOC")), told.value(text("rx_location")));
        const QJsonObject init = told.value(text("init")).toObject();
        QCOMPARE(init.value(text("freq")).toDouble(), 14074.0);
        QCOMPARE(init.value(text("mode")).toString(), text("usb"));
    }

    void configurationsAreAsLargeAsAsked_data()
    {
        QTest::addColumn<int>("kilobytes");
        for (const int kilobytes : {3, 24, 200, 2000}) {
            QTest::addRow("%d kB", kilobytes) << kilobytes;
        }
    }

    void configurationsAreAsLargeAsAsked()
    {
        QFETCH(int, kilobytes);
        int configurations = 0;
        for (const QByteArray &message : greeting("127.0.0.1", kSampleRateHz, kilobytes)) {
            if (!message.startsWith("MSG load_")) {
                continue;
            }
            const QByteArray value = message.mid(message.indexOf('=') + 1);
            QVERIFY2(qAbs(value.size() - kilobytes * 1000 - 100) <= 100,
                     qPrintable(QString::number(value.size())));
            QVERIFY(!percentDecodedJson(value).isEmpty());
            ++configurations;
        }
        QCOMPARE(configurations, 3);
    }

    void changesTheCompressionWhileItListens()
    {
        KiwiSim receiver;
        SimConfig settings = config();
        settings.realTimePeriods = 0;
        settings.speed = 1000;
        startSim(receiver, {}, settings);
        SimClient client(&m_clock);
        client.open(receiver.port());
        QTRY_VERIFY(client.boundaryMs != 0);
        client.socket.sendTextMessage(text("SET compression=0"));
        QTRY_VERIFY(receiver.commands().contains(text("SET compression=0")));
        client.jumpToBoundary();
        QTRY_VERIFY_WITH_TIMEOUT(!client.heard.isEmpty(), 10000);
        QVERIFY(client.heard.first() == ramp(0));
        QCOMPARE(quint8(client.sounds.last().at(3)), quint8(0x80));
        client.socket.sendTextMessage(text("SET compression=1"));
        const int before = client.heard.size();
        QTRY_VERIFY(quint8(client.sounds.last().at(3)) == 0x10);
        QTRY_VERIFY(client.heard.size() > before);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::RecorderTest)
#include "recorder_test.moc"
