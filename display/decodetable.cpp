#include "display/decodetable.h"

#include "decode/ft8decode.h"
#include "display/highlightcalls.h"
#include "display/tabletexts.h"

#include <QHeaderView>
#include <QScrollBar>
#include <utility>

namespace outpost
{

namespace
{

void setSectionResizeMode(QTableWidget *table, QHeaderView::ResizeMode mode)
{
    table->verticalHeader()->setSectionResizeMode(mode);
    table->horizontalHeader()->setSectionResizeMode(mode);
}

// Sections that resize to their contents would measure every cell again after each step of a batch.
// With fixed sections, fitToContents() measures them once.
void holdSections(QTableWidget *table)
{
    setSectionResizeMode(table, QHeaderView::Fixed);
}

// Call when all sections have their sizes.
void releaseSections(QTableWidget *table)
{
    setSectionResizeMode(table, QHeaderView::ResizeToContents);
    for (QHeaderView *header : {table->verticalHeader(), table->horizontalHeader()}) {
        header->resizeSections(QHeaderView::Fixed); // cancels the resize that was just posted
    }
}

void setColour(QTableWidgetItem *item, int role, const QVariant &brush)
{
    if (item->data(role) != brush) { // every change of an item is costly in the view
        item->setData(role, brush);
    }
}

} // namespace

DecodeTable::DecodeTable(QWidget *parent, std::function<void(int)> onWidth)
    : DecodeView(parent), onWidthChanged(std::move(onWidth))
{
    setAccessibleName(QStringLiteral("Decodes"));
    setColumnCount(DecodeColumnCount);
    setHorizontalHeaderLabels(decodeHeaders());
    showLatestPeriodCount(0);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    verticalHeader()->hide();
    setSectionResizeMode(this, QHeaderView::ResizeToContents);
}

int DecodeTable::append(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    setUpdatesEnabled(false);
    holdSections(this);
    setSortingEnabled(false);
    setColumnCount(DecodeColumnCount);
    setHorizontalHeaderLabels(decodeHeaders());
    for (const Ft8Decode &decode : decodes) {
        appendRow(periodLabel, decode);
    }
    dropOldPeriods();
    const int latestCount = latestPeriodCount(columnTexts(*this, TimeColumn));
    showLatestPeriodCount(latestCount);
    fitToContents();
    show();
    setUpdatesEnabled(true);
    viewport()->update();
    showNewestRow();
    releaseSections(this);
    return latestCount;
}

void DecodeTable::appendRow(const QString &periodLabel, const Ft8Decode &decode)
{
    const std::optional<DecodeCells> cells = decodeCells(periodLabel, decode);
    if (!cells) {
        return;
    }
    const int row = rowCount();
    insertRow(row);
    for (int column = 0; column < DecodeColumnCount; ++column) {
        setItem(row, column, new QTableWidgetItem(cells->at(static_cast<size_t>(column))));
    }
    colourRow(row);
}

void DecodeTable::dropOldPeriods()
{
    const QStringList labels = columnTexts(*this, TimeColumn);
    const QStringList kept = keptPeriodLabels(labels);
    const auto stays = [&](int row) { return kept.contains(labels.at(row).trimmed()); };
    int end = rowCount(); // end of the rows still to check
    while (end > 0) {
        int begin = end; // first of adjacent rows, which are removed together
        while (begin > 0 && !stays(begin - 1)) {
            --begin;
        }
        if (begin < end) {
            model()->removeRows(begin, end - begin);
        }
        end = begin - 1; // the row above them stays
    }
}

void DecodeTable::showLatestPeriodCount(int count)
{
    setHorizontalHeaderItem(MessageColumn, new QTableWidgetItem(messageHeader(count)));
}

void DecodeTable::fitToContents()
{
    resizeColumnsToContents();
    resizeRowsToContents();
    int wanted = 2 * frameWidth() + verticalScrollBar()->sizeHint().width() + 10;
    for (int column = 0; column < DecodeColumnCount; ++column) {
        wanted += columnWidth(column);
    }
    onWidthChanged(wanted);
}

void DecodeTable::showNewestRow()
{
    const int row = rowCount() - 1;
    if (row < 0) {
        return;
    }
    scrollToBottom();
    if (isHighlighted(row)) {
        clearSelection(); // a selection would hide the yellow background
    } else {
        selectRow(row);
    }
}

bool DecodeTable::isHighlighted(int row) const
{
    return containsCall(cellText(*this, row, MessageColumn), highlightedCalls);
}

void DecodeTable::colourRow(int row)
{
    const bool highlighted = isHighlighted(row);
    const QVariant background = highlighted ? QBrush(Qt::yellow) : QVariant();
    const QVariant text = highlighted ? QBrush(Qt::black) : QVariant();
    for (int column = 0; column < columnCount(); ++column) {
        if (QTableWidgetItem *cell = item(row, column)) {
            setColour(cell, Qt::BackgroundRole, background);
            setColour(cell, Qt::ForegroundRole, text);
        }
    }
}

void DecodeTable::highlight(const QStringList &calls)
{
    highlightedCalls = calls;
    setUpdatesEnabled(false);
    for (int row = 0; row < rowCount(); ++row) {
        colourRow(row);
    }
    if (currentRow() >= 0 && isHighlighted(currentRow())) {
        clearSelection();
    }
    setUpdatesEnabled(true);
    viewport()->update();
}

void DecodeTable::removeAll()
{
    setUpdatesEnabled(false);
    setRowCount(0);
    showLatestPeriodCount(0);
    clearSelection();
    setUpdatesEnabled(true);
    viewport()->update();
}

QVector<DecodeCells> DecodeTable::rows() const
{
    QVector<DecodeCells> all(rowCount());
    for (int row = 0; row < all.size(); ++row) {
        int column = 0;
        for (QString &text : all[row]) {
            text = cellText(*this, row, column++);
        }
    }
    return all;
}

} // namespace outpost
