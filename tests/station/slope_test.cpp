#include "tests/station/slope.h"

#include <QtTest>
#include <cmath>

namespace outpost
{

} // namespace outpost

Q_DECLARE_METATYPE(outpost::Sample)

namespace outpost
{

class SlopeTest : public QObject
{
    Q_OBJECT

private slots:
    void fitsALine_data();
    void fitsALine();
    void aLeakIsSeenAndWaveringIsNot_data();
    void aLeakIsSeenAndWaveringIsNot();
};

namespace
{
// Grows by `perPeriod` per period, alternating by `wavering` around the line.
QVector<Sample> series(int periods, double perPeriod, double wavering)
{
    QVector<Sample> samples;
    for (int period = 0; period < periods; ++period) {
        const double sign = period % 2 == 0 ? 1 : -1;
        samples.append({double(period), 50000 + perPeriod * period + sign * wavering});
    }
    return samples;
}
} // namespace

void SlopeTest::fitsALine_data()
{
    QTest::addColumn<QVector<Sample>>("samples");
    QTest::addColumn<double>("slope");
    QTest::newRow("nothing") << QVector<Sample>() << 0.0;
    QTest::newRow("one point") << QVector<Sample>{{5, 7}} << 0.0;
    QTest::newRow("the same period twice") << QVector<Sample>{{5, 7}, {5, 9}} << 0.0;
    QTest::newRow("level") << series(100, 0, 0) << 0.0;
    QTest::newRow("rising") << series(100, 2, 0) << 2000.0;
    QTest::newRow("falling") << series(100, -0.5, 0) << -500.0;
    QTest::newRow("uneven distances") << QVector<Sample>{{0, 0}, {1, 3}, {100, 300}} << 3000.0;
}

void SlopeTest::fitsALine()
{
    QFETCH(QVector<Sample>, samples);
    QFETCH(double, slope);
    const double fitted = slopePer1000(samples);
    QVERIFY2(std::abs(fitted - slope) < 0.001, qPrintable(QString::number(fitted)));
}

void SlopeTest::aLeakIsSeenAndWaveringIsNot_data()
{
    QTest::addColumn<QVector<Sample>>("samples");
    QTest::addColumn<bool>("leaks");
    QTest::newRow("nothing") << QVector<Sample>() << false;
    QTest::newRow("wavering") << series(40, 0, 900) << false;
    QTest::newRow("1 kB a period for a day") << series(5760, 1, 900) << false;
    QTest::newRow("2 kB a period for a day") << series(5760, 2, 900) << true;
    QTest::newRow("100 kB a period for minutes") << series(40, 100, 900) << true;
    QTest::newRow("shrinking") << series(5760, -2, 900) << false;
}

void SlopeTest::aLeakIsSeenAndWaveringIsNot()
{
    QFETCH(QVector<Sample>, samples);
    QFETCH(bool, leaks);
    QCOMPARE(grows(samples, 1500, 2000), leaks);
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::SlopeTest)
#include "slope_test.moc"
