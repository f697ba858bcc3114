#include "display/decodeview.h"

#include <QAbstractItemDelegate>
#include <QEvent>
#include <QHeaderView>

namespace outpost
{

namespace
{
// Up to this many rows, Qt measures all cells. Three periods of a crowded band have fewer.
constexpr int maxMeasuredRows = 300;

bool isPlain(const QTableWidgetItem &item)
{
    return !item.data(Qt::FontRole).isValid() && isPlainText(item.text());
}
} // namespace

int DecodeView::sizeHintForRow(int row) const
{
    if (!isPlainRow(row)) {
        return QTableWidget::sizeHintForRow(row);
    }
    if (plainRowHeight == 0) {
        plainRowHeight = measured(row, 0).height();
    }
    return plainRowHeight;
}

// In a longer table, Qt measures only the widest of the plain cells.
int DecodeView::sizeHintForColumn(int column) const
{
    if (rowCount() <= maxMeasuredRows) {
        return QTableWidget::sizeHintForColumn(column);
    }
    if (!plain) {
        plain.emplace(font());
    }
    int width = 0;
    int widestRow = -1;
    double widest = -1;
    for (int row = 0; row < rowCount(); ++row) {
        const QTableWidgetItem *cell = item(row, column);
        if (cell == nullptr || !isPlain(*cell)) {
            width = qMax(width, measured(row, column).width());
        } else if (const double plainWidth = plain->of(cell->text()); plainWidth > widest) {
            widest = plainWidth;
            widestRow = row;
        }
    }
    return widestRow < 0 ? width : qMax(width, measured(widestRow, column).width());
}

void DecodeView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        plainRowHeight = 0;
        plain.reset();
    }
    QTableWidget::changeEvent(event);
}

bool DecodeView::isPlainRow(int row) const
{
    for (int column = 0; column < columnCount(); ++column) {
        const QTableWidgetItem *cell = item(row, column);
        if (cell == nullptr || cell->text().isEmpty() || !isPlain(*cell)) {
            return false;
        }
    }
    return columnCount() > 0;
}

QSize DecodeView::measured(int row, int column) const
{
    const int grid = showGrid() ? 1 : 0;
    const QSize cell = itemDelegate()->sizeHint(viewOptions(), model()->index(row, column));
    return cell + QSize(grid, grid);
}

} // namespace outpost
