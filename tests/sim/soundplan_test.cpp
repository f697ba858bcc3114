#include "sim/soundplan.h"

#include <QtTest>

namespace outpost
{

using namespace sim;

namespace
{
constexpr qint64 kMidnightMs = 1700006400000; // a multiple of 15000
constexpr double kFrameMs = 2048 / 12.0;
} // namespace

class SoundPlanTest : public QObject
{
    Q_OBJECT

private slots:
    void listenersFirstBoundary_data()
    {
        QTest::addColumn<int>("atMs");
        QTest::addColumn<int>("boundaryMs");
        QTest::newRow("on a boundary") << 0 << 15000;
        QTest::newRow("just enough warning") << 12500 << 15000;
        QTest::newRow("too close") << 12501 << 30000;
        QTest::newRow("one second before") << 14000 << 30000;
        QTest::newRow("three seconds before") << 12000 << 15000;
    }

    void listenersFirstBoundary()
    {
        QFETCH(int, atMs);
        QFETCH(int, boundaryMs);
        QCOMPARE(firstBoundaryMs(kMidnightMs + atMs), kMidnightMs + boundaryMs);
    }

    void everyMillisecondGivesASoundPlan_data()
    {
        QTest::addColumn<double>("frameMs");
        QTest::newRow("compressed") << kFrameMs;
        QTest::newRow("uncompressed") << 512 / 12.0;
        QTest::newRow("receiver's clock") << 2048 / 12.00106;
    }

    void everyMillisecondGivesASoundPlan()
    {
        QFETCH(double, frameMs);
        for (int ms = 0; ms < 15000; ++ms) {
            const qint64 earliest = kMidnightMs + ms;
            const SoundPlan plan = planSound(earliest, frameMs);
            // A client that sees it up to 250 ms late still picks this boundary.
            QCOMPARE(firstBoundaryMs(plan.firstFrameMs), plan.boundaryMs);
            QCOMPARE(firstBoundaryMs(plan.firstFrameMs + 250), plan.boundaryMs);
            QVERIFY(plan.firstFrameMs >= earliest);
            QVERIFY(plan.firstFrameMs <= earliest + 600 + 2 * qint64(frameMs) + 1);
            const double early = double(plan.boundaryMs - plan.firstFrameMs);
            QVERIFY(qAbs(early - plan.fillerFrames * frameMs) < 1);
            QVERIFY(plan.boundaryMs % 15000 == 0);
        }
    }

    void soundIsNotDelayedWithoutNeed()
    {
        const SoundPlan plan = planSound(kMidnightMs + 5000, kFrameMs);
        QVERIFY(plan.firstFrameMs < kMidnightMs + 5000 + 171);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::SoundPlanTest)
#include "soundplan_test.moc"
