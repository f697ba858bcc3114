// The profile and the frequency file as an operator uses them: at the start, in the File menu, and
// with Apply.

#include "app/mainwindow.h"
#include "sim/kiwisim.h"
#include "tests/fixture/filedialogs.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/receiverform.h"
#include "tests/fixture/scripteddecoder.h"

#include <QApplication>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QLocalServer>
#include <QPushButton>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>
#include <functional>
#include <memory>

namespace outpost
{

namespace
{

QStringList entry(const char *name)
{
    return {QStringLiteral("File"), QString::fromLatin1(name)};
}

bool takesClients(int port)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), static_cast<quint16>(port));
    return socket.waitForConnected(2000);
}

// Host, port and frequency in the receiver dialog.
QStringList shownReceiver(const MainWindow &window)
{
    QStringList shown;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        shown << form.host->text() << form.port->text() << form.mhz->text();
    });
    return shown;
}

// Calls `act` and closes all boxes that come up. Returns their titles.
QStringList boxesDuring(const std::function<void()> &act)
{
    QStringList titles;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [&titles] {
        if (QWidget *box = QApplication::activeModalWidget()) {
            titles += box->windowTitle();
            box->close();
        }
    });
    poll.start(1);
    act();
    return titles;
}

// Returns when all events posted so far, and all timers of 0 ms, were handled. With a box open, it
// would not return before the box is closed.
void finishWhatIsQueued()
{
    bool finished = false;
    QTimer::singleShot(0, [&] { finished = true; });
    QTRY_VERIFY(finished);
}

std::unique_ptr<MainWindow> startWithoutBox()
{
    std::unique_ptr<MainWindow> window;
    const QStringList boxes = boxesDuring([&] { window = std::make_unique<MainWindow>(); });
    if (!boxes.isEmpty()) {
        QTest::qFail(qPrintable(boxes.join(QStringLiteral("; "))), __FILE__, __LINE__);
    }
    return window;
}

} // namespace

class ProfileFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void aFirstStartWritesTheDefaults();
    void aStartLoadsTheDefaultProfile();
    void aBrokenDefaultProfileIsIgnoredSilently_data();
    void aBrokenDefaultProfileIsIgnoredSilently();
    void aDefaultProfileThatCannotBeReadIsIgnoredSilently();
    void aStartThatCannotSaveIsSilent();
    void theFrequencyIsReadAtTheStart_data();
    void theFrequencyIsReadAtTheStart();

    void openAsksForAFile();
    void openLoadsAllSixFields();
    void aProfileWithOnlyAPortChangesOnlyThePort();
    void aPortInAStringIsNoPort();
    void openReadsTheFrequencyAgain();
    void openChangesNeitherBridgeNorDecoder();
#ifdef OUTPOST_STREAMS
    void openKeepsTheLinkAsItIs();
#endif
    void openCancelledDoesNothing();
    void openRefusesWhatIsNoProfile_data();
    void openRefusesWhatIsNoProfile();
#ifndef Q_OS_WIN // sockets are not files there
    void openTellsWhyAFileCannotBeOpened();
#endif

    void saveWritesExactlySixKeys();
    void saveWritesTheFrequency();
    void saveAsAsksForAFile();
    void saveAsAddsNoExtensionAndMakesTheFolder();
    void saveAsMakesTheFolderOfTheFrequency();
    void saveAsCancelledDoesNothing();
    void saveTellsThatTheFolderCannotBeMade();
    void saveTellsWhyTheFileCannotBeOpened();
    void aFailedSaveAsKeepsTheProfileInUse();

    void quietSavesGoToTheDefaultProfileOnly();
    void quietSavesFailSilently();

private:
    // A default profile with a decoder and a free port for the bridge.
    QJsonObject ordinaryProfile() const;
    QString anotherProfile(const QJsonObject &keys) const;

    const ScriptedDecoder decoder{"exit 0"};
    int bridgePort = 0;
};

// The search finds the scripted decoder even if no other is installed.
void ProfileFilesTest::initTestCase()
{
    const QByteArray folder = QFile::encodeName(QFileInfo(decoder.path()).path());
    qputenv("PATH", folder + QDir::listSeparator().toLatin1() + qgetenv("PATH"));
}

void ProfileFilesTest::init()
{
    testHome().clear();
    qunsetenv("PELQ_JT9_PATH");
    bridgePort = freePort();
    testHome().writeProfile(ordinaryProfile());
}

QJsonObject ProfileFilesTest::ordinaryProfile() const
{
    return {{QStringLiteral("Serial"), QStringLiteral("11111")},
            {QStringLiteral("Host"), QStringLiteral("first.example")},
            {QStringLiteral("Port"), 8081},
            {QStringLiteral("UseProxy"), false},
            {QStringLiteral("Jt9Path"), decoder.path()},
            {QStringLiteral("BridgePort"), bridgePort}};
}

QString ProfileFilesTest::anotherProfile(const QJsonObject &keys) const
{
    QString path = testHome().path(QStringLiteral("profiles/another.json"));
    putFile(path, QJsonDocument(keys).toJson());
    return path;
}

void ProfileFilesTest::aFirstStartWritesTheDefaults()
{
    testHome().clear();
    const MainWindow window;
    QCOMPARE(fileBytes(profileFile()), QByteArray("{\n"
                                                  "    \"BridgePort\": 27777,\n"
                                                  "    \"Host\": \"") +
                                           Profile::defaultKiwiHost(Profile().serial).toUtf8() +
                                           "\",\n"
                                           "    \"Jt9Path\": \"\",\n"
                                           "    \"Port\": 8073,\n"
                                           "    \"Serial\": \"22727\",\n"
                                           "    \"UseProxy\": true\n"
                                           "}\n");
    QVERIFY(!QFile::exists(frequencyFile()));
}

void ProfileFilesTest::aStartLoadsTheDefaultProfile()
{
    const QByteArray before = fileBytes(profileFile());
    const LogTrace trace;
    const MainWindow window;
    QVERIFY(trace.contains(QStringLiteral("listening on 127.0.0.1:%1.").arg(bridgePort)));
    QCOMPARE(shownReceiver(window),
             QStringList({QStringLiteral("first.example"), QStringLiteral("8081"),
                          QStringLiteral("14.074000")}));
    QCOMPARE(fileBytes(profileFile()), before);
}

void ProfileFilesTest::aBrokenDefaultProfileIsIgnoredSilently_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an array") << QByteArray("[{\"Port\": 9999}]");
    QTest::newRow("not JSON") << QByteArray("Port = 9999");
    QTest::newRow("cut short") << QByteArray("{\"Port\": 9999");
    QTest::newRow("empty") << QByteArray();
}

void ProfileFilesTest::aBrokenDefaultProfileIsIgnoredSilently()
{
    QFETCH(QByteArray, content);
    putFile(profileFile(), content);
    const LogTrace trace;
    const auto window = startWithoutBox();
    QCOMPARE(trace.lines().size(), 1); // the bridge's own
    QCOMPARE(fileBytes(profileFile()), content);
    QCOMPARE(shownReceiver(*window), QStringList({Profile().kiwiHost, QStringLiteral("8073"),
                                                  QStringLiteral("14.074000")}));
}

void ProfileFilesTest::aDefaultProfileThatCannotBeReadIsIgnoredSilently()
{
    QVERIFY(QFile::remove(profileFile()));
    QVERIFY(QDir().mkpath(profileFile()));
    const auto window = startWithoutBox();
    QCOMPARE(shownReceiver(*window).first(), Profile().kiwiHost);
}

void ProfileFilesTest::aStartThatCannotSaveIsSilent()
{
    const QDir folder = QFileInfo(profileFile()).dir();
    QVERIFY(QDir(folder).removeRecursively());
    putFile(folder.path(), "in the folder's place");
    const auto window = startWithoutBox();
    QCOMPARE(boxesDuring(finishWhatIsQueued), QStringList());
    QCOMPARE(shownReceiver(*window).first(), Profile().kiwiHost);
    QVERIFY(QFile::remove(folder.path()));
}

void ProfileFilesTest::theFrequencyIsReadAtTheStart_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("inUse");
    const QByteArray standard = "14.074000";
    QTest::newRow("blanks and a line end") << QByteArray("  7.074 \r\n") << QByteArray("7.074000");
    QTest::newRow("lowest") << QByteArray("0.001") << QByteArray("0.001000");
    QTest::newRow("highest") << QByteArray("3000") << QByteArray("3000.000000");
    QTest::newRow("up to a NUL") << QByteArray("3.573\0letters", 13) << QByteArray("3.573000");
    QTest::newRow("too low") << QByteArray("0.0005") << standard;
    QTest::newRow("too high") << QByteArray("3000.5") << standard;
    QTest::newRow("negative") << QByteArray("-7.074") << standard;
    QTest::newRow("letters") << QByteArray("forty") << standard;
    QTest::newRow("empty") << QByteArray() << standard;
}

void ProfileFilesTest::theFrequencyIsReadAtTheStart()
{
    QFETCH(QByteArray, content);
    putFile(frequencyFile(), content);
    const MainWindow window;
    QVERIFY(QFile::remove(frequencyFile()));
    choose(window, entry("Save Profile"));
    QTEST(fileBytes(frequencyFile()), "inUse");
}

void ProfileFilesTest::openAsksForAFile()
{
    const MainWindow window;
    const SeenFileDialog dialog =
        chooseFile(QString(), [&] { choose(window, entry("Open Profile...")); });
    QCOMPARE(dialog.title, QStringLiteral("Open PELQ Kiwi Outpost Profile"));
    QCOMPARE(dialog.folder, QFileInfo(profileFile()).path());
    QCOMPARE(dialog.filters, QStringList({QStringLiteral("JSON profiles (*.json)"),
                                          QStringLiteral("All files (*)")}));
}

void ProfileFilesTest::openLoadsAllSixFields()
{
    const QJsonObject keys{{QStringLiteral("Serial"), QStringLiteral("33333")},
                           {QStringLiteral("Host"), QStringLiteral("Second.Example")},
                           {QStringLiteral("Port"), 70000},
                           {QStringLiteral("UseProxy"), true},
                           {QStringLiteral("Jt9Path"), QStringLiteral("/elsewhere/jt9")},
                           {QStringLiteral("BridgePort"), 0}};
    const QString path = anotherProfile(keys);
    const MainWindow window;
    chooseFile(path, [&] { choose(window, entry("Open Profile...")); });
    QCOMPARE(shownReceiver(window).mid(0, 2),
             QStringList({QStringLiteral("Second.Example"), QStringLiteral("70000")}));
    QVERIFY(QFile::remove(path));
    choose(window, entry("Save Profile"));
    QCOMPARE(jsonFile(path), keys);
}

void ProfileFilesTest::aProfileWithOnlyAPortChangesOnlyThePort()
{
    const QString path = anotherProfile({{QStringLiteral("Port"), 8074}});
    const MainWindow window;
    chooseFile(path, [&] { choose(window, entry("Open Profile...")); });
    choose(window, entry("Save Profile"));
    QJsonObject expected = ordinaryProfile();
    expected.insert(QStringLiteral("Port"), 8074);
    QCOMPARE(jsonFile(path), expected);
}

void ProfileFilesTest::aPortInAStringIsNoPort()
{
    const QString path = anotherProfile({{QStringLiteral("Port"), QStringLiteral("8074")},
                                         {QStringLiteral("Host"), QStringLiteral("new.example")}});
    const MainWindow window;
    chooseFile(path, [&] { choose(window, entry("Open Profile...")); });
    QCOMPARE(shownReceiver(window).mid(0, 2),
             QStringList({QStringLiteral("new.example"), QStringLiteral("8081")}));
}

void ProfileFilesTest::openReadsTheFrequencyAgain()
{
    const MainWindow window;
    putFile(frequencyFile(), "10.136000");
    chooseFile(anotherProfile({}), [&] { choose(window, entry("Open Profile...")); });
    QVERIFY(QFile::remove(frequencyFile()));
    choose(window, entry("Save Profile"));
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("10.136000"));
}

void ProfileFilesTest::openChangesNeitherBridgeNorDecoder()
{
    const int otherPort = freePort();
    const QString path = anotherProfile({{QStringLiteral("BridgePort"), otherPort},
                                         {QStringLiteral("Jt9Path"), QStringLiteral("/other/jt9")},
                                         {QStringLiteral("Host"), QStringLiteral("other")}});
    LogTrace trace;
    const MainWindow window;
    QTRY_COMPARE(qEnvironmentVariable("PELQ_JT9_PATH"), decoder.path());
    const QString summary = summaryLine(window);
    const QByteArray before = fileBytes(profileFile());
    trace.clear();

    chooseFile(path, [&] { choose(window, entry("Open Profile...")); });
    QCoreApplication::processEvents();
    QCOMPARE(trace.lines(), QStringList(QStringLiteral("Profile opened: ") + path));
    QCOMPARE(qEnvironmentVariable("PELQ_JT9_PATH"), decoder.path());
    QVERIFY(takesClients(bridgePort));
    QVERIFY(!takesClients(otherPort));
    QCOMPARE(summaryLine(window), summary);
    QCOMPARE(fileBytes(profileFile()), before);
}

#ifdef OUTPOST_STREAMS
// Not even a live one: the operator connects to the new receiver with Apply.
void ProfileFilesTest::openKeepsTheLinkAsItIs()
{
    KiwiSim receiver;
    KiwiSim other;
    QString error;
    SimConfig config;
    config.firstSoundDelayMs = 0;
    QVERIFY2(receiver.listen(config, &error) && other.listen(config, &error), qPrintable(error));
    QJsonObject keys = ordinaryProfile();
    keys.insert(QStringLiteral("Host"), QStringLiteral("127.0.0.1"));
    keys.insert(QStringLiteral("Port"), receiver.port());
    testHome().writeProfile(keys);
    keys.insert(QStringLiteral("Port"), other.port());
    const QString path = anotherProfile(keys);
    MainWindow window;
    window.connectKiwi();
    QTRY_VERIFY(summaryLine(window).startsWith(QStringLiteral("Kiwi Connected")));

    const LogTrace trace;
    chooseFile(path, [&] { choose(window, entry("Open Profile...")); });
    QVERIFY(trace.contains(QStringLiteral("Profile opened: ") + path));
    finishWhatIsQueued(); // a new attempt would be queued
    QVERIFY(summaryLine(window).startsWith(QStringLiteral("Kiwi Connected")));
    QVERIFY(!trace.contains(QStringLiteral("Kiwi receiver disconnected.")));
    QVERIFY(!trace.contains(QStringLiteral("requested")));
    QVERIFY(!trace.contains(QStringLiteral("probe")));
    QCOMPARE(receiver.liveClients(), 1);
    QVERIFY(other.events().isEmpty());
}
#endif

void ProfileFilesTest::openCancelledDoesNothing()
{
    const MainWindow window;
    putFile(frequencyFile(), "10.136000");
    const LogTrace trace;
    chooseFile(QString(), [&] { choose(window, entry("Open Profile...")); });
    QVERIFY(!trace.contains(QStringLiteral("Profile")));
    QVERIFY(QFile::remove(frequencyFile()));
    choose(window, entry("Save Profile"));
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("14.074000"));
}

void ProfileFilesTest::openRefusesWhatIsNoProfile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("why");
    QTest::newRow("an array") << QByteArray("[{\"Port\": 8074}]")
                              << QStringLiteral("no error occurred");
    QTest::newRow("not JSON") << QByteArray("Port = 8074") << QStringLiteral("illegal value");
    QTest::newRow("cut short") << QByteArray("{\"Host\": \"8074\"")
                               << QStringLiteral("unterminated string");
}

void ProfileFilesTest::openRefusesWhatIsNoProfile()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, why);
    const QString path = testHome().path(QStringLiteral("broken.json"));
    putFile(path, content);
    const MainWindow window;
    putFile(frequencyFile(), "10.136000");
    const LogTrace trace;
    SeenPlainBox box;
    chooseFile(
        path, [&] { choose(window, entry("Open Profile...")); },
        [&](QMessageBox *opened) { box = closePlainBox(opened, &window); });
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.title, QStringLiteral("Profile Open Failed"));
    QCOMPARE(box.text, QStringLiteral("The profile is not valid JSON: ") + why);
    QVERIFY(!trace.contains(QStringLiteral("Profile opened")));

    QVERIFY(QFile::remove(frequencyFile()));
    choose(window, entry("Save Profile"));
    QCOMPARE(trace.lines().last(), QStringLiteral("Profile saved: ") + profileFile());
    QCOMPARE(jsonFile(profileFile()), ordinaryProfile());
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("14.074000"));
    QCOMPARE(fileBytes(path), content);
}

#ifndef Q_OS_WIN
// A socket is in the folder like a file, but cannot be opened.
void ProfileFilesTest::openTellsWhyAFileCannotBeOpened()
{
    const QString path = testHome().path(QStringLiteral("socket.json"));
    QLocalServer server;
    QVERIFY(server.listen(path));
    QFile file(path);
    QVERIFY(!file.open(QIODevice::ReadOnly));
    const MainWindow window;
    SeenPlainBox box;
    chooseFile(
        path, [&] { choose(window, entry("Open Profile...")); },
        [&](QMessageBox *opened) { box = closePlainBox(opened, &window); });
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.title, QStringLiteral("Profile Open Failed"));
    QCOMPARE(box.text, file.errorString());
}
#endif

void ProfileFilesTest::saveWritesExactlySixKeys()
{
    QJsonObject old = ordinaryProfile();
    old.insert(QStringLiteral("FrequencyMhz"), 7.074);
    old.insert(QStringLiteral("Colour"), QStringLiteral("blue"));
    testHome().writeProfile(old);
    const LogTrace trace;
    const MainWindow window;
    choose(window, entry("Save Profile"));
    const QByteArray expected = "{\n"
                                "    \"BridgePort\": " +
                                QByteArray::number(bridgePort) +
                                ",\n"
                                "    \"Host\": \"first.example\",\n"
                                "    \"Jt9Path\": \"" +
                                decoder.path().toUtf8() +
                                "\",\n"
                                "    \"Port\": 8081,\n"
                                "    \"Serial\": \"11111\",\n"
                                "    \"UseProxy\": false\n"
                                "}\n";
    QCOMPARE(fileBytes(profileFile()), expected);
    QCOMPARE(trace.lines().last(), QStringLiteral("Profile saved: ") + profileFile());
}

void ProfileFilesTest::saveWritesTheFrequency()
{
    const MainWindow window;
    choose(window, entry("Save Profile"));
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("14.074000"));
}

void ProfileFilesTest::saveAsAsksForAFile()
{
    const MainWindow window;
    const SeenFileDialog dialog =
        chooseFile(QString(), [&] { choose(window, entry("Save Profile As...")); });
    QCOMPARE(dialog.title, QStringLiteral("Save PELQ Kiwi Outpost Profile"));
    QCOMPARE(dialog.folder, QFileInfo(profileFile()).path());
    QCOMPARE(dialog.suggestedName, QStringLiteral("kiwi-profile.json"));
    QCOMPARE(dialog.filters, QStringList({QStringLiteral("JSON profiles (*.json)"),
                                          QStringLiteral("All files (*)")}));
}

void ProfileFilesTest::saveAsAddsNoExtensionAndMakesTheFolder()
{
    const QString path = testHome().path(QStringLiteral("new/folder/station"));
    const MainWindow window;
    const LogTrace trace;
    chooseFile(path, [&] { choose(window, entry("Save Profile As...")); });
    QCOMPARE(jsonFile(path), ordinaryProfile());
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("14.074000"));
    QCOMPARE(trace.lines().last(), QStringLiteral("Profile saved as: ") + path);

    choose(window, entry("Save Profile"));
    QCOMPARE(trace.lines().last(), QStringLiteral("Profile saved: ") + path);
}

void ProfileFilesTest::saveAsMakesTheFolderOfTheFrequency()
{
    const MainWindow window;
    QVERIFY(QDir(QFileInfo(frequencyFile()).path()).removeRecursively());
    chooseFile(testHome().path(QStringLiteral("elsewhere.json")),
               [&] { choose(window, entry("Save Profile As...")); });
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("14.074000"));
}

void ProfileFilesTest::saveAsCancelledDoesNothing()
{
    const MainWindow window;
    const LogTrace trace;
    chooseFile(QString(), [&] { choose(window, entry("Save Profile As...")); });
    QVERIFY(!trace.contains(QStringLiteral("Profile saved")));
    QVERIFY(!QFile::exists(testHome().dataFile(QStringLiteral("kiwi-profile.json"))));
    QVERIFY(!QFile::exists(frequencyFile()));
}

void ProfileFilesTest::saveTellsThatTheFolderCannotBeMade()
{
    putFile(testHome().path(QStringLiteral("file")), "in the folder's place");
    const MainWindow window;
    SeenPlainBox box;
    chooseFile(
        testHome().path(QStringLiteral("file/station.json")),
        [&] { choose(window, entry("Save Profile As...")); },
        [&](QMessageBox *opened) { box = closePlainBox(opened, &window); });
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.title, QStringLiteral("Profile Save Failed"));
    QCOMPARE(box.text, QStringLiteral("Could not create the profile folder."));
    QVERIFY(!QFile::exists(frequencyFile()));
}

void ProfileFilesTest::saveTellsWhyTheFileCannotBeOpened()
{
    const MainWindow window;
    QVERIFY(QFile::remove(profileFile()));
    QVERIFY(QDir().mkpath(profileFile()));
    const LogTrace trace;
    const SeenBox box = answerBox([&] { choose(window, entry("Save Profile")); });
    QCOMPARE(box.title, QStringLiteral("Profile Save Failed"));
    QCOMPARE(box.text, QStringLiteral("Filename refers to a directory"));
    QVERIFY(!trace.contains(QStringLiteral("Profile saved")));
    QVERIFY(!QFile::exists(frequencyFile()));
}

void ProfileFilesTest::aFailedSaveAsKeepsTheProfileInUse()
{
    putFile(testHome().path(QStringLiteral("file")), "in the folder's place");
    const MainWindow window;
    chooseFile(
        testHome().path(QStringLiteral("file/station.json")),
        [&] { choose(window, entry("Save Profile As...")); },
        [&](QMessageBox *opened) { closePlainBox(opened, &window); });
    const LogTrace trace;
    choose(window, entry("Save Profile"));
    QCOMPARE(trace.lines(), QStringList(QStringLiteral("Profile saved: ") + profileFile()));
}

void ProfileFilesTest::quietSavesGoToTheDefaultProfileOnly()
{
    const QString path = anotherProfile({{QStringLiteral("Serial"), QStringLiteral("44444")}});
    const QByteArray opened = fileBytes(path);
    const MainWindow window;
    chooseFile(path, [&] { choose(window, entry("Open Profile...")); });
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.host->setText(QStringLiteral("127.0.0.1"));
        form.port->setText(QStringLiteral("1"));
        QTest::mouseClick(form.apply, Qt::LeftButton);
    });
    QCOMPARE(fileBytes(path), opened);
    QJsonObject expected = ordinaryProfile();
    expected.insert(QStringLiteral("Serial"), QStringLiteral("44444"));
    expected.insert(QStringLiteral("Host"), QStringLiteral("127.0.0.1"));
    expected.insert(QStringLiteral("Port"), 1);
    QCOMPARE(jsonFile(profileFile()), expected);

    const LogTrace trace;
    choose(window, entry("Save Profile"));
    QVERIFY(trace.contains(QStringLiteral("Profile saved: ") + path));
    QCOMPARE(jsonFile(path), expected);
}

// A box would block Apply.
void ProfileFilesTest::quietSavesFailSilently()
{
    const MainWindow window;
    QVERIFY(QFile::remove(profileFile()));
    QVERIFY(QDir().mkpath(profileFile()));
    QVERIFY(QDir().mkpath(frequencyFile()));
    const LogTrace trace;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(QStringLiteral("127.0.0.1"));
        form.port->setText(QStringLiteral("1"));
        form.mhz->setText(QStringLiteral("3.573"));
        QTest::mouseClick(form.apply, Qt::LeftButton);
        QCOMPARE(QApplication::activeModalWidget(), form.dialog);
    });
    QVERIFY(trace.contains(
        QStringLiteral("Native Kiwi connection requested: 127.0.0.1:1, 3.573000 MHz.")));
    QCOMPARE(shownReceiver(window), QStringList({QStringLiteral("127.0.0.1"), QStringLiteral("1"),
                                                 QStringLiteral("3.573000")}));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::ProfileFilesTest)
#include "profilefiles_test.moc"
