// The session with a receiver: timed, counted, logged and reported.

#include "base/datapaths.h"
#include "base/lockfile.h"
#include "store/sessionlog.h"
#include "tests/fixture/files.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace outpost
{

namespace
{
constexpr qint64 startMs = 1769882655250; // 2026-01-31T18:04:15.250Z
const QString host = QStringLiteral("Kiwi.Example");
} // namespace

class SessionLogTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        now = startMs;
        changes = 0;
        log = std::make_unique<SessionLog>(
            dataFolder(), [this] { return now; }, [this] { ++changes; });
    }

    void nothingHappensAtFirst()
    {
        QVERIFY(!log->session().active);
        log->addSessionDecodes(3);
        log->finishStatusSession();
        QCOMPARE(log->session().decodes, 0);
        QCOMPARE(changes, 0);
        QVERIFY(!QFile::exists(statusLogPath(dataFolder())));
    }

    void aSessionKeepsWhatItBeganWith()
    {
        log->startStatusSession(QStringLiteral(" Kiwi.Example "), 8073, 14.074);
        QCOMPARE(changes, 1);
        now += 1000;
        log->startStatusSession(QStringLiteral("another"), 1, 7.074);
        QCOMPARE(changes, 1);
        const StatusSession &session = log->session();
        QVERIFY(session.active);
        QCOMPARE(session.host, host);
        QCOMPARE(session.port, 8073);
        QCOMPARE(session.frequencyMhz, 14.074);
        QCOMPARE(session.startMs, startMs);
    }

    void aBlankHostStartsNone()
    {
        log->startStatusSession(QStringLiteral("  "), 8073, 14.074);
        QVERIFY(!log->session().active);
        QCOMPARE(changes, 0);
    }

    void decodesAreAddedUp()
    {
        log->startStatusSession(host, 8073, 14.074);
        for (const int count : {5, 0, -3, 2}) {
            log->addSessionDecodes(count);
        }
        QCOMPARE(log->session().decodes, 7);
        QCOMPARE(changes, 1);
    }

    // Creates the folder if necessary.
    void aFinishedSessionIsInTheLog()
    {
        finishASession();
        QCOMPARE(changes, 2);
        QVERIFY(!log->session().active);
        QCOMPARE(log->session().host, QString());
        const QJsonArray sessions = savedSessions();
        QCOMPARE(sessions.size(), 1);
        const QJsonObject record = sessions.first().toObject();
        QCOMPARE(record.value(QLatin1String("Host")).toString(), host);
        QCOMPARE(record.value(QLatin1String("DurationSeconds")).toInt(), 61);
        QCOMPARE(record.value(QLatin1String("Decodes")).toInt(), 5);
        QVERIFY(log->text().contains(QStringLiteral("Kiwi.Example:8073 | Sessions: 1 | ")));
    }

    // The callback may read the log at once.
    void aChangeIsToldWhenItIsThere()
    {
        QStringList told;
        SessionLog *changed = nullptr;
        SessionLog another(
            dataFolder(), [this] { return now; }, [&] { told.append(changed->text()); });
        changed = &another;
        another.startStatusSession(host, 8073, 14.074);
        another.finishStatusSession();
        QCOMPARE(told.size(), 2);
        QVERIFY(told.first().contains(QStringLiteral("CURRENT CONNECTION\nReceiver: Kiwi.")));
        QVERIFY(told.last().contains(QStringLiteral("CURRENT CONNECTION\nDisconnected\n")));
        QVERIFY(told.last().contains(QStringLiteral("Sessions: 1")));
    }

    void theHistoryIsReadWhenAskedFor()
    {
        finishASession();
        QVERIFY(QFile::remove(statusLogPath(dataFolder())));
        QVERIFY(log->text().contains(QStringLiteral("Sessions: 1")));
        log->rebuildStatusHistory();
        QVERIFY(log->text().endsWith(QStringLiteral("No completed receiver sessions yet.")));
    }

    void theTextCountsOn()
    {
        log->startStatusSession(host, 8073, 14.074);
        now += 65000;
        QVERIFY(log->text().startsWith(
            QStringLiteral("PELQ KIWI OUTPOST STATUS LOG\nData file: %1\n\nCURRENT CONNECTION\n"
                           "Receiver: Kiwi.Example:8073\nFrequency: 14.074000 MHz\n")
                .arg(QDir::toNativeSeparators(statusLogPath(dataFolder())))));
        QVERIFY(log->text().contains(QStringLiteral("Elapsed: 00:01:05\n")));
    }

    void aSessionEndsAlthoughItsSaveFailed()
    {
        QVERIFY(QDir().mkpath(statusLogPath(dataFolder()))); // a folder in the file's place
        finishASession();
        QVERIFY(!log->session().active);
        QCOMPARE(changes, 2);
    }

    // The other copy never releases the log.
    void finishingWaitsForAnotherCopy()
    {
        QVERIFY(QDir().mkpath(dataFolder()));
        QLockFile stuck(statusLogPath(dataFolder()) + QStringLiteral(".lock"));
        QVERIFY(stuck.tryLock());
        QElapsedTimer timer;
        timer.start();
        finishASession();
        QVERIFY(timer.elapsed() >= changeWaitMs);
        QCOMPARE(savedSessions().size(), 1);
    }

private:
    QString dataFolder() const { return folder->filePath(QStringLiteral("data")); }

    void finishASession()
    {
        log->startStatusSession(host, 8073, 14.074);
        log->addSessionDecodes(5);
        now += 61999;
        log->finishStatusSession();
    }

    QJsonArray savedSessions() const
    {
        const QJsonObject saved = jsonFile(statusLogPath(dataFolder()));
        return saved.value(QLatin1String("Sessions")).toArray();
    }

    std::unique_ptr<QTemporaryDir> folder;
    qint64 now = 0;
    int changes = 0;
    std::unique_ptr<SessionLog> log;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::SessionLogTest)
#include "sessionlog_test.moc"
