// Effects of frames on an open link: counters, keepalive, verification, capture, title, log.

#include "tests/fixture/teststation.h"

#include <QCoreApplication>
#include <QDir>
#include <QtTest>

namespace outpost
{

namespace
{
const QByteArray sound = adpcmFrame(QByteArray(1024, '\0'));
const QString keepalive = QStringLiteral("SET keepalive");

QString captureFolder()
{
    return testHome().captureFolder();
}

void removeCaptureFolder()
{
    QDir(captureFolder()).removeRecursively();
    QFile::remove(captureFolder());
}

void openLink(TestStation &station, const PuppetReceiver &receiver)
{
    station.connectTo(receiver.port());
    if (!QTest::qWaitFor([&] { return receiver.commands().size() >= 7; }, 5000)) {
        qFatal("no link");
    }
    station.trace.clear();
}

QString statusText(const TestStation &station)
{
    return station.window->kiwiStatusText();
}
} // namespace

class SoundFramesTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { removeCaptureFolder(); }
    void cleanupTestCase() { removeCaptureFolder(); }

    void keepaliveGoesOutWithTheFirstSoundAndEvery5000Ms();
    void onlySoundKeepsTheLinkAlive();
    void everyFrameCounts_data();
    void everyFrameCounts();
    void otherFramesVerifyNothing_data();
    void otherFramesVerifyNothing();
    void shortSoundFramesVerifyButCaptureNothing_data();
    void shortSoundFramesVerifyButCaptureNothing();
    void aSoundFrameOf10BytesStartsTheCaptureAndYieldsNoSample();
    void verifiesOnce();
    void theFirstFramesAndEvery50thAreLogged();
    void theLogShowsTheFramesHeadAsPlainText_data();
    void theLogShowsTheFramesHeadAsPlainText();
    void aRefusalIsLoggedInTheReceiversOwnWords();
    void aRefusalIsLoggedOnceAMinuteAndForEachConnection();
    void aCaptureFolderThatCannotBeMadeIsTriedAgain();
    void theTitleTellsOfAPeriodAndStays();
    void theSessionOpensWithTheFirstSound();
};

void SoundFramesTest::keepaliveGoesOutWithTheFirstSoundAndEvery5000Ms()
{
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    const qint64 startMs = station.clock.now();
    // Time after the first sound, and the keepalives sent by then, including the one among the
    // commands.
    const QVector<QPair<int, int>> steps = {{0, 2},    {1, 2},    {4999, 2},  {5000, 3},
                                            {5001, 3}, {9999, 3}, {10000, 4}, {14999, 4}};
    int frames = 0;
    for (const auto &[afterMs, keepalives] : steps) {
        station.clock.set(startMs + afterMs);
        receiver.sendBinary("SND");
        frames += 1;
        QTRY_VERIFY(statusText(station).contains(QStringLiteral("\nSND: %1 frames ").arg(frames)));
        QTRY_COMPARE(receiver.commands().count(keepalive), keepalives);
    }
    QCOMPARE(receiver.commands().size(), 7 + 3);
    QVERIFY(!station.trace.contains(QStringLiteral("Kiwi WS sent")));
}

void SoundFramesTest::onlySoundKeepsTheLinkAlive()
{
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    receiver.sendBinary("MSG audio_init=0");
    receiver.sendText(QStringLiteral("SND"));
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX text frame 2: SND")));
    receiver.sendBinary("SND");
    QTRY_COMPARE(receiver.commands().size(), 8);
    station.clock.set(station.clock.now() + 60000);
    receiver.sendBinary("W/F");
    receiver.sendText(QStringLiteral("MSG"));
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX text frame 5: MSG")));
    receiver.sendBinary("SND");
    QTRY_COMPARE(receiver.commands().size(), 9);
}

void SoundFramesTest::everyFrameCounts_data()
{
    QTest::addColumn<QByteArrayList>("frames");
    QTest::addColumn<QString>("counted");
    QTest::newRow("sound") << QByteArrayList{sound, sound}
                           << QStringLiteral(
                                  "SND: 2 frames   0.00 MB\nOther: 0   Last: 1034 bytes");
    QTest::newRow("sound, then another tag")
        << QByteArrayList{sound, "MSG monitor"}
        << QStringLiteral("SND: 1 frames   0.00 MB\nOther: 1   Last: 11 bytes");
    QTest::newRow("an empty frame at last")
        << QByteArrayList{sound, "W/F", QByteArray()}
        << QStringLiteral("SND: 1 frames   0.00 MB\nOther: 2   Last: 0 bytes");
    QTest::newRow("too short for a tag")
        << QByteArrayList{"SN", "S", "SND"}
        << QStringLiteral("SND: 1 frames   0.00 MB\nOther: 2   Last: 3 bytes");
}

void SoundFramesTest::everyFrameCounts()
{
    QFETCH(QByteArrayList, frames);
    QFETCH(QString, counted);
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    for (const QByteArray &frame : frames) {
        receiver.sendBinary(frame);
    }
    QTRY_COMPARE(statusText(station),
                 QStringLiteral("Connected — 14.074000 MHz\nEndpoint: /kiwi/0/SND\n") + counted);
}

void SoundFramesTest::otherFramesVerifyNothing_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("two bytes of the tag") << QByteArray("SN");
    QTest::newRow("lower case") << QByteArray("snd\x10") + QByteArray(1030, '\0');
    QTest::newRow("a blank before it") << QByteArray(" SND");
    QTest::newRow("message") << QByteArray("MSG audio_init=0 audio_rate=12000");
    QTest::newRow("waterfall") << QByteArray("W/F \1\2\3\4");
}

void SoundFramesTest::otherFramesVerifyNothing()
{
    QFETCH(QByteArray, frame);
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    receiver.sendBinary(frame);
    QTRY_COMPARE(station.trace.lines().size(), 1);
    QVERIFY(station.trace.contains(QStringLiteral("RX binary frame 1: size=")));
    QVERIFY(statusText(station).endsWith(QStringLiteral("\nNo verified SND data yet.")));
    QVERIFY(summaryLine(*station.window).startsWith(QStringLiteral("Kiwi Disconnected")));
    QVERIFY(!QFile::exists(captureFolder()));
    QCOMPARE(receiver.commands().size(), 7);
}

void SoundFramesTest::shortSoundFramesVerifyButCaptureNothing_data()
{
    QTest::addColumn<int>("size");
    for (int size = 3; size < 10; ++size) {
        QTest::addRow("%d bytes", size) << size;
    }
}

void SoundFramesTest::shortSoundFramesVerifyButCaptureNothing()
{
    QFETCH(int, size);
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    receiver.sendBinary(sound.left(size));
    QTRY_VERIFY(station.trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED")));
    QVERIFY(statusText(station).contains(QStringLiteral("\nSND: 1 frames ")));
    QVERIFY(!QFile::exists(captureFolder()));
    QTRY_COMPARE(receiver.commands().size(), 8);
}

void SoundFramesTest::aSoundFrameOf10BytesStartsTheCaptureAndYieldsNoSample()
{
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    receiver.sendBinary(sound.left(10));
    QTRY_VERIFY(station.trace.contains(QStringLiteral("REAL KIWI SND DATA VERIFIED")));
    QVERIFY(QFileInfo(captureFolder()).isDir());
    QTRY_COMPARE(receiver.commands().size(), 8);
    // One byte less than a period, frames without samples, then the last byte.
    station.clock.set(MadeUpClock::boundaryMs());
    receiver.sendBinary(adpcmFrame(QByteArray(89999, '\0')));
    for (int i = 0; i < 5; ++i) {
        receiver.sendBinary(sound.left(10));
        receiver.sendBinary(plainFrame({}));
        receiver.sendBinary(plainFrame("x"));
    }
    QTRY_VERIFY(statusText(station).contains(QStringLiteral("\nSND: 17 frames ")));
    QCOMPARE(station.window->windowTitle(), QStringLiteral("PELQ Kiwi Outpost"));
    receiver.sendBinary(adpcmFrame("x"));
    QTRY_COMPARE(station.window->windowTitle(),
                 QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)"));
}

void SoundFramesTest::verifiesOnce()
{
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    for (int i = 0; i < 30; ++i) {
        receiver.sendBinary(sound);
    }
    QTRY_VERIFY(statusText(station).contains(QStringLiteral("\nSND: 30 frames ")));
    QCOMPARE(station.trace.count(QStringLiteral("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND.")), 1);
}

void SoundFramesTest::theFirstFramesAndEvery50thAreLogged()
{
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    // Text frames count as well, so the last of the first ten is binary frame 10.
    receiver.sendText(QStringLiteral("hello"));
    for (int i = 2; i <= 151; ++i) {
        receiver.sendBinary("MSG a");
    }
    QStringList expected{QStringLiteral("RX text frame 1: hello")};
    for (const int number : {2, 3, 4, 5, 6, 7, 8, 9, 10, 50, 100, 150}) {
        expected.append(QStringLiteral("RX binary frame %1: size=5, ascii=MSG a").arg(number));
    }
    QTRY_COMPARE(station.trace.lines(), expected);
}

void SoundFramesTest::theLogShowsTheFramesHeadAsPlainText_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("shown");
    QTest::newRow("eight bytes") << QByteArray("MSG audio_init=0") << QStringLiteral("MSG audi");
    QTest::newRow("up to a zero byte") << QByteArray("EXT\0more", 8) << QStringLiteral("EXT");
    QTest::newRow("markup") << QByteArray("<b>&\"x") << QStringLiteral("&lt;b&gt;&amp;&quot;x");
    QTest::newRow("Latin-1") << QByteArray("W/F \xe9") << QStringLiteral("W/F é");
    QTest::newRow("nothing") << QByteArray() << QString();
}

void SoundFramesTest::theLogShowsTheFramesHeadAsPlainText()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, shown);
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    receiver.sendBinary(frame);
    QTRY_COMPARE(
        station.trace.lines(),
        QStringList{QStringLiteral("RX binary frame 1: size=%1, ascii=").arg(frame.size()) +
                    shown});
}

void SoundFramesTest::aRefusalIsLoggedInTheReceiversOwnWords()
{
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    receiver.sendText(QStringLiteral("MSG down=1"));
    receiver.sendBinary("MSG badp=0");
    receiver.sendBinary("MSG rx_chans=8 badp=1 monitor");
    receiver.sendBinary("MSG kiwi_kick=1,You%20were%0akicked!");
    receiver.sendBinary("SND down=1");
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX binary frame 5")));
    QCOMPARE(station.trace.lines().filter(QRegularExpression(QStringLiteral("^R[Xe]"))),
             QStringList({QStringLiteral("RX text frame 1: MSG down=1"),
                          QStringLiteral("RX binary frame 2: size=10, ascii=MSG badp"),
                          QStringLiteral("RX binary frame 3: size=29, ascii=MSG rx_c"),
                          QStringLiteral("Receiver says: badp=1"),
                          QStringLiteral("Receiver says: monitor"),
                          QStringLiteral("RX binary frame 4: size=36, ascii=MSG kiwi"),
                          QStringLiteral("Receiver says: kiwi_kick=1,You were\\u000akicked!"),
                          QStringLiteral("RX binary frame 5: size=10, ascii=SND down")}));
    QVERIFY(statusText(station).startsWith(QStringLiteral("Connected")));
}

void SoundFramesTest::aRefusalIsLoggedOnceAMinuteAndForEachConnection()
{
    const PuppetReceiver receiver;
    TestStation station;
    const QString line = QStringLiteral("Receiver says: too_busy=8");
    openLink(station, receiver);
    const qint64 startMs = station.clock.now();
    const QVector<QPair<int, int>> steps = {{0, 1}, {0, 1}, {59999, 1}, {60000, 2}, {60001, 2}};
    int frames = 0;
    for (const auto &[afterMs, told] : steps) {
        station.clock.set(startMs + afterMs);
        receiver.sendBinary("MSG too_busy=8");
        frames += 1;
        const QString counted = QStringLiteral("RX binary frame %1:").arg(frames);
        QTRY_VERIFY(station.trace.contains(counted));
        QCOMPARE(station.trace.count(line), told);
    }
    station.connectTo(receiver.port());
    QTRY_COMPARE(receiver.paths().size(), 2);
    station.trace.clear();
    receiver.sendBinary("MSG too_busy=8");
    QTRY_COMPARE(station.trace.count(line), 1);
}

void SoundFramesTest::aCaptureFolderThatCannotBeMadeIsTriedAgain()
{
    const PuppetReceiver receiver;
    TestStation station;
    putFile(captureFolder(), "a file in the folder's place");
    openLink(station, receiver);
    receiver.sendBinary(sound);
    QTRY_COMPARE(station.window->windowTitle(),
                 QStringLiteral("PELQ Kiwi Outpost (ADPCM WAV Failed)"));
    QTRY_VERIFY(statusText(station).startsWith(QStringLiteral("Connected")));

    removeCaptureFolder();
    receiver.sendBinary(sound);
    QTRY_VERIFY(QFileInfo(captureFolder()).isDir());
    QCOMPARE(station.window->windowTitle(), QStringLiteral("PELQ Kiwi Outpost (ADPCM WAV Failed)"));
    station.clock.set(MadeUpClock::boundaryMs());
    receiver.sendBinary(adpcmFrame(QByteArray(90000, '\0')));
    QTRY_COMPARE(station.window->windowTitle(),
                 QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)"));
}

void SoundFramesTest::theTitleTellsOfAPeriodAndStays()
{
    const PuppetReceiver receiver;
    TestStation station("exit 1"); // a failing decoder changes nothing
    station.hear(receiver);
    QCOMPARE(station.window->windowTitle(), QStringLiteral("PELQ Kiwi Outpost"));
    station.clock.set(MadeUpClock::boundaryMs());
    receiver.sendBinary(plainFrame(QByteArray(359999, '\0')));
    receiver.sendBinary(plainFrame("x"));
    QTRY_VERIFY(statusText(station).contains(QStringLiteral("\nSND: 3 frames ")));
    QCOMPARE(station.window->windowTitle(), QStringLiteral("PELQ Kiwi Outpost"));
    receiver.sendBinary(plainFrame("xy"));
    QTRY_COMPARE(station.window->windowTitle(),
                 QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)"));
    receiver.endLink();
    QTRY_VERIFY(station.trace.contains(QStringLiteral("stream ended")));
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    QCOMPARE(station.window->windowTitle(),
             QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)"));
}

void SoundFramesTest::theSessionOpensWithTheFirstSound()
{
    const PuppetReceiver receiver;
    TestStation station;
    const QString log = logFile();
    openLink(station, receiver);
    receiver.sendBinary("MSG audio_init=0");
    QTRY_VERIFY(!station.trace.lines().isEmpty());
    station.clock.set(station.clock.now() + 100000);
    receiver.sendBinary("SND");
    QTRY_VERIFY(statusText(station).startsWith(QStringLiteral("Connected")));
    QVERIFY(!QFile::exists(log));
    station.clock.set(station.clock.now() + 7000);
    receiver.sendBinary(sound); // does not open a second one
    QTRY_VERIFY(statusText(station).contains(QStringLiteral("\nSND: 2 frames ")));
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
    const QJsonArray sessions = jsonFile(log).value(QLatin1String("Sessions")).toArray();
    QCOMPARE(sessions.size(), 1);
    QCOMPARE(sessions.at(0).toObject().value(QLatin1String("DurationSeconds")).toInt(), 7);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::SoundFramesTest)
#include "soundframes_test.moc"
