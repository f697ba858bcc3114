#include "decode/slotwav.h"

#include <QDir>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>
#include <memory>

#ifndef Q_OS_WIN
#include "tests/decode/childprocess.h"
#include "tests/decode/filesizelimit.h"
#include "tests/decode/publisheddecoder.h"

#include <cerrno>
#include <cstring>
#endif

namespace outpost
{

namespace
{
// 14:23:15 UTC on 16 January 2026.
const qint64 periodStartMs =
    QDateTime(QDate(2026, 1, 16), QTime(14, 23, 15), Qt::UTC).toMSecsSinceEpoch();
const QString decodeLine = QStringLiteral("142315 -5 0.1 1000 ~  CQ K1ABC FN42");

QByteArray periodOfSamples()
{
    QByteArray samples(slotPcmBytes, Qt::Uninitialized);
    for (int i = 0; i < slotPcmBytes; ++i) {
        samples[i] = static_cast<char>(i % 251);
    }
    return samples;
}
} // namespace

class SlotWavTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { capture = std::make_unique<QTemporaryDir>(); }

    void namesTheFolderAfterPeriodWorkerAndBand()
    {
        QCOMPARE(workerFolderName(job()), QStringLiteral("WORKER_20260116_142315_S2_725_1550"));
    }

    void writesAWaveFileOf12000HzMono()
    {
        const QByteArray samples = periodOfSamples();
        const QString path = capture->filePath(QStringLiteral("a.wav"));
        QCOMPARE(writeSlotWav(path, samples), QString());

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QCOMPARE(bytes.size(), 360044);
        const auto u32 = [&](int at) { return qFromLittleEndian<quint32>(bytes.constData() + at); };
        const auto u16 = [&](int at) { return qFromLittleEndian<quint16>(bytes.constData() + at); };
        QCOMPARE(bytes.left(4), QByteArray("RIFF"));
        QCOMPARE(u32(4), 360036u);
        QCOMPARE(bytes.mid(8, 8), QByteArray("WAVEfmt "));
        QCOMPARE(u32(16), 16u);
        QCOMPARE(u16(20), quint16(1));
        QCOMPARE(u16(22), quint16(1));
        QCOMPARE(u32(24), 12000u);
        QCOMPARE(u32(28), 24000u);
        QCOMPARE(u16(32), quint16(2));
        QCOMPARE(u16(34), quint16(16));
        QCOMPARE(bytes.mid(36, 4), QByteArray("data"));
        QCOMPARE(u32(40), 360000u);
        QVERIFY(bytes.mid(44) == samples);
    }

    void reportsAFileThatCannotBeOpened()
    {
        QFile folder(capture->path());
        QVERIFY(!folder.open(QIODevice::WriteOnly | QIODevice::Truncate));
        QCOMPARE(writeSlotWav(capture->path(), periodOfSamples()), folder.errorString());
        QVERIFY(!folder.errorString().isEmpty());
    }

    void noDecoderLeavesNoFolder()
    {
        qunsetenv("PELQ_JT9_PATH");
        QCOMPARE(linesOf(job(), periodOfSamples()), QStringList());
        QVERIFY(QDir(capture->path()).isEmpty());
    }

#ifndef Q_OS_WIN // windows/capture checks the workers there
    void reportsAnIncompleteWrite()
    {
        const FileSizeLimit limit(100000);
        QCOMPARE(writeSlotWav(capture->filePath(QStringLiteral("a.wav")), periodOfSamples()),
                 QStringLiteral("PCM payload write was incomplete."));
    }

    void runsTheDecoderOnTheFileAndRemovesTheFolder()
    {
        const PublishedDecoder decoder(
            QStringLiteral(
                "cp \"$8\" $here/wav; pwd > $here/pwd; ls > $here/ls; echo $* > $here/args\n"
                "mkdir -p deep/er; touch deep/er/file; chmod 0500 deep/er\n"
                "echo '%1'; echo '<DecodeFinished>'")
                .arg(decodeLine));
        const QByteArray samples = periodOfSamples();
        QCOMPARE(linesOf(job(), samples), QStringList(decodeLine));

        const QString folder =
            capture->filePath(QStringLiteral("WORKER_20260116_142315_S2_725_1550"));
        QCOMPARE(decoder.readLeft(QStringLiteral("wav")).size(), 360044);
        QVERIFY(decoder.readLeft(QStringLiteral("wav")).endsWith(samples));
        QCOMPARE(decoder.readLeft(QStringLiteral("pwd")), folder.toLocal8Bit() + '\n');
        QCOMPARE(decoder.readLeft(QStringLiteral("ls")), QByteArray("pelq_ft8_slot.wav\n"));
        QCOMPARE(decoder.readLeft(QStringLiteral("args")),
                 "--ft8 -d 3 -L 725 -H 1550 " + folder.toLocal8Bit() + "/pelq_ft8_slot.wav\n");
        QVERIFY(QDir(capture->path()).isEmpty());
    }

    void whatLeavesTheDecodersGroupIsEndedInAFolderOfOnesOwn_data()
    {
        QTest::addColumn<bool>("folderIsOwn");
        QTest::newRow("own") << true;
        QTest::newRow("shared") << false;
    }

    void whatLeavesTheDecodersGroupIsEndedInAFolderOfOnesOwn()
    {
        QFETCH(bool, folderIsOwn);
        const PublishedDecoder decoder(
            QStringLiteral("mkfifo $here/never $here/up\n"
                           "setsid sh -c \"echo \\$\\$ > $here/child; echo > $here/up; "
                           "read x < $here/never; echo > $here/lived\" &\n"
                           "read up < $here/up"));
        SlotJob one = job();
        one.folderIsOwn = folderIsOwn;
        decodeSlot(one, periodOfSamples());
        const QByteArray child = decoder.readLeft(QStringLiteral("child"));
        QVERIFY(!child.isEmpty());
        const auto lived = [&decoder] {
            return QFile::exists(decoder.left(QStringLiteral("lived")));
        };
        if (folderIsOwn) {
            const bool hasEnded = QTest::qWaitFor([&] { return !isAlive(child); });
            // Releases it in any case.
            const OpenedPipe never(decoder.left(QStringLiteral("never")));
            QTRY_VERIFY(!isAlive(child));
            QVERIFY(hasEnded);
            QVERIFY(!lived());
        } else {
            QVERIFY(isAlive(child));
            const OpenedPipe never(decoder.left(QStringLiteral("never")));
            QTRY_VERIFY(!isAlive(child));
            QVERIFY(lived());
        }
    }

    void aShortBufferCreatesNothing_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("one sample short") << 359998;
        QTest::newRow("one byte long") << 360001;
        QTest::newRow("empty") << 0;
    }

    void aShortBufferCreatesNothing()
    {
        QFETCH(int, size);
        const PublishedDecoder decoder(
            QStringLiteral("touch $here/ran; echo '%1'").arg(decodeLine));
        SlotJob missing = job();
        missing.captureFolder = capture->filePath(QStringLiteral("never/made"));
        QCOMPARE(linesOf(missing, QByteArray(size, '\0')), QStringList());
        QVERIFY(QDir(capture->path()).isEmpty());
        QVERIFY(decoder.allLeft().isEmpty());
    }

    void wipesAStaleFolderOfTheSameName()
    {
        const PublishedDecoder decoder(
            QStringLiteral("ls -A > $here/ls; echo '%1'").arg(decodeLine));
        QDir folder(capture->filePath(workerFolderName(job())));
        QVERIFY(folder.mkpath(QStringLiteral("stale/.deeper")));
        QFile wav(folder.filePath(QStringLiteral("pelq_ft8_slot.wav")));
        QVERIFY(wav.open(QIODevice::WriteOnly));
        QVERIFY(wav.resize(500000));

        QCOMPARE(linesOf(job(), periodOfSamples()), QStringList(decodeLine));
        QCOMPARE(decoder.readLeft(QStringLiteral("ls")), QByteArray("pelq_ft8_slot.wav\n"));
        QVERIFY(!folder.exists());
    }

    void aFolderWithoutPermissionsIsRemoved()
    {
        const PublishedDecoder decoder(
            QStringLiteral("mkdir -p a/b/.c; touch a/b/.c/file; chmod 0 a/b/.c; chmod 0400 a/b\n"
                           "chmod 0500 .; echo '%1'")
                .arg(decodeLine));
        QCOMPARE(linesOf(job(), periodOfSamples()), QStringList(decodeLine));
        QVERIFY(QDir(capture->path()).isEmpty());
    }

    void aLinkInTheFoldersPlaceIsRemovedAndNotWhatItPointsAt_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("a folder") << QStringLiteral("kept");
        QTest::newRow("nothing") << QStringLiteral("missing");
    }

    void aLinkInTheFoldersPlaceIsRemovedAndNotWhatItPointsAt()
    {
        QFETCH(QString, target);
        const PublishedDecoder decoder(
            QStringLiteral("pwd -P > $here/pwd; echo '%1'").arg(decodeLine));
        const QTemporaryDir elsewhere;
        QVERIFY(QDir(elsewhere.path()).mkpath(QStringLiteral("kept/deep")));
        const QString link = capture->filePath(workerFolderName(job()));
        QVERIFY(QFile::link(elsewhere.filePath(target), link));
        QCOMPARE(linesOf(job(), periodOfSamples()), QStringList(decodeLine));
        QCOMPARE(decoder.readLeft(QStringLiteral("pwd")), link.toLocal8Bit() + '\n');
        QVERIFY(QDir(elsewhere.filePath(QStringLiteral("kept/deep"))).exists());
        QVERIFY(QDir(capture->path()).isEmpty());
    }

    void linksThatADecoderLeavesAreRemovedAndNotWhatTheyPointAt_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("in its folder") << QStringLiteral("ln -s \"$target\" inside");
        QTest::newRow("in its folder's place")
            << QStringLiteral("own=$PWD; cd /; rm -r \"$own\"; ln -s \"$target\" \"$own\"");
    }

    void linksThatADecoderLeavesAreRemovedAndNotWhatTheyPointAt()
    {
        QFETCH(QString, script);
        const QTemporaryDir elsewhere;
        const QString kept = elsewhere.filePath(QStringLiteral("kept"));
        QVERIFY(QDir().mkpath(kept + QStringLiteral("/deep")));
        QVERIFY(QFile::setPermissions(kept, QFile::ReadOwner | QFile::ExeOwner));
        const PublishedDecoder decoder(
            QStringLiteral("target='%1'; %2; echo '%3'").arg(kept, script, decodeLine));
        QCOMPARE(linesOf(job(), periodOfSamples()), QStringList(decodeLine));
        QVERIFY(QDir(kept + QStringLiteral("/deep")).exists());
        QVERIFY(!QFileInfo(kept).permission(QFile::WriteOwner));
        QVERIFY(
            QFile::setPermissions(kept, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QVERIFY(QDir(capture->path()).isEmpty());
    }

    void makesMissingParentsOfTheFolder()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '%1'").arg(decodeLine));
        SlotJob deep = job();
        deep.captureFolder = capture->filePath(QStringLiteral("a/b"));
        QCOMPARE(linesOf(deep, periodOfSamples()), QStringList(decodeLine));
        QVERIFY(QDir(deep.captureFolder).isEmpty());
    }

    // The folder's path is just short enough; that of a file in it is too long.
    void aFileThatCannotBeOpenedIsTheCauseAndLeavesNoFolder()
    {
        const PublishedDecoder decoder(
            QStringLiteral("touch $here/ran; echo '%1'").arg(decodeLine));
        SlotJob deep = job();
        deep.captureFolder = deepFolder(4090);
        QVERIFY(QDir().mkpath(deep.captureFolder));
        const Jt9Result result = decodeSlot(deep, periodOfSamples());
        QCOMPARE(result.lines, QStringList());
        QCOMPARE(result.failure.cause, Jt9Cause::WavNotWritten);
        QCOMPARE(result.failure.detail, QString::fromLocal8Bit(strerror(ENAMETOOLONG)));
        QVERIFY(decoder.allLeft().isEmpty());
        QVERIFY(QDir(deep.captureFolder).isEmpty());
    }

    // It contains a file whose path is too long to be removed.
    void anOldFolderThatCannotBeRemovedIsTheCause()
    {
        const PublishedDecoder decoder(
            QStringLiteral("touch $here/ran; echo '%1'").arg(decodeLine));
        SlotJob deep = job();
        deep.captureFolder = deepFolder(4060);
        const QString old = QDir(deep.captureFolder).filePath(workerFolderName(deep));
        QVERIFY(QDir().mkpath(old));
        const QString before = QDir::currentPath();
        const auto restore = qScopeGuard([&] {
            QDir().rmdir(QString(100, QLatin1Char('x')));
            QDir::setCurrent(before);
        });
        QVERIFY(QDir::setCurrent(old));
        QVERIFY(QDir().mkdir(QString(100, QLatin1Char('x'))));
        const Jt9Result result = decodeSlot(deep, periodOfSamples());
        QCOMPARE(result.lines, QStringList());
        QCOMPARE(result.failure, (Jt9Failure{Jt9Cause::OldFolderLeft, {}}));
        QVERIFY(decoder.allLeft().isEmpty());
    }

    // The decoder leaves a file whose path is too long to be removed.
    void aFolderThatStaysIsTheCauseAndTheLinesAreKept()
    {
        const QString tooLong(100, QLatin1Char('x'));
        const PublishedDecoder decoder(
            QStringLiteral("mkdir %1; echo '%2'").arg(tooLong, decodeLine));
        SlotJob deep = job();
        deep.captureFolder = deepFolder(4060);
        QVERIFY(QDir().mkpath(deep.captureFolder));
        const QString before = QDir::currentPath();
        const auto restore = qScopeGuard([&] {
            QDir::setCurrent(QDir(deep.captureFolder).filePath(workerFolderName(deep)));
            QDir().rmdir(tooLong);
            QDir::setCurrent(before);
        });
        const Jt9Result result = decodeSlot(deep, periodOfSamples());
        QCOMPARE(result.lines, QStringList(decodeLine));
        QCOMPARE(result.failure, (Jt9Failure{Jt9Cause::FolderLeft, {}}));
    }

    void aFileInTheFoldersPlaceGivesNothing()
    {
        const PublishedDecoder decoder(
            QStringLiteral("touch $here/ran; echo '%1'").arg(decodeLine));
        QFile inTheWay(capture->filePath(workerFolderName(job())));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        const Jt9Result result = decodeSlot(job(), periodOfSamples());
        QCOMPARE(result.lines, QStringList());
        QCOMPARE(result.failure, (Jt9Failure{Jt9Cause::FolderMissing, {}}));
        QVERIFY(decoder.allLeft().isEmpty());
    }

    void anIncompleteFileIsNotDecodedAndLeavesNoFolder()
    {
        const PublishedDecoder decoder(
            QStringLiteral("touch $here/ran; echo '%1'").arg(decodeLine));
        {
            const FileSizeLimit limit(100000);
            const Jt9Result result = decodeSlot(job(), periodOfSamples());
            QCOMPARE(result.lines, QStringList());
            QCOMPARE(result.failure,
                     (Jt9Failure{Jt9Cause::WavNotWritten,
                                 QStringLiteral("PCM payload write was incomplete.")}));
        }
        QVERIFY(decoder.allLeft().isEmpty());
        QVERIFY(QDir(capture->path()).isEmpty());
    }

    void aFailingDecoderLeavesNoFolder()
    {
        const PublishedDecoder decoder(
            QStringLiteral("touch scrap $here/ran; echo '%1'; exit 1").arg(decodeLine));
        const Jt9Result result = decodeSlot(job(), periodOfSamples());
        QCOMPARE(result.lines, QStringList());
        QCOMPARE(result.failure, (Jt9Failure{Jt9Cause::ExitCode, QStringLiteral("1")}));
        QCOMPARE(decoder.allLeft(), QStringList(QStringLiteral("ran")));
        QVERIFY(QDir(capture->path()).isEmpty());
    }
#endif

private:
    static QStringList linesOf(const SlotJob &job, const QByteArray &samples)
    {
        return decodeSlot(job, samples).lines;
    }

#ifndef Q_OS_WIN
    // A capture folder in which the worker's folder has a path of this many bytes.
    QString deepFolder(int workerFolderBytes) const
    {
        const int bytes = workerFolderBytes - 1 - workerFolderName(job()).size();
        QString folder = capture->path();
        while (bytes - folder.size() > 250) {
            folder += QLatin1Char('/') + QString(200, QLatin1Char('d'));
        }
        return folder + QLatin1Char('/') + QString(bytes - folder.size() - 1, QLatin1Char('d'));
    }
#endif

    SlotJob job() const { return {periodStartMs, 1, {725, 1550}, 3, capture->path()}; }

    std::unique_ptr<QTemporaryDir> capture;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::SlotWavTest)
#include "slotwav_test.moc"
