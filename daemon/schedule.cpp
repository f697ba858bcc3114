#include "daemon/schedule.h"

#include <QtGlobal>
#include <array>

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

using TakenMinutes = std::array<bool, minutesPerDay>;

// Nothing if one of the span's minutes is taken already.
std::optional<TakenMinutes> withSpan(TakenMinutes taken, const ScheduleSpan &span)
{
    for (int minute = 0; minute < minutesPerDay; ++minute) {
        if (!covers(span, minute)) {
            continue;
        }
        if (taken.at(static_cast<size_t>(minute))) {
            return std::nullopt;
        }
        taken.at(static_cast<size_t>(minute)) = true;
    }
    return taken;
}
} // namespace

bool ScheduleSpan::operator==(const ScheduleSpan &other) const
{
    return fromMinute == other.fromMinute && toMinute == other.toMinute && dialHz == other.dialHz;
}

std::optional<int> firstOverlap(const QVector<ScheduleSpan> &spans)
{
    TakenMinutes taken{};
    for (int i = 0; i < spans.size(); ++i) {
        const auto more = withSpan(taken, spans.at(i));
        if (!more) {
            return i;
        }
        taken = *more;
    }
    return std::nullopt;
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
