// The dial frequency by time of day, UTC.

#include "daemon/schedule.h"

#include <QDateTime>
#include <QTest>
#include <algorithm>

Q_DECLARE_METATYPE(outpost::ScheduleSpan)

namespace outpost
{

namespace
{
constexpr qint64 day20m = 14074000;
constexpr qint64 night40m = 7074000;
constexpr qint64 never = -1;

int minutes(int hour, int minute = 0)
{
    return 60 * hour + minute;
}

qint64 utc(const char *time)
{
    return QDateTime::fromString(QString::fromLatin1(time) + QLatin1Char('Z'), Qt::ISODateWithMs)
        .toMSecsSinceEpoch();
}

QString utcText(qint64 ms)
{
    return ms == never ? QStringLiteral("never")
                       : QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs);
}

// Day on 20 m, night on 40 m past midnight, at rest from 18:30 to 21:00.
Schedule dayAndNight()
{
    return Schedule({{minutes(6), minutes(18, 30), day20m}, {minutes(21), minutes(6), night40m}});
}
} // namespace

class ScheduleTest : public QObject
{
    Q_OBJECT

private slots:
    void aSingleFrequencyHoldsAllDayForEver()
    {
        const Schedule schedule(day20m);
        for (const char *time : {"1970-01-01T00:00:00", "2026-11-21T00:00:00.000",
                                 "2026-11-21T12:34:56", "2026-11-21T23:59:59.999"}) {
            QCOMPARE(schedule.dialHzAt(utc(time)), day20m);
            QCOMPARE(schedule.nextChangeMs(utc(time)), never);
        }
    }

    void withoutSpansTheReceiverRests()
    {
        const Schedule schedule;
        QCOMPARE(schedule.dialHzAt(utc("2026-11-21T12:00:00")), 0);
        QCOMPARE(schedule.nextChangeMs(utc("2026-11-21T12:00:00")), never);
    }

    void theTimeOfDayTellsTheFrequencyAndTheNextChange_data()
    {
        QTest::addColumn<qint64>("dialHz");
        QTest::addColumn<QString>("next");
        const auto row = [](const char *time, qint64 dialHz, const char *next) {
            QTest::newRow(time) << dialHz << utcText(utc(next));
        };
        row("2026-11-21T06:00:00.000", day20m, "2026-11-21T18:30:00.000");
        row("2026-11-21T06:00:00.001", day20m, "2026-11-21T18:30:00.000");
        row("2026-11-21T12:17:45.000", day20m, "2026-11-21T18:30:00.000");
        row("2026-11-21T18:29:59.999", day20m, "2026-11-21T18:30:00.000");
        row("2026-11-21T18:30:00.000", 0, "2026-11-21T21:00:00.000");
        row("2026-11-21T20:59:59.999", 0, "2026-11-21T21:00:00.000");
        row("2026-11-21T21:00:00.000", night40m, "2026-11-22T06:00:00.000");
        row("2026-11-21T23:59:59.999", night40m, "2026-11-22T06:00:00.000");
        row("2026-11-22T00:00:00.000", night40m, "2026-11-22T06:00:00.000");
        row("2026-11-22T05:59:59.999", night40m, "2026-11-22T06:00:00.000");
        // Past the ends of a month, of a year and of February.
        row("2026-11-30T22:00:00.000", night40m, "2026-12-01T06:00:00.000");
        row("2026-12-31T23:59:59.999", night40m, "2027-01-01T06:00:00.000");
        row("2027-02-28T23:00:00.000", night40m, "2027-03-01T06:00:00.000");
        row("2028-02-28T23:00:00.000", night40m, "2028-02-29T06:00:00.000");
        row("2028-02-29T12:00:00.000", day20m, "2028-02-29T18:30:00.000");
        row("2028-02-29T23:00:00.000", night40m, "2028-03-01T06:00:00.000");
        // A day with a leap second has as many milliseconds as any other.
        row("2016-12-31T23:59:59.999", night40m, "2017-01-01T06:00:00.000");
        // Where clocks are set forward, at 02:00 of that day, UTC goes on.
        row("2026-03-29T01:30:00.000", night40m, "2026-03-29T06:00:00.000");
    }

    void theTimeOfDayTellsTheFrequencyAndTheNextChange()
    {
        QFETCH(qint64, dialHz);
        QFETCH(QString, next);
        const qint64 now = utc(QTest::currentDataTag());
        QCOMPARE(dayAndNight().dialHzAt(now), dialHz);
        QCOMPARE(utcText(dayAndNight().nextChangeMs(now)), next);
    }

    void theOrderOfTheSpansDoesNotMatter()
    {
        QVector<ScheduleSpan> spans = dayAndNight().spans();
        std::reverse(spans.begin(), spans.end());
        const Schedule reversed(spans);
        for (qint64 now = utc("2026-11-21T00:00:00"); now < utc("2026-11-22T00:00:00");
             now += 900000) {
            QCOMPARE(reversed.dialHzAt(now), dayAndNight().dialHzAt(now));
            QCOMPARE(reversed.nextChangeMs(now), dayAndNight().nextChangeMs(now));
        }
    }

    void spansOfTheSameFrequencyThatMeetAreNoChange()
    {
        const Schedule schedule({{0, minutes(8), day20m}, {minutes(8), minutes(20), day20m}});
        QCOMPARE(utcText(schedule.nextChangeMs(utc("2026-11-21T07:00:00"))),
                 QStringLiteral("2026-11-21T20:00:00.000Z"));
        QCOMPARE(utcText(schedule.nextChangeMs(utc("2026-11-21T21:00:00"))),
                 QStringLiteral("2026-11-22T00:00:00.000Z"));
    }

    void twoHalfDaysOfOneFrequencyNeverChange()
    {
        const Schedule schedule({{0, minutes(12), day20m}, {minutes(12), minutes(24), day20m}});
        QCOMPARE(schedule.nextChangeMs(utc("2026-11-21T07:00:00")), never);
    }

    void aSpanMayEndAtMidnight()
    {
        const Schedule schedule({{minutes(20), minutes(24), day20m}});
        QCOMPARE(schedule.dialHzAt(utc("2026-11-21T23:59:59.999")), day20m);
        QCOMPARE(schedule.dialHzAt(utc("2026-11-22T00:00:00")), 0);
        QCOMPARE(utcText(schedule.nextChangeMs(utc("2026-11-21T23:00:00"))),
                 QStringLiteral("2026-11-22T00:00:00.000Z"));
        QCOMPARE(utcText(schedule.nextChangeMs(utc("2026-11-22T00:00:00"))),
                 QStringLiteral("2026-11-22T20:00:00.000Z"));
    }

    void aSpanOfOneMinuteIsFoundFromTheMinuteAfterIt()
    {
        const Schedule schedule({{minutes(12), minutes(12, 1), day20m}});
        QCOMPARE(schedule.dialHzAt(utc("2026-11-21T12:00:59.999")), day20m);
        QCOMPARE(schedule.dialHzAt(utc("2026-11-21T12:01:00")), 0);
        QCOMPARE(utcText(schedule.nextChangeMs(utc("2026-11-21T12:01:00"))),
                 QStringLiteral("2026-11-22T12:00:00.000Z"));
        QCOMPARE(utcText(schedule.nextChangeMs(utc("2026-11-21T12:00:30"))),
                 QStringLiteral("2026-11-21T12:01:00.000Z"));
    }

    void overlapsAreFound_data()
    {
        using Spans = QVector<ScheduleSpan>;
        QTest::addColumn<Spans>("spans");
        QTest::addColumn<int>("overlapping");
        QTest::newRow("nothing") << Spans() << -1;
        QTest::newRow("one") << Spans{{60, 120, 1}} << -1;
        QTest::newRow("they meet") << Spans{{60, 120, 1}, {120, 180, 2}} << -1;
        QTest::newRow("a whole day") << Spans{{720, 1440, 1}, {0, 720, 2}} << -1;
        QTest::newRow("past midnight, they meet") << Spans{{1200, 360, 1}, {360, 1200, 2}} << -1;
        QTest::newRow("the last minute") << Spans{{60, 121, 1}, {120, 180, 2}} << 1;
        QTest::newRow("one in another") << Spans{{60, 600, 1}, {120, 180, 2}} << 1;
        QTest::newRow("one around another") << Spans{{120, 180, 1}, {60, 600, 2}} << 1;
        QTest::newRow("the same twice") << Spans{{60, 120, 1}, {60, 120, 1}} << 1;
        QTest::newRow("past midnight, its end") << Spans{{1200, 361, 1}, {360, 1200, 2}} << 1;
        QTest::newRow("past midnight, its begin") << Spans{{360, 1201, 2}, {1200, 360, 1}} << 1;
        QTest::newRow("both past midnight") << Spans{{1380, 60, 1}, {1320, 30, 2}} << 1;
        QTest::newRow("the third") << Spans{{0, 60, 1}, {60, 120, 2}, {30, 90, 3}} << 2;
        QTest::newRow("the first of two") << Spans{{0, 60, 1}, {0, 60, 2}, {0, 60, 3}} << 1;
    }

    void overlapsAreFound()
    {
        QFETCH(QVector<ScheduleSpan>, spans);
        QFETCH(int, overlapping);
        QCOMPARE(firstOverlap(spans).value_or(-1), overlapping);
    }

    void schedulesAreEqualIfTheirSpansAre()
    {
        QVERIFY(dayAndNight() == dayAndNight());
        QVERIFY(!(dayAndNight() == Schedule(day20m)));
        QVERIFY(!(Schedule(day20m) == Schedule(night40m)));
        QVERIFY(!(Schedule(day20m) == Schedule()));
        QVERIFY(!(Schedule({{0, 60, day20m}}) == Schedule({{1, 60, day20m}})));
        QVERIFY(!(Schedule({{0, 60, day20m}}) == Schedule({{0, 61, day20m}})));
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::ScheduleTest)
#include "schedule_test.moc"
