#include "kiwi/sndevidence.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace outpost
{

class SndEvidenceTest : public QObject
{
    Q_OBJECT

private slots:
    void dueOnTheFirstFrameAndEveryTwentieth();
    void pathJoinsFolderAndStartTime();
    void withoutAFolderThePathBeginsWithASlash();
    void allRowsInOrder();
    void hashOfAFile();
    void hashOfAMissingFile();
};

void SndEvidenceTest::dueOnTheFirstFrameAndEveryTwentieth()
{
    QList<quint64> due;
    for (quint64 frames = 1; frames <= 60; ++frames) {
        if (evidenceIsDue(frames)) {
            due.append(frames);
        }
    }
    QCOMPARE(due, (QList<quint64>{1, 20, 40, 60}));
}

void SndEvidenceTest::pathJoinsFolderAndStartTime()
{
    const QDateTime start(QDate(2026, 1, 31), QTime(18, 4, 5));
    QCOMPARE(evidenceFilePath(QStringLiteral("/tmp/stage"), start),
             QStringLiteral("/tmp/stage/PELQ_KIWI_STAGE17C_LIVE_SND_EVIDENCE_20260131_180405.txt"));
}

void SndEvidenceTest::withoutAFolderThePathBeginsWithASlash()
{
    const QDateTime start(QDate(2026, 1, 31), QTime(18, 4, 5));
    QCOMPARE(evidenceFilePath(QString(), start),
             QStringLiteral("/PELQ_KIWI_STAGE17C_LIVE_SND_EVIDENCE_20260131_180405.txt"));
}

void SndEvidenceTest::allRowsInOrder()
{
    SndEvidence evidence;
    evidence.capturedLocal = QDateTime(QDate(2026, 1, 31), QTime(18, 4, 15));
    evidence.host = QStringLiteral("kiwi.example.org");
    evidence.port = 8073;
    evidence.frequencyMhz = 14.074;
    evidence.link.currentEndpoint = QStringLiteral("/kiwi/0/SND");
    evidence.link.rxFrames = 33;
    evidence.link.sndFrames = 20;
    evidence.link.otherBinaryFrames = 12;
    evidence.link.rxBytes = 70000;
    evidence.link.lastFrameSize = 1034;
    evidence.programPath = QStringLiteral("/opt/kiwi-outpost");
    evidence.programSha256 = QStringLiteral("ABCD");
    QCOMPARE(
        evidenceText(evidence),
        QStringLiteral("PELQ KIWI STAGE17C LIVE SND EVIDENCE\n\n"
                       "RESULT: LIVE SND VERIFIED\n\n"
                       "Captured local: 2026-01-31 18:04:15\n\n"
                       "Host:\nkiwi.example.org\n\n"
                       "Port:\n8073\n\n"
                       "Endpoint:\n/kiwi/0/SND\n\n"
                       "Frequency MHz:\n14.074000\n\n"
                       "RX frames:\n33\n\n"
                       "SND frames:\n20\n\n"
                       "Other binary frames:\n12\n\n"
                       "RX bytes:\n70000\n\n"
                       "Last frame size:\n1034\n\n"
                       "Executable:\n/opt/kiwi-outpost\n\n"
                       "Executable SHA-256:\nABCD\n\n"
                       ".NET runtime:\nNOT USED\n\n"
                       "Audio decoding:\nNOT STARTED IN STAGE17C\n\n"
                       "Next step:\n"
                       "The receiver's ADPCM decoding was moved into the native program.\n\n"));
}

void SndEvidenceTest::hashOfAFile()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("abc")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("abc");
    file.close();
    QCOMPARE(fileSha256(file.fileName()),
             QStringLiteral("BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"));
}

void SndEvidenceTest::hashOfAMissingFile()
{
    QCOMPARE(fileSha256(QStringLiteral("/nowhere/at/all")), QStringLiteral("UNAVAILABLE"));
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::SndEvidenceTest)
#include "sndevidence_test.moc"
