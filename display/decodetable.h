#pragma once

#include "display/decoderow.h"
#include "display/decodeview.h"

#include <QStringList>
#include <QVector>
#include <functional>

namespace outpost
{

struct Ft8Decode;

// Shows the decodes of the last three periods, one per row. Rows whose message contains a
// highlighted callsign are yellow.
class DecodeTable : public DecodeView
{
public:
    // append() calls `onWidth` with the width in pixels at which all columns are visible.
    DecodeTable(QWidget *parent, std::function<void(int)> onWidth);

    // Returns the number of rows in the latest period.
    int append(const QString &periodLabel, const QVector<Ft8Decode> &decodes);
    void removeAll();
    QVector<DecodeCells> rows() const; // top to bottom

    void highlight(const QStringList &calls); // applies to existing and new rows
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
