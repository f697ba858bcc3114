// The decoder on Windows: finding, starting, reading and ending it with its children.

#include "decode/decodeband.h"
#include "decode/jt9locator.h"
#include "decode/jt9runner.h"
#include "decode/slotwav.h"
#include "tests/windows/standindecoder.h"

#include <QElapsedTimer>
#include <QtTest>
#include <memory>
#include <qt_windows.h>

namespace outpost
{

namespace
{
const QString decodeLine = QStringLiteral("142315 -5 0.1 1000 ~  CQ K1ABC FN42");
const DecodeBand band = {725, 1550};

// Whether the process with this id is running. The id is a text.
bool isAlive(const QByteArray &id)
{
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id.toUInt());
    if (process == nullptr) {
        return false;
    }
    const bool running = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return running;
}

void use(const StandInDecoder &decoder)
{
    qputenv("PELQ_JT9_PATH", decoder.path().toLocal8Bit());
}

QStringList orders(const char *text)
{
    return QString::fromLatin1(text).split(QStringLiteral("; "));
}

QString native(const QString &path)
{
    return QDir::toNativeSeparators(path);
}
} // namespace

class DecoderTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qInfo("8-bit encoding: code page %u", GetACP()); }

    void init()
    {
        work = std::make_unique<QTemporaryDir>();
        qputenv("OUTPOST_KEPT", "kept");
    }
    void cleanup() { qunsetenv("PELQ_JT9_PATH"); }

    void returnsTheDecodeLines()
    {
        const StandInDecoder decoder({QStringLiteral("print banner"),
                                      QStringLiteral("print   %1  ").arg(decodeLine),
                                      QStringLiteral("print <DecodeFinished>   0   1   0")});
        use(decoder);
        QCOMPARE(run(), QStringList(decodeLine));
    }

    void runsFromFoldersOfEveryName_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("blanks and brackets") << QStringLiteral("Program Files (x86)/WSJT-X/bin");
        QTest::newRow("umlaut") << QStringLiteral("Users/J\u00fcrgen/WSJT-X/bin");
        QTest::newRow("ampersand and percent") << QStringLiteral("A & B 100%/WSJT-X/bin");
        const QString cyrillic = QStringLiteral("\u042e\u0440\u0438\u0439/WSJT-X/bin");
        if (QString::fromLocal8Bit(cyrillic.toLocal8Bit()) == cyrillic) {
            QTest::newRow("beyond the system's code page") << cyrillic;
        }
    }

    void runsFromFoldersOfEveryName()
    {
        QFETCH(QString, folder);
        const StandInDecoder decoder(orders("record; print ~ x"), folder);
        QVERIFY(isInstalledJt9(decoder.path()));
        QVERIFY(isInstalledJt9(native(decoder.path())));
        use(decoder);
        const QString workerFolder = work->filePath(folder);
        QVERIFY(QDir().mkpath(workerFolder));
        const QString wav = workerFolder + QStringLiteral("/pelq_ft8_slot.wav");
        QCOMPARE(runJt9(wav, workerFolder, band, 2).lines, QStringList(QStringLiteral("~ x")));

        const QStringList arguments = {QStringLiteral("--ft8"), QStringLiteral("-d"),
                                       QStringLiteral("2"),     QStringLiteral("-L"),
                                       QStringLiteral("725"),   QStringLiteral("-H"),
                                       QStringLiteral("1550"),  wav};
        QCOMPARE(decoder.recorded(725, QStringLiteral("argument")), arguments);
        QCOMPARE(decoder.recorded(725, QStringLiteral("folder")),
                 QStringList(native(workerFolder)));
        for (const char *home : {"HOME", "LOCALAPPDATA", "APPDATA"}) {
            QCOMPARE(decoder.recorded(725, QLatin1String(home)), QStringList(workerFolder));
        }
    }

    void isFoundThroughNativeSeparatorsToo()
    {
        const StandInDecoder decoder(orders("print ~ x"));
        qputenv("PELQ_JT9_PATH", native(decoder.path()).toLocal8Bit());
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
    }

    void findsItsOwnLibrariesFirst()
    {
        const StandInDecoder decoder(orders("record"));
        use(decoder);
        const QByteArray before = qgetenv("PATH");
        run();
        const QStringList path = decoder.recorded(725, QStringLiteral("PATH"));
        QCOMPARE(path.size(), 1);
        QCOMPARE(path.first(),
                 decoder.folder() + QLatin1Char(';') + QString::fromLocal8Bit(before));
        QCOMPARE(decoder.recorded(725, QStringLiteral("OUTPOST_KEPT")),
                 QStringList(QStringLiteral("kept")));
    }

    void showsNoConsoleWindow()
    {
        const StandInDecoder decoder(orders("record"));
        use(decoder);
        run();
        QCOMPARE(decoder.recorded(725, QStringLiteral("window")),
                 QStringList(QStringLiteral("no")));
    }

    void needsAQtLibraryBesideIt()
    {
        const StandInDecoder decoder(orders("record; print ~ x"));
        use(decoder);
        QVERIFY(QFile::remove(decoder.file(QStringLiteral("Qt5Core.dll"))));
        QCOMPARE(run(), QStringList());
        QCOMPARE(decoder.left(QStringLiteral("725.txt")), QByteArray());
        decoder.put(QStringLiteral("Qt6Core.dll"), {});
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
    }

    void failuresGiveNothing_data()
    {
        QTest::addColumn<QStringList>("behaviour");
        QTest::newRow("exit code 1") << orders("print ~ x; exit 1");
        QTest::newRow("exit code 3") << orders("print ~ x; exit 3");
        QTest::newRow("crash") << orders("print ~ x; crash");
        QTest::newRow("nothing printed") << orders("exit 0");
    }

    void failuresGiveNothing()
    {
        QFETCH(QStringList, behaviour);
        const StandInDecoder decoder(behaviour);
        use(decoder);
        QCOMPARE(run(), QStringList());
    }

    void whatIsNoProgramGivesNothing()
    {
        const StandInDecoder decoder;
        QVERIFY(QFile::remove(decoder.path()));
        decoder.put(QStringLiteral("jt9.exe"), "print ~ x\n");
        use(decoder);
        QCOMPARE(run(), QStringList());
    }

    void aDecoderThatHangsIsKilledWithItsChildren()
    {
        const StandInDecoder decoder(orders("child; print ~ x; hang"));
        use(decoder);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(run({5000, 2000, 5000}), QStringList());
        QVERIFY(timer.elapsed() >= 2000);
        const QByteArray child = decoder.left(QStringLiteral("child.txt"));
        QVERIFY(!child.isEmpty());
        QTRY_VERIFY(!isAlive(child));
        const QByteArray self = decoder.left(QStringLiteral("self.txt"));
        QVERIFY(!self.isEmpty());
        QTRY_VERIFY(!isAlive(self));
    }

    void aChildThatOutlivesTheDecoderIsKilled()
    {
        const StandInDecoder decoder(orders("child; print ~ x"));
        use(decoder);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        QVERIFY(timer.elapsed() < 20000);
        QVERIFY(!decoder.left(QStringLiteral("child.txt")).isEmpty());
        QTRY_VERIFY(!isAlive(decoder.left(QStringLiteral("child.txt"))));
    }

    void standardInputIsEmpty()
    {
        const StandInDecoder decoder(orders("read; print ~ x"));
        use(decoder);
        QCOMPARE(run({5000, 10000, 5000}), QStringList(QStringLiteral("~ x")));
    }

    void standardErrorIsNotRead()
    {
        const StandInDecoder decoder(orders("complain 5000; print ~ x"));
        use(decoder);
        QCOMPARE(run({5000, 20000, 5000}), QStringList(QStringLiteral("~ x")));
    }

    void aSlotIsDecodedInAFolderThatIsGoneAfterwards()
    {
        const StandInDecoder decoder(orders("record; print ~ x"));
        use(decoder);
        const QByteArray samples(slotPcmBytes, '\x11');
        const QString capture = work->filePath(QStringLiteral("J\u00fcrgen's capture"));
        const SlotJob job = {1768573395000, 1, band, 3, capture};
        QCOMPARE(decodeSlot(job, samples).lines, QStringList(QStringLiteral("~ x")));
        QCOMPARE(decoder.left(QStringLiteral("725.wav")).mid(44), samples);
        QCOMPARE(decoder.recorded(725, QStringLiteral("argument")).value(7),
                 capture + QStringLiteral("/WORKER_20260116_142315_S2_725_1550/pelq_ft8_slot.wav"));
        QVERIFY(QDir(capture).isEmpty());
    }

private:
    QStringList run(const Jt9Limits &limits = {}) const
    {
        return runJt9(work->filePath(QStringLiteral("pelq_ft8_slot.wav")), work->path(), band, 2,
                      limits)
            .lines;
    }

    std::unique_ptr<QTemporaryDir> work;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::DecoderTest)
#include "decoder_test.moc"
