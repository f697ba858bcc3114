// The program is killed while saving: each data file is then completely old or completely new.

#include "base/atomicfile.h"
#include "base/settings.h"
#include "store/goodreceivers.h"
#include "store/profile.h"
#include "store/statuslog.h"
#include "tests/fixture/files.h"
#include "tests/fixture/memoryhome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace outpost
{

class KilledSavesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aFileIsTheOldOneOrTheNewOne_data();
    void aFileIsTheOldOneOrTheNewOne();
    void theSettingsAreTheOldOnesOrTheNewOnes();
    void theNextSaveClearsWhatAKilledOneHasLeft();
    void draftsOfARunningCopyStay();

private:
    std::unique_ptr<QTemporaryDir> folder;
};

namespace
{
int kills()
{
    return qEnvironmentVariableIsSet("OUTPOST_LONG_TESTS") ? 1000 : 50;
}

// Runs `save` with 0, 1, 2, … in another process, and kills it at a random moment between the start
// of its first save and well after its end.
void killWhile(const std::function<void(int)> &save, qint64 saveMicroseconds)
{
    static std::mt19937 random(std::random_device{}());
    const auto latest = static_cast<useconds_t>(500 + 4 * saveMicroseconds);
    int begun[2] = {};
    QVERIFY(pipe(begun) == 0);
    const pid_t saver = fork();
    if (saver == 0) {
        QVERIFY(write(begun[1], "", 1) == 1);
        for (int i = 0;; ++i) {
            save(i);
        }
    }
    char byte = 0;
    QVERIFY(read(begun[0], &byte, 1) == 1);
    usleep(std::uniform_int_distribution<useconds_t>(0, latest)(random));
    kill(saver, SIGKILL);
    waitpid(saver, nullptr, 0);
    close(begun[0]);
    close(begun[1]);
}

qint64 microsecondsOf(const std::function<void()> &save)
{
    QElapsedTimer timer;
    timer.start();
    save();
    return timer.nsecsElapsed() / 1000;
}

QByteArray profileAt(int port)
{
    Profile profile;
    profile.kiwiPort = port;
    return profileJson(profile);
}

QByteArray receiverList(int receivers)
{
    QJsonArray list;
    for (int i = 0; i < receivers; ++i) {
        list = withReceiver(list, {QStringLiteral("kiwi%1").arg(i), 8073, 14.074, 5}, 0);
    }
    return QJsonDocument(list).toJson();
}

QByteArray statusLog(int sessions)
{
    QJsonObject log;
    for (int i = 0; i < sessions; ++i) {
        log = withFinishedSession(log, {true, QStringLiteral("kiwi"), 8073, 14.074, 0, 5}, 60000);
    }
    return QJsonDocument(log).toJson();
}
} // namespace

void KilledSavesTest::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void KilledSavesTest::aFileIsTheOldOneOrTheNewOne_data()
{
    QTest::addColumn<QByteArray>("oldContent");
    QTest::addColumn<QByteArray>("newContent");
    QTest::newRow("profile") << profileAt(8073) << profileAt(65000);
    QTest::newRow("frequency") << QByteArray("14.074000") << QByteArray("144.174000");
    QTest::newRow("good receivers") << receiverList(200) << receiverList(201);
    QTest::newRow("status log") << statusLog(1000) << statusLog(1001);
}

void KilledSavesTest::aFileIsTheOldOneOrTheNewOne()
{
    QFETCH(QByteArray, oldContent);
    QFETCH(QByteArray, newContent);
    const QString path = folder->filePath(QStringLiteral("file"));
    const qint64 duration = microsecondsOf([&] { saveAtomically(path, oldContent); });
    int newOnes = 0;
    for (int i = 0; i < kills(); ++i) {
        killWhile([&](int save) { saveAtomically(path, save % 2 == 0 ? newContent : oldContent); },
                  duration);
        const QByteArray found = fileBytes(path);
        QVERIFY2(found == oldContent || found == newContent, found.left(100).constData());
        newOnes += found == newContent ? 1 : 0;
    }
    QVERIFY(newOnes > 0 && newOnes < kills()); // otherwise no save was interrupted
}

// Written as Qt does it, with a lock file beside the settings and a folder for the draft.
void KilledSavesTest::theSettingsAreTheOldOnesOrTheNewOnes()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder->path()));
    const QString key = QStringLiteral("highlight/calls");
    const QStringList oldCalls = {QStringLiteral("K1ABC"), QStringLiteral("FN42")};
    const QStringList newCalls(QStringLiteral("LU8XGZ"));
    const auto save = [&](const QStringList &calls) { saveSetting(key, calls); };
    const qint64 duration = microsecondsOf([&] { save(oldCalls); });
    for (int i = 0; i < kills(); ++i) {
        killWhile([&](int number) { save(number % 2 == 0 ? newCalls : oldCalls); }, duration);
        const QStringList found = stationSettings().value(key).toStringList();
        QVERIFY2(found == oldCalls || found == newCalls, qPrintable(found.join(QLatin1Char(' '))));
    }
    save(oldCalls);
    QCOMPARE(stationSettings().value(key).toStringList(), oldCalls);
    const QDir settings = QFileInfo(stationSettings().fileName()).dir();
    QCOMPARE(settings.entryList({QStringLiteral("*.save*")}, QDir::AllEntries), QStringList());
}

namespace
{
// The draft's folder as a killed save leaves it.
QString leaveADraft()
{
    const QString path = stationSettings().fileName();
    QDir().mkpath(QFileInfo(path).path());
    QTemporaryDir draft(path + QStringLiteral(".save"));
    draft.setAutoRemove(false);
    for (const char *name : {"draft", "draft.lock", "written"}) {
        QFile(draft.filePath(QLatin1String(name))).open(QIODevice::WriteOnly);
    }
    return draft.path();
}
} // namespace

void KilledSavesTest::theNextSaveClearsWhatAKilledOneHasLeft()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder->path()));
    const QStringList left = {leaveADraft(), leaveADraft()};
    const QString ofAPerson = stationSettings().fileName() + QStringLiteral(".savebackup/kept");
    QVERIFY(QDir().mkpath(ofAPerson));
    QVERIFY(saveSetting(QStringLiteral("decoder/depth"), 3));
    QVERIFY(!QFile::exists(left.first()));
    QVERIFY(!QFile::exists(left.last()));
    QVERIFY(QFile::exists(ofAPerson));
}

// The copy holds the lock for as long as it needs its draft.
void KilledSavesTest::draftsOfARunningCopyStay()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder->path()));
    const QString draft = leaveADraft();
    QLockFile lock(stationSettings().fileName() + QStringLiteral(".lock"));
    QVERIFY(lock.tryLock());
    QVERIFY(!saveSetting(QStringLiteral("decoder/depth"), 3));
    QVERIFY(QFile::exists(draft));
    lock.unlock();
    QVERIFY(saveSetting(QStringLiteral("decoder/depth"), 3));
    QVERIFY(!QFile::exists(draft));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::KilledSavesTest)
#include "killedsaves_test.moc"
