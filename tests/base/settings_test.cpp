#include "base/datapaths.h"
#include "base/lockfile.h"
#include "base/settings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace outpost
{

namespace
{
const QString key = QStringLiteral("test/key");

#ifdef Q_OS_WIN
QString lockFolder(const SettingsStore & /*settings*/)
{
    return dataFolder();
}

QString lockFile(const SettingsStore & /*settings*/)
{
    return dataFolder() + QStringLiteral("/settings.lock");
}
#else
QString lockFolder(const SettingsStore &settings)
{
    return QFileInfo(settings.fileName()).path();
}

QString lockFile(const SettingsStore &settings)
{
    return settings.fileName() + QStringLiteral(".lock");
}
#endif
} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); } // for the lock on Windows
    void storedDepth_data();
    void storedDepth();
    void openedByTheirOwnNames();
    void aChangeIsMadeUnderALock();
    void aChangeWaitsForAnotherCopy();
};

void SettingsTest::storedDepth_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<int>("depth");
    QTest::newRow("absent") << QVariant() << 2;
    QTest::newRow("0") << QVariant(0) << 2;
    QTest::newRow("1") << QVariant(1) << 1;
    QTest::newRow("2") << QVariant(2) << 2;
    QTest::newRow("3") << QVariant(3) << 3;
    QTest::newRow("4") << QVariant(4) << 2;
    QTest::newRow("-1") << QVariant(-1) << 2;
    for (const char *large : {"4294967297", "4294967298", "-4294967294", "18446744073709551617"}) {
        QTest::newRow(large) << QVariant(QString::fromLatin1(large)) << 2;
    }
    QTest::newRow("a large number") << QVariant(Q_INT64_C(4294967297)) << 2;
    QTest::newRow("not a number") << QVariant(QStringLiteral("deep")) << 2;
    QTest::newRow("a number as text") << QVariant(QStringLiteral("3")) << 3;
}

void SettingsTest::storedDepth()
{
    QFETCH(QVariant, stored);
    const QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    if (stored.isValid()) {
        settings.setValue(QStringLiteral("decoder/depth"), stored);
    }
    QTEST(storedDecodeDepth(settings), "depth");
}

void SettingsTest::openedByTheirOwnNames()
{
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
    const QSettings settings = stationSettings();
    QCOMPARE(settings.organizationName(), QStringLiteral("PELQ"));
    QCOMPARE(settings.applicationName(), QStringLiteral("PELQ Kiwi Outpost"));
}

// Works on a first start, too, when the folder of the lock does not exist yet.
void SettingsTest::aChangeIsMadeUnderALock()
{
    const QTemporaryDir folder;
    const SettingsStore settings(folder.filePath(QStringLiteral("config/settings.ini")));
    QDir(lockFolder(settings)).removeRecursively();
    bool locked = false;
    QVERIFY(settings.change(key, [&](const QVariant &) {
        locked = QFile::exists(lockFile(settings));
        return QVariant(1);
    }));
    QVERIFY(locked);
    QVERIFY(!QFile::exists(lockFile(settings)));
}

// The other copy never releases the lock.
void SettingsTest::aChangeWaitsForAnotherCopy()
{
    const QTemporaryDir folder;
    const SettingsStore settings(folder.filePath(QStringLiteral("settings.ini")));
    QDir().mkpath(lockFolder(settings));
    QLockFile stuck(lockFile(settings));
    QVERIFY(stuck.tryLock());
    QElapsedTimer timer;
    timer.start();
    settings.save(key, 1);
    QVERIFY(timer.elapsed() >= changeWaitMs);
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::SettingsTest)
#include "settings_test.moc"
