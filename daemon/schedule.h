#pragma once

#include <QVector>
#include <optional>

namespace outpost
{

// Part of each day, UTC, in which a receiver listens on one frequency.
struct ScheduleSpan {
    int fromMinute = 0;  // of the day, 0..1439, first minute in the span
    int toMinute = 1440; // 1..1440, first minute after it; up to fromMinute: it runs past midnight
    qint64 dialHz = 0;

    bool operator==(const ScheduleSpan &other) const;
};

// Index of the first span that shares a minute with one before it.
std::optional<int> firstOverlap(const QVector<ScheduleSpan> &spans);

// The dial frequency by time of day.
class Schedule
{
public:
    Schedule() = default;
    explicit Schedule(qint64 dialHz); // all day
    explicit Schedule(const QVector<ScheduleSpan> &spansOfADay);

    // At a time, UTC, ms since the epoch. 0: the receiver rests.
    qint64 dialHzAt(qint64 utcMs) const;
    // The first time after it at which the dial frequency changes; -1: never.
    qint64 nextChangeMs(qint64 utcMs) const;
    const QVector<ScheduleSpan> &spans() const { return daySpans; }
    bool operator==(const Schedule &other) const;

private:
    QVector<ScheduleSpan> daySpans; // do not overlap
};

} // namespace outpost
