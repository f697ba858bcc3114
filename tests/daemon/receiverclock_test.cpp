// What the decoder gets stays on the computer's clock, whatever the receiver's clock and the
// network do. Minutes at ten times the speed, with clocks that are off by far more than real ones,
// all at the same time.

#include "decode/kiwiaudiocapture.h"
#include "tests/daemon/receiverbench.h"

#include <QtTest>
#include <algorithm>

namespace outpost
{

namespace
{
constexpr int haste = 10;
constexpr int periodsToHear = 24;
constexpr int pulseAt = 60000; // sample

// The decoder tells the first sample of the pulse as the audio frequency.
QString pulseFinder()
{
    return QStringLiteral("n=$(tail -c +45 $8 | LC_ALL=C od -An -v -td2 -w2 |"
                          "awk '$1 > 20000 {print NR - 1; exit}')\n"
                          "echo \"142315 -7 0.0 ${n:-0} ~ CQ K1ABC FN42\"");
}

// At 1667 ppm, periods that are only counted are off by 0.6 s after six minutes.
std::unique_ptr<ReceiverBench> listenTo(const QString &behaviour, double rateHz)
{
    SimConfig config;
    config.rateHz = rateHz;
    sim::Samples pulse(KiwiAudioCapture::samplesPerPeriod, 0);
    std::fill(pulse.begin() + pulseAt, pulse.begin() + pulseAt + 120, qint16(30000));
    for (int i = 0; i < 2 * periodsToHear; ++i) {
        config.audio.append(pulse);
    }
    auto bench =
        std::make_unique<ReceiverBench>(QStringList{behaviour}, pulseFinder(), config, haste);
    bench->listen();
    return bench;
}

// In seconds. A busy machine holds back single periods by some tens of ms, times the haste.
double medianDt(const QVector<PeriodSpots> &periods)
{
    std::vector<double> dts;
    for (const PeriodSpots &period : periods) {
        dts.push_back((period.spots.first().audioHz - pulseAt) / 12000.0);
    }
    std::sort(dts.begin(), dts.end());
    return dts.at(dts.size() / 2);
}
} // namespace

class ReceiverClockTest : public QObject
{
    Q_OBJECT

private slots:
    void decodesStayOnTheComputersClock()
    {
        std::vector<std::unique_ptr<ReceiverBench>> benches;
        benches.push_back(listenTo(QStringLiteral("all=stream"), 12020));
        benches.push_back(listenTo(QStringLiteral("all=stream"), 11980));
        benches.push_back(listenTo(QStringLiteral("all=bursty"), 12020));
        benches.push_back(listenTo(QStringLiteral("all=bursty"), 12000));
        for (const auto &bench : benches) {
            QTRY_VERIFY_WITH_TIMEOUT(bench->periods.size() >= periodsToHear, 120000);
            const double dt = medianDt(bench->periods.mid(bench->periods.size() - 9));
            QVERIFY2(qAbs(dt) < 0.25, qPrintable(QString::number(dt)));
        }
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ReceiverClockTest)
#include "receiverclock_test.moc"
