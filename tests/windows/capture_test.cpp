// The four workers of a period on Windows: their decoders, their folders, their results.

#include "decode/kiwiaudiocapture.h"
#include "tests/decode/decodelines.h"
#include "tests/windows/standindecoder.h"

#include <QTimer>
#include <QtTest>
#include <memory>
#include <qt_windows.h>
#include <thread>

namespace outpost
{

namespace
{
constexpr qint64 firstStartMs = 1768573395000; // 14:23:15 UTC on 16 January 2026
constexpr qint64 secondStartMs = firstStartMs + KiwiAudioCapture::periodMs;
constexpr qint64 thirdStartMs = secondStartMs + KiwiAudioCapture::periodMs;
constexpr int lowHz[] = {0, 725, 1450, 2175};
constexpr int programsMs = 30000; // for programs to start on a busy machine
const QByteArray silence(KiwiAudioCapture::bytesPerPeriod, '\0');

struct Delivery {
    QString label;
    QStringList lines;
};

// Waits a moment after the last line, as the decoder does. Under load, Wine's asynchronous pipes
// can lose what a process prints just before it ends.
QStringList orders(const char *text)
{
    return (QString::fromLatin1(text) + QStringLiteral("; wait 100")).split(QStringLiteral("; "));
}

// For its lifetime, nobody else can open or remove the file.
class HeldFile
{
public:
    explicit HeldFile(const QString &path)
    {
        QDir().mkpath(QFileInfo(path).path());
        const std::wstring native = QDir::toNativeSeparators(path).toStdWString();
        handle = CreateFileW(native.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            qFatal("cannot hold the file");
        }
    }
    ~HeldFile() { CloseHandle(handle); }
    Q_DISABLE_COPY(HeldFile)

private:
    HANDLE handle;
};
} // namespace

class CaptureTest : public QObject
{
    Q_OBJECT

private slots:
    // Qt creates its calendar on first use, which four threads must not do at once. In the station,
    // the window does it first.
    void initTestCase()
    {
        const QDateTime start = QDateTime::fromMSecsSinceEpoch(firstStartMs, Qt::UTC);
        QCOMPARE(start.toString(QStringLiteral("HH:mm:ss")), QStringLiteral("14:23:15"));
    }

    void init()
    {
        work = std::make_unique<QTemporaryDir>();
        decoder = std::make_unique<StandInDecoder>();
        qputenv("PELQ_JT9_PATH", decoder->path().toLocal8Bit());
        const auto into = [](QList<Delivery> &list) {
            list.clear();
            return [&list](const QString &label, const QVector<Ft8Decode> &decodes) {
                list.append({label, linesOf(decodes)});
            };
        };
        capture =
            std::make_unique<KiwiAudioCapture>(CaptureCallbacks{into(batches), into(periods)});
        capture->setCaptureFolder(folder());
    }
    void cleanup() { capture.reset(); }

    void eachWorkerDecodesItsBandInAFolderOfItsOwn()
    {
        QByteArray samples;
        for (int i = 0; i < KiwiAudioCapture::bytesPerPeriod; ++i) {
            samples.append(static_cast<char>(i % 251));
        }
        decoder->obey(orders("record; for _S1_ print ~ one; for _S2_ print ~ two; "
                             "for _S3_ print ~ three; for _S4_ print ~ four"));
        capture->setDecodeDepth(3);
        capture->queueDecodeSlices(firstStartMs, samples);
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 1, programsMs);
        QStringList lines = periods.first().lines;
        lines.sort();
        QCOMPARE(lines.join(QLatin1Char(' ')), QStringLiteral("~ four ~ one ~ three ~ two"));
        QCOMPARE(batches.size(), 4);
        const QString names[] = {QStringLiteral("S1_0_825"), QStringLiteral("S2_725_1550"),
                                 QStringLiteral("S3_1450_2275"), QStringLiteral("S4_2175_3000")};
        for (int worker = 0; worker < 4; ++worker) {
            const QString own =
                folder() + QStringLiteral("/WORKER_20260116_142315_") + names[worker];
            const QStringList band = names[worker].split(QLatin1Char('_')).mid(1);
            const QStringList arguments = {QStringLiteral("--ft8"),
                                           QStringLiteral("-d"),
                                           QStringLiteral("3"),
                                           QStringLiteral("-L"),
                                           band.at(0),
                                           QStringLiteral("-H"),
                                           band.at(1),
                                           own + QStringLiteral("/pelq_ft8_slot.wav")};
            QCOMPARE(decoder->recorded(lowHz[worker], QStringLiteral("argument")), arguments);
            QCOMPARE(decoder->recorded(lowHz[worker], QStringLiteral("folder")),
                     QStringList(QDir::toNativeSeparators(own)));
            const QByteArray wav = decoder->left(band.at(0) + QStringLiteral(".wav"));
            QCOMPARE(wav.size(), 44 + samples.size());
            QVERIFY(wav.endsWith(samples));
        }
        QVERIFY(isFolderEmpty());
    }

    void periodsArriveOnceAndInOrder()
    {
        decoder->obey(orders("for _142315_S1_ await gate; for _142315_ print ~ first; "
                             "for _142330_ print ~ second"));
        capture->queueDecodeSlices(firstStartMs, silence);
        capture->queueDecodeSlices(secondStartMs, silence);
        QTRY_COMPARE_WITH_TIMEOUT(batches.size(), 7, programsMs);
        QVERIFY(periods.isEmpty()); // the later one is decoded, but held back
        openTheGate();
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 2, programsMs);
        QCOMPARE(periods.at(0).label, QStringLiteral("14:23:15"));
        QCOMPARE(periods.at(0).lines, QStringList(QStringLiteral("~ first")));
        QCOMPARE(periods.at(1).label, QStringLiteral("14:23:30"));
        QCOMPARE(periods.at(1).lines, QStringList(QStringLiteral("~ second")));
        QCOMPARE(batches.size(), 8);
        QVERIFY(isFolderEmpty());
    }

    void aWorkerThatFailsCountsAsReported_data()
    {
        QTest::addColumn<QStringList>("behaviour");
        QTest::newRow("exit code 1") << orders("print ~ x; for _S2_ exit 1");
        QTest::newRow("crash") << orders("print ~ x; for _S2_ crash");
        if (qEnvironmentVariableIsSet("OUTPOST_LONG_TESTS")) {
            QTest::newRow("hangs, for 45 s") << orders("print ~ x; for _S2_ hang");
        }
    }

    void aWorkerThatFailsCountsAsReported()
    {
        QFETCH(QStringList, behaviour);
        decoder->obey(behaviour);
        capture->queueDecodeSlices(firstStartMs, silence);
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 1, 45000 + programsMs);
        QCOMPARE(periods.first().lines, QStringList(QStringLiteral("~ x")));
        QCOMPARE(batches.size(), 3);
        QVERIFY(isFolderEmpty());
    }

    void withoutAFolderNothingIsDecoded_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("a missing drive") << QStringLiteral("Q:/capture");
        QTest::newRow("below a file") << QStringLiteral("wsjtx.exe/capture");
    }

    void withoutAFolderNothingIsDecoded()
    {
        QFETCH(QString, path);
        decoder->obey(orders("print ~ x"));
        capture->setCaptureFolder(QDir(decoder->folder()).filePath(path));
        QCOMPARE(capture->start(QStringLiteral("/kiwi/0/SND"), firstStartMs),
                 QStringLiteral("Could not create the capture directory."));
        capture->queueDecodeSlices(firstStartMs, silence);
        capture->setCaptureFolder(folder());
        capture->queueDecodeSlices(secondStartMs, silence);
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 1, programsMs);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:30"));
        QCOMPARE(batches.size(), 4);
    }

    void aFolderInUseIsWaitedFor()
    {
        decoder->obey(orders("print ~ x"));
        auto held = std::make_unique<HeldFile>(staleFile());
        capture->queueDecodeSlices(firstStartMs, silence);
        QTimer::singleShot(100, this, [&held] { held.reset(); });
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 1, programsMs);
        QVERIFY(held == nullptr);
        QCOMPARE(batches.size(), 4);
        QVERIFY(isFolderEmpty());
    }

    void aFolderThatStaysInUseIsNotUsed()
    {
        decoder->obey(orders("record; print ~ x"));
        const HeldFile held(staleFile());
        capture->queueDecodeSlices(firstStartMs, silence);
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 1, programsMs);
        QCOMPARE(batches.size(), 3);
        QVERIFY(decoder->left(QStringLiteral("725.txt")).isEmpty());
        QVERIFY(!decoder->left(QStringLiteral("1450.txt")).isEmpty());
    }

    void resetDropsQueuedWorkAndWhatRunningDecodersReport()
    {
        holdFourDecoders();
        for (const int low : lowHz) {
            QVERIFY(QFile::remove(decoder->file(recordOf(low))));
        }
        capture->reset();
        capture->queueDecodeSlices(thirdStartMs, silence);
        openTheGate();
        QTRY_COMPARE_WITH_TIMEOUT(periods.size(), 1, programsMs);
        QCOMPARE(periods.first().label, QStringLiteral("14:23:45"));
        QCOMPARE(batches.size(), 4);
        for (const int low : lowHz) { // the queued ones never ran
            QVERIFY(decoder->left(recordOf(low)).isEmpty());
        }
        QVERIFY(isFolderEmpty());
    }

    void destructionWaitsForRunningDecodersAndDeliversNothing()
    {
        holdFourDecoders();
        std::thread opener([this] {
            QThread::msleep(300); // by then the destructor is waiting
            openTheGate();
        });
        capture.reset();
        opener.join();
        QVERIFY(isFolderEmpty());
        for (const int low : lowHz) { // the queued ones never ran
            const QString ran = decoder->recorded(low, QStringLiteral("folder")).join(QString());
            QVERIFY2(ran.contains(QStringLiteral("_142315_")), qPrintable(ran));
        }
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        QVERIFY(batches.isEmpty() && periods.isEmpty());
    }

private:
    QString folder() const { return work->filePath(QStringLiteral("J\u00fcrgen's capture")); }
    bool isFolderEmpty() const { return QDir(folder()).exists() && QDir(folder()).isEmpty(); }
    QString staleFile() const
    {
        return folder() + QStringLiteral("/WORKER_20260116_142315_S2_725_1550/timer.out");
    }

    static QString recordOf(int low) { return QStringLiteral("%1.txt").arg(low); }
    void openTheGate() const { decoder->put(QStringLiteral("gate"), {}); }

    // Those of the first period; the second period's are queued behind them.
    void holdFourDecoders()
    {
        decoder->obey(orders("for _142315_ record; for _142330_ record; await gate; print ~ x"));
        capture->queueDecodeSlices(firstStartMs, silence);
        capture->queueDecodeSlices(secondStartMs, silence);
        for (const int low : lowHz) {
            QTRY_VERIFY_WITH_TIMEOUT(!decoder->left(recordOf(low)).isEmpty(), programsMs);
        }
    }

    std::unique_ptr<QTemporaryDir> work;
    std::unique_ptr<StandInDecoder> decoder;
    std::unique_ptr<KiwiAudioCapture> capture;
    QList<Delivery> periods;
    QList<Delivery> batches;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::CaptureTest)
#include "capture_test.moc"
