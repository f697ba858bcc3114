#include "decode/ft8decode.h"
#include "display/decodetable.h"
#include "displaystation.h"
#include "tests/fixture/operator.h"

#include <QtTest>
#include <QtWidgets>

namespace outpost
{

namespace
{

QString messageHeaderOf(const QTableWidget &table)
{
    return table.horizontalHeaderItem(4)->text();
}

QStringList labelsOf(const QTableWidget &table)
{
    QStringList labels;
    for (const QStringList &row : allRows(table)) {
        labels.append(row.first());
    }
    return labels;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

} // namespace

class DecodeTableTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aNewTableHasFiveColumnsAndNoRows();
    void itIsReadByWholeRows();
    void itsSectionsFollowTheirContents();
    void nothingInItCanBeEdited();
    void showsTheTokensOfALine_data();
    void showsTheTokensOfALine();
    void aLineWithFiveTokensOrFewerAddsNoRow();
    void cellsAreOrdinaryItems();
    void onlyTheLastThreePeriodsStay_data();
    void onlyTheLastThreePeriodsStay();
    void theHeaderCountsTheNewestPeriod_data();
    void theHeaderCountsTheNewestPeriod();
    void rowsWithoutALabelGoAtOnce_data();
    void rowsWithoutALabelGoAtOnce();
    void aRowThatLostItsTimeGoesWithTheNextBatch();
    void anEmptyBatchCountsAndSizesAgain();
    void sortingStaysOffAndTheColumnsFive();
    void everyBatchAddsTheNewestPeriodToTheSession();
    void aBatchThatLeavesNoRowsAddsNothing();
    void withoutASessionNothingIsCounted();
    void clearEmptiesTheTable();
    void clearTouchesNothingElse();
    void theNextBatchAfterClearCountsItsOwnRows();
    void disconnectingKeepsTheRows();

private:
    std::unique_ptr<DisplayStation> station;
    QTableWidget *table = nullptr;

    void append(const QString &label, const QStringList &lines)
    {
        (*station)->appendDecodes(label, parseDecodeLines(lines));
    }
    void clear() { pressClear(**station); }
};

void DecodeTableTest::init()
{
    station = std::make_unique<DisplayStation>();
    table = decodeTableOf(**station);
}

void DecodeTableTest::cleanup()
{
    station.reset();
}

void DecodeTableTest::aNewTableHasFiveColumnsAndNoRows()
{
    QVERIFY(table);
    QCOMPARE(table->rowCount(), 0);
    QStringList headers;
    for (int column = 0; column < table->columnCount(); ++column) {
        headers.append(table->horizontalHeaderItem(column)->text());
    }
    QCOMPARE(headers, words("Time,SNR,DT,DF,Message (0)"));
    QVERIFY(table->isVisible());
    QCOMPARE(table->window(), station->window.get());
}

void DecodeTableTest::itIsReadByWholeRows()
{
    QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
    QVERIFY(!table->isSortingEnabled());
    QVERIFY(table->verticalHeader()->isHidden());
    QCOMPARE(table->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(table->accessibleName(), QStringLiteral("Decodes"));
}

void DecodeTableTest::itsSectionsFollowTheirContents()
{
    for (int round = 0; round < 2; ++round) { // new, and after a batch
        for (int column = 0; column < 5; ++column) {
            QCOMPARE(table->horizontalHeader()->sectionResizeMode(column),
                     QHeaderView::ResizeToContents);
        }
        append(QStringLiteral("10:15:30"), jt9Lines(1));
        QCOMPARE(table->verticalHeader()->sectionResizeMode(0), QHeaderView::ResizeToContents);
    }
}

void DecodeTableTest::nothingInItCanBeEdited()
{
    append(QStringLiteral("10:15:30"), jt9Lines(1));
    QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    const QPoint cell = table->visualItemRect(table->item(0, 4)).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, cell);
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClick(table, Qt::Key_X);
    QVERIFY(!table->viewport()->findChild<QLineEdit *>());
}

void DecodeTableTest::showsTheTokensOfALine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("cells");

    const auto row = [](const char *name, const char *line, const char *cells) {
        QTest::newRow(name) << QString::fromLatin1(line) << QString::fromLatin1(cells);
    };
    row("plain", "101530 -12 0.3 1234 ~ CQ K1ABC FN42", "10:15:30|-12|0.3|1234|CQ K1ABC FN42");
    row("the label, not the printed time", "235959 1 2 3 ~ CQ", "10:15:30|1|2|3|CQ");
    row("numbers as printed", "101530 +03 -0.0 0042 ~ CQ", "10:15:30|+03|-0.0|0042|CQ");
    row("blanks collapse", "\t101530  -1\t0.3   7 ~  CQ   K1ABC \t FN42 \r\n",
        "10:15:30|-1|0.3|7|CQ K1ABC FN42");
    row("the mark is not checked", "101530 -1 0.3 7 # CQ", "10:15:30|-1|0.3|7|CQ");
    row("one word of message", "a b c d e f", "10:15:30|b|c|d|f");
}

void DecodeTableTest::showsTheTokensOfALine()
{
    QFETCH(QString, line);
    QFETCH(QString, cells);
    append(QStringLiteral("10:15:30"), {line});
    QCOMPARE(allRows(*table), QList<QStringList>{cells.split(QLatin1Char('|'))});
}

void DecodeTableTest::aLineWithFiveTokensOrFewerAddsNoRow()
{
    append(QStringLiteral("10:15:30"),
           {QStringLiteral("101530 -12 0.3 1234 ~"), QString(),
            QStringLiteral("<DecodeFinished> 0 17 0"), jt9Line(QStringLiteral("CQ")),
            QStringLiteral("1 2 3 4 5  ")});
    QCOMPARE(table->rowCount(), 1);
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (1)"));
}

void DecodeTableTest::cellsAreOrdinaryItems()
{
    append(QStringLiteral("10:15:30"), jt9Lines(1));
    for (int column = 0; column < 5; ++column) {
        const QTableWidgetItem *item = table->item(0, column);
        QCOMPARE(item->flags(), QTableWidgetItem().flags());
        for (int role = Qt::DecorationRole; role < Qt::UserRole + 10; ++role) {
            QVERIFY2(role == Qt::EditRole || !item->data(role).isValid(),
                     QByteArray::number(role).constData());
        }
    }
}

void DecodeTableTest::onlyTheLastThreePeriodsStay_data()
{
    QTest::addColumn<QStringList>("batches");
    QTest::addColumn<QStringList>("labelsLeft");

    const auto row = [](const char *name, const char *batches, const char *labelsLeft) {
        QTest::newRow(name) << words(batches) << words(labelsLeft);
    };
    row("three", "10:00:00,10:00:15,10:00:30", "10:00:00,10:00:15,10:00:30");
    row("four", "10:00:00,10:00:15,10:00:30,10:00:45", "10:00:15,10:00:30,10:00:45");
    row("a late batch of an older period is the newest", "10:00:00,10:00:15,10:00:30,09:59:45",
        "10:00:15,10:00:30,09:59:45");
    row("a second batch of a period is no new period", "10:00:00,10:00:15,10:00:30,10:00:30",
        "10:00:00,10:00:15,10:00:30,10:00:30");
    row("a period keeps the place of its first row", "A,B,C,A,D", "B,C,D");
    row("blanks around a label do not matter", "A, A,B,C", "A, A,B,C");
    row("letter case does", "A,a,B,C", "a,B,C");
}

void DecodeTableTest::onlyTheLastThreePeriodsStay()
{
    QFETCH(QStringList, batches);
    QFETCH(QStringList, labelsLeft);
    for (const QString &label : batches) {
        append(label, jt9Lines(1));
    }
    QCOMPARE(labelsOf(*table), labelsLeft);
}

void DecodeTableTest::theHeaderCountsTheNewestPeriod_data()
{
    QTest::addColumn<QStringList>("batches");
    QTest::addColumn<int>("count");

    QTest::newRow("one") << words("A") << 2;
    QTest::newRow("four periods") << words("A,B,C,D") << 2;
    QTest::newRow("two batches") << words("A,B,B") << 4;
    QTest::newRow("a late batch counts the earlier rows too") << words("A,B,C,A") << 4;
    QTest::newRow("blanks around the label") << words("A, A ") << 4;
}

void DecodeTableTest::theHeaderCountsTheNewestPeriod()
{
    QFETCH(QStringList, batches);
    QFETCH(int, count);
    for (const QString &label : batches) {
        append(label, jt9Lines(2));
    }
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (%1)").arg(count));
}

void DecodeTableTest::rowsWithoutALabelGoAtOnce_data()
{
    QTest::addColumn<QString>("label");

    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << QStringLiteral(" \t");
}

void DecodeTableTest::rowsWithoutALabelGoAtOnce()
{
    QFETCH(QString, label);
    append(label, jt9Lines(2));
    QCOMPARE(table->rowCount(), 0);
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (0)"));
    append(QStringLiteral("10:15:30"), jt9Lines(1));
    append(label, jt9Lines(2));
    QCOMPARE(labelsOf(*table), words("10:15:30"));
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (1)"));
}

void DecodeTableTest::aRowThatLostItsTimeGoesWithTheNextBatch()
{
    append(QStringLiteral("10:15:30"), jt9Lines(3));
    delete table->takeItem(1, 0);
    static_cast<DecodeTable *>(table)->highlight({});
    append(QStringLiteral("10:15:30"), {});
    QCOMPARE(table->rowCount(), 2);
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (2)"));
}

void DecodeTableTest::anEmptyBatchCountsAndSizesAgain()
{
    (*station)->startStatusSession();
    append(QStringLiteral("10:15:30"), jt9Lines(2));
    table->item(0, 0)->setText(QStringLiteral("10:15:15"));
    const int width = (*station)->width();
    (*station)->resize(width + 100, 300);
    append(QStringLiteral("10:15:45"), {});
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (1)"));
    QCOMPARE((*station)->size(), QSize(width, 300));
    QVERIFY(summaryLine(**station).endsWith(QStringLiteral("TDecodes 3")));
}

void DecodeTableTest::sortingStaysOffAndTheColumnsFive()
{
    table->setSortingEnabled(true);
    table->setColumnCount(7);
    table->horizontalHeaderItem(1)->setText(QString());
    table->hide();
    append(QStringLiteral("10:15:30"), jt9Lines(1));
    QVERIFY(!table->isSortingEnabled());
    QCOMPARE(table->columnCount(), 5);
    QCOMPARE(table->horizontalHeaderItem(1)->text(), QStringLiteral("SNR"));
    QVERIFY(table->isVisible());
}

void DecodeTableTest::everyBatchAddsTheNewestPeriodToTheSession()
{
    (*station)->startStatusSession();
    const auto total = [this] { return summaryLine(**station).section(QLatin1Char(' '), -1); };
    append(QStringLiteral("10:15:30"), jt9Lines(2));
    QCOMPARE(total(), QStringLiteral("2"));
    append(QStringLiteral("10:15:30"), jt9Lines(1)); // three rows of this period by now
    QCOMPARE(total(), QStringLiteral("5"));
    append(QStringLiteral("10:15:45"), jt9Lines(4));
    QCOMPARE(total(), QStringLiteral("9"));
}

void DecodeTableTest::aBatchThatLeavesNoRowsAddsNothing()
{
    (*station)->startStatusSession();
    append(QStringLiteral("10:15:30"), {});
    QVERIFY(summaryLine(**station).endsWith(QStringLiteral("TDecodes 0")));
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (0)"));
}

void DecodeTableTest::withoutASessionNothingIsCounted()
{
    append(QStringLiteral("10:15:30"), jt9Lines(2));
    QVERIFY(summaryLine(**station).endsWith(QStringLiteral("TDecodes 0")));
    (*station)->startStatusSession();
    append(QStringLiteral("10:15:30"), jt9Lines(1));
    (*station)->finishStatusSession();
    append(QStringLiteral("10:15:30"), jt9Lines(1));
    QVERIFY(summaryLine(**station).endsWith(QStringLiteral("TDecodes 0")));
}

void DecodeTableTest::clearEmptiesTheTable()
{
    append(QStringLiteral("10:15:30"), jt9Lines(5));
    clear();
    QCOMPARE(table->rowCount(), 0);
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (0)"));
    QVERIFY(table->selectedItems().isEmpty());
    QVERIFY(table->updatesEnabled());
}

void DecodeTableTest::clearTouchesNothingElse()
{
    (*station)->startStatusSession();
    choose(**station, words("Settings,View,Station Display"));
    auto *shown = openDialog(QStringLiteral("PELQ Kiwi Outpost Station Display"));
    append(QStringLiteral("10:15:30"), jt9Lines(5));
    auto *summary = (*station)->findChild<QStatusBar *>()->findChild<QLabel *>();
    summary->setText(QStringLiteral("left as it is"));
    const QSize size = (*station)->size();
    clear();
    QCOMPARE(shown->findChild<QTableWidget *>()->rowCount(), 5);
    QVERIFY(shown->findChild<QLabel *>()->text().contains(QStringLiteral("decodes: 5")));
    QCOMPARE(summary->text(), QStringLiteral("left as it is"));
    QCOMPARE((*station)->size(), size);
    append(QStringLiteral("10:15:45"), {});
    QVERIFY(summary->text().endsWith(QStringLiteral("TDecodes 5")));
}

void DecodeTableTest::theNextBatchAfterClearCountsItsOwnRows()
{
    append(QStringLiteral("10:15:30"), jt9Lines(5));
    clear();
    append(QStringLiteral("10:15:30"), jt9Lines(2));
    QCOMPARE(table->rowCount(), 2);
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (2)"));
}

void DecodeTableTest::disconnectingKeepsTheRows()
{
    append(QStringLiteral("10:15:30"), jt9Lines(5));
    choose(**station, words("Settings,Disconnect Receiver"));
    QCOMPARE(table->rowCount(), 5);
    QCOMPARE(messageHeaderOf(*table), QStringLiteral("Message (5)"));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::DecodeTableTest)
#include "decodetable_test.moc"
