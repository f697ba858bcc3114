// How the station finds its decoder: the search at the start, and the selection by the operator.

#include "app/mainwindow.h"
#include "decode/decoderchooser.h"
#include "decode/jt9locator.h"
#include "tests/fixture/filedialogs.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/scripteddecoder.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QJsonDocument>
#include <QMessageBox>
#include <QProcess>
#include <QScopeGuard>
#include <QTest>
#include <QTextCodec>
#include <QWidget>

namespace outpost
{

namespace
{

QString savedPath()
{
    const QJsonObject saved = jsonFile(profileFile());
    return saved.value(QLatin1String("Jt9Path")).toString();
}

QString publishedPath()
{
    return qEnvironmentVariable("PELQ_JT9_PATH");
}

// A Windows-style installation in a folder of the test's home. Returns its decoder.
QString installedUnder(const QString &folder, const QString &name = QStringLiteral("jt9.exe"))
{
    const QString base = testHome().path(folder) + QLatin1Char('/');
    putFile(base + QStringLiteral("Qt5Core.dll"), "");
    putFile(base + QStringLiteral("wsjtx.exe"), "");
    putFile(base + name, "");
    return base + name;
}

void setModified(const QString &path, int daysAgo)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTimeUtc().addDays(-daysAgo),
                             QFileDevice::FileModificationTime));
}

Jt9Places placesOf(const QStringList &candidates, const QStringList &roots = {})
{
    Jt9Places places;
    places.candidates = candidates;
    places.roots = roots;
    return places;
}

void selectByHand(const MainWindow &window)
{
    choose(window, {QStringLiteral("Settings"), QStringLiteral("Decoder"),
                    QStringLiteral("Select Installed jt9.exe...")});
}

// The part alone, with a record of its callbacks.
struct LoneChooser {
    QWidget parent;
    QString current;
    QStringList found;
    QStringList selected;
    const DecoderChooser chooser{&parent,
                                 [this] { return current; },
                                 {[this](const QString &path) { found << path; },
                                  [this](const QString &path) { selected << path; }}};
};

// Records what is saved and published at the time the log says that a decoder is in use.
class WhileLogged
{
public:
    WhileLogged() : before(qInstallMessageHandler(look)) { seen.clear(); }
    ~WhileLogged() { qInstallMessageHandler(before); }
    Q_DISABLE_COPY(WhileLogged)

    static QStringList savedAndPublished() { return seen; }

private:
    static void look(QtMsgType, const QMessageLogContext &, const QString &text)
    {
        if (text.contains(QLatin1String("jt9.exe"))) {
            seen << savedPath() << publishedPath();
        }
    }

    inline static QStringList seen;
    const QtMessageHandler before;
};

} // namespace

class DecoderChooserTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void theStartSearchesOnceTheEventLoopRuns();
#ifndef Q_OS_WIN // the environment cannot move another process's profile there
    void theStartLooksInThePlacesOfTheProgram_data();
    void theStartLooksInThePlacesOfTheProgram();
#endif
    void foundNowhereTellsSo();
    void aFoundDecoderIsSavedAndPublished();
    void aPathStillValidIsFoundFirstAndNotSavedAgain();
    void thePathIsComparedCleaned();
    void thePathIsComparedInItsCase();
    void aFoundDecoderIsSavedThenPublishedThenLogged();
    void thePathIsPublishedInTheLocalEncoding();
    void refusedFoldersAreNotUsed_data();
    void refusedFoldersAreNotUsed();
    void theLastModifiedUnderARootWins();
    void theFoundPathGoesToTheDefaultProfile();

    void theChoiceStartsInTheFolderOfTheDecoder_data();
    void theChoiceStartsInTheFolderOfTheDecoder();
    void theChoiceStartsAtTheRootWithoutADecoder();
    void aCancelledChoiceChangesNothing();
    void aChosenDecoderIsSavedPublishedAndTold_data();
    void aChosenDecoderIsSavedPublishedAndTold();
    void aChosenDecoderIsSavedThenPublishedThenLogged();
    void anotherChoiceIsRefused_data();
    void anotherChoiceIsRefused();

private:
    // Returns after the search at the start.
    std::unique_ptr<MainWindow> startedWindow();

    const ScriptedDecoder decoder{"exit 0"};
};

void DecoderChooserTest::init()
{
    testHome().clear();
    qunsetenv("PELQ_JT9_PATH");
    testHome().writeProfile(
        {{QStringLiteral("Jt9Path"), decoder.path()}, {QStringLiteral("BridgePort"), freePort()}});
}

std::unique_ptr<MainWindow> DecoderChooserTest::startedWindow()
{
    auto window = std::make_unique<MainWindow>();
    if (!QTest::qWaitFor([this] { return publishedPath() == decoder.path(); })) {
        qFatal("the search at the start did not find the profile's decoder");
    }
    return window;
}

void DecoderChooserTest::theStartSearchesOnceTheEventLoopRuns()
{
    const LogTrace trace;
    const MainWindow window;
    QVERIFY(publishedPath().isEmpty());
    QVERIFY(!trace.contains(QStringLiteral("JT9")));
    QTRY_COMPARE(publishedPath(), decoder.path());
    QCOMPARE(trace.lines().last(), QStringLiteral("JT9 decoder ready: ") + decoder.path());
}

#ifndef Q_OS_WIN
void DecoderChooserTest::theStartLooksInThePlacesOfTheProgram_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("its own folder") << QStringLiteral("program");
    QTest::newRow("one of its environment") << QStringLiteral("local/Programs/WSJT-X/bin");
}

// The program itself, in a folder from which decoders are accepted; build folders are refused.
void DecoderChooserTest::theStartLooksInThePlacesOfTheProgram()
{
    QFETCH(QString, folder);
    testHome().writeProfile({{QStringLiteral("BridgePort"), freePort()}});
    const QString installed = installedUnder(folder);
    QDir().mkpath(testHome().path(QStringLiteral("program")));
    const QString program = testHome().path(QStringLiteral("program/kiwi-outpost"));
    QVERIFY(QFile::copy(QStringLiteral(KIWI_OUTPOST), program));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LOCALAPPDATA"), testHome().path(QStringLiteral("local")));
    QProcess started;
    started.setProcessEnvironment(environment);
    started.start(program, QStringList());
    QTRY_VERIFY_WITH_TIMEOUT(!savedPath().isEmpty(), 60000);
    QCOMPARE(savedPath(), installed);
    started.terminate();
    QVERIFY(started.waitForFinished(60000));
}
#endif

void DecoderChooserTest::foundNowhereTellsSo()
{
    LoneChooser lone;
    const LogTrace trace;
    SeenPlainBox box;
    QStringList linesBeforeBox;
    whenDialogOpens([&](QWidget *opened) {
        linesBeforeBox = trace.lines();
        box = closePlainBox(qobject_cast<QMessageBox *>(opened), &lone.parent);
    });
    lone.chooser.findJt9(placesOf({testHome().path(QStringLiteral("nothing/jt9.exe"))},
                                  {testHome().path(QStringLiteral("nowhere"))}));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.title, QStringLiteral("WSJT Decoder Not Found"));
    QCOMPARE(box.text, QStringLiteral("No installed WSJT jt9.exe was found."));
    QCOMPARE(linesBeforeBox, QStringList(QStringLiteral("JT9 finder: no usable jt9.exe found.")));
    QCOMPARE(trace.lines(), linesBeforeBox);
    QCOMPARE(publishedPath(), QString());
    QCOMPARE(lone.found, QStringList());
}

void DecoderChooserTest::aFoundDecoderIsSavedAndPublished()
{
    const auto window = startedWindow();
    const QString gone = testHome().path(QStringLiteral("gone/jt9.exe"));
    const QString first = installedUnder(QStringLiteral("WSJT/wsjtx/bin"));
    const QString second = installedUnder(QStringLiteral("WSJT/wsjtz/bin"));
    const LogTrace trace;
    window->decoderChooser().findJt9(placesOf({gone, first, second}));
    QCOMPARE(publishedPath(), first);
    QCOMPARE(savedPath(), first);
    QCOMPARE(trace.lines(), QStringList(QStringLiteral("JT9 decoder ready: ") + first));
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void DecoderChooserTest::aPathStillValidIsFoundFirstAndNotSavedAgain()
{
    // Formatted differently from the program's output, so that a rewrite would show.
    const QByteArray profile = "{\"Jt9Path\":\"" + decoder.path().toUtf8() +
                               "\",\"BridgePort\":" + QByteArray::number(freePort()) + "}";
    putFile(profileFile(), profile);
    setModified(profileFile(), 1);
    const QDateTime saved = QFileInfo(profileFile()).lastModified();
    const auto window = startedWindow();
    QCOMPARE(fileBytes(profileFile()), profile);
    QCOMPARE(QFileInfo(profileFile()).lastModified(), saved);
}

void DecoderChooserTest::thePathIsComparedCleaned()
{
    LoneChooser lone;
    lone.current =
        QString(decoder.path()).replace(QStringLiteral("/bin/"), QStringLiteral("/bin/.//../bin/"));
    lone.chooser.findJt9(placesOf({decoder.path()}));
    QCOMPARE(lone.found, QStringList());
    QCOMPARE(publishedPath(), decoder.path());
}

void DecoderChooserTest::thePathIsComparedInItsCase()
{
    const QString lower = installedUnder(QStringLiteral("wsjt/bin"));
    const QString upper = installedUnder(QStringLiteral("WSJT/bin"));
    LoneChooser lone;
    lone.current = lower;
    lone.chooser.findJt9(placesOf({upper, lower}));
    QCOMPARE(lone.found, QStringList(upper));
    QCOMPARE(publishedPath(), upper);
}

void DecoderChooserTest::aFoundDecoderIsSavedThenPublishedThenLogged()
{
    const auto window = startedWindow();
    const QString found = installedUnder(QStringLiteral("WSJT/bin"));
    const WhileLogged logged;
    window->decoderChooser().findJt9(placesOf({found}));
    QCOMPARE(logged.savedAndPublished(), QStringList() << found << found);
}

void DecoderChooserTest::thePathIsPublishedInTheLocalEncoding()
{
    const LoneChooser lone;
    const auto restore = qScopeGuard(
        [codec = QTextCodec::codecForLocale()] { QTextCodec::setCodecForLocale(codec); });
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    const QString found = installedUnder(QStringLiteral("J\u00fcrgen/bin"));
    lone.chooser.findJt9(placesOf({found}));
    QCOMPARE(qgetenv("PELQ_JT9_PATH"), found.toLatin1());
    QVERIFY(QDir(testHome().path(QStringLiteral("J\u00fcrgen"))).removeRecursively());
}

void DecoderChooserTest::refusedFoldersAreNotUsed_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("build") << QStringLiteral("WSJT/build");
    QTest::newRow("stage3") << QStringLiteral("WSJT/stage3/bin");
    QTest::newRow("STEP_7") << QStringLiteral("WSJT/STEP_7/bin");
    QTest::newRow("Debug") << QStringLiteral("WSJT/Debug");
}

void DecoderChooserTest::refusedFoldersAreNotUsed()
{
    QFETCH(QString, folder);
    const LoneChooser lone;
    const QString refused = installedUnder(folder);
    const QString root = testHome().path(QStringLiteral("WSJT"));
    const SeenBox box = answerBox([&] { lone.chooser.findJt9(placesOf({refused}, {root})); });
    QCOMPARE(box.title, QStringLiteral("WSJT Decoder Not Found"));
    const QString installed = installedUnder(QStringLiteral("WSJT/wsjtx/bin"));
    lone.chooser.findJt9(placesOf({refused}, {root}));
    QCOMPARE(publishedPath(), installed);
}

void DecoderChooserTest::theLastModifiedUnderARootWins()
{
    const LoneChooser lone;
    const QString older = installedUnder(QStringLiteral("WSJT/a/bin"));
    const QString newer = installedUnder(QStringLiteral("WSJT/b/bin"));
    const QString oldest = installedUnder(QStringLiteral("WSJT/c/bin"));
    setModified(older, 2);
    setModified(newer, 1);
    setModified(oldest, 3);
    lone.chooser.findJt9(placesOf({}, {testHome().path(QStringLiteral("WSJT"))}));
    QCOMPARE(publishedPath(), newer);
    QCOMPARE(lone.found, QStringList(newer));
}

void DecoderChooserTest::theFoundPathGoesToTheDefaultProfile()
{
    const auto window = startedWindow();
    const QString opened = testHome().path(QStringLiteral("opened.json"));
    putFile(opened, "{\"Serial\": \"44444\"}");
    chooseFile(opened, [&] {
        choose(*window, {QStringLiteral("File"), QStringLiteral("Open Profile...")});
    });
    const QString found = installedUnder(QStringLiteral("WSJT/bin"));
    window->decoderChooser().findJt9(placesOf({found}));
    QCOMPARE(savedPath(), found);
    QCOMPARE(fileBytes(opened), QByteArray("{\"Serial\": \"44444\"}"));
}

void DecoderChooserTest::theChoiceStartsInTheFolderOfTheDecoder_data()
{
    QTest::addColumn<QString>("saved");
    const QString path = decoder.path();
    QTest::newRow("as saved") << path;
    QTest::newRow("blanks around") << QLatin1Char(' ') + path + QLatin1Char(' ');
    QTest::newRow("no decoder there any more") << QFileInfo(path).path() + QStringLiteral("/gone");
}

void DecoderChooserTest::theChoiceStartsInTheFolderOfTheDecoder()
{
    QFETCH(QString, saved);
    LoneChooser lone;
    lone.current = saved;
    const SeenFileDialog dialog = chooseFile(QString(), [&] { lone.chooser.selectJt9(); });
    QCOMPARE(dialog.title, QStringLiteral("Select Installed WSJT jt9.exe"));
    QCOMPARE(dialog.filters.join(QStringLiteral(";;")), jt9FileFilter());
    QCOMPARE(dialog.folder, QFileInfo(decoder.path()).path());
    QCOMPARE(dialog.suggestedName, QString());
}

void DecoderChooserTest::theChoiceStartsAtTheRootWithoutADecoder()
{
    LoneChooser lone;
    lone.current = QStringLiteral("  ");
    const SeenFileDialog dialog = chooseFile(QString(), [&] { lone.chooser.selectJt9(); });
    QCOMPARE(dialog.folder, QDir::rootPath());
}

void DecoderChooserTest::aCancelledChoiceChangesNothing()
{
    const LoneChooser lone;
    const LogTrace trace;
    chooseFile(QString(), [&] { lone.chooser.selectJt9(); });
    QCOMPARE(trace.lines(), QStringList(QStringLiteral("Manual jt9.exe selection cancelled.")));
    QCOMPARE(publishedPath(), QString());
    QCOMPARE(lone.selected, QStringList());
}

void DecoderChooserTest::aChosenDecoderIsSavedPublishedAndTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("jt9.exe") << QStringLiteral("jt9.exe");
    QTest::newRow("JT9.EXE") << QStringLiteral("JT9.EXE");
#ifndef Q_OS_WIN
    QTest::newRow("native") << QStringLiteral("jt9");
#endif
}

void DecoderChooserTest::aChosenDecoderIsSavedPublishedAndTold()
{
    QFETCH(QString, name);
    const ScriptedDecoder native("exit 0");
    const QString path = name == QLatin1String("jt9")
                             ? native.path()
                             : installedUnder(QStringLiteral("WSJT/wsjtx/bin"), name);
    const auto window = startedWindow();
    const LogTrace trace;
    SeenPlainBox box;
    QStringList linesBeforeBox;
    QStringList inUseBeforeBox; // saved and published
    chooseFile(
        path, [&] { selectByHand(*window); },
        [&](QMessageBox *opened) {
            linesBeforeBox = trace.lines();
            inUseBeforeBox = QStringList() << savedPath() << publishedPath();
            box = closePlainBox(opened, window.get());
        });
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.title, QStringLiteral("WSJT Decoder Selected"));
    QCOMPARE(box.text, QStringLiteral("Installed jt9.exe selected and saved:\n\n") +
                           QDir::toNativeSeparators(path));
    QCOMPARE(linesBeforeBox,
             QStringList(QStringLiteral("Installed jt9.exe selected and saved: ") + path));
    QCOMPARE(trace.lines(), linesBeforeBox);
    QCOMPARE(inUseBeforeBox, QStringList() << path << path);
    QCOMPARE(savedPath(), path);
}

void DecoderChooserTest::aChosenDecoderIsSavedThenPublishedThenLogged()
{
    const QString path = installedUnder(QStringLiteral("WSJT/bin"));
    const auto window = startedWindow();
    const WhileLogged logged;
    chooseFile(
        path, [&] { selectByHand(*window); },
        [&](QMessageBox *box) { closePlainBox(box, window.get()); });
    QCOMPARE(logged.savedAndPublished(), QStringList() << path << path);
}

void DecoderChooserTest::anotherChoiceIsRefused_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("name");
    QTest::newRow("a build copy") << QStringLiteral("build") << QStringLiteral("jt9.exe");
    QTest::newRow("a staged copy") << QStringLiteral("stage3/bin") << QStringLiteral("jt9.exe");
    QTest::newRow("another program") << QStringLiteral("WSJT/bin") << QStringLiteral("wsjtx.exe");
}

void DecoderChooserTest::anotherChoiceIsRefused()
{
    QFETCH(QString, folder);
    QFETCH(QString, name);
    const QString path = installedUnder(folder, name);
    const LoneChooser lone;
    const LogTrace trace;
    SeenPlainBox box;
    QStringList linesBeforeBox;
    chooseFile(
        path, [&] { lone.chooser.selectJt9(); },
        [&](QMessageBox *opened) {
            linesBeforeBox = trace.lines();
            box = closePlainBox(opened, &lone.parent);
        });
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.title, QStringLiteral("Invalid WSJT Decoder"));
    QCOMPARE(box.text,
             QStringLiteral("Select jt9.exe from an installed stock WSJT-X application or an "
                            "installed WSJT-X fork.\n\nDevelopment, build, STEP and STAGE copies "
                            "are not accepted."));
    QCOMPARE(linesBeforeBox, QStringList());
    QCOMPARE(trace.lines(), QStringList(QStringLiteral("Rejected manual jt9.exe path: ") + path));
    QCOMPARE(publishedPath(), QString());
    QCOMPARE(lone.selected, QStringList());
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::DecoderChooserTest)
#include "decoderchooser_test.moc"
