#pragma once

#include <QTableWidget>

namespace outpost
{

// A table of decodes that stays quick with thousands of rows, of which Qt would measure each cell
// again whenever rows or the window change.
class DecodeView : public QTableWidget
{
public:
    explicit DecodeView(QWidget *parent);

    int sizeHintForRow(int row) const override;

protected:
    void changeEvent(QEvent *event) override;

private:
    bool isPlainRow(int row) const;

    mutable int plainRowHeight = 0; // 0: to be measured
};

} // namespace outpost
