// A day of sound at a time, told frame by frame, over networks that delay and lose it.

#include "daemon/soundclock.h"

#include <QtTest>
#include <cmath>
#include <random>

namespace outpost
{

namespace
{
constexpr qint64 dayMs = 24 * 3600000LL;
constexpr qint64 firstPeriodMs = 1795046400000; // a quarter minute
constexpr int samplesPerPeriod = 180000;

struct Network {
    double burstMs = 0;      // sound arrives this far apart
    double jitterMs = 0;     // of each frame
    double stallEveryMs = 0; // nothing arrives for stallMs, then all at once
    double stallMs = 0;
    double loseEveryMs = 0; // samples are lost on the way, with no gap in the sequence
    int lostSamples = 0;
};
} // namespace

} // namespace outpost

Q_DECLARE_METATYPE(outpost::Network)

namespace outpost
{

namespace
{
// Sound of a receiver: when its samples were heard, and when they arrive.
class Sound
{
public:
    Sound(double rateOfReceiver, int samplesOfFrame, const Network &way)
        : rate(rateOfReceiver), frameSamples(samplesOfFrame), network(way),
          untilLossMs(way.loseEveryMs)
    {
    }

    int samples() const { return frameSamples; }
    qint64 arrivalMs() const { return arrival; }
    // Of a sample of the newest frame, if its middle had just been heard when it was sent.
    double heardMs(int sample) const
    {
        return startMs + (heard - frameSamples / 2.0 + sample) / rate * 1000;
    }

    void next()
    {
        heard += frameSamples;
        const double elapsedMs = heard / rate * 1000;
        if (network.loseEveryMs > 0 && elapsedMs >= untilLossMs) {
            heard += network.lostSamples;
            untilLossMs += network.loseEveryMs;
        }
        double at = startMs + heardMsSinceStart() + network.jitterMs * uniform(random);
        if (network.burstMs > 0) {
            at = std::ceil(at / network.burstMs) * network.burstMs;
        }
        if (network.stallEveryMs > 0) {
            const double into = std::fmod(at, network.stallEveryMs);
            at += into < network.stallMs ? network.stallMs - into : 0;
        }
        arrival = qMax(arrival, static_cast<qint64>(std::ceil(at)));
    }

private:
    double heardMsSinceStart() const { return heard / rate * 1000; }

    const double rate;
    const int frameSamples;
    const Network network;
    const double startMs = static_cast<double>(firstPeriodMs) - 14321;
    double heard = 0; // samples at the end of the newest frame, lost ones too
    double untilLossMs;
    qint64 arrival = 0;
    std::mt19937 random{1};
    std::uniform_real_distribution<double> uniform{0, 1};
};

// How far periods start from their quarter minutes, of those from `fromMs` to `toMs`.
struct Cuts {
    double earliestMs = 0;
    double latestMs = 0;
    int periods = 0;
};

Cuts cut(Sound sound, qint64 fromMs, qint64 toMs)
{
    SoundClock clock;
    clock.start(firstPeriodMs);
    Cuts cuts;
    qint64 fed = 0;
    int zeros = 0;
    while (sound.arrivalMs() < firstPeriodMs + toMs) {
        sound.next();
        for (const SoundPiece &piece : clock.take(sound.samples(), sound.arrivalMs())) {
            if (piece.from < 0) {
                zeros = piece.count;
            } else if (fed % samplesPerPeriod == zeros) {
                const double startMs = sound.heardMs(piece.from) - zeros / 12.0;
                const qint64 nominalMs = fed / samplesPerPeriod * 15000;
                const double off = startMs - static_cast<double>(firstPeriodMs + nominalMs);
                if (nominalMs >= fromMs) {
                    cuts.earliestMs = qMin(cuts.earliestMs, off);
                    cuts.latestMs = qMax(cuts.latestMs, off);
                    cuts.periods += 1;
                }
                zeros = 0;
            }
            fed += piece.count;
        }
    }
    return cuts;
}
} // namespace

class SoundClockTest : public QObject
{
    Q_OBJECT

private slots:
    void aDayStaysOnTheComputersClock_data();
    void aDayStaysOnTheComputersClock();
    void manyLostSamplesAreMadeUpForWithinMinutes();
    void theFirstPeriodBeginsAtItsSample();
    void soundHurriedBeforeTheFirstPeriodIsNotMeasured();
    void piecesEndWherePeriodsEnd();
    void aSetClockIsNoticedAtOnce();
    void theRateIsMeasured_data();
    void theRateIsMeasured();
    void soundFarFromTheClockIsLost();
};

void SoundClockTest::aDayStaysOnTheComputersClock_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("frameSamples");
    QTest::addColumn<Network>("network");
    const Network steady;
    Network bursty;
    bursty.burstMs = 3000;
    bursty.jitterMs = 40;
    Network stalls;
    stalls.jitterMs = 40;
    stalls.stallEveryMs = 97000;
    stalls.stallMs = 9000;
    Network both = bursty;
    both.stallEveryMs = 247000;
    both.stallMs = 40000;
    Network losing = steady;
    losing.loseEveryMs = 60000;
    losing.lostSamples = 300;
    Network all = both;
    all.loseEveryMs = 60000;
    all.lostSamples = 300;
    QTest::newRow("99 ppm fast") << 12001.1 << 512 << steady;
    QTest::newRow("99 ppm fast, compressed") << 12001.1 << 2048 << steady;
    QTest::newRow("slow") << 11998.8 << 512 << steady;
    QTest::newRow("bursty") << 12001.1 << 2048 << bursty;
    QTest::newRow("stalls") << 12001.1 << 512 << stalls;
    QTest::newRow("bursty with stalls") << 12001.1 << 2048 << both;
    QTest::newRow("samples lost") << 12001.1 << 512 << losing;
    QTest::newRow("all of it") << 12001.1 << 2048 << all;
}

void SoundClockTest::aDayStaysOnTheComputersClock()
{
    QFETCH(double, rate);
    QFETCH(int, frameSamples);
    QFETCH(Network, network);
    const Cuts cuts = cut(Sound(rate, frameSamples, network), 0, dayMs);
    QVERIFY(cuts.periods >= 5755); // the day may end in a stall
    QVERIFY2(cuts.earliestMs > -100, qPrintable(QString::number(cuts.earliestMs)));
    QVERIFY2(cuts.latestMs < 100, qPrintable(QString::number(cuts.latestMs)));
}

// Six parts in a thousand are lost. The first correction comes when five windows are known.
void SoundClockTest::manyLostSamplesAreMadeUpForWithinMinutes()
{
    Network network;
    network.loseEveryMs = 4000;
    network.lostSamples = 300;
    const Cuts first = cut(Sound(12000, 512, network), 0, dayMs);
    QVERIFY2(first.latestMs < 500, qPrintable(QString::number(first.latestMs)));
    const Cuts later = cut(Sound(12000, 512, network), 120000, dayMs);
    QVERIFY2(later.earliestMs > -100, qPrintable(QString::number(later.earliestMs)));
    QVERIFY2(later.latestMs < 100, qPrintable(QString::number(later.latestMs)));
}

void SoundClockTest::theFirstPeriodBeginsAtItsSample()
{
    SoundClock clock;
    clock.start(firstPeriodMs);
    QCOMPARE(clock.take(1200, firstPeriodMs - 2040).size(), 0); // its middle is at that time
    QCOMPARE(clock.take(1200, firstPeriodMs - 1940).size(), 0);
    QCOMPARE(clock.take(22080, firstPeriodMs + 900).size(), 0); // late: it ends 50 ms before
    const QVector<SoundPiece> pieces = clock.take(1200, firstPeriodMs + 900);
    QCOMPARE(pieces.size(), 1);
    QCOMPARE(pieces.first().from, 600);
    QCOMPARE(pieces.first().count, 600);
    QCOMPARE(clock.take(1200, firstPeriodMs + 900).first().count, 1200);
}

void SoundClockTest::soundHurriedBeforeTheFirstPeriodIsNotMeasured()
{
    SoundClock clock;
    clock.start(firstPeriodMs);
    clock.take(1200, firstPeriodMs - 1050);
    clock.take(12000, firstPeriodMs - 900); // half a second early
    const QVector<SoundPiece> pieces = clock.take(1200, firstPeriodMs + 50);
    QCOMPARE(pieces.size(), 1);
    QCOMPARE(pieces.first().from, 0);
}

void SoundClockTest::piecesEndWherePeriodsEnd()
{
    SoundClock clock;
    clock.start(firstPeriodMs);
    clock.take(1200, firstPeriodMs - 50); // ends on the boundary
    const QVector<SoundPiece> pieces = clock.take(2 * samplesPerPeriod + 7, firstPeriodMs + 30000);
    QCOMPARE(pieces.size(), 3);
    const QVector<int> from{0, samplesPerPeriod, 2 * samplesPerPeriod};
    const QVector<int> count{samplesPerPeriod, samplesPerPeriod, 7};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(pieces.at(i).from, from.at(i));
        QCOMPARE(pieces.at(i).count, count.at(i));
    }
}

void SoundClockTest::aSetClockIsNoticedAtOnce()
{
    SoundClock clock;
    QVERIFY(!clock.hasStepped(firstPeriodMs, 1000));
    QVERIFY(!clock.hasStepped(firstPeriodMs + 9000, 10000)); // a stall
    QVERIFY(!clock.hasStepped(firstPeriodMs + 9540, 10040)); // 500 ms
    QVERIFY(clock.hasStepped(firstPeriodMs + 10081, 10080)); // 501 ms more
    QVERIFY(!clock.hasStepped(firstPeriodMs + 10121, 10120));
    QVERIFY(clock.hasStepped(firstPeriodMs - 3600000, 10160));
}

void SoundClockTest::theRateIsMeasured_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("12001.1 Hz") << 12001.1;
    QTest::newRow("20250 Hz") << 20250.0;
    QTest::newRow("8000 Hz") << 8000.0;
}

void SoundClockTest::theRateIsMeasured()
{
    QFETCH(double, rate);
    Network network;
    network.burstMs = 1000;
    Sound sound(rate, 512, network);
    SoundClock clock;
    clock.start(firstPeriodMs);
    QVERIFY(!clock.rateHz());
    while (sound.arrivalMs() < firstPeriodMs + 120000) {
        sound.next();
        clock.take(sound.samples(), sound.arrivalMs());
    }
    QVERIFY(clock.rateHz());
    QVERIFY(qAbs(*clock.rateHz() - rate) < 20);
}

void SoundClockTest::soundFarFromTheClockIsLost()
{
    Sound sound(12000, 512, {});
    SoundClock clock;
    clock.start(firstPeriodMs);
    const auto listenUntil = [&](qint64 utcMs, qint64 lateMs) {
        while (sound.arrivalMs() < utcMs) {
            sound.next();
            clock.take(sound.samples(), sound.arrivalMs() + lateMs);
        }
    };
    listenUntil(firstPeriodMs + 300000, 0);
    QVERIFY(!clock.isLost(firstPeriodMs + 300000));
    listenUntil(firstPeriodMs + 900000, 3000);
    QVERIFY(clock.isLost(firstPeriodMs + 900000));
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::SoundClockTest)
#include "soundclock_test.moc"
