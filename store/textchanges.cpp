#include "store/textchanges.h"

#include <QHash>
#include <QStringRef>
#include <QtGlobal>
#include <algorithm>

namespace outpost
{

namespace
{

constexpr QLatin1Char lineFeed('\n');

using Lines = QVector<QStringRef>; // each with its line feed

// Replaces one piece with another; either may be empty.
struct Replacement {
    int position; // an empty reference has no position of its own
    QStringRef old;
    QStringRef now;
};

Lines linesOf(const QString &text)
{
    Lines lines;
    for (int begin = 0; begin < text.size(); begin += lines.last().size()) {
        lines.append(text.midRef(begin, text.indexOf(lineFeed, begin) + 1 - begin));
    }
    return lines;
}

int beginOf(const QString &text, const Lines &lines, int line)
{
    return line < lines.size() ? lines.at(line).position() : text.size();
}

QHash<QStringRef, QVector<int>> placesIn(const Lines &lines)
{
    QHash<QStringRef, QVector<int>> places; // ascending
    for (int i = 0; i < lines.size(); ++i) {
        places[lines.at(i)].append(i);
    }
    return places;
}

int nextPlace(const QVector<int> &places, int notBefore)
{
    const auto *next = std::lower_bound(places.begin(), places.end(), notBefore);
    return next == places.end() ? -1 : *next;
}

class Comparison
{
public:
    Comparison(const QString &fromText, const QString &toText) : from(fromText), to(toText) {}

    // An old line that also occurs in the remaining new lines stays; the lines before it are
    // replaced.
    QVector<Replacement> replacements()
    {
        const QHash<QStringRef, QVector<int>> places = placesIn(newLines);
        for (int line = 0; line < oldLines.size(); ++line) {
            const int place = nextPlace(places.value(oldLines.at(line)), newDone);
            if (place >= 0) {
                replaceUpTo(line, place);
                oldDone = line + 1;
                newDone = place + 1;
            }
        }
        replaceUpTo(oldLines.size(), newLines.size());
        return found;
    }

private:
    void replaceUpTo(int oldEnd, int newEnd)
    {
        if (oldEnd - oldDone == newEnd - newDone) {
            while (oldDone < oldEnd) {
                replace(oldDone + 1, newDone + 1);
                ++oldDone;
                ++newDone;
            }
        } else {
            replace(oldEnd, newEnd);
        }
    }

    void replace(int oldEnd, int newEnd)
    {
        const int oldBegin = beginOf(from, oldLines, oldDone);
        const int newBegin = beginOf(to, newLines, newDone);
        found.append({oldBegin, from.midRef(oldBegin, beginOf(from, oldLines, oldEnd) - oldBegin),
                      to.midRef(newBegin, beginOf(to, newLines, newEnd) - newBegin)});
    }

    const QString &from;
    const QString &to;
    const Lines oldLines = linesOf(from);
    const Lines newLines = linesOf(to);
    int oldDone = 0;
    int newDone = 0;
    QVector<Replacement> found;
};

template <class Iterator>
int common(Iterator one, Iterator oneEnd, Iterator other, Iterator otherEnd)
{
    return static_cast<int>(std::mismatch(one, oneEnd, other, otherEnd).first - one);
}

// Only the characters that differ: a running time changes in its last digits.
TextChange smallestChange(const Replacement &lines)
{
    const QStringRef &old = lines.old;
    const QStringRef &now = lines.now;
    const int head = common(old.begin(), old.end(), now.begin(), now.end());
    const QStringRef oldRest = old.mid(head);
    const QStringRef nowRest = now.mid(head);
    const int tail = common(oldRest.rbegin(), oldRest.rend(), nowRest.rbegin(), nowRest.rend());
    return {lines.position + head, oldRest.size() - tail, nowRest.chopped(tail).toString()};
}

// The last line has no line feed, so the one before it is added or removed together with that line.
TextChange within(int textSize, const TextChange &change)
{
    if (change.position + change.length <= textSize) {
        return change;
    }
    const QString text = change.text.isEmpty() ? QString() : lineFeed + change.text.chopped(1);
    return {change.position - 1, change.length, text};
}

} // namespace

QVector<TextChange> textChanges(const QString &from, const QString &to)
{
    if (from == to) {
        return {};
    }
    const QString old = from + lineFeed;
    const QString now = to + lineFeed;
    const QVector<Replacement> replacements = Comparison(old, now).replacements();
    QVector<TextChange> changes;
    std::for_each(replacements.rbegin(), replacements.rend(), [&](const Replacement &lines) {
        changes.append(within(from.size(), smallestChange(lines)));
    });
    return changes;
}

int changedPosition(const QVector<TextChange> &changes, int position, Edge edge)
{
    int moved = position;
    for (const TextChange &change : changes) {
        const int end = change.position + change.length;
        const bool isAfter =
            position > end || (position == end && (change.length > 0 || edge == Edge::Start));
        if (isAfter) {
            moved += change.text.size() - change.length;
        } else if (position > change.position) {
            moved -= qMax(0, position - change.position - change.text.size());
        }
    }
    return moved;
}

} // namespace outpost
