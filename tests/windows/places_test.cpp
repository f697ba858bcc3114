// Where installers put the decoder on Windows. Creates C:/WSJT, so run it only on Wine's own drive.

#include "decode/jt9locator.h"

#include <QDateTime>
#include <QDir>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

namespace
{
const QString wsjt = QStringLiteral("C:/WSJT");

QString install(const QString &folder, int ageSeconds = 0)
{
    QDir().mkpath(folder);
    for (const char *name : {"jt9.exe", "wsjtx.exe", "Qt5Core.dll"}) {
        QFile file(folder + QLatin1Char('/') + QLatin1String(name));
        if (!file.open(QIODevice::WriteOnly) ||
            !file.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-ageSeconds),
                              QFileDevice::FileModificationTime)) {
            qFatal("cannot install a decoder");
        }
    }
    return folder + QStringLiteral("/jt9.exe");
}
} // namespace

class PlacesTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY2(!QFileInfo::exists(wsjt), "C:/WSJT is somebody's own");
        const QPair<const char *, const char *> variables[] = {
            {"ProgramFiles", "Program Files"},
            {"ProgramFiles(x86)", "Program Files (x86)"},
            {"LOCALAPPDATA", "Users/J\u00fcrgen/AppData/Local"}};
        for (const auto &variable : variables) {
            environment.insert(QString::fromLatin1(variable.first),
                               QDir::toNativeSeparators(place(variable.second)));
        }
    }
    void cleanup()
    {
        QDir(wsjt).removeRecursively();
        QDir(root.path()).removeRecursively();
    }

    void areTriedInOrder()
    {
        const QString decoders[] = {
            install(place("Users/J\u00fcrgen/AppData/Local/Programs/WSJT-X/bin")),
            install(place("Program Files/WSJT/wsjtz/bin"))};
        QCOMPARE(found(), decoders[0]); // usual files come before search results
        const QString x86 = install(place("Program Files (x86)/WSJT-X/bin"));
        QCOMPARE(found(), x86);
        const QString programFiles = install(place("Program Files/WSJT-X/bin"));
        QCOMPARE(found(), programFiles);
        const QString z = install(QStringLiteral("C:/WSJT/wsjtz/bin"));
        QCOMPARE(found(), z);
        const QString x = install(QStringLiteral("C:/WSJT/wsjtx/bin"));
        QCOMPARE(found(), x);
        const QString own = install(place("app"));
        QCOMPARE(found(), own);
        const QString current = install(place("current"));
        QCOMPARE(found(QDir::toNativeSeparators(current)), current);
    }

    void theMoreRecentOfTwoInstallationsWins()
    {
        install(wsjt + QStringLiteral("/older/bin"), 2000);
        const QString newer = install(wsjt + QStringLiteral("/newer/deep/bin"), 1000);
        QCOMPARE(found(), newer);
        QCOMPARE(found(newer.toUpper()), QStringLiteral("C:/WSJT/NEWER/DEEP/BIN/JT9.EXE"));
    }

    void developmentCopiesAreRefused_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("build") << QStringLiteral("C:/WSJT/Build/bin");
        QTest::newRow("stage3") << QStringLiteral("C:/WSJT/stage3/bin");
        QTest::newRow("STEP_7") << QStringLiteral("C:/WSJT/STEP_7/bin");
        QTest::newRow("Stephen") << QStringLiteral("C:/WSJT/Stephen/bin");
    }

    void developmentCopiesAreRefused()
    {
        QFETCH(QString, folder);
        const QString decoder = install(folder);
        QVERIFY(!isInstalledJt9(decoder));
        QVERIFY(!isInstalledJt9(QDir::toNativeSeparators(decoder)));
        QCOMPARE(found(), QString());
    }

private:
    QString place(const char *folder) const { return root.filePath(QString::fromUtf8(folder)); }

    QString found(const QString &current = {}) const
    {
        return findInstalledJt9(jt9PlacesOfThisSystem(current, place("app"), environment));
    }

    const QTemporaryDir root;
    QProcessEnvironment environment;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::PlacesTest)
#include "places_test.moc"
