#include "base/datapaths.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

class DataPathsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void dataFilesLieInTheApplicationsDataFolder_data();
    void dataFilesLieInTheApplicationsDataFolder();
    void everyCallAsksThePlatformAnew();
    void captureLiesBesideTheProgramsFolder_data();
    void captureLiesBesideTheProgramsFolder();
    void captureLeavesAPlaceThatIsAFile();
#ifndef Q_OS_WIN
    void installedProgramsCaptureInTheCache_data();
    void installedProgramsCaptureInTheCache();
    void captureLeavesAPlaceThatIsNotThere();
#endif

private:
    QTemporaryDir home;
    const QString cache = QStringLiteral("/home/op/.cache/PELQ/KiwiOutpost");
};

void DataPathsTest::initTestCase()
{
    QVERIFY(home.isValid());
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home.filePath(QStringLiteral("data"))));
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
}

void DataPathsTest::dataFilesLieInTheApplicationsDataFolder_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("suffix");
    const auto row = [](const char *suffix, const QString &path) {
        QTest::newRow(suffix) << path << QString::fromLatin1(suffix);
    };
    row("/default-profile.json", defaultProfilePath());
    row("/kiwi-profile.json", suggestedProfilePath());
    row("/kiwi-frequency.txt", frequencyFilePath());
    row("/good-kiwi-receivers.json", goodReceiversPath());
    row("/receiver-status-log.json", statusLogPath());
}

void DataPathsTest::dataFilesLieInTheApplicationsDataFolder()
{
    QFETCH(QString, path);
    QFETCH(QString, suffix);
    QCOMPARE(path, QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + suffix);
#ifdef Q_OS_LINUX
    QCOMPARE(path, home.filePath(QStringLiteral("data/PELQ/KiwiOutpost")) + suffix);
#endif
}

void DataPathsTest::everyCallAsksThePlatformAnew()
{
    QCoreApplication::setApplicationName(QStringLiteral("Another"));
    const QString path = frequencyFilePath();
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
    QVERIFY2(path.endsWith(QStringLiteral("/PELQ/Another/kiwi-frequency.txt")), qPrintable(path));
}

void DataPathsTest::captureLiesBesideTheProgramsFolder_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("plain") << QStringLiteral("station/bin");
    QTest::newRow("with a trailing slash") << QStringLiteral("station/bin/");
    QTest::newRow("not clean") << QStringLiteral("station/lib/../bin");
}

void DataPathsTest::captureLiesBesideTheProgramsFolder()
{
    QFETCH(QString, program);
    QVERIFY(QDir(home.path()).mkpath(QStringLiteral("station/bin")));
    QCOMPARE(captureFolder(home.filePath(program), cache),
             home.filePath(QStringLiteral("station/capture")));
}

void DataPathsTest::captureLeavesAPlaceThatIsAFile()
{
    QVERIFY(QDir(home.path()).mkpath(QStringLiteral("taken/bin")));
    QFile file(home.filePath(QStringLiteral("taken/capture")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString folder = captureFolder(home.filePath(QStringLiteral("taken/bin")), cache);
#ifdef Q_OS_WIN
    QCOMPARE(folder, file.fileName());
#else
    QCOMPARE(folder, cache + QStringLiteral("/capture"));
#endif
}

#ifndef Q_OS_WIN
void DataPathsTest::installedProgramsCaptureInTheCache_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("/usr") << QStringLiteral("/usr");
    QTest::newRow("/usr/bin") << QStringLiteral("/usr/bin");
    QTest::newRow("/usr/local/bin") << QStringLiteral("/usr/local/bin");
    QTest::newRow("/opt/station/bin") << QStringLiteral("/opt/station/bin");
    QTest::newRow("by a detour") << QStringLiteral("/tmp/../usr/bin");
}

void DataPathsTest::installedProgramsCaptureInTheCache()
{
    QFETCH(QString, program);
    QCOMPARE(captureFolder(program, cache), cache + QStringLiteral("/capture"));
}

void DataPathsTest::captureLeavesAPlaceThatIsNotThere()
{
    QCOMPARE(captureFolder(home.filePath(QStringLiteral("gone/bin")), cache),
             cache + QStringLiteral("/capture"));
}
#endif

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::DataPathsTest)
#include "datapaths_test.moc"
