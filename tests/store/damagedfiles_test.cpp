// Damaged data files: whatever they contain, the window starts, its dialogs open, and new entries
// are saved.

#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/receiverform.h"
#include "tests/fixture/scripteddecoder.h"

#ifndef Q_OS_WIN
#include "tests/fixture/footprint.h"
#include "tests/fixture/memoryhome.h"
#endif

#include "app/mainwindow.h"
#include "tests/store/storedlists.h"

#include <QComboBox>
#include <QDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QtTest>

namespace outpost
{

class DamagedFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aProfileCutAtAnyByteStartsTheWindow();
    void aReceiverListCutAtAnyByteTakesTheNextReceiver();
    void aStatusLogCutAtAnyByteTakesTheNextSession();
    void aFrequencyCutAtAnyByteIsAFrequency();
    void aFileOfAnotherKindIsLivedWith_data();
    void aFileOfAnotherKindIsLivedWith();
#ifndef Q_OS_WIN // memory use is not measured there
    void hugeFilesAreLivedWith_data();
    void hugeFilesAreLivedWith();
#endif

private:
    const ScriptedDecoder decoder{"exit 0"};
    const int bridgePort = freePort();
    std::unique_ptr<LogTrace> trace; // keeps thousands of lines off the terminal
};

namespace
{
bool isJson(const QByteArray &bytes)
{
    return !QJsonDocument::fromJson(bytes).isNull();
}

// What the receiver dialog shows in its fields after it is opened.
struct SeenForm {
    QString host;
    QString port;
    QString mhz;
    int goodReceivers = 0;
};

SeenForm openForm(const MainWindow &window)
{
    SeenForm seen;
    inReceiverDialog(window, [&seen](const ReceiverForm &form) {
        seen = {form.host->text(), form.port->text(), form.mhz->text(),
                form.goodReceivers->count() - 1};
    });
    return seen;
}

QString shownLog(MainWindow &window)
{
    choose(window,
           {QStringLiteral("Settings"), QStringLiteral("View"), QStringLiteral("Status Log")});
    QDialog *dialog = openDialog(QStringLiteral("PELQ Kiwi Outpost Status Log"));
    QString text = dialog->findChild<QPlainTextEdit *>()->toPlainText();
    delete dialog;
    return text;
}

void finishASession(MainWindow &window)
{
    window.startStatusSession();
    window.finishStatusSession();
}

// What must work after any damage, in a window that has just started.
void useEverything(MainWindow &window)
{
    openForm(window);
    QVERIFY(!shownLog(window).isEmpty());
    window.recordGoodReceiver(3);
    finishASession(window);
    window.profileStore().saveDefaultProfileQuietly();
    window.profileStore().saveFrequencyFile();
    QVERIFY(!savedList().isEmpty());
    const QJsonArray sessions = jsonFile(logFile()).value(QStringLiteral("Sessions")).toArray();
    QVERIFY(!sessions.isEmpty());
    QCOMPARE(jsonFile(profileFile()).size(), 6);
    QCOMPARE(fileBytes(frequencyFile()).toDouble() > 0, true);
}
} // namespace

void DamagedFilesTest::init()
{
    testHome().clear();
    testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("kiwi")},
                             {QStringLiteral("Port"), 8074},
                             {QStringLiteral("Jt9Path"), decoder.path()},
                             {QStringLiteral("BridgePort"), bridgePort}});
    trace.reset(); // only one may exist at a time
    trace = std::make_unique<LogTrace>();
}

void DamagedFilesTest::aProfileCutAtAnyByteStartsTheWindow()
{
    const QByteArray whole = fileBytes(profileFile());
    for (int length = 0; length <= whole.size(); ++length) {
        putFile(profileFile(), whole.left(length));
        const MainWindow window;
        QCOMPARE(fileBytes(profileFile()), whole.left(length)); // reading changes nothing
        const SeenForm seen = openForm(window);
        const bool taken = isJson(whole.left(length));
        QCOMPARE(seen.port, taken ? QStringLiteral("8074") : QStringLiteral("8073"));
        QCOMPARE(seen.host == QLatin1String("kiwi"), taken);
    }
}

void DamagedFilesTest::aReceiverListCutAtAnyByteTakesTheNextReceiver()
{
    const QByteArray whole =
        QJsonDocument(QJsonArray{QJsonObject{{QStringLiteral("Host"), QStringLiteral("old")},
                                             {QStringLiteral("Port"), 8073}}})
            .toJson();
    MainWindow window;
    for (int length = 0; length <= whole.size(); ++length) {
        putFile(listFile(), whole.left(length));
        const int kept = isJson(whole.left(length)) ? 1 : 0;
        QCOMPARE(openForm(window).goodReceivers, kept);
        window.recordGoodReceiver(3);
        QCOMPARE(savedList().size(), kept + 1);
        QCOMPARE(savedList().last().toObject().value(QStringLiteral("Host")),
                 QJsonValue(QStringLiteral("kiwi")));
    }
}

void DamagedFilesTest::aStatusLogCutAtAnyByteTakesTheNextSession()
{
    MainWindow window;
    finishASession(window);
    const QByteArray whole = fileBytes(logFile());
    QVERIFY(isJson(whole));
    for (int length = 0; length <= whole.size(); ++length) {
        putFile(logFile(), whole.left(length));
        const int kept = isJson(whole.left(length)) ? 1 : 0;
        QCOMPARE(shownLog(window).contains(QStringLiteral("Status data file is not valid JSON.")),
                 kept == 0);
        finishASession(window);
        QCOMPARE(jsonFile(logFile()).value(QStringLiteral("Sessions")).toArray().size(), kept + 1);
        QVERIFY(
            shownLog(window).contains(QStringLiteral("kiwi:8074 | Sessions: %1 |").arg(kept + 1)));
    }
}

// A truncated file may give another frequency, but never one out of range.
void DamagedFilesTest::aFrequencyCutAtAnyByteIsAFrequency()
{
    const QByteArray whole = "14.074000";
    MainWindow window;
    for (int length = 0; length <= whole.size(); ++length) {
        putFile(frequencyFile(), whole.left(length));
        const double mhz = openForm(window).mhz.toDouble();
        QVERIFY(mhz >= 0.001 && mhz <= 3000);
    }
}

void DamagedFilesTest::aFileOfAnotherKindIsLivedWith_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("an array") << QByteArray("[1, 2, 3]");
    QTest::newRow("an array of arrays") << QByteArray("[[], [[]], {}]");
    QTest::newRow("an object") << QByteArray("{\"Receivers\": 5, \"Sessions\": {}, \"Host\": []}");
    QTest::newRow("an object of wrong kinds") << QByteArray(
        "{\"Receivers\": [5, null, {\"Host\": 7, \"Port\": \"x\", \"Sessions\": 1e300}],"
        " \"Sessions\": [true, {\"Decodes\": -1e300}], \"Port\": 1e300, \"BridgePort\": -1}");
    QTest::newRow("a number") << QByteArray("7");
    QTest::newRow("a text") << QByteArray("\"text\"");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("zero bytes") << QByteArray(4096, '\0');
    QTest::newRow("noise") << QByteArray("\xff\xfe\x80\xde\xad\xbe\xef").repeated(1000);
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe{\0}\0", 6);
    QTest::newRow("a byte order mark") << QByteArray("\xef\xbb\xbf{}");
    QTest::newRow("deep") << QByteArray(100000, '[');
    QTest::newRow("deep objects") << QByteArray("{\"a\":").repeated(100000);
    QTest::newRow("the same key twice")
        << QByteArray("{\"Port\": 1, \"Port\": 2, \"Sessions\": [], \"Sessions\": 1}");
}

void DamagedFilesTest::aFileOfAnotherKindIsLivedWith()
{
    QFETCH(QByteArray, content);
    for (const QString &path : {listFile(), logFile(), frequencyFile(), profileFile()}) {
        putFile(path, content);
    }
    MainWindow window;
    useEverything(window);
}

#ifndef Q_OS_WIN
void DamagedFilesTest::hugeFilesAreLivedWith_data()
{
    QTest::addColumn<QByteArray>("content");
    // At full size, the last two take half a minute each, mostly to show such a text.
    const int size = qEnvironmentVariableIsSet("OUTPOST_LONG_TESTS") ? 50 << 20 : 5 << 20;
    QTest::newRow("megabytes of blanks") << QByteArray(size, ' ');
    QTest::newRow("megabytes of noise") << QByteArray("\xde\xad\xbe\xef").repeated(size / 4);
    QTest::newRow("a text of megabytes") << "{\"Host\": \"" + QByteArray(size, 'x') + "\"}";
    QTest::newRow("an array of megabytes") << "[" + QByteArray("1,").repeated(size / 2) + "1]";
}

void DamagedFilesTest::hugeFilesAreLivedWith()
{
#ifdef __SANITIZE_ADDRESS__
    constexpr int maxKeptKb = 400 * 1024; // the sanitizer keeps freed memory on purpose
#else
    constexpr int maxKeptKb = 100 * 1024;
#endif
    QFETCH(QByteArray, content);
    for (const QString &path : {listFile(), logFile(), frequencyFile(), profileFile()}) {
        putFile(path, content);
    }
    content.clear();
    const Footprint before = footprintNow();
    forgetPeak();
    QElapsedTimer timer;
    timer.start();
    {
        MainWindow window;
        useEverything(window);
    }
    trace->clear(); // it contains the host
    const Footprint after = footprintNow();
    std::printf("FIGURE %s in every file: peak %+lld kB, after %+lld kB, %lld ms for everything\n",
                QTest::currentDataTag(), static_cast<long long>(after.peakKb - before.residentKb),
                static_cast<long long>(after.residentKb - before.residentKb),
                static_cast<long long>(timer.elapsed()));
    QVERIFY(after.residentKb - before.residentKb < maxKeptKb);
}
#endif

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::DamagedFilesTest)
#include "damagedfiles_test.moc"
