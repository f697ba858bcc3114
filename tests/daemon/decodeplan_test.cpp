#include "daemon/decodeplan.h"

#include <QtTest>
#include <algorithm>

namespace outpost
{

namespace
{
constexpr qint64 startMs = 1795046400000;

QVector<int> edges(const QVector<DecodeBand> &bands)
{
    QVector<int> all;
    for (const DecodeBand &band : bands) {
        all << band.lowHz << band.highHz;
    }
    return all;
}
} // namespace

class DecodePlanTest : public QObject
{
    Q_OBJECT

private slots:
    void theWholeBandInOneRun()
    {
        QCOMPARE(edges(decodeBands(200, 3000, 1)), (QVector<int>{200, 3000}));
    }

    void fourPartsOverlap()
    {
        QCOMPARE(edges(decodeBands(0, 3000, 4)), edges(usualDecodeBands()));
        QCOMPARE(edges(decodeBands(200, 5000, 4)),
                 (QVector<int>{200, 1475, 1375, 2650, 2550, 3825, 3725, 5000}));
        QCOMPARE(edges(decodeBands(201, 3000, 4)).last(), 3000);
    }

    void aNarrowBandIsNotSplit()
    {
        QCOMPARE(edges(decodeBands(200, 599, 4)), (QVector<int>{200, 599}));
    }

    void theOldestPeriodGoesFirst()
    {
        for (int i = 0; i < 500; ++i) {
            const QString early = QString::number(i);
            const QString late = QString::number(1000 + i);
            QVERIFY(decodePriority(early, startMs) > decodePriority(late, startMs + 15000));
        }
    }

    void receiversTakeTurns()
    {
        QMap<QString, int> first;
        const QStringList names{QStringLiteral("80m"), QStringLiteral("40m"),
                                QStringLiteral("20m")};
        for (int period = 0; period < 3000; ++period) {
            const auto goesBefore = [&](const QString &left, const QString &right) {
                const qint64 at = startMs + period * 15000LL;
                return decodePriority(left, at) < decodePriority(right, at);
            };
            ++first[*std::max_element(names.begin(), names.end(), goesBefore)];
        }
        for (const QString &name : names) {
            QVERIFY2(first.value(name) > 800, qPrintable(name));
        }
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::DecodePlanTest)
#include "decodeplan_test.moc"
