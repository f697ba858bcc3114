// A person reads the Status Log while it is refreshed.

#include "app/mainwindow.h"
#include "tests/fixture/home.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/fixture/testoptions.h"
#include "tests/fixture/text.h"

#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTimer>

namespace outpost
{

namespace
{

constexpr qint64 startMs = 1769882655250; // 2026-01-31T18:04:15.250Z

void select(QPlainTextEdit *view, const char *part, bool backwards = false)
{
    const int begin = view->toPlainText().indexOf(text(part));
    QVERIFY(begin >= 0);
    const int end = begin + text(part).size();
    QTextCursor cursor(view->document());
    cursor.setPosition(backwards ? end : begin);
    cursor.setPosition(backwards ? begin : end, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
}

// As copied to the clipboard.
QString selectedText(QPlainTextEdit *view)
{
    QApplication::clipboard()->clear();
    QTest::keySequence(view, QKeySequence::Copy);
    return QApplication::clipboard()->text();
}

QString firstLineInView(QPlainTextEdit *view)
{
    return view->cursorForPosition(QPoint(0, 0)).block().text();
}

QJsonObject session(int number)
{
    return {{text("StartUtc"), text("session %1").arg(number)},
            {text("Host"), text("kiwi%1.example").arg(number)},
            {text("Port"), 8073}};
}

QJsonObject totals(int number)
{
    return {{text("Host"), text("kiwi%1.example").arg(number)}, {text("Port"), 8073}};
}

} // namespace

class StatusLogReadingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aSelectionSurvivesARefresh_data();
    void aSelectionSurvivesARefresh();
    void aSelectedTimeCountsOn();
    void allStaysSelected();
    void theScrollPositionSurvivesARefresh();
    void aSelectionSurvivesTheEndOfASession();
    void whatIsInViewStaysWhenLinesComeAbove();
    void anOddNameIsNoHindrance();
    void nothingIsKeptToBeUndone();
    void aRefreshWithoutNewsChangesNothing();
    void onlyTheTimeIsReplaced();

private:
    void openLog();
    void refresh(); // as the timer does

    const ScriptedDecoder decoder{"exit 0"};
    qint64 now = startMs;
    std::unique_ptr<MainWindow> window;
    QPlainTextEdit *view = nullptr;
};

// 25 sessions with this number of receivers: more than fit into the view.
void StatusLogReadingTest::init()
{
    testHome().clear();
    testHome().writeProfile({{text("Host"), text("kiwi7.example")},
                             {text("Port"), 8073},
                             {text("Jt9Path"), decoder.path()},
                             {text("BridgePort"), freePort()}});
    QJsonArray sessions;
    QJsonArray receivers;
    for (int i = 0; i < 25; ++i) {
        sessions.append(session(i));
        receivers.append(totals(i));
    }
    putFile(logFile(),
            QJsonDocument(QJsonObject{{text("Sessions"), sessions}, {text("Receivers"), receivers}})
                .toJson());
    now = startMs;
    window = std::make_unique<MainWindow>(testOptions([this] { return now; }));
    window->startStatusSession();
    openLog();
}

void StatusLogReadingTest::cleanup()
{
    window.reset();
}

void StatusLogReadingTest::openLog()
{
    choose(*window, {text("Settings"), text("View"), text("Status Log")});
    QDialog *dialog = openDialog(text("PELQ Kiwi Outpost Status Log"));
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    view = dialog->findChild<QPlainTextEdit *>();
}

void StatusLogReadingTest::refresh()
{
    auto *timer = view->window()->findChild<QTimer *>({}, Qt::FindDirectChildrenOnly);
    const int usual = timer->interval();
    timer->setInterval(1);
    QTRY_VERIFY(view->toPlainText().contains(
        text("Elapsed: 00:00:%1\n").arg((now - startMs) / 1000, 2, 10, QLatin1Char('0'))));
    timer->setInterval(usual);
}

void StatusLogReadingTest::aSelectionSurvivesARefresh_data()
{
    QTest::addColumn<QByteArray>("part");
    QTest::addColumn<bool>("backwards");
    QTest::newRow("above the time") << QByteArray("CURRENT CONNECTION\nReceiver") << false;
    QTest::newRow("below it") << QByteArray("session 20 | kiwi20") << false;
    QTest::newRow("backwards") << QByteArray("session 20 | kiwi20") << true;
    QTest::newRow("up to it") << QByteArray("UTC: 2026-01-31T18:04:15Z\nElapsed: ") << false;
    QTest::newRow("from it on") << QByteArray("\nSession decodes: 0") << false;
}

void StatusLogReadingTest::aSelectionSurvivesARefresh()
{
    QFETCH(QByteArray, part);
    QFETCH(bool, backwards);
    select(view, part.constData(), backwards);
    for (int refreshes = 0; refreshes < 3; ++refreshes) {
        now += 5000;
        refresh();
        QCOMPARE(selectedText(view), QString::fromUtf8(part));
        QCOMPARE(view->textCursor().position() < view->textCursor().anchor(), backwards);
    }
}

void StatusLogReadingTest::aSelectedTimeCountsOn()
{
    select(view, "Elapsed: 00:00:00");
    now += 15000;
    refresh();
    QCOMPARE(selectedText(view), text("Elapsed: 00:00:15"));
}

void StatusLogReadingTest::allStaysSelected()
{
    QTest::keySequence(view, QKeySequence::SelectAll);
    now += 5000;
    window->addSessionDecodes(12);
    refresh();
    QCOMPARE(selectedText(view), view->toPlainText());
    QVERIFY(selectedText(view).contains(text("Session decodes: 12\n")));
}

void StatusLogReadingTest::theScrollPositionSurvivesARefresh()
{
    view->window()->resize(300, 200);
    view->verticalScrollBar()->setValue(20);
    view->horizontalScrollBar()->setValue(7);
    now += 5000;
    refresh();
    QCOMPARE(view->verticalScrollBar()->value(), 20);
    QCOMPARE(view->horizontalScrollBar()->value(), 7);
    select(view, "CURRENT"); // out of view now
    view->verticalScrollBar()->setValue(20);
    now += 5000;
    refresh();
    QCOMPARE(view->verticalScrollBar()->value(), 20);
}

// Four lines above it go and one is added; the oldest session leaves the list.
void StatusLogReadingTest::aSelectionSurvivesTheEndOfASession()
{
    select(view, "session 20 | kiwi20");
    now += 5000;
    window->finishStatusSession();
    QVERIFY(view->toPlainText().contains(text("CURRENT CONNECTION\nDisconnected\n")));
    QCOMPARE(selectedText(view), text("session 20 | kiwi20"));
    select(view, "kiwi7.example:8073 | Sessions: 1");
    window->startStatusSession();
    QCOMPARE(selectedText(view), text("kiwi7.example:8073 | Sessions: 1"));
    window->finishStatusSession();
    QCOMPARE(selectedText(view), text("kiwi7.example:8073 | Sessions: 2"));
}

void StatusLogReadingTest::whatIsInViewStaysWhenLinesComeAbove()
{
    view->window()->resize(760, 200);
    view->verticalScrollBar()->setValue(20);
    const QString first = firstLineInView(view);
    QVERIFY(first.startsWith(text("kiwi")));
    now += 5000;
    window->finishStatusSession();
    QCOMPARE(firstLineInView(view), first);
    window->startStatusSession();
    QCOMPARE(firstLineInView(view), first);
}

// As edited by hand; the view shows such characters as others.
void StatusLogReadingTest::anOddNameIsNoHindrance()
{
    window.reset();
    QJsonObject odd = totals(1);
    odd.insert(text("Host"), text("a\r\nb\u2029c\u00a0d\re\u2028f\ufdd0g\ufdd1") + QChar::Null);
    putFile(
        logFile(),
        QJsonDocument(QJsonObject{{text("Receivers"), QJsonArray{odd, odd, totals(2)}}}).toJson());
    window = std::make_unique<MainWindow>(testOptions([this] { return now; }));
    window->startStatusSession();
    openLog();
    const QString shown = view->toPlainText();
    select(view, "kiwi2.example");
    now += 5000;
    refresh();
    QCOMPARE(selectedText(view), text("kiwi2.example"));
    now -= 5000;
    refresh();
    QCOMPARE(view->toPlainText(), shown);
    QTest::keySequence(view, QKeySequence::SelectAll);
    now += 5000;
    refresh();
    QCOMPARE(selectedText(view), view->toPlainText());
}

void StatusLogReadingTest::nothingIsKeptToBeUndone()
{
    now += 5000;
    refresh();
    QVERIFY(!view->document()->isUndoAvailable());
}

void StatusLogReadingTest::aRefreshWithoutNewsChangesNothing()
{
    int changes = 0;
    const QObject watch; // destroyed before what it counts
    connect(view->document(), &QTextDocument::contentsChange, &watch, [&] { ++changes; });
    auto *timer = view->window()->findChild<QTimer *>({}, Qt::FindDirectChildrenOnly);
    int timeouts = 0;
    connect(timer, &QTimer::timeout, &watch, [&] { ++timeouts; });
    timer->setInterval(1);
    QTRY_VERIFY(timeouts >= 3);
    QCOMPARE(changes, 0);
}

void StatusLogReadingTest::onlyTheTimeIsReplaced()
{
    QStringList replaced;
    const QObject watch; // destroyed before the list
    connect(view->document(), &QTextDocument::contentsChange, &watch,
            [&](int position, int removed, int added) {
                replaced.append(view->toPlainText().mid(position, added));
                QCOMPARE(removed, added);
            });
    now += 15000;
    refresh();
    QCOMPARE(replaced, QStringList{text("15")});
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StatusLogReadingTest)
#include "statuslogreading_test.moc"
