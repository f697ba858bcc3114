// The link alone: its callbacks and its options.

#include "base/logline.h"
#include "kiwi/kiwilink.h"
#include "kiwi/sndevidence.h"
#include "kiwi/sndframe.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/madeupclock.h"
#include "tests/fixture/puppetreceiver.h"
#include "tests/fixture/simulator.h"

#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

namespace
{
const QByteArray sound = adpcmFrame(QByteArray(1024, '\0'));

// A link with a receiver of its own. Callbacks appear in the trace among the log lines, marked with
// "*".
struct LinkBench {
    explicit LinkBench(KiwiLinkOptions options = withoutReport()) : target{localTarget(receiver)}
    {
        KiwiLinkCallbacks callbacks;
        callbacks.onStatus = [this](const QString &text) {
            logLine(QStringLiteral("* ") + text);
            atStatus(text);
        };
        callbacks.onSoundFrame = [] { logLine(QStringLiteral("* sound frame")); };
        callbacks.onSound = [](const QByteArray &frame) {
            logLine(QStringLiteral("* sound of %1 bytes").arg(frame.size()));
        };
        callbacks.onStreamEnded = [] { logLine(QStringLiteral("* ended")); };
        callbacks.onDisconnected = [] { logLine(QStringLiteral("* disconnected")); };
        options.clock = clock.reader();
        link = std::make_unique<KiwiLink>([this] { return target; }, callbacks, options);
    }

    static KiwiTarget localTarget(const PuppetReceiver &at)
    {
        return {QStringLiteral("127.0.0.1"), at.port(), 14.074};
    }

    static KiwiLinkOptions withoutReport()
    {
        KiwiLinkOptions options;
        options.evidenceFolder = nullptr;
        return options;
    }

    static KiwiLinkOptions impatient()
    {
        KiwiLinkOptions options = withoutReport();
        options.timeouts.openMs = 2000; // long enough to open a link on a busy machine
        options.timeouts.dataMs = 20;
        return options;
    }

    bool open()
    {
        link->connectKiwi();
        return QTest::qWaitFor([this] { return receiver.commands().size() == 7; }, 10000);
    }

    bool hear()
    {
        if (!open()) {
            return false;
        }
        receiver.sendBinary(sound);
        return QTest::qWaitFor([this] { return trace.contains(QStringLiteral("RX binary")); },
                               10000);
    }

    PuppetReceiver receiver;
    KiwiTarget target;
    MadeUpClock clock;
    LogTrace trace;
    std::function<void(const QString &)> atStatus = [](const QString &) {};
    std::unique_ptr<KiwiLink> link;
};

QString inLines(const QStringList &list)
{
    return list.join(QLatin1Char('\n'));
}

QStringList sentLines(const QStringList &commands)
{
    QStringList lines;
    for (const QString &command : commands) {
        lines.append(QStringLiteral("Kiwi WS sent: ") + command);
    }
    return lines;
}
} // namespace

class KiwiLinkTest : public QObject
{
    Q_OBJECT

private slots:
    void everyStepIsToldInItsOrder();
    void disconnectingIsTold_data();
    void disconnectingIsTold();
    void disconnectingInsideAStatusHolds_data();
    void disconnectingInsideAStatusHolds();
    void reconnectingInsideAStatusBeginsAnew();
    void thePhaseFollowsTheLink();
    void aFrameShorterThanItsHeaderVerifiesButHasNoSound();
    void aFailureIsToldOnceAndIsNoState();
    void theUsualTimeoutsAre5000And6000Ms();
    void theTargetIsAskedForAtEachUse();
    void secretsAreMaskedInTheLogAlone();
    void otherEndpointsAndCommands();
    void commandsInMidLink();
    void otherFramesAreHandedOn();
    void framesNeedNotBeLogged();
    void theLastErrorIsKept();
    void destructionCallsNothing();
};

void KiwiLinkTest::everyStepIsToldInItsOrder()
{
    const QTemporaryDir folder;
    KiwiLinkOptions options;
    options.evidenceFolder = [&folder] { return folder.path(); };
    LinkBench bench(options);
    QVERIFY(bench.hear());
    bench.receiver.sendBinary("W/F");
    QTRY_VERIFY(bench.trace.contains(QStringLiteral("RX binary frame 2")));
    bench.receiver.endLink();
    QTRY_VERIFY(bench.trace.contains(QStringLiteral("Verified Kiwi SND stream ended.")));

    const QString port = QString::number(bench.receiver.port());
    const QStringList beforeOpen{
        QStringLiteral("* ended"),
        QStringLiteral("* disconnected"),
        QStringLiteral("* Connecting — 14.074000 MHz"),
        QStringLiteral("Native Kiwi connection requested: 127.0.0.1:%1, 14.074000 MHz.").arg(port),
        QStringLiteral("Kiwi WebSocket probe trying: ws://127.0.0.1:%1/kiwi/0/SND").arg(port),
        QStringLiteral("* Connecting — trying /kiwi/0/SND"),
        QStringLiteral("Kiwi WebSocket open: /kiwi/0/SND. Waiting for real SND data.")};
    const QString report =
        evidenceFilePath(folder.path(), QDateTime::fromMSecsSinceEpoch(bench.clock.now()));
    const QStringList afterOpen{QStringLiteral("* WebSocket open — waiting for SND at /kiwi/0/SND"),
                                QStringLiteral("* sound frame"),
                                QStringLiteral("* sound of 1034 bytes"),
                                QStringLiteral("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND."),
                                QStringLiteral("Live SND evidence updated: ") + report,
                                QStringLiteral("RX binary frame 1: size=1034, ascii=") +
                                    frameHead(sound),
                                QStringLiteral("* "),
                                QStringLiteral("RX binary frame 2: size=3, ascii=W/F"),
                                QStringLiteral("* "),
                                QStringLiteral("* ended"),
                                QStringLiteral("* Disconnected — verified SND stream ended"),
                                QStringLiteral("Verified Kiwi SND stream ended.")};
    QCOMPARE(inLines(bench.trace.lines()),
             inLines(beforeOpen + sentLines(kiwiCommands(14.074)) + afterOpen));
    QVERIFY(QFile::exists(report));
}

void KiwiLinkTest::disconnectingIsTold_data()
{
    QTest::addColumn<bool>("announce");
    QTest::addColumn<QStringList>("told");
    const QStringList always{QStringLiteral("* ended"), QStringLiteral("* disconnected")};
    QTest::newRow("silently") << false << always;
    QTest::newRow("announced") << true
                               << always +
                                      QStringList{QStringLiteral("* Disconnected"),
                                                  QStringLiteral("Kiwi receiver disconnected.")};
}

void KiwiLinkTest::disconnectingIsTold()
{
    QFETCH(bool, announce);
    LinkBench bench;
    QVERIFY(bench.hear());
    bench.trace.clear();
    bench.link->disconnectKiwi(announce);
    QTEST(bench.trace.lines(), "told");
    QCOMPARE(bench.link->kiwiStatusText(), QStringLiteral("Disconnected"));
    QTRY_COMPARE(bench.receiver.liveLinks(), 0);
}

void KiwiLinkTest::disconnectingInsideAStatusHolds_data()
{
    QTest::addColumn<QString>("status");
    QTest::newRow("requested") << QStringLiteral("Connecting — 14.074000 MHz");
    QTest::newRow("trying") << QStringLiteral("Connecting — trying /kiwi/0/SND");
    QTest::newRow("open") << QStringLiteral("WebSocket open — waiting for SND at /kiwi/0/SND");
}

void KiwiLinkTest::disconnectingInsideAStatusHolds()
{
    QFETCH(QString, status);
    LinkBench bench;
    bench.atStatus = [&](const QString &text) {
        if (text == status) {
            bench.link->disconnectKiwi(false);
        }
    };
    bench.link->connectKiwi();
    QTRY_VERIFY(bench.trace.contains(QStringLiteral("* ") + status));
    QCoreApplication::processEvents(); // what was queued
    QVERIFY(bench.link->state().phase == LinkPhase::Disconnected);
    const auto *watchdog = bench.link->findChild<QTimer *>(QStringLiteral("watchdog"));
    QVERIFY(!watchdog->isActive());
    QTRY_COMPARE(bench.receiver.liveLinks(), 0);
    bench.atStatus = [](const QString &) {};
    QVERIFY(bench.hear());
}

void KiwiLinkTest::reconnectingInsideAStatusBeginsAnew()
{
    LinkBench bench;
    int times = 0;
    bench.atStatus = [&](const QString &text) {
        if (text.startsWith(QStringLiteral("Connecting — trying")) && ++times == 1) {
            bench.link->connectKiwi();
        }
    };
    QVERIFY(bench.hear());
    QCOMPARE(times, 2);
    QCOMPARE(bench.receiver.paths(), QStringList{QStringLiteral("/kiwi/0/SND")});
    QCOMPARE(bench.receiver.liveLinks(), 1);
}

void KiwiLinkTest::thePhaseFollowsTheLink()
{
    LinkBench bench;
    const auto phase = [&bench] { return bench.link->state().phase; };
    QVERIFY(phase() == LinkPhase::Disconnected);
    bench.link->connectKiwi();
    QVERIFY(phase() == LinkPhase::ProbeQueued);
    QTRY_VERIFY(phase() == LinkPhase::Probing);
    QTRY_COMPARE(bench.receiver.commands().size(), 7);
    bench.receiver.endLink(); // before any sound
    QTRY_COMPARE(bench.link->state().currentEndpoint, QStringLiteral("/kiwi/1/SND"));
    QTRY_COMPARE(bench.receiver.commands().size(), 7);
    QVERIFY(phase() == LinkPhase::Probing);
    bench.receiver.sendBinary(sound);
    QTRY_VERIFY(phase() == LinkPhase::Connected);
    bench.receiver.endLink();
    QTRY_VERIFY(phase() == LinkPhase::Disconnected);
    QCOMPARE(bench.link->state().sndFrames, quint64(1)); // counts stay until the next connection
    bench.link->connectKiwi();
    QCOMPARE(bench.link->state().sndFrames, quint64(0));
    QCOMPARE(bench.link->state().currentEndpoint, QString());
}

void KiwiLinkTest::aFrameShorterThanItsHeaderVerifiesButHasNoSound()
{
    LinkBench bench;
    QVERIFY(bench.open());
    bench.receiver.sendBinary(sound.left(9));
    QTRY_VERIFY(bench.link->state().phase == LinkPhase::Connected);
    QVERIFY(!bench.trace.contains(QStringLiteral("* sound of")));
    bench.receiver.sendBinary(sound.left(10));
    QTRY_VERIFY(bench.trace.contains(QStringLiteral("* sound of 10 bytes")));
}

void KiwiLinkTest::aFailureIsToldOnceAndIsNoState()
{
    LinkBench bench(LinkBench::impatient());
    bench.link->connectKiwi();
    const QString failed = QStringLiteral("* Failed — no Kiwi SND endpoint produced data");
    QTRY_COMPARE_WITH_TIMEOUT(bench.trace.count(failed), 1, 20000);
    QCOMPARE(bench.trace.lines().last(),
             QStringLiteral("Kiwi WebSocket probe failed for all tested endpoints."));
    QCOMPARE(inLines(bench.trace.lines().filter(QStringLiteral("trying next"))),
             inLines(QStringList(kiwiSndEndpoints())
                         .replaceInStrings(QRegularExpression(QStringLiteral("^(.*)$")),
                                           QStringLiteral("No verified SND data at \\1; trying "
                                                          "next endpoint."))));
    QVERIFY(bench.link->state().phase == LinkPhase::Disconnected);
    QCOMPARE(bench.link->kiwiStatusText(), QStringLiteral("Disconnected"));
    QCOMPARE(bench.receiver.paths(), kiwiSndEndpoints());
}

void KiwiLinkTest::theUsualTimeoutsAre5000And6000Ms()
{
    KiwiSim silent;
    startSim(silent, {QStringLiteral("all=no-answer")});
    LinkBench bench;
    const auto *watchdog = bench.link->findChild<QTimer *>(QStringLiteral("watchdog"));
    bench.target.port = silent.port();
    bench.link->connectKiwi();
    QTRY_VERIFY(watchdog->isActive());
    QCOMPARE(watchdog->interval(), 5000);
    bench.target.port = bench.receiver.port();
    QVERIFY(bench.open());
    QVERIFY(watchdog->isActive());
    QCOMPARE(watchdog->interval(), 6000);
}

void KiwiLinkTest::theTargetIsAskedForAtEachUse()
{
    const PuppetReceiver other;
    LinkBench bench;
    QVERIFY(bench.open());
    bench.target.port = other.port();
    bench.target.frequencyMhz = 7.074;
    QCOMPARE(bench.link->kiwiStatusText(),
             QStringLiteral("Connecting — 7.074000 MHz\nEndpoint: /kiwi/0/SND\n"
                            "No verified SND data yet."));
    bench.receiver.endLink();
    QTRY_COMPARE(other.commands(), kiwiCommands(7.074));
    QCOMPARE(other.paths(), QStringList{QStringLiteral("/kiwi/1/SND")});
}

void KiwiLinkTest::secretsAreMaskedInTheLogAlone()
{
    KiwiLinkOptions options = LinkBench::withoutReport();
    options.commands = [](double) { return QStringList{QStringLiteral("SET auth t=kiwi p=hush")}; };
    options.maskSecrets = [](QString line) {
        return line.replace(QStringLiteral("hush"), QStringLiteral("***"));
    };
    LinkBench bench(options);
    bench.link->connectKiwi();
    QTRY_COMPARE(bench.receiver.commands(), QStringList{QStringLiteral("SET auth t=kiwi p=hush")});
    bench.receiver.sendText(QStringLiteral("you said hush"));
    bench.receiver.sendBinary("MSG redirect=hush");
    QTRY_VERIFY(bench.trace.contains(QStringLiteral("Receiver says: redirect=***")));
    QCOMPARE(bench.trace.count(QStringLiteral("Kiwi WS sent: SET auth t=kiwi p=***")), 1);
    QCOMPARE(bench.trace.count(QStringLiteral("RX text frame 1: you said ***")), 1);
    QVERIFY(!bench.trace.contains(QStringLiteral("hush")));
}

void KiwiLinkTest::otherEndpointsAndCommands()
{
    KiwiLinkOptions options = LinkBench::withoutReport();
    int connections = 0;
    options.endpoints = [&connections] {
        const QString path = QStringLiteral("/%1/SND").arg(++connections);
        return QStringList{QStringLiteral("/a/SND"), path};
    };
    options.commands = [](double mhz) { return QStringList{QString::number(mhz)}; };
    LinkBench bench(options);
    for (int i = 1; i <= 4; ++i) {
        if (i % 2 == 1) {
            bench.trace.clear();
            bench.link->connectKiwi();
        }
        QTRY_COMPARE(bench.receiver.paths().size(), i);
        QTRY_COMPARE(bench.receiver.commands(), QStringList{QStringLiteral("14.074")});
        bench.receiver.endLink();
        if (i % 2 == 0) {
            QTRY_VERIFY(bench.trace.contains(QStringLiteral("failed for all tested endpoints")));
        }
    }
    const QStringList paths{QStringLiteral("/a/SND"), QStringLiteral("/1/SND"),
                            QStringLiteral("/a/SND"), QStringLiteral("/2/SND")};
    QCOMPARE(bench.receiver.paths(), paths);
}

void KiwiLinkTest::commandsInMidLink()
{
    LinkBench bench;
    const QStringList tune{QStringLiteral("SET mod=usb")};
    bench.link->send(tune); // nobody hears it
    QVERIFY(bench.hear());
    bench.link->send(tune);
    QTRY_COMPARE(bench.receiver.commands().size(), 9); // seven, then a keepalive
    QCOMPARE(bench.receiver.commands().last(), tune.first());
    QCOMPARE(bench.trace.count(QStringLiteral("Kiwi WS sent: SET mod=usb")), 1);
    bench.link->disconnectKiwi(false);
    bench.link->send(tune);
    QCOMPARE(bench.trace.count(QStringLiteral("Kiwi WS sent: SET mod=usb")), 1);
}

void KiwiLinkTest::otherFramesAreHandedOn()
{
    const LogTrace trace;
    const PuppetReceiver receiver;
    QByteArrayList frames;
    KiwiLinkCallbacks callbacks;
    callbacks.onOtherFrame = [&frames](const QByteArray &frame) { frames.append(frame); };
    KiwiLink link([&receiver] { return LinkBench::localTarget(receiver); }, callbacks,
                  LinkBench::withoutReport());
    link.connectKiwi();
    QTRY_COMPARE(receiver.commands().size(), 7);
    receiver.sendBinary("MSG monitor");
    receiver.sendBinary(sound);
    receiver.sendBinary("W/F");
    QTRY_COMPARE(frames, QByteArrayList({"MSG monitor", "W/F"}));
}

void KiwiLinkTest::framesNeedNotBeLogged()
{
    KiwiLinkOptions options = LinkBench::withoutReport();
    options.framesAreLogged = false;
    LinkBench bench(options);
    QVERIFY(bench.open());
    bench.receiver.sendBinary("MSG badp=1");
    QTRY_VERIFY(bench.trace.contains(QStringLiteral("Receiver says: badp=1")));
    QVERIFY(!bench.trace.contains(QStringLiteral("RX binary")));
}

void KiwiLinkTest::theLastErrorIsKept()
{
    KiwiSim offline;
    startSim(offline, {QStringLiteral("all=http-404")});
    LinkBench bench;
    bench.target.port = offline.port();
    bench.link->connectKiwi();
    QTRY_VERIFY(bench.link->state().lastError.contains(QStringLiteral("404")));
    bench.link->connectKiwi();
    QCOMPARE(bench.link->state().lastError, QString());
}

void KiwiLinkTest::destructionCallsNothing()
{
    LinkBench bench;
    QVERIFY(bench.hear());
    bench.trace.clear();
    bench.link.reset();
    QTRY_COMPARE(bench.receiver.liveLinks(), 0);
    QCOMPARE(bench.trace.lines(), QStringList());
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::KiwiLinkTest)
#include "kiwilink_test.moc"
