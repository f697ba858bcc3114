#pragma once

#include "display/decoderow.h"
#include "display/decodeview.h"

#include <QStringList>
#include <QVector>
#include <functional>

namespace outpost
{

struct Ft8Decode;

// The decodes of the last three periods, one a row. Rows whose message holds a highlighted call are
// yellow.
class DecodeTable : public DecodeView
{
public:
    // Within append(), `onWidth` is told the width in pixels that shows all columns.
    DecodeTable(QWidget *parent, std::function<void(int)> onWidth);

    // Returns how many rows the newest period then has.
    int append(const QString &periodLabel, const QVector<Ft8Decode> &decodes);
    void removeAll();
    QVector<DecodeCells> rows() const; // top to bottom

    void highlight(const QStringList &calls); // rows to come and rows that are there
    const QStringList &highlighted() const { return highlightedCalls; }

private:
    void appendRow(const QString &periodLabel, const Ft8Decode &decode);
    void dropOldPeriods();
    void showLatestPeriodCount(int count);
    void fitToContents();
    void showNewestRow();
    bool isHighlighted(int row) const;
    void colourRow(int row);

    const std::function<void(int)> onWidthChanged;
    QStringList highlightedCalls;
};

} // namespace outpost
