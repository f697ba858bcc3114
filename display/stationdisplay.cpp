#include "app/mainwindow.h"
#include "base/smallscreen.h"
#include "display/bridgetexts.h"
#include "display/decoderow.h"
#include "display/decodeview.h"
#include "display/livedialog.h"
#include "display/stationtexts.h"
#include "display/tabletexts.h"

#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace outpost
{

namespace
{

constexpr int mostVisibleRows = 10;

QTableWidget *buildStationTable(QWidget *parent)
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
    table->setTabKeyNavigation(false); // Tab leads on to the Close button
    return table;
}

} // namespace

void MainWindow::showStationDisplay()
{
    if (!stationDialog) {
        buildStationDisplay();
        refreshStationDisplay();
        stationTimer->start();
        stationDialog->show();
        return;
    }
    refreshStationDisplay();
    stationDialog->show();
    stationDialog->raise();
    stationDialog->activateWindow();
}

void MainWindow::buildStationDisplay()
{
    const LiveDialog live =
        buildLiveDialog(this, QStringLiteral("PELQ Kiwi Outpost Station Display"), 5000,
                        [this] { refreshStationDisplay(); });
    live.layout->setSizeConstraint(QLayout::SetMinimumSize);
    stationDialog = live.dialog;
    stationLabel = live.label;
    stationTimer = live.timer;
    stationTable = buildStationTable(live.dialog);
    live.layout->insertWidget(1, stationTable);
    connect(live.dialog, &QObject::destroyed, this, [this] {
        stationDialog = nullptr;
        stationLabel = nullptr;
        stationTable = nullptr;
        stationTimer = nullptr;
        stationSized = false;
    });
}

namespace
{

void copyRow(const QTableWidget &from, QTableWidget *to, int row)
{
    for (int column = 0; column < DecodeColumnCount; ++column) {
        auto *item = new QTableWidgetItem(cellText(from, row, column));
        item->setFlags(item->flags() & ~Qt::ItemIsEditable);
        to->setItem(row, column, item);
    }
}

void copyRows(const QTableWidget *from, QTableWidget *to)
{
    to->setRowCount(from ? from->rowCount() : 0);
    for (int row = 0; row < to->rowCount(); ++row) {
        copyRow(*from, to, row);
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
    // Not its height(): before the table is laid out that is not yet the header's own.
    int height = table.horizontalHeader()->sizeHint().height() + 2 * table.frameWidth() + 2;
    if (table.rowCount() == 0) {
        return height + table.verticalHeader()->defaultSectionSize();
    }
    for (int row = 0; row < qMin(table.rowCount(), mostVisibleRows); ++row) {
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
    if (table.rowCount() > mostVisibleRows) {
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

void MainWindow::refreshStationDisplay()
{
    if (!stationDialog || !stationLabel || !stationTable) {
        return;
    }
    stationLabel->setText(stationText());
    stationTable->setUpdatesEnabled(false);
    copyRows(decodeTable, stationTable);
    sizeStationTable(stationTable);
    stationTable->setUpdatesEnabled(true);
    if (stationTable->rowCount() > 0) {
        stationTable->scrollToBottom();
    }
    sizeStationDialog();
}

QString MainWindow::stationText() const
{
    LatestPeriod latest = latestPeriod({}, {});
    if (decodeTable) {
        latest = latestPeriod(columnTexts(*decodeTable, TimeColumn),
                              columnTexts(*decodeTable, SnrColumn));
    }
    return stationDisplayText(statusSession, nowMs(), latest, bridgeSummaryText(bridgeState()));
}

void MainWindow::sizeStationDialog()
{
    if (scrollsToFitScreen(*stationDialog)) {
        return;
    }
    constexpr int sideMargins = 16;
    stationDialog->setFixedWidth(qMax(stationLabel->sizeHint().width(), stationTable->width()) +
                                 sideMargins);
    if (stationSized) {
        return;
    }
    stationDialog->adjustSize();
    stationSized = true;
}

} // namespace outpost
