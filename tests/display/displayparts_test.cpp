// The parts of the display without the station's window.

#include "decode/ft8decode.h"
#include "display/decodetable.h"
#include "display/highlighteditor.h"
#include "display/plainwidths.h"
#include "display/stationdisplay.h"
#include "display/statussummary.h"
#include "tests/fixture/home.h"
#include "tests/fixture/operator.h"

#include <QtTest>
#include <QtWidgets>

namespace outpost
{

namespace
{

const QString period = QStringLiteral("10:15:30");

QVector<Ft8Decode> decodesOf(const QStringList &messages)
{
    QStringList lines;
    for (const QString &message : messages) {
        lines.append(QStringLiteral("101530 -12 0.3 1234 ~ ") + message);
    }
    return parseDecodeLines(lines);
}

bool isYellow(const QTableWidget &table, int row)
{
    return table.item(row, MessageColumn)->background() == QBrush(Qt::yellow);
}

void fillColumn(QTableWidget *table, const QStringList &texts)
{
    table->setColumnCount(1);
    table->setRowCount(texts.size());
    for (int row = 0; row < texts.size(); ++row) {
        table->setItem(row, 0, new QTableWidgetItem(texts.at(row)));
    }
    table->resizeColumnsToContents();
}

} // namespace

class DisplayPartsTest : public QObject
{
    Q_OBJECT

private slots:
    void aPlainTextIsAsWideAsQtMeasuresIt_data();
    void aPlainTextIsAsWideAsQtMeasuresIt();
    void noCellOfALongTableIsCut_data();
    void noCellOfALongTableIsCut();
    void aLargerFontMakesALongTableWider();
    void theDecodeTableTellsTheWidthThatItNeeds();
    void theDecodeTableGivesItsRows();
    void theDecodeTableHighlightsRowsThereAndToCome();
    void theStationDisplayShowsTheValuesItIsGiven();
    void theStationDisplayTellsWhenARefreshIsDue();
    void theHighlightEditorReturnsTheCalls();
    void theStatusSummaryShowsTheValuesItIsGiven();
};

void DisplayPartsTest::aPlainTextIsAsWideAsQtMeasuresIt_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text :
         {"", " ", "W", "CQ K1ABC FN42", "AVATAR To. WAVE LY", "<...> W1AW R-05", "fi fl ff",
          "ABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789 !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~"}) {
        QTest::addRow("'%s'", text) << QString::fromLatin1(text);
    }
}

void DisplayPartsTest::aPlainTextIsAsWideAsQtMeasuresIt()
{
    QFETCH(QString, text);
    QVERIFY(isPlainText(text));
    const QFont font = QApplication::font();
    PlainWidths widths(font);
    const double expected = QFontMetricsF(font).horizontalAdvance(text);
    for (int i = 0; i < 2; ++i) { // measured, and remembered
        QVERIFY2(qAbs(widths.of(text) - expected) < 0.1,
                 qPrintable(QStringLiteral("%1, not %2").arg(widths.of(text)).arg(expected)));
    }
    QVERIFY(!isPlainText(text + QChar(0x7f)));
    QVERIFY(!isPlainText(text + QChar(0xe9)));
}

void DisplayPartsTest::noCellOfALongTableIsCut_data()
{
    QTest::addColumn<QString>("wide");
    QTest::newRow("plain") << QStringLiteral("CQ VE3/W1AW FN42 CQ VE3/W1AW FN42");
    QTest::newRow("of letters that Qt measures") << QString(20, QChar(0x2014));
}

void DisplayPartsTest::noCellOfALongTableIsCut()
{
    QFETCH(QString, wide);
    DecodeView shortTable(nullptr);
    fillColumn(&shortTable, {wide});
    for (const int row : {0, 3000, 5999}) {
        QStringList texts;
        for (int i = 0; i < 6000; ++i) {
            texts.append(i == row ? wide : QStringLiteral("CQ W1AW"));
        }
        DecodeView table(nullptr);
        fillColumn(&table, texts);
        QCOMPARE(table.columnWidth(0), shortTable.columnWidth(0));
    }
}

void DisplayPartsTest::aLargerFontMakesALongTableWider()
{
    QStringList texts;
    for (int i = 0; i < 1000; ++i) {
        texts.append(QStringLiteral("CQ W1AW FN42 ") + QString::number(i));
    }
    DecodeView table(nullptr);
    fillColumn(&table, texts);
    QFont large = table.font();
    large.setPixelSize(40);
    table.setFont(large);
    table.resizeColumnsToContents();
    QVERIFY(table.columnWidth(0) > QFontMetrics(large).horizontalAdvance(texts.last()));
}

void DisplayPartsTest::theDecodeTableTellsTheWidthThatItNeeds()
{
    QList<int> widths;
    DecodeTable table(nullptr, [&widths](int width) { widths.append(width); });
    QVERIFY(widths.isEmpty());
    QCOMPARE(table.append(period, decodesOf({QStringLiteral("CQ")})), 1);
    QCOMPARE(table.append(period, decodesOf({QStringLiteral("CQ K1ABC FN42 ").repeated(9)})), 2);
    QCOMPARE(widths.size(), 2);
    int expected = 2 * table.frameWidth() + table.verticalScrollBar()->sizeHint().width() + 10;
    for (int column = 0; column < DecodeColumnCount; ++column) {
        expected += table.columnWidth(column);
    }
    QCOMPARE(widths.at(1), expected);
    QVERIFY(widths.at(0) < expected);
}

void DisplayPartsTest::theDecodeTableGivesItsRows()
{
    DecodeTable table(nullptr, [](int) {});
    QVERIFY(table.rows().isEmpty());
    table.append(period, decodesOf({QStringLiteral("CQ W1AW FN31"), QStringLiteral("CQ")}));
    delete table.takeItem(1, SnrColumn);
    const QVector<DecodeCells> rows = table.rows();
    QCOMPARE(rows.size(), 2);
    const QString dt = QStringLiteral("0.3");
    const QString hz = QStringLiteral("1234");
    QVERIFY(rows.at(0) ==
            (DecodeCells{period, QStringLiteral("-12"), dt, hz, QStringLiteral("CQ W1AW FN31")}));
    QVERIFY(rows.at(1) == (DecodeCells{period, QString(), dt, hz, QStringLiteral("CQ")}));
    table.removeAll();
    QVERIFY(table.rows().isEmpty());
}

void DisplayPartsTest::theDecodeTableHighlightsRowsThereAndToCome()
{
    DecodeTable table(nullptr, [](int) {});
    table.append(period, decodesOf({QStringLiteral("CQ W1AW FN31")}));
    QVERIFY(!isYellow(table, 0));
    table.highlight({QStringLiteral("W1AW")});
    QCOMPARE(table.highlighted(), QStringList{QStringLiteral("W1AW")});
    table.append(period, decodesOf({QStringLiteral("W1AW K1ABC 73"), QStringLiteral("CQ K1ABC")}));
    QVERIFY(isYellow(table, 0) && isYellow(table, 1) && !isYellow(table, 2));
    table.highlight({QStringLiteral("K1ABC")});
    QVERIFY(!isYellow(table, 0) && isYellow(table, 1) && isYellow(table, 2));
}

void DisplayPartsTest::theStationDisplayShowsTheValuesItIsGiven()
{
    QWidget owner;
    StationDisplay display(&owner, [] {});
    StationState station;
    station.bridge.listening = true;
    station.bridge.clients = 2;
    const auto row = [](const char *snr) {
        return DecodeCells{period, QString::fromLatin1(snr), QString(), QString(),
                           QStringLiteral("CQ")};
    };
    station.decodes = {row("-3"), row("-19")};
    display.refresh(station);
    const QStringList lines = display.findChild<QLabel *>()->text().split(QLatin1Char('\n'));
    QCOMPARE(lines.at(0), QStringLiteral("Receiver: Disconnected"));
    QCOMPARE(lines.at(4), QStringLiteral("Latest FT8 period: 10:15:30"));
    QCOMPARE(lines.at(5), QStringLiteral("Latest-period decodes: 2"));
    QCOMPARE(lines.at(6), QStringLiteral("Strongest / weakest SNR: -3 / -19 dB"));
    QCOMPARE(lines.at(7), QStringLiteral("Local WSJT bridge: Listening — 2 client(s)"));
    const auto *table = display.findChild<QTableWidget *>();
    QCOMPARE(rowTexts(*table, 1), (QStringList{period, QStringLiteral("-19"), QString(), QString(),
                                               QStringLiteral("CQ")}));
}

void DisplayPartsTest::theStationDisplayTellsWhenARefreshIsDue()
{
    int due = 0;
    QWidget owner;
    QPointer<StationDisplay> display = new StationDisplay(&owner, [&due] { ++due; });
    auto *timer = display->findChild<QTimer *>({}, Qt::FindDirectChildrenOnly);
    QVERIFY(!timer->isActive());
    display->present();
    QVERIFY(timer->isActive());
    QCOMPARE(due, 0);
    timer->setInterval(1);
    QTRY_VERIFY(due > 1);
    display->close();
    QTRY_VERIFY(!display);
}

void DisplayPartsTest::theHighlightEditorReturnsTheCalls()
{
    QWidget owner;
    const auto edited = [&owner](const QString &typed, Qt::Key key) {
        whenDialogOpens([&](QWidget *dialog) {
            auto *editor = dialog->findChild<QPlainTextEdit *>();
            QCOMPARE(editor->toPlainText(), QStringLiteral("W1AW\nK1ABC"));
            editor->setPlainText(typed);
            QTest::keyClick(editor, Qt::Key_Tab);
            QTest::keyClick(dialog, key);
        });
        return editedHighlightCalls(&owner, {QStringLiteral("W1AW"), QStringLiteral("K1ABC")});
    };
    QVERIFY(!edited(QStringLiteral("N0CALL"), Qt::Key_Escape));
    const auto calls = edited(QStringLiteral("n0call\n\nve3/w1aw"), Qt::Key_Return);
    QVERIFY(calls);
    QCOMPARE(*calls, (QStringList{QStringLiteral("N0CALL"), QStringLiteral("VE3/W1AW")}));
    const auto none = edited(QString(), Qt::Key_Return);
    QVERIFY(none && none->isEmpty());
}

void DisplayPartsTest::theStatusSummaryShowsTheValuesItIsGiven()
{
    QMainWindow window;
    auto *summary = new StatusSummary(window.statusBar(), window.font(), 345);
    summary->refresh(true, 0, 12);
    QCOMPARE(summary->text(), QStringLiteral("Kiwi Connected | Bridge Disconnected | TDecodes 12"));
    summary->refresh(false, 2, 0);
    QCOMPARE(summary->text(), QStringLiteral("Kiwi Disconnected | Bridge Connected | TDecodes 0"));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::DisplayPartsTest)
#include "displayparts_test.moc"
