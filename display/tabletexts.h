#pragma once

#include <QStringList>
#include <QTableWidget>

namespace outpost
{

// The text of a cell; empty if there is no cell.
inline QString cellText(const QTableWidget &table, int row, int column)
{
    const QTableWidgetItem *item = table.item(row, column);
    return item ? item->text() : QString();
}

// The texts of one column, top to bottom.
inline QStringList columnTexts(const QTableWidget &table, int column)
{
    QStringList texts;
    for (int row = 0; row < table.rowCount(); ++row) {
        texts.append(cellText(table, row, column));
    }
    return texts;
}

} // namespace outpost
