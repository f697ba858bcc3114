#include "app/mainwindow.h"
#include "decode/ft8decode.h"
#include "display/decoderow.h"
#include "display/decodeview.h"
#include "display/tabletexts.h"

#include <QHeaderView>
#include <QMenuBar>
#include <QScrollBar>
#include <QTableWidget>

namespace outpost
{

namespace
{

void setSectionResizeMode(QTableWidget *table, QHeaderView::ResizeMode mode)
{
    table->verticalHeader()->setSectionResizeMode(mode);
    table->horizontalHeader()->setSectionResizeMode(mode);
}

// Sections that follow their contents measure every cell again after each step of a batch. Held
// still, they are measured once, by fitWindowToTable().
void holdSections(QTableWidget *table)
{
    setSectionResizeMode(table, QHeaderView::Fixed);
}

// To be called when all sections have their sizes.
void releaseSections(QTableWidget *table)
{
    setSectionResizeMode(table, QHeaderView::ResizeToContents);
    for (QHeaderView *header : {table->verticalHeader(), table->horizontalHeader()}) {
        header->resizeSections(QHeaderView::Fixed); // calls off the measuring just posted
    }
}

} // namespace

void MainWindow::buildDecodeTable()
{
    decodeTable = new DecodeView(this);
    decodeTable->setAccessibleName(QStringLiteral("Decodes"));
    decodeTable->setColumnCount(DecodeColumnCount);
    decodeTable->setHorizontalHeaderLabels(decodeHeaders());
    showLatestPeriodCount(0);
    decodeTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    decodeTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    decodeTable->setSelectionMode(QAbstractItemView::SingleSelection);
    decodeTable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    decodeTable->verticalHeader()->hide();
    setSectionResizeMode(decodeTable, QHeaderView::ResizeToContents);
    setCentralWidget(decodeTable);
}

void MainWindow::appendDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    recordGoodReceiver(decodeTable ? showDecodes(periodLabel, decodes) : 0);
    refreshStationDisplay();
    refreshStatusBar();
}

int MainWindow::showDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    decodeTable->setUpdatesEnabled(false);
    holdSections(decodeTable);
    decodeTable->setSortingEnabled(false);
    decodeTable->setColumnCount(DecodeColumnCount);
    decodeTable->setHorizontalHeaderLabels(decodeHeaders());
    for (const Ft8Decode &decode : decodes) {
        appendDecodeRow(periodLabel, decode);
    }
    dropOldPeriods();
    const int latestCount = latestPeriodCount(columnTexts(*decodeTable, TimeColumn));
    showLatestPeriodCount(latestCount);
    addSessionDecodes(latestCount);
    fitWindowToTable();
    decodeTable->show();
    decodeTable->setUpdatesEnabled(true);
    decodeTable->viewport()->update();
    showNewestRow();
    releaseSections(decodeTable);
    return decodeTable->rowCount();
}

void MainWindow::appendDecodeRow(const QString &periodLabel, const Ft8Decode &decode)
{
    const std::optional<DecodeCells> cells = decodeCells(periodLabel, decode);
    if (!cells) {
        return;
    }
    const int row = decodeTable->rowCount();
    decodeTable->insertRow(row);
    for (int column = 0; column < DecodeColumnCount; ++column) {
        decodeTable->setItem(row, column,
                             new QTableWidgetItem(cells->at(static_cast<size_t>(column))));
    }
    applyRowHighlight(row);
}

void MainWindow::dropOldPeriods()
{
    const QStringList labels = columnTexts(*decodeTable, TimeColumn);
    const QStringList kept = keptPeriodLabels(labels);
    const auto goes = [&](int row) { return !kept.contains(labels.at(row).trimmed()); };
    for (int row = decodeTable->rowCount() - 1; row >= 0; --row) {
        int count = 0; // of neighbours, which go at once
        while (row >= count && goes(row - count)) {
            ++count;
        }
        if (count > 0) {
            decodeTable->model()->removeRows(row - count + 1, count);
        }
        row -= count;
    }
}

void MainWindow::showLatestPeriodCount(int count)
{
    decodeTable->setHorizontalHeaderItem(MessageColumn, new QTableWidgetItem(messageHeader(count)));
}

// The window follows the table's width both ways and keeps its height.
void MainWindow::fitWindowToTable()
{
    decodeTable->resizeColumnsToContents();
    decodeTable->resizeRowsToContents();
    int wanted =
        2 * decodeTable->frameWidth() + decodeTable->verticalScrollBar()->sizeHint().width() + 10;
    for (int column = 0; column < DecodeColumnCount; ++column) {
        wanted += decodeTable->columnWidth(column);
    }
    setMinimumWidth(qMax(wanted, menuBar()->sizeHint().width() + 20));
    resize(wanted, height());
}

void MainWindow::showNewestRow()
{
    const int row = decodeTable->rowCount() - 1;
    if (row < 0) {
        return;
    }
    decodeTable->scrollToBottom();
    if (rowIsHighlighted(row)) {
        decodeTable->clearSelection(); // it would cover the yellow
    } else {
        decodeTable->selectRow(row);
    }
}

bool MainWindow::rowIsHighlighted(int row) const
{
    return matchesHighlightedCall(cellText(*decodeTable, row, MessageColumn));
}

namespace
{

void setColour(QTableWidgetItem *item, int role, const QVariant &brush)
{
    if (item->data(role) != brush) { // every change of an item costs the view work
        item->setData(role, brush);
    }
}

} // namespace

void MainWindow::applyRowHighlight(int row)
{
    if (!decodeTable || row < 0 || row >= decodeTable->rowCount()) {
        return;
    }
    const bool highlighted = rowIsHighlighted(row);
    const QVariant background = highlighted ? QBrush(Qt::yellow) : QVariant();
    const QVariant text = highlighted ? QBrush(Qt::black) : QVariant();
    for (int column = 0; column < decodeTable->columnCount(); ++column) {
        if (QTableWidgetItem *item = decodeTable->item(row, column)) {
            setColour(item, Qt::BackgroundRole, background);
            setColour(item, Qt::ForegroundRole, text);
        }
    }
}

void MainWindow::reapplyHighlights()
{
    if (!decodeTable) {
        return;
    }
    decodeTable->setUpdatesEnabled(false);
    for (int row = 0; row < decodeTable->rowCount(); ++row) {
        applyRowHighlight(row);
    }
    if (decodeTable->currentRow() >= 0 && rowIsHighlighted(decodeTable->currentRow())) {
        decodeTable->clearSelection();
    }
    decodeTable->setUpdatesEnabled(true);
    decodeTable->viewport()->update();
}

void MainWindow::clearDecodes()
{
    if (!decodeTable) {
        return;
    }
    decodeTable->setUpdatesEnabled(false);
    decodeTable->setRowCount(0);
    showLatestPeriodCount(0);
    decodeTable->clearSelection();
    decodeTable->setUpdatesEnabled(true);
    decodeTable->viewport()->update();
}

} // namespace outpost
