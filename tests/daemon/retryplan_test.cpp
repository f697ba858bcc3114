#include "daemon/retryplan.h"

#include <QtTest>

namespace outpost
{

namespace
{
constexpr double middle = 0.5; // of the jitter
constexpr qint64 minuteMs = 60000;
} // namespace

class RetryPlanTest : public QObject
{
    Q_OBJECT

private slots:
    void theDelayDoublesFrom5SecondsTo5Minutes()
    {
        RetryPlan plan;
        for (const qint64 seconds : {5, 10, 20, 40, 80, 160, 300, 300}) {
            QCOMPARE(plan.delayMs(0, false, middle), 1000 * seconds);
        }
    }

    void aFifthOfJitterEitherWay()
    {
        QCOMPARE(RetryPlan().delayMs(0, false, 0), 4000);
        QCOMPARE(RetryPlan().delayMs(0, false, 1), 6000);
        RetryPlan plan;
        plan.delayMs(0, false, 1);
        QCOMPARE(plan.delayMs(0, false, middle), 10000); // jitter does not add up
    }

    void tenGoodMinutesStartAgain()
    {
        RetryPlan plan;
        for (int i = 0; i < 4; ++i) {
            plan.delayMs(0, false, middle);
        }
        QCOMPARE(plan.delayMs(10 * minuteMs - 1, false, middle), 80000);
        QCOMPARE(plan.delayMs(10 * minuteMs, false, middle), 5000);
        QCOMPARE(plan.delayMs(0, false, middle), 10000);
    }

    void whatIsHopelessWaitsAnHour()
    {
        RetryPlan plan;
        plan.delayMs(0, false, middle);
        QCOMPARE(plan.delayMs(0, true, 0), 60 * minuteMs);
        QCOMPARE(plan.delayMs(0, true, 1), 60 * minuteMs);
        QCOMPARE(plan.delayMs(0, false, middle), 10000); // the others go on where they were
    }

    void otherTimes()
    {
        RetryPlan plan({100, 300, 1000, 5000});
        QCOMPARE(plan.delayMs(0, false, middle), 100);
        QCOMPARE(plan.delayMs(0, false, middle), 200);
        QCOMPARE(plan.delayMs(0, false, middle), 300);
        QCOMPARE(plan.delayMs(1000, true, middle), 5000);
        QCOMPARE(plan.delayMs(0, false, middle), 100);
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::RetryPlanTest)
#include "retryplan_test.moc"
