// The scratch roots of several copies of the program.

#include "decode/capturefolder.h"
#include "tests/fixture/anotherprocess.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#ifndef Q_OS_WIN
#include "tests/decode/filesizelimit.h"
#endif

namespace outpost
{

namespace
{
// Another running copy of the program, which has made its capture folder.
class OtherCopy
{
public:
    explicit OtherCopy(const QString &wanted)
        : process({QStringLiteral("--copy"), wanted}),
          line(QString::fromUtf8(process.nextLine()).trimmed())
    {
    }
    ~OtherCopy() { end(); }
    Q_DISABLE_COPY(OtherCopy)

    QString answer() const { return line; } // its folder, and whether it owns it

    void end()
    {
        process.closeWriteChannel();
        process.waitForFinished();
    }

    void endByKilling()
    {
        process.kill();
        process.waitForFinished();
    }

private:
    AnotherProcess process;
    const QString line;
};

int beTheOtherCopy(const char *wanted)
{
    CaptureFolder folder(QString::fromUtf8(wanted));
    const bool made = folder.make();
    std::printf("%s %s\n", qUtf8Printable(folder.path()), made && folder.isOwn() ? "own" : "-");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
} // namespace

class CaptureFolderTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { place = std::make_unique<QTemporaryDir>(); }

    void nothingIsMadeBeforeItIsUsed()
    {
        const CaptureFolder folder(wanted());
        QCOMPARE(folder.path(), wanted());
        QVERIFY(!folder.isOwn());
        QCOMPARE(made(), QStringList());
    }

    void oneCopyHasTheFolderAndItsLock()
    {
        {
            CaptureFolder folder(wanted() + QLatin1Char('/'));
            QVERIFY(folder.make());
            QCOMPARE(folder.path(), wanted());
            QVERIFY(folder.isOwn());
            QCOMPARE(made(),
                     (QStringList{QStringLiteral("capture"), QStringLiteral("capture.lock")}));
        }
        QCOMPARE(made(), QStringList(QStringLiteral("capture")));
    }

    void theFoldersAboveItAreMadeFirst()
    {
        CaptureFolder folder(place->filePath(QStringLiteral("PELQ/KiwiOutpost/capture")));
        QVERIFY(folder.make());
        QVERIFY(folder.isOwn());
        QVERIFY(QFileInfo(folder.path()).isDir());
    }

    void copiesThatRunAtTheSameTimeHaveOneEach()
    {
        OtherCopy first(wanted());
        OtherCopy second(wanted());
        QCOMPARE(first.answer(), wanted() + QStringLiteral(" own"));
        QCOMPARE(second.answer(), wanted() + QStringLiteral("-2 own"));
        CaptureFolder third(wanted());
        QVERIFY(third.make());
        QCOMPARE(third.path(), wanted() + QStringLiteral("-3"));
        QVERIFY(third.isOwn());
        QVERIFY(made().contains(QStringLiteral("capture-2.lock")));

        second.end();
        QVERIFY(!made().contains(QStringLiteral("capture-2.lock")));
        CaptureFolder fourth(wanted());
        QVERIFY(fourth.make());
        QCOMPARE(fourth.path(), wanted() + QStringLiteral("-2"));
    }

    void aFolderInUseIsKept()
    {
        CaptureFolder folder(wanted());
        QVERIFY(folder.make());
        QVERIFY(QDir().rmdir(folder.path()));
        QVERIFY(folder.make());
        QCOMPARE(folder.path(), wanted());
        QVERIFY(QFileInfo(wanted()).isDir());
    }

    void theLockOfAKilledCopyIsTakenOver()
    {
        OtherCopy killed(wanted());
        killed.endByKilling();
        QVERIFY(made().contains(QStringLiteral("capture.lock")));
        CaptureFolder folder(wanted());
        QVERIFY(folder.make());
        QCOMPARE(folder.path(), wanted());
        QVERIFY(folder.isOwn());
    }

    void whatAKilledCopyLeftIsRemovedByTheOneThatHasItsFolder()
    {
        const QString left = wanted() + QStringLiteral("/WORKER_20260116_142315_S1_0_825");
        const QTemporaryDir elsewhere;
        QVERIFY(QDir().mkpath(elsewhere.filePath(QStringLiteral("kept"))));
        {
            OtherCopy running(wanted());
            QVERIFY(QDir().mkpath(left + QStringLiteral("/inside")));
            CaptureFolder second(wanted());
            QVERIFY(second.make());
            QVERIFY(QDir(left).exists());
            running.endByKilling();
        }
        QVERIFY(QDir().mkpath(wanted() + QStringLiteral("/other")));
#ifndef Q_OS_WIN
        QVERIFY(QFile::link(elsewhere.path(), wanted() + QStringLiteral("/WORKER_link")));
        QVERIFY(QFile::link(elsewhere.path(), left + QStringLiteral("/inside/link")));
        QVERIFY(QFile::setPermissions(left + QStringLiteral("/inside"), QFile::ReadOwner));
#endif
        CaptureFolder folder(wanted());
        QVERIFY(folder.make());
        QCOMPARE(QDir(wanted()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
                 QStringList(QStringLiteral("other")));
        QVERIFY(QDir(elsewhere.filePath(QStringLiteral("kept"))).exists());
    }

    void afterAHundredCopiesTheNextTakesAFolderOfItsNumber()
    {
        std::vector<CaptureFolder> copies;
        for (int i = 0; i < 100; ++i) {
            copies.emplace_back(wanted());
            QVERIFY(copies.back().make() && copies.back().isOwn());
        }
        CaptureFolder folder(wanted());
        QVERIFY(folder.make());
        QVERIFY(!folder.isOwn());
        QCOMPARE(folder.path(), nameOfThisProcess());
        copies.clear();
        QVERIFY(folder.make());
        QVERIFY(folder.isOwn());
        QCOMPARE(folder.path(), wanted());
    }

#ifndef Q_OS_WIN
    void aFolderThatIsAnothersIsNotSharedWhereNoFurtherLockCanBeHad()
    {
        const OtherCopy owner(wanted());
        CaptureFolder folder(wanted());
        {
            const FileSizeLimit nothingCanBeWritten(0);
            QVERIFY(folder.make());
        }
        QVERIFY(!folder.isOwn());
        QCOMPARE(folder.path(), nameOfThisProcess());
        QVERIFY(QFileInfo(folder.path()).isDir());
    }
#endif

    // As if the copy was killed before it wrote its process id, or the id was reused.
    void aLockThatTellsNobodyIsTakenOverOnceItIsOld()
    {
        makeOldFile(wanted() + QStringLiteral(".lock"));
        CaptureFolder folder(wanted());
        QVERIFY(folder.make());
        QCOMPARE(folder.path(), wanted());
        QVERIFY(folder.isOwn());
    }

    // Qt's second lock, left by a copy that was killed while taking over the first.
    void whatATakeoverHasLeftIsTakenOverToo()
    {
        makeOldFile(wanted() + QStringLiteral(".lock"));
        makeOldFile(wanted() + QStringLiteral(".lock.rmlock"));
        CaptureFolder folder(wanted());
        QVERIFY(folder.make());
        QCOMPARE(folder.path(), wanted());
        QCOMPARE(made(), (QStringList{QStringLiteral("capture"), QStringLiteral("capture.lock")}));
    }

    void theLockOfARunningCopyIsNeverTooOld()
    {
        const OtherCopy other(wanted());
        QFile file(wanted() + QStringLiteral(".lock"));
        if (file.open(QIODevice::ReadWrite)) { // Windows does not allow it
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(-7),
                                     QFileDevice::FileModificationTime));
            file.close();
        }
        CaptureFolder folder(wanted());
        QVERIFY(folder.make());
        QCOMPARE(folder.path(), wanted() + QStringLiteral("-2"));
    }

    // The name is so long that the folder fits, but the lock file's name does not.
    void whereNoLockCanBeHadTheFolderIsShared()
    {
        const QString longest = place->filePath(QString(253, QLatin1Char('c')));
        CaptureFolder folder(longest);
        QVERIFY(folder.make());
        QCOMPARE(folder.path(), longest);
        QVERIFY(!folder.isOwn());
        CaptureFolder second(longest);
        QVERIFY(second.make());
        QCOMPARE(second.path(), longest);
        QCOMPARE(made().size(), 1);
    }

    void aFolderThatCannotBeMade()
    {
        QFile file(wanted());
        QVERIFY(file.open(QIODevice::WriteOnly));
        CaptureFolder folder(wanted());
        QVERIFY(!folder.make());
        QVERIFY(file.remove());
        QVERIFY(folder.make());
        QVERIFY(folder.isOwn());
    }

private:
    static void makeOldFile(const QString &path)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-20),
                                 QFileDevice::FileModificationTime));
    }

    QString nameOfThisProcess() const
    {
        return wanted() + QStringLiteral("-%1").arg(QCoreApplication::applicationPid());
    }

    QString wanted() const { return place->filePath(QStringLiteral("capture")); }
    QStringList made() const
    {
        return QDir(place->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> place;
};

} // namespace outpost

using namespace outpost;

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--copy") == 0) {
        return beTheOtherCopy(argv[2]);
    }
    CaptureFolderTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "capturefolder_test.moc"
