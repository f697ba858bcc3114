#pragma once

#include <QString>
#include <QVector>

namespace outpost
{

// Replaces a piece of a text.
struct TextChange {
    int position; // in the old text
    int length;   // in the old text; 0: an insertion
    QString text;
};

// The changes that turn one text into the other, from the end to the start, so that each can be
// applied at its position in the old text. Common lines are kept. Takes O(n log n) for n lines.
QVector<TextChange> textChanges(const QString &from, const QString &to);

// The end of a selection at which a position is. Text inserted at either end stays outside.
enum class Edge { Start, End };

// The position after the changes.
int changedPosition(const QVector<TextChange> &changes, int position, Edge edge);

} // namespace outpost
