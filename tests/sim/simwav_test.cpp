#include "sim/simwav.h"
#include "tests/fixture/files.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace outpost
{

using namespace sim;

class SimWavTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString path() const { return m_folder.filePath(QStringLiteral("a.wav")); }

    QByteArray goodBytes() const
    {
        writePeriodWav(path(), Samples(kPeriodSamples, 1));
        return fileBytes(path());
    }

private slots:
    void readsWhatItWrites()
    {
        Samples written(kPeriodSamples);
        for (int i = 0; i < written.size(); ++i) {
            written[i] = qint16(i * 7);
        }
        QCOMPARE(writePeriodWav(path(), written), QString());
        QCOMPARE(QFile(path()).size(), qint64(360044));
        const PeriodSound read = readPeriodWav(path());
        QCOMPARE(read.error, QString());
        QCOMPARE(read.samples, written);
    }

    void skipsOtherChunks()
    {
        QByteArray bytes = goodBytes();
        bytes.insert(12, QByteArray("LIST\3\0\0\0abc\0", 12)); // padded to an even size
        putFile(path(), bytes);
        const PeriodSound read = readPeriodWav(path());
        QCOMPARE(read.error, QString());
        QCOMPARE(read.samples.size(), kPeriodSamples);
    }

    void refusesWithAReason_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("reason");
        const QByteArray good = goodBytes();
        const auto patched = [&good](int offset, char value) {
            QByteArray bytes = good;
            bytes[offset] = value;
            return bytes;
        };
        QTest::newRow("empty") << QByteArray() << QStringLiteral("not a WAV file");
        QTest::newRow("text") << QByteArray("hello") << QStringLiteral("not a WAV file");
        QTest::newRow("not PCM") << patched(20, 3) << QStringLiteral("not plain PCM");
        QTest::newRow("no format") << patched(12, 'x') << QStringLiteral("not plain PCM");
        QTest::newRow("stereo") << patched(22, 2) << QStringLiteral("2 channels instead of one");
        QTest::newRow("rate") << patched(24, '\xE1')
                              << QStringLiteral("12001 Hz instead of 12000 Hz");
        QTest::newRow("8 bit") << patched(34, 8) << QStringLiteral("8 bits instead of 16");
        QTest::newRow("a sample short")
            << good.left(good.size() - 2)
            << QStringLiteral("179999 samples instead of 180000 (15 s)");
        QTest::newRow("no samples")
            << good.left(40) << QStringLiteral("0 samples instead of 180000 (15 s)");
        QTest::newRow("huge") << QByteArray(2 << 20, 'x')
                              << QStringLiteral("too large for one period");
    }

    void refusesWithAReason()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reason);
        putFile(path(), bytes);
        const PeriodSound read = readPeriodWav(path());
        QCOMPARE(read.error, path() + QStringLiteral(": ") + reason);
        QVERIFY(read.samples.isEmpty());
    }

    void missingFileIsNamed()
    {
        const QString missing = QStringLiteral("/nowhere/b.wav");
        QVERIFY(readPeriodWav(missing).error.startsWith(missing + QStringLiteral(": ")));
    }

    void folderInTheWayIsAnError()
    {
        QVERIFY(QDir(m_folder.path()).mkdir(QStringLiteral("folder.wav")));
        const QString inTheWay = m_folder.filePath(QStringLiteral("folder.wav"));
        QVERIFY(writePeriodWav(inTheWay, {1}).contains(QStringLiteral("folder.wav: ")));
        const QString missing = QStringLiteral("/nowhere/b.wav");
        QVERIFY(writePeriodWav(missing, {1}).startsWith(missing + QStringLiteral(": ")));
    }

#ifdef Q_OS_UNIX
    void failedWriteLeavesTheOldFile()
    {
        const QByteArray old = goodBytes();
        // Writes beyond the limit then fail as they do on a full disk.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit before{};
        getrlimit(RLIMIT_FSIZE, &before);
        rlimit small = before;
        small.rlim_cur = 1000;
        setrlimit(RLIMIT_FSIZE, &small);
        const QString error = writePeriodWav(path(), Samples(kPeriodSamples, 2));
        setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(!error.isEmpty());
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), old);
    }
#endif

    void byteOrders()
    {
        QCOMPARE(toLittleEndian({1, -2}), QByteArray::fromHex("0100feff"));
        QCOMPARE(toBigEndian({1, -2}), QByteArray::fromHex("0001fffe"));
        QCOMPARE(fromLittleEndian(QByteArray::fromHex("0100feff7f")), (Samples{1, -2}));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::SimWavTest)
#include "simwav_test.moc"
