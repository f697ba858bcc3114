// The menu bar: its structure, what each entry does, and the decode depth.

#include "base/settings.h"
#include "tests/fixture/teststation.h"

#include <QActionGroup>
#include <QApplication>
#include <QDialog>
#include <QDirIterator>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QtTest>

namespace outpost
{

namespace
{
const QStringList depthTexts{QStringLiteral("1 Decode Pass (Fastest)"),
                             QStringLiteral("2 Decode Passes (Recommended)"),
                             QStringLiteral("3 Decode Passes (Deep)")};

void addTree(const QList<QAction *> &entries, const QString &indent, QStringList *tree)
{
    for (const QAction *entry : entries) {
        tree->append(indent + (entry->isSeparator() ? QStringLiteral("--------") : entry->text()));
        if (entry->menu() != nullptr) {
            addTree(entry->menu()->actions(), indent + QStringLiteral("  "), tree);
        }
    }
}

QList<QAction *> allEntries(const QList<QAction *> &entries)
{
    QList<QAction *> all;
    for (QAction *entry : entries) {
        all.append(entry);
        if (entry->menu() != nullptr) {
            all.append(allEntries(entry->menu()->actions()));
        }
    }
    return all;
}

QList<QAction *> allEntries(const TestStation &station)
{
    return allEntries(station.window->menuWidget()->actions());
}

QStringList depthPath(int depth)
{
    return {QStringLiteral("Settings"), QStringLiteral("Decoder"), depthTexts.at(depth - 1)};
}

QList<bool> checkedDepths(const TestStation &station)
{
    QList<bool> checked;
    for (int depth = 1; depth <= 3; ++depth) {
        checked.append(menuEntry(*station.window, depthPath(depth))->isChecked());
    }
    return checked;
}

QStringList depthOnDisk()
{
    return settingOnDisk(QStringLiteral("decoder/depth"));
}

// Names and contents of all files in the home.
[[maybe_unused]] QMap<QString, QByteArray> filesAtHome()
{
    QMap<QString, QByteArray> files;
    QDirIterator all(testHome().path(QString()), QDir::Files | QDir::Hidden,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString path = all.next();
        files.insert(path, fileBytes(path));
    }
    return files;
}

QStringList visibleWindows()
{
    QStringList titles;
    for (const QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible()) {
            titles.append(widget->windowTitle());
        }
    }
    return titles;
}
} // namespace

class MenusTest : public QObject
{
    Q_OBJECT

private slots:
    void theTree();
    void noEntryHasAShortcutAnIconOrAToolTip();
    void onlyTheDepthsAreCheckableAndOneOfThemIsChecked();
    void entriesThatOpenADialog_data();
    void entriesThatOpenADialog();
    void entriesThatOpenAWindow_data();
    void entriesThatOpenAWindow();
    void entriesThatAct_data();
    void entriesThatAct();
    void exitClosesTheWindow();
#ifdef OUTPOST_STREAMS
    void theDecodeEntriesAreInert_data();
    void theDecodeEntriesAreInert();
#endif
    void aPickedDepthIsStoredAtOnce_data();
    void aPickedDepthIsStoredAtOnce();
    void aPickedDepthSurvivesARestart();
#ifdef OUTPOST_STREAMS
    void aPickedDepthIsUsedByTheNextRun();
#endif
    void anInvalidStoredDepthChecks2AndIsKept_data();
    void anInvalidStoredDepthChecks2AndIsKept();
};

void MenusTest::theTree()
{
    const TestStation station;
    QStringList tree;
    addTree(station.window->menuWidget()->actions(), QString(), &tree);
    const char *expected = R"(&File
  Open Profile...
  Save Profile
  Save Profile As...
  --------
  Exit
&Settings
  Kiwi Receiver...
  Disconnect Receiver
  --------
  Highlight Calls...
  Decode
    Start Decode Monitor
    Stop Decode Monitor
    Test jt9.exe
    Run Live FT8 Slot Decode
    Stop Automatic FT8 Decode
    Start SND Capture
    Stop / Save SND Capture
  Decoder
    1 Decode Pass (Fastest)
    2 Decode Passes (Recommended)
    3 Decode Passes (Deep)
    Select Installed jt9.exe...
  Bridge
    Start Local WSJT Bridge
    Stop Local WSJT Bridge
    Test WSJT Attachment
  View
    Status Log
    Station Display
    Bridge Status
&Help
  Help / About PELQ Kiwi Outpost)";
    QCOMPARE(tree.join(QLatin1Char('\n')), QString::fromLatin1(expected));
}

void MenusTest::noEntryHasAShortcutAnIconOrAToolTip()
{
    const TestStation station;
    for (const QAction *entry : allEntries(station)) {
        QVERIFY2(entry->shortcuts().isEmpty(), qPrintable(entry->text()));
        QVERIFY2(entry->icon().isNull(), qPrintable(entry->text()));
        QVERIFY2(entry->statusTip().isEmpty(), qPrintable(entry->text()));
        // An entry without a tool tip shows its text.
        QCOMPARE(entry->toolTip(), QAction(entry->text()).toolTip());
        QVERIFY2(entry->isEnabled() && entry->isVisible(), qPrintable(entry->text()));
    }
}

void MenusTest::onlyTheDepthsAreCheckableAndOneOfThemIsChecked()
{
    const TestStation station;
    QStringList checkable;
    for (const QAction *entry : allEntries(station)) {
        if (entry->isCheckable()) {
            checkable.append(entry->text());
            QVERIFY(entry->actionGroup() != nullptr);
            QVERIFY(entry->actionGroup()->isExclusive());
            QCOMPARE(entry->actionGroup()->parent(), station.window.get());
            QCOMPARE(entry->actionGroup()->actions().size(), 3);
        } else {
            QVERIFY(entry->actionGroup() == nullptr);
        }
    }
    QCOMPARE(checkable, depthTexts);
    QCOMPARE(checkedDepths(station), QList<bool>({false, true, false}));
    for (int depth = 3; depth >= 1; --depth) {
        choose(*station.window, depthPath(depth));
        QCOMPARE(checkedDepths(station), QList<bool>({depth == 1, depth == 2, depth == 3}));
        QCOMPARE(menuEntry(*station.window, depthPath(depth))->data(), QVariant(depth));
    }
}

void MenusTest::entriesThatOpenADialog_data()
{
    QTest::addColumn<QStringList>("path");
    QTest::addColumn<QString>("title");
    const auto row = [](const QStringList &path, const QString &title) {
        QTest::newRow(qPrintable(path.last())) << path << title;
    };
    const QString file = QStringLiteral("File");
    const QString settings = QStringLiteral("Settings");
    row({file, QStringLiteral("Open Profile...")},
        QStringLiteral("Open PELQ Kiwi Outpost Profile"));
    row({file, QStringLiteral("Save Profile As...")},
        QStringLiteral("Save PELQ Kiwi Outpost Profile"));
    row({settings, QStringLiteral("Kiwi Receiver...")}, QStringLiteral("Kiwi Receiver"));
    row({settings, QStringLiteral("Highlight Calls...")}, QStringLiteral("Highlight Calls"));
    row({settings, QStringLiteral("Decoder"), QStringLiteral("Select Installed jt9.exe...")},
        QStringLiteral("Select Installed WSJT jt9.exe"));
    row({settings, QStringLiteral("Bridge"), QStringLiteral("Test WSJT Attachment")},
        QStringLiteral("WSJT Bridge Status"));
    row({QStringLiteral("Help"), QStringLiteral("Help / About PELQ Kiwi Outpost")},
        QStringLiteral("Help / About PELQ Kiwi Outpost"));
}

void MenusTest::entriesThatOpenADialog()
{
    QFETCH(QStringList, path);
    QFETCH(QString, title);
    const TestStation station;
    QString seen;
    whenDialogOpens([&](QWidget *dialog) {
        seen = dialog->windowTitle();
        qobject_cast<QDialog *>(dialog)->reject();
    });
    choose(*station.window, path);
    QCOMPARE(seen, title);
}

void MenusTest::entriesThatOpenAWindow_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("title");
    QTest::newRow("status log") << QStringLiteral("Status Log")
                                << QStringLiteral("PELQ Kiwi Outpost Status Log");
    QTest::newRow("station display")
        << QStringLiteral("Station Display") << QStringLiteral("PELQ Kiwi Outpost Station Display");
    QTest::newRow("bridge status")
        << QStringLiteral("Bridge Status") << QStringLiteral("PELQ Kiwi Outpost Bridge Status");
}

void MenusTest::entriesThatOpenAWindow()
{
    QFETCH(QString, entry);
    QFETCH(QString, title);
    const TestStation station;
    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("View"), entry});
    const QDialog *dialog = openDialog(title);
    QVERIFY2(dialog != nullptr, qPrintable(visibleWindows().join(QLatin1Char('|'))));
    QVERIFY(!dialog->isModal());
}

void MenusTest::entriesThatAct_data()
{
    QTest::addColumn<QStringList>("path");
    QTest::addColumn<QString>("line");
    const QString settings = QStringLiteral("Settings");
    const QString bridge = QStringLiteral("Bridge");
    QTest::newRow("save profile") << QStringList(
                                         {QStringLiteral("File"), QStringLiteral("Save Profile")})
                                  << QStringLiteral("Profile saved: ") + profileFile();
    QTest::newRow("disconnect") << QStringList({settings, QStringLiteral("Disconnect Receiver")})
                                << QStringLiteral("Kiwi receiver disconnected.");
    QTest::newRow("start bridge")
        << QStringList({settings, bridge, QStringLiteral("Start Local WSJT Bridge")})
        << QStringLiteral("Local WSJT bridge already listening on 127.0.0.1:%1.");
    QTest::newRow("stop bridge") << QStringList({settings, bridge,
                                                 QStringLiteral("Stop Local WSJT Bridge")})
                                 << QStringLiteral("Local WSJT bridge stopped.");
}

void MenusTest::entriesThatAct()
{
    QFETCH(QStringList, path);
    QFETCH(QString, line);
    const TestStation station;
    choose(*station.window, path);
    const QString expected =
        line.contains(QLatin1String("%1")) ? line.arg(station.bridgePort) : line;
    QCOMPARE(station.trace.lines(), QStringList{expected});
}

void MenusTest::exitClosesTheWindow()
{
    const TestStation station;
    QVERIFY(station.window->isVisible());
    choose(*station.window, {QStringLiteral("File"), QStringLiteral("Exit")});
    QVERIFY(!station.window->isVisible());
}

#ifdef OUTPOST_STREAMS
void MenusTest::theDecodeEntriesAreInert_data()
{
    QTest::addColumn<QString>("entry");
    for (const char *entry :
         {"Start Decode Monitor", "Stop Decode Monitor", "Test jt9.exe", "Run Live FT8 Slot Decode",
          "Stop Automatic FT8 Decode", "Start SND Capture", "Stop / Save SND Capture"}) {
        QTest::newRow(entry) << QString::fromLatin1(entry);
    }
}

void MenusTest::theDecodeEntriesAreInert()
{
    QFETCH(QString, entry);
    const PuppetReceiver receiver;
    TestStation station;
    station.hear(receiver);
    station.trace.clear();
    const QMap<QString, QByteArray> files = filesAtHome();
    const QStringList windows = visibleWindows();
    const QString status = station.window->kiwiStatusText();
    const QString title = station.window->windowTitle();

    choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Decode"), entry});
    QCoreApplication::processEvents();
    QCOMPARE(station.trace.lines(), QStringList());
    QCOMPARE(filesAtHome(), files);
    QCOMPARE(visibleWindows(), windows);
    QCOMPARE(station.window->kiwiStatusText(), status);
    QCOMPARE(station.window->windowTitle(), title);
    QCOMPARE(receiver.liveLinks(), 1);
    // The capture also continues.
    station.clock.set(MadeUpClock::boundaryMs());
    receiver.sendBinary(adpcmFrame(QByteArray(90000, '\0')));
    QTRY_COMPARE(station.window->windowTitle(),
                 QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)"));
}
#endif

void MenusTest::aPickedDepthIsStoredAtOnce_data()
{
    QTest::addColumn<int>("depth");
    QTest::newRow("1") << 1;
    QTest::newRow("2") << 2;
    QTest::newRow("3") << 3;
}

void MenusTest::aPickedDepthIsStoredAtOnce()
{
    QFETCH(int, depth);
    const TestStation station;
    choose(*station.window, depthPath(depth));
    QCOMPARE(depthOnDisk(), QStringList(QString::number(depth)));
}

void MenusTest::aPickedDepthSurvivesARestart()
{
    TestStation station;
    choose(*station.window, depthPath(3));
    station.restart();
    QCOMPARE(checkedDepths(station), QList<bool>({false, false, true}));
    choose(*station.window, depthPath(1));
    station.restart();
    QCOMPARE(checkedDepths(station), QList<bool>({true, false, false}));
}

#ifdef OUTPOST_STREAMS
void MenusTest::aPickedDepthIsUsedByTheNextRun()
{
    const QTemporaryDir seen;
    const QString depths = seen.filePath(QStringLiteral("depths"));
    const PuppetReceiver receiver;
    TestStation station("echo $3 >> '" + QFile::encodeName(depths) + "'");
    station.hear(receiver);
    station.clock.set(MadeUpClock::boundaryMs());
    QByteArray expected;
    for (const int depth : {3, 1, 2}) {
        choose(*station.window, depthPath(depth));
        receiver.sendBinary(adpcmFrame(QByteArray(90000, '\0')));
        expected += (QByteArray::number(depth) + "\n").repeated(4);
        QTRY_COMPARE(fileBytes(depths), expected);
    }
}
#endif

void MenusTest::anInvalidStoredDepthChecks2AndIsKept_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::newRow("0") << QVariant(0);
    QTest::newRow("4") << QVariant(4);
    QTest::newRow("not a number") << QVariant(QStringLiteral("deep"));
}

void MenusTest::anInvalidStoredDepthChecks2AndIsKept()
{
    QFETCH(QVariant, stored);
    TestStation station;
    {
        QSettings settings = stationSettings();
        settings.setValue(QStringLiteral("decoder/depth"), stored);
    }
    station.restart();
    QCOMPARE(checkedDepths(station), QList<bool>({false, true, false}));
    station.window.reset();
    QCOMPARE(depthOnDisk(), QStringList(stored.toString()));
    station.restart();
    choose(*station.window, depthPath(2));
    QCOMPARE(depthOnDisk(), QStringList(QStringLiteral("2")));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::MenusTest)
#include "menus_test.moc"
