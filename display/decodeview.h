#pragma once

#include "display/plainwidths.h"

#include <QTableWidget>
#include <optional>

namespace outpost
{

// A table of decodes that stays quick with thousands of rows, of which Qt would measure each cell
// again whenever rows or the window change.
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

    mutable int plainRowHeight = 0;           // 0: to be measured
    mutable std::optional<PlainWidths> plain; // of the table's font; none: to be made
};

} // namespace outpost
