#include "daemon/dtwatch.h"

#include <QtTest>

namespace outpost
{

namespace
{
constexpr qint64 startMs = 1795046400000;
constexpr qint64 periodMs = 15000;
constexpr int tenMinutes = 40; // periods
} // namespace

class DtWatchTest : public QObject
{
    Q_OBJECT

private slots:
    void warnsAfterTenMinutesAndOnce()
    {
        DtWatch watch;
        QCOMPARE(warnings(watch, 0, 4 * tenMinutes, {1.1, 1.2, 1.3}), QVector<int>{tenMinutes});
    }

    void negativeOnesCountToo()
    {
        DtWatch watch;
        QCOMPARE(warnings(watch, 0, tenMinutes + 1, {-1.4, 0.2, -1.4}), QVector<int>{tenMinutes});
    }

    void aMedianUpToASecondIsNormal()
    {
        DtWatch watch;
        QCOMPARE(warnings(watch, 0, 3 * tenMinutes, {1.0, 2.5, 0.3}), QVector<int>());
    }

    void warnsAgainWhenItHadGone()
    {
        DtWatch watch;
        QCOMPARE(warnings(watch, 0, 50, {1.5}).size(), 1);
        QCOMPARE(warnings(watch, 50, 100, {0.1}).size(), 0);
        QCOMPARE(warnings(watch, 100, 150, {1.5}).size(), 1);
    }

    void aFewDecodesSayNothing()
    {
        DtWatch watch;
        warnings(watch, 0, 9, {1.5});
        QCOMPARE(warnings(watch, 9, 3 * tenMinutes, {}), QVector<int>());
    }

    void oldDecodesAreForgotten()
    {
        DtWatch watch;
        QCOMPARE(warnings(watch, 0, 39, {1.5}), QVector<int>());
        QCOMPARE(warnings(watch, 90, 200, {0.1}), QVector<int>());
    }

private:
    // The periods at which it warned.
    static QVector<int> warnings(DtWatch &watch, int from, int to, const QVector<double> &dts)
    {
        QVector<int> warned;
        for (int period = from; period < to; ++period) {
            if (watch.take(startMs + period * periodMs, dts)) {
                warned.append(period);
            }
        }
        return warned;
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::DtWatchTest)
#include "dtwatch_test.moc"
