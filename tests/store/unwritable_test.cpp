// Full and read-only disks, on mounts private to this process.

#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/datapaths.h"
#include "base/settings.h"
#include "tests/store/privatemounts.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

namespace
{

bool privateMounts = false; // mounted before the tests start

} // namespace

class UnwritableTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aFullDiskKeepsTheOldFile_data();
    void aFullDiskKeepsTheOldFile();
    void aFullDiskLeavesNoNewFile();
    void savesAgainOnceThereIsRoom();
    void aReadOnlyDiskCannotBeOpened();
    void settingsAreTheOldOnesOrTheNewOnesHoweverFullTheDisk_data();
    void settingsAreTheOldOnesOrTheNewOnesHoweverFullTheDisk();
    void theCaptureFolderLeavesAReadOnlyDisk();
    void installedProgramsCaptureInTheCacheEvenWhereTheyCouldWrite_data();
    void installedProgramsCaptureInTheCacheEvenWhereTheyCouldWrite();

private:
    // Fills the mounted folder with a file until nothing more fits.
    void fillUp(const QString &folder);

    QTemporaryDir folder;
};

void UnwritableTest::initTestCase()
{
    QVERIFY(folder.isValid());
    QVERIFY2(privateMounts, privateMountsRefused);
}

void UnwritableTest::fillUp(const QString &path)
{
    QFile filler(path + QStringLiteral("/filler"));
    QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    const QByteArray page(4096, 'f');
    while (filler.write(page) == page.size()) {
    }
    QCOMPARE(filler.error(), QFileDevice::ResourceError);
}

void UnwritableTest::aFullDiskKeepsTheOldFile_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("one byte") << 1;
    QTest::newRow("less than the write buffer") << 10000;
    QTest::newRow("more than the write buffer") << 100000;
    QTest::newRow("more than the whole disk") << 1000000;
}

void UnwritableTest::aFullDiskKeepsTheOldFile()
{
    QFETCH(int, size);
    const MemoryMount disk(folder.path(), "size=256k");
    QVERIFY(disk.isMounted());
    const QString target = folder.filePath(QStringLiteral("profile.json"));
    QVERIFY(saveAtomically(target, "the old content"));
    fillUp(folder.path());

    const SaveResult saved = saveAtomically(target, QByteArray(size, 'n'));
    QCOMPARE(saved.outcome, SaveResult::NotCommitted);
    QCOMPARE(saved.error, QStringLiteral("No space left on device"));
    QCOMPARE(readFile(target).value(), QByteArray("the old content"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

void UnwritableTest::aFullDiskLeavesNoNewFile()
{
    const MemoryMount disk(folder.path(), "size=256k");
    QVERIFY(disk.isMounted());
    fillUp(folder.path());
    const QString target = folder.filePath(QStringLiteral("kiwi-frequency.txt"));
    QCOMPARE(saveAtomically(target, "14.074000", QIODevice::Text).outcome,
             SaveResult::NotCommitted);
    QVERIFY(!QFile::exists(target));
}

void UnwritableTest::savesAgainOnceThereIsRoom()
{
    const MemoryMount disk(folder.path(), "size=256k");
    QVERIFY(disk.isMounted());
    fillUp(folder.path());
    const QString target = folder.filePath(QStringLiteral("profile.json"));
    QVERIFY(!saveAtomically(target, "content"));
    QVERIFY(QFile::remove(folder.filePath(QStringLiteral("filler"))));
    QVERIFY(saveAtomically(target, "content"));
    QCOMPARE(readFile(target).value(), QByteArray("content"));
}

void UnwritableTest::aReadOnlyDiskCannotBeOpened()
{
    MemoryMount disk(folder.path(), "size=256k");
    QVERIFY(disk.isMounted());
    const QString target = folder.filePath(QStringLiteral("profile.json"));
    QVERIFY(saveAtomically(target, "the old content"));
    QVERIFY(disk.makeReadOnly());
    const SaveResult saved = saveAtomically(target, "content");
    QCOMPARE(saved.outcome, SaveResult::NotOpened);
    QVERIFY(!saved.error.isEmpty());
    QCOMPARE(readFile(target).value(), QByteArray("the old content"));
}

void UnwritableTest::settingsAreTheOldOnesOrTheNewOnesHoweverFullTheDisk_data()
{
    QTest::addColumn<int>("calls");
    QTest::newRow("one page of settings") << 2;
    QTest::newRow("many pages of settings") << 3000;
}

// Page by page, from no space at all to the first save that has enough.
void UnwritableTest::settingsAreTheOldOnesOrTheNewOnesHoweverFullTheDisk()
{
    QFETCH(int, calls);
    const QString path = stationSettings().fileName();
    const QString configFolder = QFileInfo(path).path();
    QVERIFY(QDir().mkpath(configFolder));
    const MemoryMount disk(configFolder, "size=256k");
    QVERIFY(disk.isMounted());
    QStringList kept;
    for (int i = 0; i < calls; ++i) {
        kept.append(QStringLiteral("K%1ABC").arg(i));
    }
    QVERIFY(saveSetting(QStringLiteral("highlight/calls"), kept));
    QVERIFY(saveSetting(QStringLiteral("zone/of others"), 1));
    const QByteArray before = readFile(path).value();
    fillUp(configFolder);
    QFile filler(configFolder + QStringLiteral("/filler"));

    int refusals = 0;
    while (!saveSetting(QStringLiteral("decoder/depth"), 3)) {
        QCOMPARE(readFile(path).value(), before);
        QCOMPARE(QDir(configFolder).entryList(QDir::AllEntries | QDir::Hidden).size(), 4);
        refusals += 1;
        QVERIFY(filler.resize(filler.size() - 4096));
    }
    QVERIFY(refusals > 2);
    const QString copy = folder.filePath(QString::number(calls)); // not in any cache
    QVERIFY(QFile::copy(path, copy));
    const QSettings found(copy, QSettings::IniFormat);
    QCOMPARE(found.allKeys().size(), 3);
    QCOMPARE(found.value(QStringLiteral("decoder/depth")).toInt(), 3);
    QCOMPARE(found.value(QStringLiteral("highlight/calls")).toStringList(), kept);
}

void UnwritableTest::theCaptureFolderLeavesAReadOnlyDisk()
{
    MemoryMount disk(folder.path(), "size=256k");
    QVERIFY(disk.isMounted());
    const QString bin = folder.filePath(QStringLiteral("bin"));
    const QString cache = QStringLiteral("/home/op/.cache/PELQ/KiwiOutpost");
    QVERIFY(QDir().mkpath(bin));
    QCOMPARE(captureFolder(bin, cache), folder.filePath(QStringLiteral("capture")));

    QVERIFY(QDir().mkpath(folder.filePath(QStringLiteral("capture"))));
    QVERIFY(disk.makeReadOnly());
    QCOMPARE(captureFolder(bin, cache), cache + QStringLiteral("/capture"));
}

void UnwritableTest::installedProgramsCaptureInTheCacheEvenWhereTheyCouldWrite_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::newRow("/opt") << QStringLiteral("/opt");
    QTest::newRow("/usr/local") << QStringLiteral("/usr/local");
}

void UnwritableTest::installedProgramsCaptureInTheCacheEvenWhereTheyCouldWrite()
{
    QFETCH(QString, prefix);
    const MemoryMount disk(prefix, "size=256k");
    QVERIFY(disk.isMounted());
    const QString bin = prefix + QStringLiteral("/station/bin");
    QVERIFY(QDir().mkpath(bin));
    QCOMPARE(captureFolder(bin, QStringLiteral("/cache")), QStringLiteral("/cache/capture"));
}

} // namespace outpost

using namespace outpost;

int main(int argc, char *argv[])
{
    privateMounts = enterPrivateMounts();
    const QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
    QCoreApplication application(argc, argv);
    UnwritableTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "unwritable_test.moc"
