#include "display/stationdisplay.h"

#include "base/smallscreen.h"
#include "display/decoderow.h"
#include "display/decodeview.h"
#include "display/stationtexts.h"

#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>
#include <utility>

namespace outpost
{

namespace
{

constexpr int maxVisibleRows = 10;

QTableWidget *newStationTable(QWidget *parent)
{
    auto *table = new DecodeView(parent);
    table->setColumnCount(DecodeColumnCount);
    table->setAccessibleName(QStringLiteral("Decodes"));
    table->setHorizontalHeaderLabels(decodeHeaders());
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(false);
    table->setWordWrap(false);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setTabKeyNavigation(false); // Tab moves on to the Close button
    return table;
}

void showRow(QTableWidget *table, int row, const DecodeCells &cells)
{
    int column = 0;
    for (const QString &cell : cells) {
        auto *item = new QTableWidgetItem(cell);
        item->setFlags(item->flags() & ~Qt::ItemIsEditable);
        table->setItem(row, column++, item);
    }
}

void showRows(QTableWidget *table, const QVector<DecodeCells> &decodes)
{
    table->setRowCount(decodes.size());
    for (int row = 0; row < decodes.size(); ++row) {
        showRow(table, row, decodes.at(row));
    }
}

void fitColumnsAndRows(QTableWidget *table)
{
    constexpr int narrowestMessage = 220;
    constexpr int widestMessage = 420;
    table->resizeColumnsToContents();
    table->setColumnWidth(
        MessageColumn, qBound(narrowestMessage, table->columnWidth(MessageColumn), widestMessage));
    table->resizeRowsToContents();
}

int heightOfVisibleRows(const QTableWidget &table)
{
    // height() is not the header's own before the table is laid out.
    int height = table.horizontalHeader()->sizeHint().height() + 2 * table.frameWidth() + 2;
    if (table.rowCount() == 0) {
        return height + table.verticalHeader()->defaultSectionSize();
    }
    for (int row = 0; row < qMin(table.rowCount(), maxVisibleRows); ++row) {
        height += table.rowHeight(row);
    }
    return height;
}

int widthOfColumns(const QTableWidget &table)
{
    int width = 2 * table.frameWidth() + 2;
    for (int column = 0; column < DecodeColumnCount; ++column) {
        width += table.columnWidth(column);
    }
    if (table.rowCount() > maxVisibleRows) {
        width += table.verticalScrollBar()->sizeHint().width();
    }
    return width;
}

void sizeStationTable(QTableWidget *table)
{
    fitColumnsAndRows(table);
    table->setFixedWidth(widthOfColumns(*table));
    table->setMinimumHeight(heightOfVisibleRows(*table));
    table->setMaximumHeight(QWIDGETSIZE_MAX);
    table->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

} // namespace

StationDisplay::StationDisplay(QWidget *parent, std::function<void()> onRefreshDue)
    : LiveDialog(parent, QStringLiteral("PELQ Kiwi Outpost Station Display"), 5000,
                 std::move(onRefreshDue)),
      label(addText())
{
    contents()->setSizeConstraint(QLayout::SetMinimumSize);
    addCloseBox();
    table = newStationTable(this); // after the Close button in Tab order
    contents()->insertWidget(1, table);
}

void StationDisplay::refresh(const StationState &station)
{
    const LatestPeriod latest = latestPeriod(columnTexts(station.decodes, TimeColumn),
                                             columnTexts(station.decodes, SnrColumn));
    label->setText(stationDisplayText(station.session, station.nowMs, latest,
                                      bridgeSummaryText(station.bridge)));
    table->setUpdatesEnabled(false);
    showRows(table, station.decodes);
    sizeStationTable(table);
    table->setUpdatesEnabled(true);
    if (table->rowCount() > 0) {
        table->scrollToBottom();
    }
    fitToContents();
}

void StationDisplay::fitToContents()
{
    if (scrollsToFitScreen(*this)) {
        return;
    }
    constexpr int sideMargins = 16;
    setFixedWidth(qMax(label->sizeHint().width(), table->width()) + sideMargins);
    if (sized) {
        return;
    }
    adjustSize();
    sized = true;
}

} // namespace outpost
