// The file of the live report: its place, when it is rewritten, and what the log says.

#include "tests/fixture/teststation.h"
#include "tests/kiwi/evidencename.h"

#include <QCryptographicHash>
#include <QDir>
#include <QSaveFile>
#include <QTextStream>
#include <QtTest>

namespace outpost
{

namespace
{
// What was written to the streams of saved files, the latest at the end; the file itself stays
// empty.
struct StreamedText {
    QString path;
    QString text;
};
QList<StreamedText> streamedTexts;
} // namespace

// The linker replaces QTextStream::operator<<(const QString &) with this (--wrap).
QTextStream &realStream(QTextStream *stream,
                        const QString &text) __asm__("__real__ZN11QTextStreamlsERK7QString");
QTextStream &watchedStream(QTextStream *stream,
                           const QString &text) __asm__("__wrap__ZN11QTextStreamlsERK7QString");

QTextStream &watchedStream(QTextStream *stream, const QString &text)
{
    if (const auto *file = qobject_cast<QSaveFile *>(stream->device())) {
        streamedTexts.append({file->fileName(), text});
    }
    return realStream(stream, text);
}

namespace
{
const QByteArray sound = adpcmFrame(QByteArray(1024, '\0'));

void sendSound(TestStation &station, const PuppetReceiver &receiver, int upTo)
{
    const QString counted = QStringLiteral("\nSND: %1 frames ").arg(upTo);
    const int before = soundFrames(station.window->kiwiStatusText());
    for (int i = before; i < upTo; ++i) {
        receiver.sendBinary(sound);
    }
    if (!QTest::qWaitFor([&] { return station.window->kiwiStatusText().contains(counted); },
                         5000)) {
        qFatal("the sound did not arrive");
    }
}

void openLink(TestStation &station, const PuppetReceiver &receiver)
{
    const int before = receiver.paths().size();
    station.connectTo(receiver.port());
    if (!QTest::qWaitFor([&] { return receiver.paths().size() > before; }, 5000)) {
        qFatal("no link");
    }
}
} // namespace

class EvidenceTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        qputenv("PELQ_KIWI_STAGE_CAPTURE_DIR",
                QFile::encodeName(testHome().path(QStringLiteral("stage"))));
    }

    void theFileIsThereAndEmpty();
    void theReportTellsOfTheStreamAndTheProgramFile();
    void rewrittenAtTheFirstSoundAndEvery20th();
    void nothingIsWrittenBeforeSound();
    void oneFileForEachConnection();
    void theFolderIsReadWhenTheOperatorConnects();
    void aMissingFolderIsLoggedAndTriedAgain();
};

void EvidenceTest::theFileIsThereAndEmpty()
{
    const PuppetReceiver receiver;
    TestStation station;
    const QString path =
        testHome().path(QStringLiteral("stage")) + evidenceName(station.clock.now());
    openLink(station, receiver);
    sendSound(station, receiver, 1);
    QVERIFY(station.trace.contains(QStringLiteral("Live SND evidence updated: ") + path));
    QCOMPARE(QDir(testHome().path(QStringLiteral("stage"))).entryList(QDir::Files | QDir::Hidden),
             QStringList{QFileInfo(path).fileName()});
    QCOMPARE(QFileInfo(path).size(), 0);
}

void EvidenceTest::theReportTellsOfTheStreamAndTheProgramFile()
{
    const PuppetReceiver receiver;
    TestStation station;
    const qint64 startMs = station.clock.now();
    openLink(station, receiver);
    receiver.sendText(QStringLiteral("hello"));
    receiver.sendBinary("W/F");
    streamedTexts.clear();
    sendSound(station, receiver, 1);
    station.clock.set(startMs + 61000);
    sendSound(station, receiver, 20);
    QCOMPARE(streamedTexts.size(), 2);
    QCOMPARE(streamedTexts.last().path,
             testHome().path(QStringLiteral("stage")) + evidenceName(startMs));
    const QString program = QCoreApplication::applicationFilePath();
    const QByteArray sha256 =
        QCryptographicHash::hash(fileBytes(program), QCryptographicHash::Sha256).toHex().toUpper();
    const QString expected =
        QStringLiteral("PELQ KIWI STAGE17C LIVE SND EVIDENCE\n\nRESULT: LIVE SND VERIFIED\n\n"
                       "Captured local: %1\n\nHost:\n127.0.0.1\n\nPort:\n%2\n\n"
                       "Endpoint:\n/kiwi/0/SND\n\nFrequency MHz:\n14.074000\n\n"
                       "RX frames:\n22\n\nSND frames:\n20\n\nOther binary frames:\n1\n\n"
                       "RX bytes:\n20688\n\nLast frame size:\n1034\n\n"
                       "Executable:\n%3\n\nExecutable SHA-256:\n%4\n\n")
            .arg(QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(startMs + 61000),
                                       QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                 QString::number(receiver.port()), program, QString::fromLatin1(sha256));
    QCOMPARE(streamedTexts.last().text.left(expected.size()), expected);
    QVERIFY(streamedTexts.first().text.contains(QStringLiteral("\nSND frames:\n1\n")));
    QVERIFY(streamedTexts.first().text.contains(QString::fromLatin1(sha256)));
}

void EvidenceTest::rewrittenAtTheFirstSoundAndEvery20th()
{
    const PuppetReceiver receiver;
    TestStation station;
    const QString path =
        testHome().path(QStringLiteral("stage")) + evidenceName(station.clock.now());
    const QString line = QStringLiteral("Live SND evidence updated: ") + path;
    openLink(station, receiver);
    receiver.sendBinary("MSG"); // other frames do not count
    const QVector<QPair<int, int>> updates = {{1, 1},  {2, 1},  {19, 1}, {20, 2},
                                              {21, 2}, {39, 2}, {40, 3}, {60, 4}};
    for (const auto &[frames, written] : updates) {
        QFile::remove(path);
        const int before = station.trace.count(line);
        sendSound(station, receiver, frames);
        QCOMPARE(station.trace.count(line), written);
        QCOMPARE(QFile::exists(path), written > before);
    }
}

void EvidenceTest::nothingIsWrittenBeforeSound()
{
    const PuppetReceiver receiver;
    TestStation station;
    openLink(station, receiver);
    for (int i = 0; i < 20; ++i) {
        receiver.sendBinary("MSG audio_init=0");
        receiver.sendText(QStringLiteral("SND"));
    }
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX text frame 40: SND")));
    QVERIFY(!station.trace.contains(QStringLiteral("evidence")));
    QVERIFY(QDir(testHome().path(QStringLiteral("stage"))).isEmpty());
}

void EvidenceTest::oneFileForEachConnection()
{
    const PuppetReceiver receiver;
    TestStation station;
    const qint64 firstMs = station.clock.now();
    openLink(station, receiver);
    station.clock.set(firstMs + 7000); // the file is named after the connection's start
    sendSound(station, receiver, 20);
    openLink(station, receiver);
    sendSound(station, receiver, 1);
    const QDir folder(testHome().path(QStringLiteral("stage")));
    QCOMPARE(folder.entryList(QDir::Files, QDir::Name),
             QStringList({evidenceName(firstMs).mid(1), evidenceName(firstMs + 7000).mid(1)}));
}

void EvidenceTest::theFolderIsReadWhenTheOperatorConnects()
{
    const PuppetReceiver receiver;
    TestStation station;
    const QTemporaryDir other;
    qputenv("PELQ_KIWI_STAGE_CAPTURE_DIR", QFile::encodeName(other.path()));
    openLink(station, receiver);
    qputenv("PELQ_KIWI_STAGE_CAPTURE_DIR", "/nowhere");
    sendSound(station, receiver, 20);
    QCOMPARE(station.trace.count(QStringLiteral("Live SND evidence updated: ") + other.path() +
                                 evidenceName(station.clock.now())),
             2);
}

void EvidenceTest::aMissingFolderIsLoggedAndTriedAgain()
{
    const PuppetReceiver receiver;
    TestStation station;
    QVERIFY(QDir(testHome().path(QStringLiteral("stage"))).removeRecursively());
    openLink(station, receiver);
    sendSound(station, receiver, 20);
    const QString line =
        QStringLiteral("Could not write live SND evidence: No such file or directory");
    QCOMPARE(station.trace.count(line), 2);
    QCOMPARE(station.trace.lines().filter(QStringLiteral("evidence")).size(), 2);
    QVERIFY(QDir().mkpath(testHome().path(QStringLiteral("stage"))));
    sendSound(station, receiver, 40);
    QVERIFY(station.trace.contains(QStringLiteral("Live SND evidence updated: ")));
    QVERIFY(summaryLine(*station.window).startsWith(QStringLiteral("Kiwi Connected")));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::EvidenceTest)
#include "evidence_test.moc"
