#include "display/decodeview.h"

#include <QAbstractItemDelegate>
#include <QEvent>
#include <QHeaderView>
#include <algorithm>

namespace outpost
{

namespace
{
// Rows that a column's width is measured by, from the visible ones on: more than three periods
// of a crowded band.
constexpr int measuredRows = 300;

// Printable ASCII in the table's font: as high as any other such text.
bool isPlain(const QTableWidgetItem &item)
{
    const QString text = item.text();
    return !item.data(Qt::FontRole).isValid() && std::all_of(text.begin(), text.end(), [](QChar c) {
        return c.unicode() >= ' ' && c.unicode() <= '~';
    });
}
} // namespace

DecodeView::DecodeView(QWidget *parent) : QTableWidget(parent)
{
    horizontalHeader()->setResizeContentsPrecision(measuredRows);
}

int DecodeView::sizeHintForRow(int row) const
{
    if (!isPlainRow(row)) {
        return QTableWidget::sizeHintForRow(row);
    }
    if (plainRowHeight == 0) {
        const QSize cell = itemDelegate()->sizeHint(viewOptions(), model()->index(row, 0));
        plainRowHeight = cell.height() + (showGrid() ? 1 : 0);
    }
    return plainRowHeight;
}

void DecodeView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        plainRowHeight = 0;
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

} // namespace outpost
