// Failing decoders, and a failing capture folder: the affected period has no decodes, the next one
// is decoded normally, and nothing is left behind.

#include "base/datapaths.h"
#include "display/decoderow.h"
#include "display/tabletexts.h"
#include "tests/fixture/aftermath.h"
#include "tests/fixture/teststation.h"
#include "tests/store/privatemounts.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QStyledItemDelegate>
#include <QTcpSocket>
#include <QtTest>
#include <cstdio>
#include <limits>
#include <thread>
#include <utility>

namespace outpost
{

class FaultyDecoderTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theNextPeriodIsDecodedAsEver_data();
    void theNextPeriodIsDecodedAsEver();
    void aDecoderThatIsThereAgainDecodesAgain_data();
    void aDecoderThatIsThereAgainDecodesAgain();
    void aFolderThatIsThereAgainIsUsedAgain_data();
    void aFolderThatIsThereAgainIsUsedAgain();
    void theWindowMayGoWhileADecoderRuns();
    void aFailedRunIsOneLineInTheLogAndNothingElse_data();
    void aFailedRunIsOneLineInTheLogAndNothingElse();
    void theWindowAnswersWhileDecodersPrintAllThatIsTaken_data();
    void theWindowAnswersWhileDecodersPrintAllThatIsTaken();
};

namespace
{
// Mounted before main(), and so before any thread starts.
const bool privateMounts = enterPrivateMounts();

// What a debug build on a busy machine may use on top, in kB. If any of the 400 MB of output were
// kept, it would be more.
constexpr qint64 maxExtraKb = 100 * 1024;

#ifdef __SANITIZE_ADDRESS__
constexpr int maxWorkMs = 3000;
#else
constexpr int maxWorkMs = 300;
#endif

// After a period, the columns are measured with some of the rows, and the height of plain rows
// once. All 6000 rows would be 30,000 cells.
constexpr int maxMeasuredCells = 2000;

// Counts the cells that a view measures.
class MeasuringDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        ++measured;
        return QStyledItemDelegate::sizeHint(option, index);
    }

    mutable int measured = 0;
};

const QByteArray goodDecoder =
    "[ $5 = 0 ] && echo \"$(basename $(dirname \"$8\") | cut -d_ -f3) -12 0.3 1234 ~ CQ K1ABC "
    "FN42\"\nexit 0\n";

// Fails in the first period and works afterwards.
QByteArray faultyOnce(const QByteArray &fault)
{
    return "case \"$8\" in *_142315_*)\n" + fault + "\n;; esac\n" + goodDecoder;
}

void sendPeriod(const PuppetReceiver &receiver)
{
    receiver.sendBinary(adpcmFrame(QByteArray(90000, '\0')));
}

void judge(Aftermath &aftermath)
{
    QCOMPARE(aftermath.whatStayed(), QStringList());
    aftermath.print(QTest::currentDataTag() != nullptr ? QTest::currentDataTag()
                                                       : QTest::currentTestFunction());
    QVERIFY(aftermath.staysWithin(maxExtraKb));
}
} // namespace

void FaultyDecoderTest::initTestCase()
{
    QVERIFY2(privateMounts, privateMountsRefused);
    adoptOrphans();
    // Creates what Qt creates once and keeps, before the first comparison.
    PuppetReceiver receiver;
    TestStation station(goodDecoder);
    station.hearPeriod(receiver);
    QTRY_COMPARE(station.shownPeriods().size(), 1);
}

void FaultyDecoderTest::theNextPeriodIsDecodedAsEver_data()
{
    QTest::addColumn<QByteArray>("fault");
    const QByteArray decode = "echo '142315 -12 0.3 1234 ~ CQ LOST';";
    QTest::newRow("exits 1") << decode + "exit 1";
    QTest::newRow("crashes") << decode + "kill -SEGV $$";
    QTest::newRow("is killed") << decode + "kill -KILL $$";
    QTest::newRow("prints 100 MB without a line")
        << QByteArray("head -c 100000000 /dev/zero | tr '\\0' x; exit 0");
    QTest::newRow("prints 100 MB of lines")
        << QByteArray("yes 'no decode in this line' | head -c 100000000; exit 0");
    QTest::newRow("prints 100 MB of NUL") << QByteArray("head -c 100000000 /dev/zero; exit 0");
    QTest::newRow("prints invalid UTF-8") << QByteArray("printf '\\377\\376\\n\\300\\n'; exit 0");
    QTest::newRow("floods its error output")
        << QByteArray("head -c 100000000 /dev/zero >&2; exit 0");
    QTest::newRow("leaves a child") << QByteArray("sleep 1000 & exit 0");
    QTest::newRow("leaves a child that holds nothing")
        << QByteArray("sleep 1000 </dev/null >/dev/null 2>&1 & exit 0");
    QTest::newRow("leaves a child that has left its group")
        << QByteArray("mkfifo \"$HOME/never\" \"$HOME/up\"\n"
                      "setsid sh -c 'echo >\"$HOME/up\"; read x <\"$HOME/never\"' &\n"
                      "read up <\"$HOME/up\"; exit 0");
    QTest::newRow("leaves files") << QByteArray(
        "mkdir -p \"$HOME/a/b\"; ln -s / \"$HOME/a/root\"; head -c 1000000 /dev/zero "
        ">\"$HOME/a/b/c\"; chmod 0 \"$HOME/a/b\"; exit 0");
    QTest::newRow("removes its folder") << QByteArray("rm -rf \"$HOME\"; exit 0");
    if (qEnvironmentVariableIsSet("OUTPOST_LONG_TESTS")) {
        QTest::newRow("hangs for 45 s") << QByteArray("sleep 1000");
    }
}

void FaultyDecoderTest::theNextPeriodIsDecodedAsEver()
{
    QFETCH(QByteArray, fault);
    PuppetReceiver receiver;
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>(faultyOnce(fault));
    station->hearPeriod(receiver);
    sendPeriod(receiver);
    QTRY_COMPARE_WITH_TIMEOUT(station->shownPeriods(), QStringList(QStringLiteral("14:23:30")),
                              60000);
    QCOMPARE(captureLeftovers(), QStringList());
    station.reset();
    QTRY_COMPARE(receiver.liveLinks(), 0);
    judge(aftermath);
}

void FaultyDecoderTest::aDecoderThatIsThereAgainDecodesAgain_data()
{
    QTest::addColumn<QByteArray>("spoil");
    QTest::newRow("removed") << QByteArray("rm $1");
    QTest::newRow("not executable") << QByteArray("chmod 644 $1");
    QTest::newRow("a folder in its place") << QByteArray("rm $1; mkdir $1");
    QTest::newRow("empty") << QByteArray(": >$1");
    QTest::newRow("of another machine") << QByteArray("printf '\\177ELFxxxxxxxxxxxx' >$1");
    QTest::newRow("no interpreter") << QByteArray("echo '#!/nowhere/sh' >$1");
    QTest::newRow("a copy alone") << QByteArray("rm $(dirname $1)/wsjtx");
}

void FaultyDecoderTest::aDecoderThatIsThereAgainDecodesAgain()
{
    QFETCH(QByteArray, spoil);
    PuppetReceiver receiver;
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>(goodDecoder);
    const QString shell = QStringLiteral("sh");
    const QString path = station->decoder.path();
    const auto run = [&](const QString &script) {
        QProcess::execute(shell, {QStringLiteral("-c"), script, shell, path});
    };
    run(QStringLiteral("cp -a $(dirname $1) $(dirname $1).kept"));
    run(QString::fromLatin1(spoil));
    station->hearPeriod(receiver);
    QVERIFY(captureEmpties());
    QCOMPARE(station->shownPeriods(), QStringList());
    run(QStringLiteral("rm -rf $(dirname $1); mv $(dirname $1).kept $(dirname $1)"));
    sendPeriod(receiver);
    sendPeriod(receiver);
    QTRY_VERIFY(station->shownPeriods().contains(QStringLiteral("14:23:45")));
    station.reset();
    QTRY_COMPARE(receiver.liveLinks(), 0);
    judge(aftermath);
}

void FaultyDecoderTest::aFolderThatIsThereAgainIsUsedAgain_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("removed") << QStringLiteral("removed");
    QTest::newRow("a file in its place") << QStringLiteral("file");
    QTest::newRow("full") << QStringLiteral("full");
    QTest::newRow("read-only") << QStringLiteral("read-only");
}

void FaultyDecoderTest::aFolderThatIsThereAgainIsUsedAgain()
{
    QFETCH(QString, fault);
    PuppetReceiver receiver;
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>(goodDecoder);
    station->hear(receiver);
    const QString inUse =
        testHome().captureFolder(); // with a file in its place, the next start would choose another
    std::unique_ptr<MemoryMount> disk;
    if (fault == QLatin1String("full") || fault == QLatin1String("read-only")) {
        disk = std::make_unique<MemoryMount>(inUse, "size=200k");
        QVERIFY(disk->isMounted());
        QVERIFY(fault == QLatin1String("full") || disk->makeReadOnly());
    } else {
        QVERIFY(QDir(inUse).removeRecursively());
        if (fault == QLatin1String("file")) {
            putFile(inUse, "in the way");
        }
    }
    station->clock.set(MadeUpClock::boundaryMs());
    sendPeriod(receiver);
    if (fault == QLatin1String("removed")) {
        QTRY_COMPARE(station->shownPeriods(), QStringList(QStringLiteral("14:23:15")));
    } else {
        QTRY_COMPARE(station->window->windowTitle(),
                     QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)"));
        QVERIFY(captureEmpties());
        QCOMPARE(station->shownPeriods(), QStringList());
    }
    if (fault == QLatin1String("file")) {
        QVERIFY(QFile::remove(inUse));
    }
    disk.reset();
    // A late worker of the first period may have found the folder, but the third period has it.
    sendPeriod(receiver);
    sendPeriod(receiver);
    QTRY_VERIFY(station->shownPeriods().contains(QStringLiteral("14:23:45")));
    station.reset();
    QTRY_COMPARE(receiver.liveLinks(), 0);
    judge(aftermath);
}

// The window waits for running decoders; queued ones never start.
void FaultyDecoderTest::theWindowMayGoWhileADecoderRuns()
{
    PuppetReceiver receiver;
    Aftermath aftermath;
    auto station = std::make_unique<TestStation>("cd \"$here\"; echo + >>runs; while [ "
                                                 "! -e gate ]; do sleep 0.05; done; echo - >>runs");
    const QString runs = station->decoder.left(QStringLiteral("runs"));
    station->hearPeriod(receiver);
    sendPeriod(receiver);
    QTRY_COMPARE(fileBytes(runs).count('+'), 4);
    std::thread opener([gate = station->decoder.left(QStringLiteral("gate"))] {
        QThread::msleep(700); // by then the window is waiting
        putFile(gate, {});
    });
    station->window.reset();
    opener.join();
    QCOMPARE(fileBytes(runs).count('+'), 4);
    QCOMPARE(fileBytes(runs).count('-'), 4);
    station.reset();
    QTRY_COMPARE(receiver.liveLinks(), 0);
    judge(aftermath);
}

void FaultyDecoderTest::aFailedRunIsOneLineInTheLogAndNothingElse_data()
{
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("reason");
    QTest::newRow("exits 1") << QByteArray("exit 1")
                             << QStringLiteral("jt9 ended with exit code 1");
    QTest::newRow("crashes") << QByteArray("kill -SEGV $$")
                             << QStringLiteral("jt9 was killed by signal 11");
}

void FaultyDecoderTest::aFailedRunIsOneLineInTheLogAndNothingElse()
{
    QFETCH(QByteArray, fault);
    QFETCH(QString, reason);
    const QStringList nextPeriod{QStringLiteral("14:23:30")};
    PuppetReceiver receiver;
    QStringList usualLines;
    {
        TestStation healthy(faultyOnce("exit 0"));
        healthy.hearPeriod(receiver);
        sendPeriod(receiver);
        QTRY_COMPARE(healthy.shownPeriods(), nextPeriod);
        usualLines = healthy.trace.lines();
    }
    TestStation station(faultyOnce("[ $5 != 725 ] && exit 0; " + fault));
    station.hearPeriod(receiver);
    const QString title = station.window->windowTitle();
    sendPeriod(receiver);
    QTRY_COMPARE(station.shownPeriods(), nextPeriod);
    QCOMPARE(station.window->windowTitle(), title);
    for (const QWidget *shown : QApplication::topLevelWidgets()) {
        QVERIFY(shown == station.window.get() || !shown->isVisible());
    }
    const QString worker = QStringLiteral(", worker 2 (725-1550 Hz): ");
    const QString again =
        QStringLiteral("Period 14:23:30") + worker + QStringLiteral("decoding again");
    QTRY_VERIFY(station.trace.contains(again));
    QStringList lines = station.trace.lines();
    QCOMPARE(lines.removeAll(QStringLiteral("Period 14:23:15") + worker +
                             QStringLiteral("no decodes, ") + reason),
             1);
    QCOMPARE(lines.removeAll(again), 1);
    QCOMPARE(lines, usualLines);
}

void FaultyDecoderTest::theWindowAnswersWhileDecodersPrintAllThatIsTaken_data()
{
    QTest::addColumn<QByteArray>("message"); // in awk's language
    QTest::newRow("500 of the widest lines a worker") << QByteArray("\"CQ \" low \" \" i \" \" w");
    QTest::newRow("500 lines of single letters a worker")
        << QByteArray("\"CQ \" low \" \" i \" \" l");
    QTest::newRow("500 lines of blanks a worker") << QByteArray("\"CQ \" low \" \" i b \"x\"");
    QTest::newRow("500 times the same message a worker") << QByteArray("\"CQ \" w");
}

// Counts the operations that would be slow. The time itself is only printed, and checked in long
// runs, where the fastest of three periods counts, since any can be slow on a busy machine. A wide
// message makes a wide window, limited by the length of a line.
void FaultyDecoderTest::theWindowAnswersWhileDecodersPrintAllThatIsTaken()
{
    QFETCH(QByteArray, message);
    const QByteArray flood = "awk -v low=$5 'BEGIN {\n"
                             "while (length(w) < 600) { w = w \"W\"; l = l \" I\"; b = b \" \" }\n"
                             "for (i = 1; i <= 600; ++i) {\n"
                             "  head = sprintf(\"142315 -12 0.3 %d ~ \", low + 13 * i)\n"
                             "  b = substr(b, 1, 480)\n"
                             "  print substr(head " +
                             message + ", 1, 512) } }'\nexit 0\n";
    PuppetReceiver receiver;
    TestStation station(flood);
    station.hear(receiver);
    choose(*station.window,
           {QStringLiteral("Settings"), QStringLiteral("View"), QStringLiteral("Station Display")});
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(station.bridgePort));
    QVERIFY(client.waitForConnected());
    station.clock.set(MadeUpClock::boundaryMs());
    Aftermath aftermath;
    QTableWidget *table = decodeTableOf(*station.window);
    auto *delegate = new MeasuringDelegate(table);
    table->setItemDelegate(delegate);
    int removals = 0;
    QObject::connect(table->model(), &QAbstractItemModel::rowsRemoved, table,
                     [&removals] { ++removals; });
    const auto newest = [table] { return cellText(*table, table->rowCount() - 1, TimeColumn); };
    int maxMeasured = 0;
    int minWorkMs = std::numeric_limits<int>::max();
    for (const char *period :
         {"14:23:15", "14:23:30", "14:23:45", "14:24:00", "14:24:15", "14:24:30"}) {
        const Heartbeat heartbeat;
        sendPeriod(receiver);
        QTRY_COMPARE_WITH_TIMEOUT(newest(), QString::fromLatin1(period), 60000);
        QTest::qWait(50); // time for delayed measuring
        maxMeasured = qMax(maxMeasured, std::exchange(delegate->measured, 0));
        const bool isFull = qstrcmp(period, "14:23:45") > 0;
        QCOMPARE(std::exchange(removals, 0), isFull ? 1 : 0);
        if (isFull) { // rows are added and removed in equal numbers
            minWorkMs = qMin(minWorkMs, heartbeat.longestWorkMs());
        }
    }
    aftermath.print(QTest::currentDataTag());
    std::printf("FIGURE %s: %d ms in the quickest period\n", QTest::currentDataTag(), minWorkMs);
    QVERIFY(station.window->width() < 10000);
    std::printf("FIGURE %s: %d cells measured in a period\n", QTest::currentDataTag(), maxMeasured);
    QVERIFY(maxMeasured < maxMeasuredCells);
    if (qEnvironmentVariableIsSet("OUTPOST_LONG_TESTS")) {
        QVERIFY(minWorkMs < maxWorkMs);
    }
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::FaultyDecoderTest)
#include "faultydecoder_test.moc"
