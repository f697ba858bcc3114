// The receiver status log: its sessions, its file, its window.

#include "app/mainwindow.h"
#include "decode/ft8decode.h"
#include "sim/kiwisim.h"
#include "tests/fixture/filedialogs.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/receiverform.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/fixture/testoptions.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

namespace outpost
{

namespace
{

constexpr qint64 startMs = 1769882655250; // 2026-01-31T18:04:15.250Z

QJsonObject savedLog()
{
    return jsonFile(logFile());
}

QJsonObject savedEntry(const char *list, int index)
{
    return savedLog().value(QLatin1String(list)).toArray().at(index).toObject();
}

int savedCount(const char *list)
{
    return savedLog().value(QLatin1String(list)).toArray().size();
}

QDialog *logWindow()
{
    return openDialog(QStringLiteral("PELQ Kiwi Outpost Status Log"));
}

void openLog(const MainWindow &window)
{
    choose(window,
           {QStringLiteral("Settings"), QStringLiteral("View"), QStringLiteral("Status Log")});
}

[[maybe_unused]] void disconnectReceiver(const MainWindow &window)
{
    choose(window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
}

QString shownText()
{
    return logWindow()->findChild<QPlainTextEdit *>()->toPlainText();
}

bool shows(const char *part)
{
    return shownText().contains(QString::fromUtf8(part));
}

QString heading()
{
    return QStringLiteral("PELQ KIWI OUTPOST STATUS LOG\nData file: %1\n\nCURRENT CONNECTION\n")
        .arg(QDir::toNativeSeparators(logFile()));
}

[[maybe_unused]] void connectTo(const MainWindow &window, const QString &host, int port)
{
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(host);
        form.port->setText(QString::number(port));
        QTest::mouseClick(form.apply, Qt::LeftButton);
    });
}

} // namespace

class StatusLogWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void opensModelessWithItsLook();
    void existsOnce();
    void closesAndOpensAgain();
    void withoutAFileSaysSo();
    void aFileThatIsNoLogSaysSo_data();
    void aFileThatIsNoLogSaysSo();
    void showsTheRunningSession();
    void showsTheFinishedSession();
    void listsTheNewestTwentyOfTwentyFive();
    void refreshesEveryFiveSecondsWithoutReadingTheFile();
    void aReaderWhoHasScrolledStaysThere();
    void readsTheFileAgainWhenOpened();

    void aSecondStartChangesNothing();
    void aBlankHostStartsNoSession();
    void aSessionCountsOnlyWhileItRuns();
    void theStatusBarFollowsTheSession();
    void aSessionIsRecordedWhole();
    void aSessionKeepsWhatItBeganWith();
    void theLogHasNoLimit();
    void aSessionBelowOneSecondCounts();
    void hostsInAnotherCaseShareOneEntry();
    void aFileHoldingAnArrayIsReplaced();
    void theFolderIsMadeWhenItIsGone();
    void aSessionEndsAlthoughItsSaveFailed();

#ifdef OUTPOST_STREAMS
    void receivedAudioStartsASession();
    void aLinkWithoutAudioLeavesNoSession();
    void theEndOfTheStreamFinishesTheSession();
    void connectingAgainFinishesTheSession();
#endif
    void closingTheProgramFinishesTheSession();
    void theEndOfTheEventLoopLeavesTheSessionToTheWindow();

private:
    void writeProfile(const QString &host, int port = 8073) const;
    std::unique_ptr<MainWindow> newWindow();
    void runSession(MainWindow *window, qint64 ms);
    void startSim(const sim::EndpointBehaviours &endpoints = {});

    const ScriptedDecoder decoder{"exit 0"};
    qint64 now = startMs;
    std::unique_ptr<KiwiSim> receiver;
};

void StatusLogWindowTest::init()
{
    receiver.reset();
    testHome().clear();
    now = startMs;
    writeProfile(QStringLiteral("Kiwi.Example"));
}

void StatusLogWindowTest::writeProfile(const QString &host, int port) const
{
    testHome().writeProfile({{QStringLiteral("Host"), host},
                             {QStringLiteral("Port"), port},
                             {QStringLiteral("Jt9Path"), decoder.path()},
                             {QStringLiteral("BridgePort"), freePort()}});
}

std::unique_ptr<MainWindow> StatusLogWindowTest::newWindow()
{
    return std::make_unique<MainWindow>(testOptions([this] { return now; }));
}

void StatusLogWindowTest::runSession(MainWindow *window, qint64 ms)
{
    window->startStatusSession();
    now += ms;
    window->finishStatusSession();
}

void StatusLogWindowTest::startSim(const sim::EndpointBehaviours &endpoints)
{
    SimConfig config;
    config.firstSoundDelayMs = 0;
    config.endpoints = endpoints;
    receiver = std::make_unique<KiwiSim>();
    QString error;
    QVERIFY2(receiver->listen(config, &error), qPrintable(error));
    writeProfile(QStringLiteral("127.0.0.1"), receiver->port());
}

void StatusLogWindowTest::opensModelessWithItsLook()
{
    const auto window = newWindow();
    window->show();
    openLog(*window);
    const QDialog *dialog = logWindow();
    QVERIFY(dialog != nullptr);
    QCOMPARE(dialog->parentWidget(), window.get());
    QVERIFY(!dialog->isModal());
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
    QCOMPARE(dialog->size(), QSize(760, 500));
    const auto *view = dialog->findChild<QPlainTextEdit *>();
    QVERIFY(view->isReadOnly());
    QCOMPARE(view->lineWrapMode(), QPlainTextEdit::NoWrap);
    const auto *box = dialog->findChild<QDialogButtonBox *>();
    QCOMPARE(box->buttons().size(), 1);
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Close);
    const int viewEnd = view->mapTo(dialog, view->rect().bottomLeft()).y();
    QVERIFY(box->mapTo(dialog, QPoint()).y() > viewEnd);
}

// Showing it again raises the same window and reads nothing.
void StatusLogWindowTest::existsOnce()
{
    const auto window = newWindow();
    openLog(*window);
    QDialog *dialog = logWindow();
    const QString text = shownText();
    putFile(logFile(), "[]");
    window->show();
    window->activateWindow();
    QTRY_VERIFY(!dialog->isActiveWindow());
    QVERIFY(bringsToFront(dialog, [&] { openLog(*window); }));
    QTRY_VERIFY(dialog->isActiveWindow());
    dialog->hide();
    openLog(*window);
    QCOMPARE(logWindow(), dialog);
    QCOMPARE(window->findChildren<QDialog *>().size(), 1);
    QCOMPARE(shownText(), text);
}

void StatusLogWindowTest::closesAndOpensAgain()
{
    const auto window = newWindow();
    openLog(*window);
    const QPointer<QDialog> dialog = logWindow();
    QTest::mouseClick(dialog->findChild<QPushButton *>(), Qt::LeftButton);
    QTRY_VERIFY(dialog.isNull());
    runSession(window.get(), 1000); // there is no window to refresh
    openLog(*window);
    QVERIFY(logWindow() != nullptr);
    QVERIFY(shows("Kiwi.Example:8073 | Sessions: 1 "));
}

void StatusLogWindowTest::withoutAFileSaysSo()
{
    const auto window = newWindow();
    openLog(*window);
    QCOMPARE(shownText(), heading() + QStringLiteral("Disconnected\n"
                                                     "\n"
                                                     "RECEIVER TOTALS\n"
                                                     "No completed receiver sessions yet."));
}

void StatusLogWindowTest::aFileThatIsNoLogSaysSo_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an array") << QByteArray("[]");
    QTest::newRow("not JSON") << QByteArray("sessions");
    QTest::newRow("empty") << QByteArray();
}

void StatusLogWindowTest::aFileThatIsNoLogSaysSo()
{
    QFETCH(QByteArray, content);
    putFile(logFile(), content);
    const auto window = newWindow();
    openLog(*window);
    QCOMPARE(shownText(), heading() + QStringLiteral("Disconnected\n"
                                                     "\n"
                                                     "RECEIVER TOTALS\n"
                                                     "Status data file is not valid JSON."));
}

void StatusLogWindowTest::showsTheRunningSession()
{
    const auto window = newWindow();
    openLog(*window);
    window->startStatusSession();
    QCOMPARE(shownText(), heading() + QStringLiteral("Receiver: Kiwi.Example:8073\n"
                                                     "Frequency: 14.074000 MHz\n"
                                                     "Connected since UTC: 2026-01-31T18:04:15Z\n"
                                                     "Elapsed: 00:00:00\n"
                                                     "Session decodes: 0\n"
                                                     "\n"
                                                     "RECEIVER TOTALS\n"
                                                     "No completed receiver sessions yet."));
    QVERIFY(!QFile::exists(logFile()));
}

void StatusLogWindowTest::showsTheFinishedSession()
{
    const auto window = newWindow();
    openLog(*window);
    window->startStatusSession();
    window->addSessionDecodes(7);
    now += (25 * 3600 + 61) * 1000 + 999;
    window->finishStatusSession();
    QCOMPARE(shownText(),
             heading() + QStringLiteral(
                             "Disconnected\n"
                             "\n"
                             "RECEIVER TOTALS\n"
                             "Kiwi.Example:8073 | Sessions: 1 | Time: 1d 01:01:01 | Decodes: 7 | "
                             "Last UTC: 2026-02-01T19:05:17Z\n"
                             "\n"
                             "RECENT COMPLETED SESSIONS\n"
                             "2026-01-31T18:04:15Z | Kiwi.Example:8073 | 14.074000 MHz | "
                             "1d 01:01:01 | 7 decodes"));
}

void StatusLogWindowTest::listsTheNewestTwentyOfTwentyFive()
{
    const auto window = newWindow();
    for (int seconds = 1; seconds <= 25; ++seconds) {
        runSession(window.get(), seconds * 1000);
    }
    openLog(*window);
    const QString listed = shownText().section(QStringLiteral("RECENT COMPLETED SESSIONS\n"), 1);
    const QStringList lines = listed.split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 20);
    QVERIFY(lines.first().contains(QStringLiteral(" | 00:00:25 | ")));
    QVERIFY(lines.last().contains(QStringLiteral(" | 00:00:06 | ")));
    QVERIFY(shows("| Sessions: 25 | Time: 00:05:25 |"));
    QCOMPARE(savedCount("Sessions"), 25);
    QCOMPARE(savedEntry("Sessions", 0).value(QLatin1String("DurationSeconds")).toInt(), 1);
}

void StatusLogWindowTest::refreshesEveryFiveSecondsWithoutReadingTheFile()
{
    const auto window = newWindow();
    window->startStatusSession();
    openLog(*window);
    auto *timer = logWindow()->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(timer->interval(), 5000);
    QVERIFY(timer->isActive() && !timer->isSingleShot());
    putFile(logFile(), "[]");
    now += 61000;
    window->addSessionDecodes(4);
    QVERIFY(shows("Elapsed: 00:00:00\nSession decodes: 0\n"));
    timer->setInterval(1);
    QTRY_VERIFY(shows("Elapsed: 00:01:01\nSession decodes: 4\n"));
    QVERIFY(shows("No completed receiver sessions yet."));
}

void StatusLogWindowTest::aReaderWhoHasScrolledStaysThere()
{
    const auto window = newWindow();
    for (int i = 0; i < 20; ++i) {
        runSession(window.get(), 1000);
    }
    window->startStatusSession();
    openLog(*window);
    logWindow()->resize(300, 250);
    const auto *view = logWindow()->findChild<QPlainTextEdit *>();
    QScrollBar *down = view->verticalScrollBar();
    QScrollBar *across = view->horizontalScrollBar();
    QTRY_VERIFY(down->maximum() > 9 && across->maximum() > 40);
    down->setValue(9);
    across->setValue(40);
    now += 61000;
    logWindow()->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->setInterval(1);
    QTRY_VERIFY(shows("Elapsed: 00:01:01\n"));
    QCOMPARE(down->value(), 9);
    QCOMPARE(across->value(), 40);
}

void StatusLogWindowTest::readsTheFileAgainWhenOpened()
{
    const auto window = newWindow();
    openLog(*window);
    logWindow()->close();
    QTRY_VERIFY(window->findChildren<QDialog *>().isEmpty());
    putFile(logFile(), "{}");
    openLog(*window);
    QVERIFY(shows("RECEIVER TOTALS\nNo completed receiver sessions yet.\n\n"
                  "RECENT COMPLETED SESSIONS\nNo completed sessions."));
}

void StatusLogWindowTest::aSecondStartChangesNothing()
{
    const auto window = newWindow();
    openLog(*window);
    window->startStatusSession();
    window->addSessionDecodes(3);
    now += 2000;
    window->startStatusSession();
    now += 1000;
    window->finishStatusSession();
    QVERIFY(shows("| 00:00:03 | 3 decodes"));
}

void StatusLogWindowTest::aBlankHostStartsNoSession()
{
    writeProfile(QStringLiteral(" \t"));
    const auto window = newWindow();
    openLog(*window);
    runSession(window.get(), 1000);
    QVERIFY(shows("Disconnected"));
    QVERIFY(!QFile::exists(logFile()));
}

void StatusLogWindowTest::aSessionCountsOnlyWhileItRuns()
{
    const auto window = newWindow();
    window->addSessionDecodes(100);
    window->startStatusSession();
    window->addSessionDecodes(5);
    window->addSessionDecodes(0);
    window->addSessionDecodes(-2);
    window->addSessionDecodes(6);
    window->finishStatusSession();
    window->addSessionDecodes(50);
    window->appendDecodes(
        QStringLiteral("18:04:00"),
        parseDecodeLines({QStringLiteral("000000 -10  0.1 1000 ~  CQ K1ABC FN42")}));
    window->finishStatusSession();
    QCOMPARE(savedCount("Sessions"), 1);
    QCOMPARE(savedEntry("Sessions", 0).value(QLatin1String("Decodes")).toInt(), 11);
    QCOMPARE(savedEntry("Receivers", 0).value(QLatin1String("TotalDecodes")).toInt(), 11);
    QVERIFY(summaryLine(*window).endsWith(QStringLiteral("TDecodes 0")));
}

void StatusLogWindowTest::theStatusBarFollowsTheSession()
{
    const auto window = newWindow();
    window->startStatusSession();
    const QStringList lines{QStringLiteral("000000 -10  0.1 1000 ~  CQ K1ABC FN42"),
                            QStringLiteral("000000  -3  0.2 1500 ~  CQ W9XYZ EN37")};
    window->appendDecodes(QStringLiteral("18:04:00"), parseDecodeLines(lines));
    QVERIFY(summaryLine(*window).endsWith(QStringLiteral("TDecodes 2")));
    window->finishStatusSession();
    QVERIFY(summaryLine(*window).endsWith(QStringLiteral("TDecodes 0")));
}

void StatusLogWindowTest::aSessionIsRecordedWhole()
{
    putFile(logFile(), "{\"Owner\": \"me\"}");
    putFile(frequencyFile(), "7.074");
    writeProfile(QStringLiteral("  Kiwi.Example "));
    const auto window = newWindow();
    window->startStatusSession();
    window->addSessionDecodes(12);
    now += 75900;
    window->finishStatusSession();
    QCOMPARE(fileBytes(logFile()), QByteArray("{\n"
                                              "    \"FormatVersion\": 1,\n"
                                              "    \"Owner\": \"me\",\n"
                                              "    \"Receivers\": [\n"
                                              "        {\n"
                                              "            \"Host\": \"Kiwi.Example\",\n"
                                              "            \"LastConnectedUtc\": "
                                              "\"2026-01-31T18:05:31Z\",\n"
                                              "            \"LastFrequencyMhz\": 7.074,\n"
                                              "            \"Port\": 8073,\n"
                                              "            \"Sessions\": 1,\n"
                                              "            \"TotalDecodes\": 12,\n"
                                              "            \"TotalSeconds\": 75\n"
                                              "        }\n"
                                              "    ],\n"
                                              "    \"Sessions\": [\n"
                                              "        {\n"
                                              "            \"Decodes\": 12,\n"
                                              "            \"DurationSeconds\": 75,\n"
                                              "            \"EndUtc\": \"2026-01-31T18:05:31Z\",\n"
                                              "            \"FrequencyMhz\": 7.074,\n"
                                              "            \"Host\": \"Kiwi.Example\",\n"
                                              "            \"Port\": 8073,\n"
                                              "            \"StartUtc\": \"2026-01-31T18:04:15Z\"\n"
                                              "        }\n"
                                              "    ]\n"
                                              "}\n"));
}

// A profile opened meanwhile changes only the receiver of the next session.
void StatusLogWindowTest::aSessionKeepsWhatItBeganWith()
{
    const auto window = newWindow();
    openLog(*window);
    window->startStatusSession();
    const QString other = testHome().path(QStringLiteral("other.json"));
    putFile(other, R"({"Host": "other.example", "Port": 8099})");
    putFile(frequencyFile(), "7.074");
    chooseFile(other, [&] {
        choose(*window, {QStringLiteral("File"), QStringLiteral("Open Profile...")});
    });
    now += 75000;
    window->finishStatusSession();
    QVERIFY(shows("Kiwi.Example:8073 | Sessions: 1 |"));
    QVERIFY(shows("2026-01-31T18:04:15Z | Kiwi.Example:8073 | 14.074000 MHz | 00:01:15 |"));
    QCOMPARE(savedEntry("Receivers", 0).value(QLatin1String("LastFrequencyMhz")).toDouble(),
             14.074);
    runSession(window.get(), 1000);
    QVERIFY(shows("| other.example:8099 | 7.074000 MHz | 00:00:01 |"));
}

void StatusLogWindowTest::theLogHasNoLimit()
{
    constexpr int many = 300;
    QJsonArray receivers;
    QJsonArray sessions;
    for (int i = 0; i < many; ++i) {
        const QJsonObject entry{{QStringLiteral("Host"), QStringLiteral("kiwi%1").arg(i)},
                                {QStringLiteral("Port"), 8073}};
        receivers.append(entry);
        sessions.append(entry);
    }
    putFile(logFile(), QJsonDocument(QJsonObject{{QStringLiteral("Receivers"), receivers},
                                                 {QStringLiteral("Sessions"), sessions}})
                           .toJson());
    const auto window = newWindow();
    runSession(window.get(), 1000);
    for (const char *list : {"Receivers", "Sessions"}) {
        QCOMPARE(savedCount(list), many + 1);
        QCOMPARE(savedEntry(list, 0).value(QLatin1String("Host")).toString(),
                 QStringLiteral("kiwi0"));
    }
    openLog(*window);
    QCOMPARE(shownText().count(QStringLiteral(" | Sessions: ")), many + 1);
}

void StatusLogWindowTest::aSessionBelowOneSecondCounts()
{
    const auto window = newWindow();
    runSession(window.get(), 999);
    const QJsonObject record = savedEntry("Sessions", 0);
    QCOMPARE(record.value(QLatin1String("DurationSeconds")), QJsonValue(0));
    QCOMPARE(savedEntry("Receivers", 0).value(QLatin1String("Sessions")).toInt(), 1);
    QCOMPARE(savedEntry("Receivers", 0).value(QLatin1String("TotalSeconds")).toInt(-1), 0);
}

void StatusLogWindowTest::hostsInAnotherCaseShareOneEntry()
{
    runSession(newWindow().get(), 2000);
    writeProfile(QStringLiteral("KIWI.example"));
    runSession(newWindow().get(), 3000);
    QCOMPARE(savedCount("Sessions"), 2);
    QCOMPARE(savedCount("Receivers"), 1);
    const QJsonObject receiverTotals = savedEntry("Receivers", 0);
    QCOMPARE(receiverTotals.value(QLatin1String("Host")).toString(),
             QStringLiteral("KIWI.example"));
    QCOMPARE(receiverTotals.value(QLatin1String("TotalSeconds")).toInt(), 5);
}

void StatusLogWindowTest::aFileHoldingAnArrayIsReplaced()
{
    putFile(logFile(), "[1, 2]");
    const auto window = newWindow();
    openLog(*window);
    window->startStatusSession();
    QCOMPARE(fileBytes(logFile()), QByteArray("[1, 2]"));
    window->finishStatusSession();
    QCOMPARE(savedCount("Receivers"), 1);
    QCOMPARE(savedCount("Sessions"), 1);
    QVERIFY(shows("Kiwi.Example:8073 | Sessions: 1 |"));
}

void StatusLogWindowTest::theFolderIsMadeWhenItIsGone()
{
    const auto window = newWindow();
    QVERIFY(QDir(QFileInfo(logFile()).path()).removeRecursively());
    runSession(window.get(), 1000);
    QCOMPARE(savedCount("Sessions"), 1);
}

void StatusLogWindowTest::aSessionEndsAlthoughItsSaveFailed()
{
    QVERIFY(QDir().mkpath(logFile()));
    const auto window = newWindow();
    openLog(*window);
    const LogTrace trace;
    window->startStatusSession();
    window->addSessionDecodes(3);
    window->finishStatusSession();
    QCOMPARE(trace.lines(),
             QStringList(QStringLiteral("Status log save failed: Filename refers to a directory")));
    QCOMPARE(shownText(), heading() + QStringLiteral("Disconnected\n"
                                                     "\n"
                                                     "RECEIVER TOTALS\n"
                                                     "No completed receiver sessions yet."));
    window->startStatusSession();
    QVERIFY(shows("Session decodes: 0"));
}

#ifdef OUTPOST_STREAMS
void StatusLogWindowTest::receivedAudioStartsASession()
{
    startSim();
    const auto window = newWindow();
    openLog(*window);
    window->connectKiwi();
    QVERIFY(shows("CURRENT CONNECTION\nDisconnected\n"));
    const QString current = QStringLiteral("CURRENT CONNECTION\nReceiver: 127.0.0.1:%1\n");
    QTRY_VERIFY(shownText().contains(current.arg(receiver->port())));
    QVERIFY(!QFile::exists(logFile()));
    now += 5000;
    disconnectReceiver(*window);
    QVERIFY(shows("CURRENT CONNECTION\nDisconnected\n"));
    QCOMPARE(savedEntry("Sessions", 0).value(QLatin1String("DurationSeconds")).toInt(), 5);
    disconnectReceiver(*window);
    QCOMPARE(savedCount("Sessions"), 1);
}

void StatusLogWindowTest::aLinkWithoutAudioLeavesNoSession()
{
    sim::EndpointBehaviours silent;
    silent.fallback.fault = sim::Fault::MessagesOnly;
    startSim(silent);
    const auto window = newWindow();
    openLog(*window);
    LogTrace trace;
    window->connectKiwi();
    QTRY_VERIFY(trace.contains(QStringLiteral("RX binary frame")));
    QVERIFY(shows("CURRENT CONNECTION\nDisconnected\n"));
    disconnectReceiver(*window);
    QVERIFY(!QFile::exists(logFile()));
}

void StatusLogWindowTest::theEndOfTheStreamFinishesTheSession()
{
    startSim();
    const auto window = newWindow();
    openLog(*window);
    window->connectKiwi();
    QTRY_VERIFY(shows("Receiver: 127.0.0.1:"));
    receiver->close();
    QTRY_VERIFY(shows("CURRENT CONNECTION\nDisconnected\n"));
    QCOMPARE(savedCount("Sessions"), 1);
}

void StatusLogWindowTest::connectingAgainFinishesTheSession()
{
    startSim();
    const auto window = newWindow();
    openLog(*window);
    window->connectKiwi();
    QTRY_VERIFY(shows("Receiver: 127.0.0.1:"));
    connectTo(*window, QStringLiteral("localhost"), receiver->port());
    QTRY_VERIFY(shows("Receiver: localhost:"));
    QCOMPARE(savedCount("Sessions"), 1);
    QCOMPARE(savedEntry("Sessions", 0).value(QLatin1String("Host")).toString(),
             QStringLiteral("127.0.0.1"));
}
#endif

void StatusLogWindowTest::closingTheProgramFinishesTheSession()
{
    auto window = newWindow();
    openLog(*window);
    window->startStatusSession();
    window.reset();
    QCOMPARE(savedCount("Sessions"), 1);
}

// The window disconnects the link, after the bridge has stopped.
void StatusLogWindowTest::theEndOfTheEventLoopLeavesTheSessionToTheWindow()
{
    auto window = newWindow();
    window->startStatusSession();
    QTimer::singleShot(0, this, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    QVERIFY(!QFile::exists(logFile()));
    window.reset();
    QCOMPARE(savedCount("Sessions"), 1);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StatusLogWindowTest)
#include "statuslogwindow_test.moc"
