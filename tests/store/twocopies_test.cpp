// Two running copies of the program with the same data: changes that both make at the same time are
// all kept.

#include "app/mainwindow.h"
#include "base/datapaths.h"
#include "base/settings.h"
#include "tests/fixture/anotherprocess.h"
#include "tests/fixture/home.h"
#include "tests/fixture/receiverform.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <QPushButton>
#include <QtTest>
#include <cstdio>

namespace outpost
{

namespace
{
constexpr int rounds = 40;
const QString roundsKey = QStringLiteral("test/rounds");

bool isRemoved(int round)
{
    return round % 8 == 7;
}

QString hostOf(const QString &copy, int round)
{
    return QStringLiteral("%1-%2.example").arg(copy).arg(round);
}

// Each copy has its own profile file, so that it does not read a half-written one.
void hearOf(MainWindow &window, const QString &host)
{
    const QString path =
        QDir::homePath() +
        QStringLiteral("/profiles/%1-%2.json").arg(host).arg(QCoreApplication::applicationPid());
    putFile(path, QJsonDocument(QJsonObject{{QStringLiteral("Host"), host}}).toJson());
    window.profileStore().loadProfile(path);
    window.recordGoodReceiver(1);
}

void removeReceiver(const MainWindow &window, const QString &host)
{
    inReceiverDialog(window, [&host](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(
            form.goodReceivers->findText(host + QLatin1Char(':'), Qt::MatchStartsWith));
        form.remove->click();
    });
}

// Runs one copy: it hears new receivers, finishes sessions with a receiver that both have, and
// sometimes removes a receiver.
int beACopy(const QString &name)
{
    MainWindow window;
    std::puts("ready");
    std::fflush(stdout);
    std::getchar();
    for (int round = 0; round < rounds; ++round) {
        hearOf(window, hostOf(name, round));
        if (isRemoved(round)) {
            removeReceiver(window, hostOf(name, round));
        }
        hearOf(window, QStringLiteral("shared.example"));
        window.startStatusSession();
        window.finishStatusSession();
        changeSetting(roundsKey, [](const QVariant &before) { return before.toInt() + 1; });
    }
    return 0;
}

class Copy
{
public:
    explicit Copy(const QString &name) : process({QStringLiteral("--copy"), name})
    {
        process.nextLine(); // it is ready
    }

    void go()
    {
        process.write("\n");
        process.waitForBytesWritten();
    }
    bool succeeds()
    {
        return process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
               process.exitCode() == 0;
    }

private:
    AnotherProcess process;
};
} // namespace

class TwoCopiesTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        testHome().clear();
        testHome().writeProfile({{QStringLiteral("BridgePort"), freePort()}});
    }

    void loseNothingOfEachOther()
    {
        Copy first(QStringLiteral("first"));
        Copy second(QStringLiteral("second"));
        first.go();
        second.go();
        QVERIFY(first.succeeds());
        QVERIFY(second.succeeds());

        QStringList kept(QStringLiteral("shared.example"));
        QStringList removed;
        for (const QString &copy : {QStringLiteral("first"), QStringLiteral("second")}) {
            for (int round = 0; round < rounds; ++round) {
                (isRemoved(round) ? removed : kept).append(hostOf(copy, round));
            }
        }
        QCOMPARE(goodReceivers(), sorted(kept));
        QCOMPARE(sorted(settingOnDisk(QStringLiteral("receivers/removedKeys"))),
                 sorted(removed.replaceInStrings(QRegularExpression(QStringLiteral("$")),
                                                 QStringLiteral(":8073"))));
        const QJsonObject log = jsonFile(statusLogPath());
        QCOMPARE(log.value(QStringLiteral("Sessions")).toArray().size(), 2 * rounds);
        const QJsonArray totals = log.value(QStringLiteral("Receivers")).toArray();
        QCOMPARE(totals.size(), 1);
        QCOMPARE(totals.first().toObject().value(QStringLiteral("Sessions")).toInt(), 2 * rounds);
        QCOMPARE(settingOnDisk(roundsKey), QStringList(QString::number(2 * rounds)));
        QCOMPARE(lockFiles(), QStringList());
    }

    void aStuckCopyHoldsNobodyUpForLong_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("good receivers") << goodReceiversPath();
        QTest::newRow("status log") << statusLogPath();
#ifndef Q_OS_WIN
        QTest::newRow("settings") << stationSettings().fileName();
#endif
    }

    // The lists are then written without regard to the other copy. The settings wait for the next
    // change; until then the unsaved change applies.
    void aStuckCopyHoldsNobodyUpForLong()
    {
        QFETCH(QString, path);
        MainWindow window;
        const QString host = QStringLiteral("kiwi.example");
        hearOf(window, host);
        QDir().mkpath(QFileInfo(path).path());
        {
            QLockFile stuck(path + QStringLiteral(".lock"));
            QVERIFY(stuck.tryLock());
            QElapsedTimer timer;
            timer.start();
            hearOf(window, QStringLiteral("another.example"));
            window.startStatusSession();
            window.finishStatusSession();
            removeReceiver(window, host);
            QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
        }
        QCOMPARE(goodReceivers(), QStringList(QStringLiteral("another.example")));
        QCOMPARE(jsonFile(statusLogPath()).value(QStringLiteral("Sessions")).toArray().size(), 1);
        hearOf(window, host);
        QCOMPARE(goodReceivers(), QStringList(QStringLiteral("another.example")));
        removeReceiver(window, QStringLiteral("another.example"));
        QCOMPARE(settingOnDisk(QStringLiteral("receivers/removedKeys")),
                 (path.endsWith(QLatin1String(".conf"))
                      ? QStringList{QStringLiteral("another.example:8073"),
                                    QStringLiteral("kiwi.example:8073")}
                      : QStringList{QStringLiteral("kiwi.example:8073"),
                                    QStringLiteral("another.example:8073")}));
    }

private:
    static QStringList sorted(QStringList list)
    {
        list.sort();
        return list;
    }

    static QStringList goodReceivers()
    {
        QStringList hosts;
        for (const QJsonValue entry :
             QJsonDocument::fromJson(fileBytes(goodReceiversPath())).array()) {
            hosts.append(entry.toObject().value(QStringLiteral("Host")).toString());
        }
        return sorted(hosts);
    }

    static QStringList lockFiles()
    {
        const QStringList locks(QStringLiteral("*lock*"));
        return QDir(dataFolder()).entryList(locks, QDir::Files | QDir::Hidden) +
               QFileInfo(stationSettings().fileName()).dir().entryList(locks, QDir::Files);
    }
};

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    if (answersForSetting(argc, argv)) {
        return 0;
    }
    const bool copy = argc == 3 && qstrcmp(argv[1], "--copy") == 0;
    if (!copy) {
        testHome();
    }
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
    if (copy) {
        return beACopy(QString::fromLocal8Bit(argv[2]));
    }
    TwoCopiesTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "twocopies_test.moc"
