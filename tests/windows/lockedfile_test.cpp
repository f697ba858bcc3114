// Data files that another program holds open for a short or a long time.

#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/lockedfile.h"
#include "tests/windows/fileholder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace outpost
{

namespace
{
constexpr int shortlyMs = lockedFileMs / 3;
constexpr int longMs = 60000; // the test ends before
} // namespace

class LockedFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        target = folder->filePath(QStringLiteral("J\u00fcrgen's profile.json"));
        QVERIFY(saveAtomically(target, "old"));
    }

    void aFileHeldForAMomentIsReplaced()
    {
        const FileHolder holder(target, shortlyMs);
        QVERIFY(holder.holds);
        const SaveResult saved = saveAtomically(target, "new");
        QVERIFY2(saved, qPrintable(saved.error));
        QCOMPARE(readFile(target).value(), QByteArray("new"));
        QCOMPARE(names(), QStringList(QFileInfo(target).fileName()));
    }

    void aFileHeldForLongStaysAsItWas()
    {
        const FileHolder holder(target, longMs);
        QVERIFY(holder.holds);
        QElapsedTimer timer;
        timer.start();
        const SaveResult saved = saveAtomically(target, "new");
        QVERIFY(timer.elapsed() >= lockedFileMs);
        QVERIFY(timer.elapsed() < 10 * lockedFileMs);
        QCOMPARE(saved.outcome, SaveResult::NotCommitted);
        QVERIFY(!saved.error.isEmpty());
        QCOMPARE(readFile(target).value(), QByteArray("old"));
        QCOMPARE(names(), QStringList(QFileInfo(target).fileName()));
    }

    void aLockedFileIsNotTakenForAMissingOne()
    {
        const FileHolder holder(target, shortlyMs, {QStringLiteral("exclusive")});
        QVERIFY(holder.holds);
        QCOMPARE(readFile(target).value_or(QByteArray()), QByteArray("old"));
    }

    void aFileLockedForLongIsNeitherReadNorReplaced()
    {
        {
            const FileHolder holder(target, longMs, {QStringLiteral("exclusive")});
            QVERIFY(holder.holds);
            QVERIFY(!readFile(target).has_value());
            QCOMPARE(saveAtomically(target, "new").outcome, SaveResult::NotCommitted);
        }
        QCOMPARE(readFile(target).value(), QByteArray("old"));
    }

    void aMissingFileIsNotWaitedFor()
    {
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!readFile(folder->filePath(QStringLiteral("never written"))).has_value());
        QCOMPARE(saveAtomically(folder->filePath(QStringLiteral("no/folder")), "new").outcome,
                 SaveResult::NotOpened);
        QVERIFY(timer.elapsed() < lockedFileMs);
    }

private:
    QStringList names() const
    {
        return QDir(folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString target;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::LockedFileTest)
#include "lockedfile_test.moc"
