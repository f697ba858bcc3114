#include "daemon/decodecount.h"

#include <QtTest>

namespace outpost
{

namespace
{
constexpr qint64 startMs = 1795046400000;
constexpr qint64 periodMs = 15000;
} // namespace

class DecodeCountTest : public QObject
{
    Q_OBJECT

private slots:
    void nothingYet()
    {
        QCOMPARE(DecodeCount().inLastPeriod(), 0);
        QCOMPARE(DecodeCount().inLastHour(startMs), 0);
    }

    void theLastPeriodMayBeEmpty()
    {
        DecodeCount count;
        count.add(startMs, 7);
        QCOMPARE(count.inLastPeriod(), 7);
        count.add(startMs + periodMs, 0);
        QCOMPARE(count.inLastPeriod(), 0);
        QCOMPARE(count.inLastHour(startMs + 2 * periodMs), 7);
    }

    void theHourMovesOn()
    {
        DecodeCount count;
        for (int period = 0; period < 480; ++period) {
            count.add(startMs + period * periodMs, 1);
        }
        const qint64 lastMs = startMs + 479 * periodMs;
        QCOMPARE(count.inLastHour(lastMs), 240);
        QCOMPARE(count.inLastHour(lastMs + 30 * 60000), 120);
        QCOMPARE(count.inLastHour(lastMs + 3600000), 0);
    }

    void aClockSetBackLosesNothingLasting()
    {
        DecodeCount count;
        count.add(startMs, 5);
        count.add(startMs - 24 * 3600000LL, 3);
        QCOMPARE(count.inLastHour(startMs - 24 * 3600000LL), 3);
        QCOMPARE(count.inLastPeriod(), 3);
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::DecodeCountTest)
#include "decodecount_test.moc"
