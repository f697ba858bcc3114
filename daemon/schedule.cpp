#include "daemon/schedule.h"

#include <QtGlobal>

namespace outpost
{

namespace
{
constexpr qint64 minuteMs = 60000;
constexpr int minutesPerDay = 1440;

int minuteOfDay(qint64 utcMs)
{
    return static_cast<int>(utcMs / minuteMs % minutesPerDay);
}

bool covers(const ScheduleSpan &span, int minute)
{
    if (span.fromMinute < span.toMinute) {
        return minute >= span.fromMinute && minute < span.toMinute;
    }
    return minute >= span.fromMinute || minute < span.toMinute; // past midnight
}
} // namespace

bool ScheduleSpan::operator==(const ScheduleSpan &other) const
{
    return fromMinute == other.fromMinute && toMinute == other.toMinute && dialHz == other.dialHz;
}

Schedule::Schedule(qint64 dialHz) : daySpans({{0, minutesPerDay, dialHz}}) {}

Schedule::Schedule(const QVector<ScheduleSpan> &spansOfADay) : daySpans(spansOfADay) {}

qint64 Schedule::dialHzAt(qint64 utcMs) const
{
    const int minute = minuteOfDay(utcMs);
    for (const ScheduleSpan &span : daySpans) {
        if (covers(span, minute)) {
            return span.dialHz;
        }
    }
    return 0;
}

qint64 Schedule::nextChangeMs(qint64 utcMs) const
{
    const qint64 now = dialHzAt(utcMs);
    const qint64 thisMinute = utcMs - utcMs % minuteMs;
    for (int minutes = 1; minutes <= minutesPerDay; ++minutes) {
        const qint64 at = thisMinute + minutes * minuteMs;
        if (dialHzAt(at) != now) {
            return at;
        }
    }
    return -1;
}

bool Schedule::operator==(const Schedule &other) const
{
    return daySpans == other.daySpans;
}

} // namespace outpost
