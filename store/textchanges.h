#pragma once

#include <QString>
#include <QVector>

namespace outpost
{

// A piece of a text that gives way to another.
struct TextChange {
    int position; // in the old text
    int length;   // in the old text; 0: text comes in
    QString text;
};

// What makes one text of the other, from the end to the begin, so that each change can be made at
// its position in the old text. Lines that both texts have stay. Takes n log n in the
// number of lines.
QVector<TextChange> textChanges(const QString &from, const QString &to);

// Which end of a selection a position is. Text that comes in at either stays outside.
enum class Edge { Start, End };

// Where a position in the old text is after the changes.
int changedPosition(const QVector<TextChange> &changes, int position, Edge edge);

} // namespace outpost
