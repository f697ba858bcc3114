#include "decode/ft8decode.h"
#include "displaystation.h"
#include "tabstops.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/settingreader.h"
#include "tests/fixture/windowshome.h"

#include <QtTest>
#include <QtWidgets>
#include <cstdio>

namespace outpost
{

namespace
{

const QStringList entry{QStringLiteral("Settings"), QStringLiteral("Highlight Calls...")};
const QString askingText = QStringLiteral("Enter up to 10 complete callsigns, one per line.\n"
                                          "Matching decode rows will be highlighted yellow.");

} // namespace

// Everything shown during an edit, in order: the text of each dialog, and the title and text of
// each box.
using Seen = QStringList;

namespace
{

void type(QWidget *editor, const QString &text)
{
    for (const QChar &character : text) {
        if (character == QLatin1Char('\n')) {
            QTest::keyClick(editor, Qt::Key_Return);
        } else {
            QTest::sendKeyEvent(QTest::Click, editor, Qt::Key_unknown, character, Qt::NoModifier);
        }
    }
}

// Enters each text in the dialog, replacing the previous one, and confirms it with OK; every box is
// closed with Enter. The dialog after the last text is cancelled with Escape.
Seen edit(const MainWindow &window, QStringList typedTexts)
{
    Seen seen;
    QTimer hands;
    QObject::connect(&hands, &QTimer::timeout, &hands, [&] {
        QWidget *shown = QApplication::activeModalWidget();
        if (const auto *box = qobject_cast<QMessageBox *>(shown)) {
            seen << box->windowTitle() + QStringLiteral(": ") + box->text();
            if (box->icon() != QMessageBox::Warning || box->standardButtons() != QMessageBox::Ok) {
                seen << QStringLiteral("not an ordinary warning");
            }
            if (box->parentWidget() != &window) {
                seen << QStringLiteral("not over the main window");
            }
            if (box->textFormat() != Qt::PlainText) {
                seen << QStringLiteral("shown as markup");
            }
            QTest::keyClick(shown, Qt::Key_Return);
        } else if (shown != nullptr && shown->focusWidget() != nullptr) {
            auto *editor = shown->findChild<QPlainTextEdit *>();
            seen << editor->toPlainText();
            if (typedTexts.isEmpty()) {
                return QTest::keyClick(editor, Qt::Key_Escape);
            }
            QTest::keySequence(editor, QKeySequence::SelectAll);
            QTest::keyClick(editor, Qt::Key_Delete);
            type(editor, typedTexts.takeFirst());
            QTest::keyClick(editor, Qt::Key_Tab);
            QTest::keyClick(shown->focusWidget(), Qt::Key_Return);
        }
    });
    hands.start(1);
    choose(window, entry);
    return seen;
}

QString lines(const QStringList &calls)
{
    return calls.join(QLatin1Char('\n'));
}

QStringList callsNumbered(int count)
{
    QStringList calls;
    for (int i = 0; i < count; ++i) {
        calls.append(QStringLiteral("K%1ABC").arg(i));
    }
    return calls;
}

// The text in the dialog of another process that starts with the settings now on disk.
QString textAfterRestart()
{
    QProcess restarted;
    restarted.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--restarted")},
                    QIODevice::ReadOnly | QIODevice::Text);
    if (!restarted.waitForFinished() || restarted.exitCode() != 0) {
        return QStringLiteral("the restarted station failed");
    }
    return QString::fromUtf8(restarted.readAllStandardOutput());
}

int showTextAfterRestart(int argc, char **argv)
{
#ifdef Q_OS_WIN
    useTestPlaces(); // those of the calling test
#endif
    QApplication application(argc, argv);
    const MainWindow window;
    std::fputs(qUtf8Printable(edit(window, {}).value(0)), stdout);
    return 0;
}

} // namespace

class HighlightTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theDialogAsksForCallsOnePerLine();
    void tabReachesItsControls();
    void lowerCaseIsStoredInUpperCaseAndMatchesBoth();
    void rowsAreColouredAgainAtOnce();
    void updatesAreSuspendedMeanwhile();
    void anEmptyListEndsAllHighlighting();
    void aHighlightedCurrentRowLosesItsSelection();
    void anotherCurrentRowKeepsItsSelection();
    void theArrowKeysGoOnFromTheUncoveredRow();
    void theCallsAreSavedBeforeTheRowsAreColoured();
    void blanksAndRepeatsGiveOneEntry();
    void anInvalidEntryIsRefusedAndTheTextComesBack_data();
    void anInvalidEntryIsRefusedAndTheTextComesBack();
    void elevenCallsAreRefusedAndTheTextComesBack();
    void tenCallsWithRepeatsAreAccepted();
    void anInvalidEntryBeatsTooMany();
    void aRefusedTextMayBeCorrected();
    void cancelChangesNothing();
    void aCallMustStandAlone_data();
    void aCallMustStandAlone();
    void whatIsStoredSurvivesARestart_data();
    void whatIsStoredSurvivesARestart();
#ifndef Q_OS_WIN // its registry is not a text file
    void storedCallsAreReadStrictly_data();
    void storedCallsAreReadStrictly();
    void nothingIsWrittenBackByReading();
#endif

private:
    std::unique_ptr<DisplayStation> station;

    void append(const QStringList &messages)
    {
        QStringList batch;
        for (const QString &message : messages) {
            batch.append(jt9Line(message));
        }
        (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(batch));
    }
    QList<int> yellowRows() const
    {
        QList<int> rows;
        const QTableWidget *table = decodeTableOf(**station);
        for (int row = 0; row < table->rowCount(); ++row) {
            if (table->item(row, 0)->background() == QBrush(QColor(255, 255, 0))) {
                rows.append(row);
            }
        }
        return rows;
    }
};

namespace
{

const QString invalidCall =
    QStringLiteral("Invalid Callsign: \"%1\" is not a valid callsign entry. Use only letters, "
                   "numbers, and /, with no spaces.");
const QString tooMany = QStringLiteral("Too Many Callsigns: Enter no more than 10 callsigns.");

} // namespace

void HighlightTest::init()
{
    station = std::make_unique<DisplayStation>();
}

void HighlightTest::cleanup()
{
    station.reset();
}

void HighlightTest::theDialogAsksForCallsOnePerLine()
{
    edit(**station, {QStringLiteral("W1AW\nK1ABC/P")});
    bool asked = false;
    whenDialogOpens([&](QWidget *shown) {
        auto *dialog = qobject_cast<QInputDialog *>(shown);
        asked = dialog && dialog->windowTitle() == QStringLiteral("Highlight Calls") &&
                dialog->labelText() == askingText &&
                dialog->textValue() == QStringLiteral("W1AW\nK1ABC/P") &&
                dialog->parentWidget() == station->window.get() &&
                dialog->testOption(QInputDialog::UsePlainTextEditForTextInput);
        QTest::keyClick(shown, Qt::Key_Escape);
    });
    choose(**station, entry);
    QVERIFY(asked);
}

void HighlightTest::tabReachesItsControls()
{
    bool hasFocus = false;
    QStringList stops;
    whenDialogOpens([&](QWidget *dialog) {
        hasFocus = QTest::qWaitFor([&] { return dialog->focusWidget() != nullptr; });
        if (hasFocus) {
            stops = tabStops(dialog);
        }
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    choose(**station, entry);
    QVERIFY(hasFocus);
    QCOMPARE(stops, (QStringList{askingText, QStringLiteral("OK"), QStringLiteral("Cancel")}));
}

void HighlightTest::lowerCaseIsStoredInUpperCaseAndMatchesBoth()
{
    edit(**station, {QStringLiteral("k1abc")});
    QCOMPARE(edit(**station, {}), Seen{QStringLiteral("K1ABC")});
    append({QStringLiteral("CQ k1abc FN42"), QStringLiteral("CQ W1AW FN31"),
            QStringLiteral("W1AW K1ABC R-07")});
    QCOMPARE(yellowRows(), (QList<int>{0, 2}));
}

void HighlightTest::rowsAreColouredAgainAtOnce()
{
    append({QStringLiteral("CQ K1ABC FN42"), QStringLiteral("CQ W1AW FN31")});
    QVERIFY(yellowRows().isEmpty());
    edit(**station, {QStringLiteral("K1ABC")});
    QCOMPARE(yellowRows(), QList<int>{0});
    edit(**station, {QStringLiteral("W1AW")});
    QCOMPARE(yellowRows(), QList<int>{1});
    const QTableWidget *table = decodeTableOf(**station);
    for (int column = 0; column < 5; ++column) {
        QVERIFY(!table->item(0, column)->data(Qt::BackgroundRole).isValid());
        QVERIFY(!table->item(0, column)->data(Qt::ForegroundRole).isValid());
        QCOMPARE(table->item(1, column)->background(), QBrush(QColor(255, 255, 0)));
        QCOMPARE(table->item(1, column)->foreground(), QBrush(QColor(0, 0, 0)));
    }
    QVERIFY(table->updatesEnabled());
}

void HighlightTest::updatesAreSuspendedMeanwhile()
{
    append({QStringLiteral("CQ K1ABC FN42"), QStringLiteral("CQ W1AW FN31")});
    const QTableWidget *table = decodeTableOf(**station);
    QList<bool> updates;
    connect(table->model(), &QAbstractItemModel::dataChanged, table,
            [&] { updates.append(table->updatesEnabled()); });
    edit(**station, {QStringLiteral("K1ABC")});
    QVERIFY(updates.size() >= 5);
    QVERIFY(!updates.contains(true));
    QVERIFY(table->updatesEnabled());
}

void HighlightTest::anEmptyListEndsAllHighlighting()
{
    append({QStringLiteral("CQ K1ABC FN42")});
    edit(**station, {QStringLiteral("K1ABC")});
    QCOMPARE(yellowRows(), QList<int>{0});
    QCOMPARE(edit(**station, {QString()}), Seen{QStringLiteral("K1ABC")});
    QVERIFY(yellowRows().isEmpty());
    QCOMPARE(edit(**station, {}), Seen{QString()});
}

void HighlightTest::aHighlightedCurrentRowLosesItsSelection()
{
    append({QStringLiteral("CQ K1ABC FN42"), QStringLiteral("CQ W1AW FN31")});
    QTableWidget *table = decodeTableOf(**station);
    table->selectRow(0);
    edit(**station, {QStringLiteral("K1ABC")});
    QVERIFY(table->selectedItems().isEmpty());
}

void HighlightTest::anotherCurrentRowKeepsItsSelection()
{
    append({QStringLiteral("CQ K1ABC FN42"), QStringLiteral("CQ W1AW FN31")});
    edit(**station, {QStringLiteral("K1ABC")});
    QCOMPARE(decodeTableOf(**station)->selectedItems().size(), 5);
}

// The selection is cleared, but the current row stays current.
void HighlightTest::theArrowKeysGoOnFromTheUncoveredRow()
{
    append({QStringLiteral("CQ W1AW FN31"), QStringLiteral("CQ K1ABC FN42"),
            QStringLiteral("CQ W9XYZ EN37")});
    QTableWidget *table = decodeTableOf(**station);
    table->selectRow(1);
    edit(**station, {QStringLiteral("K1ABC")});
    QVERIFY(table->selectedItems().isEmpty());
    QTest::keyClick(table, Qt::Key_Down);
    QCOMPARE(table->currentRow(), 2);
}

// When the colours are visible, the callsigns must be stored already.
void HighlightTest::theCallsAreSavedBeforeTheRowsAreColoured()
{
    append({QStringLiteral("CQ K1ABC FN42")});
    QStringList stored;
    const QObject watch;
    connect(decodeTableOf(**station)->model(), &QAbstractItemModel::dataChanged, &watch, [&] {
        if (stored.isEmpty()) {
            stored = settingOnDisk(QStringLiteral("highlight/calls"));
        }
    });
    edit(**station, {QStringLiteral("K1ABC")});
    QCOMPARE(stored, QStringList{QStringLiteral("K1ABC")});
}

void HighlightTest::blanksAndRepeatsGiveOneEntry()
{
    QCOMPARE(edit(**station, {QStringLiteral("\n  W1AW \nw1aw\n\n \nW1AW\n")}), Seen{QString()});
    QCOMPARE(edit(**station, {}), Seen{QStringLiteral("W1AW")});
}

void HighlightTest::anInvalidEntryIsRefusedAndTheTextComesBack_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("named");

    const auto row = [](const char *name, const char *typed, const char *named) {
        QTest::newRow(name) << QString::fromUtf8(typed) << QString::fromUtf8(named);
    };
    row("a space inside", "w1aw\nk1 abc\nbad!", "K1 ABC");
    row("sixteen characters", "ABCDEFGHIJKLMNOP", "ABCDEFGHIJKLMNOP");
    row("another character", " k1abc- ", "K1ABC-");
    row("not ASCII", "ük1abc", "ÜK1ABC");
    row("markup is shown as typed", "<br>", "<BR>");
    row("a placeholder is shown as typed", "%1", "%1");
}

void HighlightTest::anInvalidEntryIsRefusedAndTheTextComesBack()
{
    QFETCH(QString, typed);
    QFETCH(QString, named);
    edit(**station, {QStringLiteral("N0CALL")});
    const QString box = invalidCall.left(invalidCall.indexOf(QLatin1String("%1"))) + named +
                        invalidCall.section(QStringLiteral("%1"), 1);
    QCOMPARE(edit(**station, {typed}), (Seen{QStringLiteral("N0CALL"), box, typed}));
    QCOMPARE(edit(**station, {}), Seen{QStringLiteral("N0CALL")});
}

void HighlightTest::elevenCallsAreRefusedAndTheTextComesBack()
{
    const QString eleven = lines(callsNumbered(11)).toLower();
    QCOMPARE(edit(**station, {eleven}), (Seen{QString(), tooMany, eleven}));
    QCOMPARE(edit(**station, {}), Seen{QString()});
}

void HighlightTest::tenCallsWithRepeatsAreAccepted()
{
    const QString ten = lines(callsNumbered(10));
    QCOMPARE(edit(**station, {ten + QLatin1Char('\n') + ten.toLower()}), Seen{QString()});
    QCOMPARE(edit(**station, {}), Seen{ten});
}

void HighlightTest::anInvalidEntryBeatsTooMany()
{
    const QString typed = lines(callsNumbered(11)) + QStringLiteral("\nK1 ABC");
    QCOMPARE(edit(**station, {typed}).value(1), invalidCall.arg(QStringLiteral("K1 ABC")));
}

void HighlightTest::aRefusedTextMayBeCorrected()
{
    const QString eleven = lines(callsNumbered(11));
    const Seen seen = edit(**station, {QStringLiteral("k1 abc"), eleven, QStringLiteral("k1abc")});
    QCOMPARE(seen, (Seen{QString(), invalidCall.arg(QStringLiteral("K1 ABC")),
                         QStringLiteral("k1 abc"), tooMany, eleven}));
    QCOMPARE(edit(**station, {}), Seen{QStringLiteral("K1ABC")});
}

void HighlightTest::cancelChangesNothing()
{
    append({QStringLiteral("CQ W1AW FN31")});
    edit(**station, {QStringLiteral("W1AW")});
    whenDialogOpens([](QWidget *dialog) {
        auto *editor = dialog->findChild<QPlainTextEdit *>();
        type(editor, QStringLiteral("K1ABC\n"));
        QTest::keyClick(editor, Qt::Key_Escape);
    });
    choose(**station, entry);
    QCOMPARE(edit(**station, {}), Seen{QStringLiteral("W1AW")});
    QCOMPARE(yellowRows(), QList<int>{0});
    QCOMPARE(textAfterRestart(), QStringLiteral("W1AW"));
}

void HighlightTest::aCallMustStandAlone_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("matches");

    const auto row = [](const char *call, const char *message, bool matches) {
        QTest::addRow("%s in %s", call, message)
            << QString::fromLatin1(call) << QString::fromLatin1(message) << matches;
    };
    row("K1ABC", "CQ K1ABC FN42", true);
    row("K1ABC", "K1ABC W1AW 73", true);
    row("K1ABC", "W1AW K1ABC", true);
    row("K1ABC", "W1AW <K1ABC> 73", true);
    row("K1ABC", "CQ K1ABC/P FN42", false);
    row("K1ABC", "CQ VE3/K1ABC", false);
    row("K1ABC", "CQ K1ABCD FN42", false);
    row("K1ABC", "CQ AK1ABC FN42", false);
    row("K1ABC/P", "CQ K1ABC/P FN42", true);
    row("K1ABC/P", "CQ K1ABC FN42", false);
}

void HighlightTest::aCallMustStandAlone()
{
    QFETCH(QString, call);
    QFETCH(QString, message);
    QFETCH(bool, matches);
    edit(**station, {call});
    append({message});
    QCOMPARE(!yellowRows().isEmpty(), matches);
    QCOMPARE(decodeTableOf(**station)->selectedItems().isEmpty(), matches);
}

void HighlightTest::whatIsStoredSurvivesARestart_data()
{
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("none") << QStringList();
    QTest::newRow("one") << callsNumbered(1);
    QTest::newRow("with a slash") << QStringList{QStringLiteral("VE3/K1ABC/P")};
    QTest::newRow("ten, in the order entered")
        << QStringList{QStringLiteral("Z9ZZ")} + callsNumbered(9);
}

void HighlightTest::whatIsStoredSurvivesARestart()
{
    QFETCH(QStringList, calls);
    edit(**station, {QStringLiteral("N0CALL")});
    edit(**station, {lines(calls)});
    QCOMPARE(textAfterRestart(), lines(calls));
}

#ifndef Q_OS_WIN // its registry is not a text file
void HighlightTest::storedCallsAreReadStrictly_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *name, const QByteArray &stored, const char *text) {
        QTest::newRow(name) << stored << QString::fromLatin1(text);
    };
    row("absent", "", "");
    row("twelve valid ones give the first ten",
        "calls=A1A, A2A, A3A, A4A, A5A, A6A, A7A, A8A, A9A, B1A, B2A, B3A",
        "A1A\nA2A\nA3A\nA4A\nA5A\nA6A\nA7A\nA8A\nA9A\nB1A");
    row("invalid ones are dropped and do not count",
        "calls=A1A, K1 ABC, , A2A, A3A, ABCDEFGHIJKLMNOP, A4A, A5A, A6A, A7A, A8A, A9A, B1A, B2A",
        "A1A\nA2A\nA3A\nA4A\nA5A\nA6A\nA7A\nA8A\nA9A\nB1A");
    row("repeats in any case are one", "calls=k1abc, K1ABC, w1aw", "K1ABC\nW1AW");
    row("one entry is no list in the file", "calls=k1abc", "K1ABC");
    row("an empty list", "calls=@Invalid()", "");
}

void HighlightTest::storedCallsAreReadStrictly()
{
    QFETCH(QByteArray, stored);
    QFETCH(QString, text);
    putFile(stationSettings().fileName(), "[highlight]\n" + stored + "\n");
    QCOMPARE(textAfterRestart(), text);
}

void HighlightTest::nothingIsWrittenBackByReading()
{
    const QByteArray stored = "[highlight]\ncalls=k1abc, bad entry, K1ABC\n";
    putFile(stationSettings().fileName(), stored);
    QCOMPARE(textAfterRestart(), QStringLiteral("K1ABC"));
    QCOMPARE(fileBytes(stationSettings().fileName()), stored);
}
#endif

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    if (answersForSetting(argc, argv)) {
        return 0;
    }
    if (argc == 2 && qstrcmp(argv[1], "--restarted") == 0) {
        return showTextAfterRestart(argc, argv);
    }
    testHome();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
    HighlightTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "highlight_test.moc"
