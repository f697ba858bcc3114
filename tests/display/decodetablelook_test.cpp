#include "decode/ft8decode.h"
#include "displaystation.h"
#include "tests/fixture/operator.h"

#include <QtTest>
#include <QtWidgets>

namespace outpost
{

namespace
{

int widthThatFits(const QTableWidget &table)
{
    int width = 2 * table.frameWidth() + table.verticalScrollBar()->sizeHint().width() + 10;
    for (int column = 0; column < 5; ++column) {
        width += table.columnWidth(column);
    }
    return width;
}

const QString longMessage = QStringLiteral("CQ K1ABC FN42 ").repeated(5);

QJsonArray goodReceivers()
{
    const QString path = listFile();
    return QJsonDocument::fromJson(fileBytes(path)).array();
}

void setRemovedReceivers(const QStringList &keys)
{
    QSettings settings = stationSettings();
    settings.setValue(QStringLiteral("receivers/removedKeys"), keys);
    settings.sync();
}

} // namespace

class PaintCount : public QObject
{
public:
    explicit PaintCount(QWidget *painted) { painted->installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

class DecodeTableLookTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theWindowIsAsWideAsAWideTable();
    void theWindowIsNeverNarrowerThanItsMenus();
    void theWindowShrinksWithItsColumns();
    void theHeightStaysAsItWas();
    void rowsAreAsHighAsTheirText();
    void theTallestCellSetsItsRowsHeight();
    void theNewestRowIsInView();
    void aHighlightedNewestRowIsInViewToo();
    void theNewestRowIsSelected();
    void aHighlightedNewestRowIsNotCovered();
    void theArrowKeysGoOnFromTheUncoveredRow();
    void anOlderHighlightedRowDoesNotMatter();
    void aHighlightedRowIsYellowWithBlackText();
    void otherRowsHaveNoColoursOfTheirOwn();
    void updatesAreSuspendedWhileRowsComeAndGo();
    void aBatchIsPaintedWhenItIsWhole();
    void theReceiverIsRecordedWithTheRowsLeft();
    void aBatchWithoutRowsRecordsNoReceiver();
    void receiverThenStationDisplayThenStatusBar();

private:
    std::unique_ptr<DisplayStation> station;
    QTableWidget *table = nullptr;

    void append(const char *label, const QStringList &lines)
    {
        (*station)->appendDecodes(QString::fromLatin1(label), parseDecodeLines(lines));
    }
    bool isAtTheBottom() const
    {
        const QScrollBar *bar = table->verticalScrollBar();
        return bar->maximum() > 0 && bar->value() == bar->maximum();
    }
    int widthOfMenus() const { return (*station)->menuBar()->sizeHint().width() + 20; }
};

void DecodeTableLookTest::init()
{
    station = std::make_unique<DisplayStation>(QStringList{QStringLiteral("W1AW")});
    table = decodeTableOf(**station);
}

void DecodeTableLookTest::cleanup()
{
    station.reset();
}

void DecodeTableLookTest::theWindowIsAsWideAsAWideTable()
{
    append("10:15:30", {jt9Line(longMessage)});
    QVERIFY(widthThatFits(*table) > widthOfMenus());
    QCOMPARE((*station)->width(), widthThatFits(*table));
    QCOMPARE((*station)->minimumWidth(), widthThatFits(*table));
    QTest::qWait(0);
    QCOMPARE((*station)->width(), widthThatFits(*table));
    QVERIFY(table->columnWidth(4) >= table->fontMetrics().horizontalAdvance(longMessage.trimmed()));
}

void DecodeTableLookTest::theWindowIsNeverNarrowerThanItsMenus()
{
    (*station)->menuBar()->addMenu(QStringLiteral("Wide ").repeated(20));
    append("10:15:30", {jt9Line(QStringLiteral("CQ"))});
    QVERIFY(widthThatFits(*table) < widthOfMenus());
    QCOMPARE((*station)->minimumWidth(), widthOfMenus());
    QCOMPARE((*station)->width(), widthOfMenus());
}

void DecodeTableLookTest::theWindowShrinksWithItsColumns()
{
    append("10:15:00", {jt9Line(longMessage)});
    const int wide = (*station)->width();
    for (const char *label : {"10:15:15", "10:15:30"}) {
        append(label, jt9Lines(1));
    }
    QCOMPARE((*station)->width(), wide);
    append("10:15:45", jt9Lines(1));
    QVERIFY((*station)->width() < wide);
    QCOMPARE((*station)->minimumWidth(), qMax(widthThatFits(*table), widthOfMenus()));
    QCOMPARE((*station)->width(), (*station)->minimumWidth());
}

void DecodeTableLookTest::theHeightStaysAsItWas()
{
    (*station)->resize((*station)->width(), 411);
    append("10:15:30", jt9Lines(40));
    QCOMPARE((*station)->height(), 411);
    QCOMPARE((*station)->minimumHeight(), 175);
}

void DecodeTableLookTest::rowsAreAsHighAsTheirText()
{
    append("10:15:30", jt9Lines(30));
    for (int row = 0; row < 30; ++row) {
        QVERIFY(table->rowHeight(row) >= table->fontMetrics().height());
    }
    QList<int> heights;
    for (int row = 0; row < 30; ++row) {
        heights.append(table->rowHeight(row));
    }
    table->resizeRowsToContents();
    for (int row = 0; row < 30; ++row) {
        QCOMPARE(heights.at(row), table->rowHeight(row));
    }
}

void DecodeTableLookTest::theTallestCellSetsItsRowsHeight()
{
    append("10:15:30", jt9Lines(3));
    QFont large = table->font();
    large.setPixelSize(3 * table->fontMetrics().height());
    table->item(1, 4)->setFont(large);
    append("10:15:45", jt9Lines(1));
    QVERIFY(table->rowHeight(1) >= QFontMetrics(large).height());
    QVERIFY(table->rowHeight(0) < QFontMetrics(large).height());
}

void DecodeTableLookTest::theNewestRowIsInView()
{
    append("10:15:30", jt9Lines(60));
    QVERIFY(isAtTheBottom());
    table->scrollToTop();
    append("10:15:45", jt9Lines(1));
    QVERIFY(isAtTheBottom());
    QTest::qWait(0); // and after all posted events
    QVERIFY(isAtTheBottom());
    const QRect newest = table->visualItemRect(table->item(60, 0));
    QVERIFY(table->viewport()->rect().contains(newest.center()));
}

// Then no row is selected; a selection alone would scroll it into view.
void DecodeTableLookTest::aHighlightedNewestRowIsInViewToo()
{
    append("10:15:30", jt9Lines(60));
    table->scrollToTop();
    append("10:15:45", {jt9Line(QStringLiteral("CQ W1AW FN31"))});
    QVERIFY(table->selectedItems().isEmpty());
    QVERIFY(isAtTheBottom());
    QTest::qWait(0);
    QVERIFY(isAtTheBottom());
}

void DecodeTableLookTest::theNewestRowIsSelected()
{
    append("10:15:30", jt9Lines(3));
    append("10:15:45", jt9Lines(2));
    QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(table->selectionModel()->selectedRows().first().row(), 4);
    QCOMPARE(table->currentRow(), 4);
}

void DecodeTableLookTest::aHighlightedNewestRowIsNotCovered()
{
    append("10:15:30", jt9Lines(3));
    QVERIFY(!table->selectedItems().isEmpty());
    append("10:15:45",
           {jt9Line(QStringLiteral("CQ K1ABC FN42")), jt9Line(QStringLiteral("K1ABC w1aw R-05"))});
    QVERIFY(table->selectedItems().isEmpty());
}

// The selection is cleared, but the current row stays current.
void DecodeTableLookTest::theArrowKeysGoOnFromTheUncoveredRow()
{
    append("10:15:30", jt9Lines(3));
    append("10:15:45", {jt9Line(QStringLiteral("CQ W1AW FN31"))});
    QVERIFY(table->selectedItems().isEmpty());
    QCOMPARE(table->currentRow(), 2);
    QTest::keyClick(table, Qt::Key_Down);
    QCOMPARE(table->currentRow(), 3);
}

void DecodeTableLookTest::anOlderHighlightedRowDoesNotMatter()
{
    append("10:15:30",
           {jt9Line(QStringLiteral("CQ W1AW FN31")), jt9Line(QStringLiteral("CQ W1AW/P FN31"))});
    QCOMPARE(table->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(table->currentRow(), 1);
}

void DecodeTableLookTest::aHighlightedRowIsYellowWithBlackText()
{
    append("10:15:30", {jt9Line(QStringLiteral("CQ W1AW FN31"))});
    for (int column = 0; column < 5; ++column) {
        const QTableWidgetItem *item = table->item(0, column);
        QCOMPARE(item->background(), QBrush(QColor(255, 255, 0), Qt::SolidPattern));
        QCOMPARE(item->foreground(), QBrush(QColor(0, 0, 0), Qt::SolidPattern));
        QCOMPARE(item->flags(), QTableWidgetItem().flags());
        QVERIFY(!item->data(Qt::TextAlignmentRole).isValid());
        QVERIFY(!item->data(Qt::FontRole).isValid());
    }
}

void DecodeTableLookTest::otherRowsHaveNoColoursOfTheirOwn()
{
    append("10:15:30",
           {jt9Line(QStringLiteral("CQ W1AW FN31")), jt9Line(QStringLiteral("CQ K1ABC FN42"))});
    for (int column = 0; column < 5; ++column) {
        QVERIFY(!table->item(1, column)->data(Qt::BackgroundRole).isValid());
        QVERIFY(!table->item(1, column)->data(Qt::ForegroundRole).isValid());
    }
}

void DecodeTableLookTest::updatesAreSuspendedWhileRowsComeAndGo()
{
    int changes = 0;
    bool suspended = true;
    const auto note = [&] {
        ++changes;
        suspended = suspended && !table->updatesEnabled();
    };
    connect(table->model(), &QAbstractItemModel::rowsInserted, table, note);
    connect(table->model(), &QAbstractItemModel::rowsRemoved, table, note);
    for (const char *label : {"10:15:00", "10:15:15", "10:15:30", "10:15:45"}) {
        append(label, jt9Lines(2));
    }
    QVERIFY(changes >= 9); // eight new rows, and one removal for the oldest period
    QVERIFY(suspended);
    QVERIFY(table->updatesEnabled());
    changes = 0;
    pressClear(**station);
    QVERIFY(changes > 0);
    QVERIFY(suspended);
    QVERIFY(table->updatesEnabled());
}

// Painted once when it is complete, and once more by Qt for the resized rows and columns.
void DecodeTableLookTest::aBatchIsPaintedWhenItIsWhole()
{
    append("10:15:15", jt9Lines(40));
    append("10:15:30", jt9Lines(40));
    QTest::qWait(100); // until all of that is painted
    const PaintCount paints(table->viewport());
    append("10:15:45", jt9Lines(40));
    QCOMPARE(paints.count, 0);
    QTRY_VERIFY(paints.count > 0);
    QTest::qWait(100);
    QVERIFY(paints.count <= 2);
}

void DecodeTableLookTest::theReceiverIsRecordedWithTheRowsLeft()
{
    setRemovedReceivers({QStringLiteral("receiver.test:8073")});
    for (const char *label : {"10:15:00", "10:15:15", "10:15:30"}) {
        append(label, jt9Lines(2));
    }
    QVERIFY(goodReceivers().isEmpty());
    setRemovedReceivers({});
    append("10:15:45", jt9Lines(1));
    QCOMPARE(goodReceivers().size(), 1);
    const QJsonObject receiver = goodReceivers().first().toObject();
    QCOMPARE(receiver.value(QStringLiteral("LastDecodeCount")).toInt(), 5);
    QCOMPARE(receiver.value(QStringLiteral("Host")).toString(), QStringLiteral("receiver.test"));
}

void DecodeTableLookTest::aBatchWithoutRowsRecordsNoReceiver()
{
    append("10:15:30", {});
    append("10:15:30", {QStringLiteral("101530 -12 0.3 1234 ~")});
    append("", jt9Lines(2));
    QVERIFY(goodReceivers().isEmpty());
}

void DecodeTableLookTest::receiverThenStationDisplayThenStatusBar()
{
    (*station)->startStatusSession();
    choose(**station,
           {QStringLiteral("Settings"), QStringLiteral("View"), QStringLiteral("Station Display")});
    auto *dialog = openDialog(QStringLiteral("PELQ Kiwi Outpost Station Display"));
    QStringList seenByTheStationDisplay;
    connect(dialog->findChild<QTableWidget *>()->model(), &QAbstractItemModel::rowsInserted, this,
            [&] {
                seenByTheStationDisplay =
                    QStringList{QString::number(goodReceivers().size()),
                                summaryLine(**station).section(QLatin1Char(' '), -1)};
            });
    append("10:15:30", jt9Lines(2));
    QCOMPARE(seenByTheStationDisplay, (QStringList{QStringLiteral("1"), QStringLiteral("0")}));
    QVERIFY(summaryLine(**station).endsWith(QStringLiteral("TDecodes 2")));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::DecodeTableLookTest)
#include "decodetablelook_test.moc"
