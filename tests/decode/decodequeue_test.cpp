#include "decode/decodequeue.h"
#include "tests/decode/decodelines.h"

#include <QtTest>
#include <algorithm>
#include <vector>

namespace outpost
{

namespace
{
constexpr int workers = 4;

QVector<Ft8Decode> one(const QString &line)
{
    return parseDecodeLines({line});
}

Jt9Failure exitCode(int code)
{
    return {Jt9Cause::ExitCode, QString::number(code)};
}

QString lineOf(qint64 startMs, int worker)
{
    return QStringLiteral("~ %1 %2").arg(startMs).arg(worker);
}
} // namespace

class DecodeQueueTest : public QObject
{
    Q_OBJECT

private slots:
    // All orders in which the workers of three periods can report, without telling the workers of a
    // period apart: 12! / (4!)^3 = 34650.
    void periodsComeOnceAndInOrderHoweverTheWorkersReport()
    {
        // The period of each report.
        std::vector<int> reports = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2};
        int orders = 0;
        do {
            DecodeQueue queue(workers);
            for (int period = 0; period < 3; ++period) {
                queue.add(period);
            }
            int reported[3] = {};
            int given = 0;
            for (const int period : reports) {
                const int worker = reported[period]++;
                const QVector<FinishedPeriod> due = queue.report(
                    period, worker, one(lineOf(period, worker)), exitCode(10 * period + worker));
                for (const FinishedPeriod &finished : due) {
                    QCOMPARE(finished.startMs, qint64(given));
                    QCOMPARE(finished.decodes.size(), workers);
                    QCOMPARE(finished.decodes.last().line, lineOf(given, workers - 1));
                    for (int w = 0; w < workers; ++w) {
                        QVERIFY(finished.failures.at(w) == exitCode(10 * given + w));
                    }
                    ++given;
                }
                // No period is held back without need: the next one still waits for a worker.
                QVERIFY(given == 3 || reported[given] < workers);
                QCOMPARE(queue.pendingCount(),
                         int(std::count_if(reported, reported + 3,
                                           [](int count) { return count < workers; })));
            }
            QCOMPARE(given, 3);
            ++orders;
        } while (std::next_permutation(reports.begin(), reports.end()));
        QCOMPARE(orders, 34650);
    }

    // The 24 orders of one period's workers. Lines that are not decodes stay in the order of
    // arrival.
    void whatWorkersReportIsMergedInTheOrderOfArrival()
    {
        std::vector<int> arrival = {0, 1, 2, 3};
        do {
            DecodeQueue queue(workers);
            queue.add(1);
            QStringList expected;
            QVector<FinishedPeriod> due;
            for (const int worker : arrival) {
                QVERIFY(due.isEmpty());
                expected.append(lineOf(1, worker));
                due = queue.report(1, worker, one(expected.last()));
            }
            QCOMPARE(due.size(), 1);
            QCOMPARE(linesOf(due.first().decodes), expected);
        } while (std::next_permutation(arrival.begin(), arrival.end()));
    }

    void doublesOfTwoWorkersAreOneDecode()
    {
        DecodeQueue queue(2);
        queue.add(1);
        queue.report(1, 0, one(QStringLiteral("000001 -10 0.1 1012 ~ CQ A")));
        const QVector<FinishedPeriod> due =
            queue.report(1, 0, one(QStringLiteral("000001 -8 0.1 1015 ~ CQ A")));
        QCOMPARE(linesOf(due.first().decodes),
                 QStringList(QStringLiteral("000001 -8 0.1 1015 ~ CQ A")));
    }

    void aPeriodWithoutDecodesHasItsTurnToo()
    {
        DecodeQueue queue(1);
        queue.add(1);
        queue.add(2);
        QVERIFY(queue.report(2, 0, one(QStringLiteral("~"))).isEmpty());
        const QVector<FinishedPeriod> due = queue.report(1, 0, {});
        QCOMPARE(due.size(), 2);
        QVERIFY(due.first().decodes.isEmpty());
    }

    void nothingIsTakenForAPeriodThatIsNotPending()
    {
        DecodeQueue queue(1);
        QVERIFY(queue.report(1, 0, one(QStringLiteral("~"))).isEmpty());
        queue.add(1);
        QCOMPARE(queue.report(1, 0, {}).size(), 1);
        QVERIFY(!queue.isPending(1));
        QVERIFY(queue.report(1, 0, {}).isEmpty());
    }

    void aPeriodQueuedAgainIsGatheredAnewAndGivenOnce()
    {
        DecodeQueue queue(2);
        queue.add(1);
        queue.add(2);
        queue.report(1, 0, one(QStringLiteral("~ old")));
        queue.report(2, 0, {});
        queue.report(2, 0, one(QStringLiteral("~ old"))); // finished, but held back by the first
        queue.add(1);
        queue.add(2);
        QVERIFY(queue.report(1, 0, one(QStringLiteral("~ new"))).isEmpty());
        QCOMPARE(queue.report(1, 0, {}).size(), 1);
        QVERIFY(queue.report(2, 0, {}).isEmpty());
        const QVector<FinishedPeriod> due = queue.report(2, 0, one(QStringLiteral("~ new")));
        QCOMPARE(due.size(), 1);
        QCOMPARE(linesOf(due.first().decodes), QStringList(QStringLiteral("~ new")));
    }

    void nothingIsKnownAfterClear()
    {
        DecodeQueue queue(1);
        queue.add(1);
        queue.add(2);
        queue.report(2, 0, {});
        queue.clear();
        QCOMPARE(queue.pendingCount(), 0);
        QVERIFY(queue.report(1, 0, {}).isEmpty());
        queue.add(3);
        QCOMPARE(queue.report(3, 0, {}).size(), 1);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::DecodeQueueTest)
#include "decodequeue_test.moc"
