#include "decode/jt9locator.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace outpost
{

namespace
{
const QStringList windowsForm = {QStringLiteral("Qt5Core.dll"), QStringLiteral("wsjtx.exe")};

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}
} // namespace

class Jt9LocatorTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { root = std::make_unique<QTemporaryDir>(); }

    void refusesDevelopmentTreesByTheirNames_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("refused");
        const auto row = [](const char *path, bool refused) {
            QTest::newRow(path) << QString::fromLatin1(path) << refused;
        };
        row("C:/WSJT/wsjtx/bin/jt9.exe", false);
        row("c:/pelq-kiwi-outpost/bin/jt9.exe", true);
        row("C:\\PELQ-Kiwi-Outpost\\bin\\jt9.exe", true);
        row("c:/pelq-kiwi-outpost2/bin/jt9.exe", false);
        row("d:/pelq-kiwi-outpost/bin/jt9.exe", false);
        row("C:/wsjt-x_v3.0.2_PELQ-mods/bin/jt9.exe", true);
        row("C:/wsjt-x_v3.0.2/bin/jt9.exe", false);
        row("D:/a/src/jt9.exe", true);
        row("D:/a/srcs/jt9.exe", false);
        row("D:/a/Build/b/jt9.exe", true);
        row("D:/a/building/jt9.exe", false);
        row("/a/debug/jt9", true);
        row("/a/CMakeFiles/jt9", true);
        row("/a/accepted_stage/jt9", true);
        row("/a/best_accepted/jt9", true);
        row("/a/Stage2/jt9", true);
        row("/a/STEP_7/jt9", true);
        row("/home/stephen/jt9", true);
        row("/a/backstage/jt9", false);
        row("/usr/bin/jt9", false);
    }

    void refusesDevelopmentTreesByTheirNames()
    {
        QFETCH(QString, path);
        QFETCH(bool, refused);
        QCOMPARE(isRefusedJt9Path(path), refused);
    }

    void acceptsAnInstallation_data()
    {
        QTest::addColumn<QString>("decoder");
        QTest::addColumn<QStringList>("beside");   // plain files
        QTest::addColumn<QStringList>("programs"); // executable files
        QTest::addColumn<bool>("canRun");
        QTest::addColumn<bool>("installed");
        const auto row = [](const char *name, const char *decoder, const char *beside,
                            const char *programs, bool canRun, bool installed) {
            QTest::newRow(name) << QString::fromLatin1(decoder) << words(beside) << words(programs)
                                << canRun << installed;
        };
        row("Qt 5, wsjtx", "jt9.exe", "jt9.exe Qt5Core.dll wsjtx.exe", "", true, true);
        row("Qt 6, wsjt-x", "jt9.exe", "jt9.exe Qt6Core.dll wsjt-x.exe", "", true, true);
        row("wsjtz", "jt9.exe", "jt9.exe Qt6Core.dll wsjtz.exe", "", true, true);
        row("wsjt-z", "jt9.exe", "jt9.exe Qt6Core.dll wsjt-z.exe", "", true, true);
        row("no Qt library", "jt9.exe", "jt9.exe wsjtx.exe", "", false, false);
        row("another Qt library", "jt9.exe", "jt9.exe Qt4Core.dll wsjtx.exe", "", false, false);
        row("no application", "jt9.exe", "jt9.exe Qt6Core.dll", "", true, false);
        row("another application", "jt9.exe", "jt9.exe Qt6Core.dll jtdx.exe", "", true, false);
        row("no decoder", "jt9.exe", "Qt5Core.dll wsjtx.exe", "", true, false);
#ifndef Q_OS_WIN
        row("native", "jt9", "", "jt9 wsjtx", true, true);
        row("native wsjt-x", "jt9", "", "jt9 wsjt-x", true, true);
        row("native wsjtz", "jt9", "", "jt9 wsjtz", true, true);
        row("native wsjt-z", "jt9", "", "jt9 wsjt-z", true, true);
        row("native alone", "jt9", "", "jt9", false, false);
        row("native, not executable", "jt9", "jt9", "wsjtx", false, false);
        row("native, application not executable", "jt9", "wsjtx", "jt9", false, false);
        row("native, other name", "jt9old", "", "jt9old wsjtx", false, false);
        row("Windows decoder, native application", "jt9.exe", "", "jt9.exe wsjtx", false, false);
#endif
    }

    void acceptsAnInstallation()
    {
        QFETCH(QString, decoder);
        QFETCH(QStringList, beside);
        QFETCH(QStringList, programs);
        QFETCH(bool, canRun);
        QFETCH(bool, installed);
        for (const QString &file : beside) {
            makeFile(file);
        }
        for (const QString &file : programs) {
            QFile::setPermissions(makeFile(file), QFile::ReadOwner | QFile::ExeOwner);
        }
        const QString path = root->filePath(decoder);
        QCOMPARE(canRunJt9(path), canRun);
        QCOMPARE(isInstalledJt9(path), installed);
    }

    void aFolderIsNoDecoder()
    {
        makeFile(QStringLiteral("a/Qt5Core.dll"));
        makeFile(QStringLiteral("a/wsjtx.exe"));
        QVERIFY(QDir(root->path()).mkpath(QStringLiteral("a/jt9.exe")));
        QVERIFY(!isInstalledJt9(root->filePath(QStringLiteral("a/jt9.exe"))));
    }

    void refusesACopyInABuildFolderThoughFilesLieBesideIt()
    {
        QVERIFY(isInstalledJt9(makeInstallation(QStringLiteral("fine/jt9.exe"))));
        QVERIFY(!isInstalledJt9(makeInstallation(QStringLiteral("build/jt9.exe"))));
        QVERIFY(!isInstalledJt9(makeInstallation(QStringLiteral("stage3/bin/jt9.exe"))));
    }

    void joinsPathsOfTheSameFile_data()
    {
        QTest::addColumn<Qt::CaseSensitivity>("fileNames");
        QTest::addColumn<QStringList>("distinct");
        const QStringList onWindows = {QStringLiteral("C:/A/jt9.exe"), QStringLiteral("D:/jt9")};
        const QStringList elsewhere = {QStringLiteral("C:/A/jt9.exe"),
                                       QStringLiteral("c:/a/JT9.EXE"), QStringLiteral("D:/jt9")};
        QTest::newRow("in any case") << Qt::CaseInsensitive << onWindows;
        QTest::newRow("in the same case") << Qt::CaseSensitive << elsewhere;
    }

    void joinsPathsOfTheSameFile()
    {
        QFETCH(Qt::CaseSensitivity, fileNames);
        QFETCH(QStringList, distinct);
        const QStringList paths = {QStringLiteral(" C:/A/./jt9.exe "),
                                   QStringLiteral("  "),
                                   QString(),
                                   QStringLiteral("c:/a/JT9.EXE"),
                                   QStringLiteral("C:\\A\\jt9.exe"),
                                   QStringLiteral("D:/b/../jt9")};
        QCOMPARE(distinctPaths(paths, fileNames), distinct);
    }

    // Off Windows these are two folders, and only one of them contains a decoder.
    void aCandidateIsFoundBesideOneOfOtherLetterCase_data()
    {
        QTest::addColumn<bool>("isCandidate");
        QTest::newRow("candidates") << true;
        QTest::newRow("under a root") << false;
    }

    void aCandidateIsFoundBesideOneOfOtherLetterCase()
    {
        QFETCH(bool, isCandidate);
        const QString installed = makeInstallation(QStringLiteral("w/bin/jt9.exe"));
        const QString upper = root->filePath(QStringLiteral("w/BIN/jt9.exe"));
        const QString under = root->filePath(QStringLiteral("w"));
        const QString found =
            findInstalledJt9({isCandidate ? QStringList{upper, installed} : QStringList{upper},
                              isCandidate ? QStringList{} : QStringList{under},
                              {}});
        QCOMPARE(found.toLower(), installed.toLower());
        QVERIFY(QFileInfo(found).isFile());
    }

    void findsTheFirstInstalledCandidate()
    {
        const QString first = makeInstallation(QStringLiteral("z/jt9.exe"));
        const QString second = makeInstallation(QStringLiteral("a/jt9.exe"));
        const QString invalid = makeFile(QStringLiteral("copied/jt9.exe"));
        const QString missing = root->filePath(QStringLiteral("missing/jt9.exe"));
        QCOMPARE(findInstalledJt9({{missing, invalid, first, second}, {}, {}}), first);
    }

    void looksUnderTheRootsAfterTheCandidatesAndBeforeTheLast()
    {
        const QString candidate = makeInstallation(QStringLiteral("c/jt9.exe"));
        const QString deep = makeInstallation(QStringLiteral("r/x/y/JT9.exe"));
        const QString last = makeInstallation(QStringLiteral("l/jt9.exe"));
        const QString under = root->filePath(QStringLiteral("r"));
        const QString missing = root->filePath(QStringLiteral("missing"));
        QCOMPARE(findInstalledJt9({{candidate}, {under}, {last}}), candidate);
        QCOMPARE(findInstalledJt9({{}, {missing, under}, {last}}), deep);
        QCOMPARE(findInstalledJt9({{}, {missing}, {last}}), last);
        QCOMPARE(findInstalledJt9({{}, {missing}, {}}), QString());
        QCOMPARE(findInstalledJt9({}), QString());
    }

    void theMoreRecentlyModifiedUnderARootWins_data()
    {
        QTest::addColumn<int>("ageOfA");
        QTest::addColumn<int>("ageOfB");
        QTest::addColumn<QString>("winner");
        QTest::newRow("a") << 100 << 200 << QStringLiteral("r/a/jt9.exe");
        QTest::newRow("b") << 200 << 100 << QStringLiteral("r/b/jt9.exe");
    }

    void theMoreRecentlyModifiedUnderARootWins()
    {
        QFETCH(int, ageOfA);
        QFETCH(int, ageOfB);
        QFETCH(QString, winner);
        setAge(makeInstallation(QStringLiteral("r/a/jt9.exe")), ageOfA);
        setAge(makeInstallation(QStringLiteral("r/b/jt9.exe")), ageOfB);
        setAge(makeFile(QStringLiteral("r/c/jt9.exe")), 1); // the newest, but not installed
        QCOMPARE(findInstalledJt9({{}, {root->filePath(QStringLiteral("r"))}, {}}),
                 root->filePath(winner));
    }

    void anEarlierRootWinsOverANewerFile()
    {
        const QString old = makeInstallation(QStringLiteral("r1/jt9.exe"));
        setAge(old, 1000);
        makeInstallation(QStringLiteral("r2/jt9.exe"));
        const QStringList roots = {root->filePath(QStringLiteral("r1")),
                                   root->filePath(QStringLiteral("r2"))};
        QCOMPARE(findInstalledJt9({{}, roots, {}}), old);
    }

#ifndef Q_OS_WIN
    void aPathWithADriveLetterIsNeverUsedOffWindows()
    {
        const QString before = QDir::currentPath();
        const auto restore = qScopeGuard([&] { QDir::setCurrent(before); });
        const QString decoder = QStringLiteral("C:/WSJT/wsjtx/bin/jt9.exe");
        makeInstallation(decoder);
        makeInstallation(QStringLiteral("WSJT/wsjtx/bin/jt9.exe"));
        QVERIFY(QDir::setCurrent(root->path()));
        QVERIFY(isInstalledJt9(decoder)); // relative to the current folder
        QCOMPARE(findInstalledJt9({{decoder}, {}, {}}), QString());
        QCOMPARE(findInstalledJt9({{}, {}, { decoder }}), QString());
        QCOMPARE(findInstalledJt9({{}, {QStringLiteral("C:/WSJT")}, {}}), QString());
        const QString relative = decoder.mid(3);
        QCOMPARE(findInstalledJt9({{decoder, relative}, {}, {}}), relative);
        QCOMPARE(findInstalledJt9({{}, {QStringLiteral("WSJT")}, {}}), root->filePath(relative));
    }
#endif

    void thisSystemsPlacesInOrder()
    {
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("ProgramFiles"), QStringLiteral("P:/F"));
        environment.insert(QStringLiteral("ProgramFiles(x86)"), QStringLiteral("P:/86"));
        environment.insert(QStringLiteral("LOCALAPPDATA"), QStringLiteral("L:/A"));
        const QStringList searchPath = {QStringLiteral("/opt/radio"), QStringLiteral("relative"),
                                        QStringLiteral("/sbin")};
        environment.insert(QStringLiteral("PATH"), searchPath.join(QDir::listSeparator()));
        const Jt9Places places =
            jt9PlacesOfThisSystem(QStringLiteral("/now/jt9"), QStringLiteral("/app"), environment);
        const QStringList candidates = {QStringLiteral("/now/jt9"),
                                        QStringLiteral("/app/jt9.exe"),
                                        QStringLiteral("C:/WSJT/wsjtx/bin/jt9.exe"),
                                        QStringLiteral("C:/WSJT/wsjtz/bin/jt9.exe"),
                                        QStringLiteral("P:/F/WSJT-X/bin/jt9.exe"),
                                        QStringLiteral("P:/86/WSJT-X/bin/jt9.exe"),
                                        QStringLiteral("L:/A/Programs/WSJT-X/bin/jt9.exe")};
        const QStringList roots = {QStringLiteral("C:/WSJT"), QStringLiteral("P:/F/WSJT-X"),
                                   QStringLiteral("P:/F/WSJT"), QStringLiteral("P:/86/WSJT-X"),
                                   QStringLiteral("L:/A/Programs/WSJT-X")};
        QCOMPARE(places.candidates, candidates);
        QCOMPARE(places.roots, roots);
#ifdef Q_OS_WIN
        QVERIFY(places.lastCandidates.isEmpty());
#else
        const QStringList last = {QStringLiteral("/opt/radio/jt9"), QStringLiteral("/sbin/jt9"),
                                  QStringLiteral("/usr/local/bin/jt9"),
                                  QStringLiteral("/usr/bin/jt9")};
        QCOMPARE(places.lastCandidates, last);
#endif
    }

    void unsetVariablesNameNoPlaces()
    {
        const Jt9Places places =
            jt9PlacesOfThisSystem(QString(), QStringLiteral("/app"), QProcessEnvironment());
        QCOMPARE(places.candidates.size(), 4);
        QCOMPARE(places.roots, QStringList(QStringLiteral("C:/WSJT")));
    }

    void knowsTheDecodersFileNames()
    {
        QVERIFY(isJt9FileName(QStringLiteral("jt9.exe")));
        QVERIFY(isJt9FileName(QStringLiteral("JT9.EXE")));
        QVERIFY(!isJt9FileName(QStringLiteral("jt9.exe.exe")));
        QVERIFY(!isJt9FileName(QStringLiteral("wsjtx.exe")));
#ifdef Q_OS_WIN
        QVERIFY(!isJt9FileName(QStringLiteral("jt9")));
        QCOMPARE(jt9FileFilter(),
                 QStringLiteral("jt9.exe (jt9.exe);;Executable files (*.exe);;All files (*)"));
#else
        QVERIFY(isJt9FileName(QStringLiteral("jt9")));
        QVERIFY(!isJt9FileName(QStringLiteral("JT9")));
        QCOMPARE(jt9FileFilter(), QStringLiteral("jt9 (jt9 jt9.exe);;All files (*)"));
#endif
    }

    void aDecoderNamedInCapitalsIsInstalledToo()
    {
        QVERIFY(isInstalledJt9(makeInstallation(QStringLiteral("a/JT9.EXE"))));
    }

private:
    QString makeFile(const QString &name) const
    {
        QString path = root->filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)) {
            qFatal("cannot make a file");
        }
        return path;
    }

    QString makeInstallation(const QString &decoder) const
    {
        const QString folder = QFileInfo(decoder).path();
        for (const QString &file : windowsForm) {
            makeFile(folder + QLatin1Char('/') + file);
        }
        return makeFile(decoder);
    }

    static void setAge(const QString &path, int seconds)
    {
        QFile file(path);
        const QDateTime modified = QDateTime::currentDateTimeUtc().addSecs(-seconds);
        if (!file.open(QIODevice::ReadWrite) ||
            !file.setFileTime(modified, QFileDevice::FileModificationTime)) {
            qFatal("cannot age a file");
        }
    }

    std::unique_ptr<QTemporaryDir> root;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::Jt9LocatorTest)
#include "jt9locator_test.moc"
