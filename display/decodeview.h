#pragma once

#include "display/plainwidths.h"

#include <QTableWidget>
#include <optional>

namespace outpost
{

// A table of decodes that stays fast with thousands of rows. QTableWidget would measure every cell
// again after each change of the rows or the window.
class DecodeView : public QTableWidget
{
public:
    explicit DecodeView(QWidget *parent) : QTableWidget(parent) {}

    int sizeHintForRow(int row) const override;
    int sizeHintForColumn(int column) const override;

protected:
    void changeEvent(QEvent *event) override;

private:
    bool isPlainRow(int row) const;
    QSize measured(int row, int column) const;

    mutable int plainRowHeight = 0;           // 0: not measured yet
    mutable std::optional<PlainWidths> plain; // for the table's font; none: not made yet
};

} // namespace outpost
