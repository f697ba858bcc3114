// Every sample on its way from the receiver to the decoder: the WAV files are the stream after the
// codec, period after period without a gap.

#include "sim/simwav.h"
#include "tests/fixture/aftermath.h"
#include "tests/fixture/simulator.h"
#include "tests/fixture/teststation.h"

#include <QDir>
#include <QtTest>

namespace outpost
{

namespace
{
constexpr int periods = 3;
constexpr int wavHeaderBytes = 44;

// Noise at the level of a busy band, different for each period.
QVector<sim::Samples> busyBand()
{
    QVector<sim::Samples> all;
    std::mt19937 random(14);
    for (int period = 0; period < periods; ++period) {
        sim::Samples samples;
        for (int i = 0; i < sim::kPeriodSamples; ++i) {
            samples.append(static_cast<qint16>(static_cast<int>(random() % 20000) - 10000));
        }
        all.append(samples);
    }
    return all;
}

// The decoder keeps each WAV file under the name of its worker's folder.
QByteArray keepingDecoder(const QString &folder)
{
    return "part=$(basename $(dirname \"$8\"))\n"
           "cp \"$8\" '" +
           QFile::encodeName(folder) + "'/$part.part && mv '" + QFile::encodeName(folder) +
           "'/$part.part '" + QFile::encodeName(folder) + "'/$part.wav\n";
}

QStringList wavNames(qint64 startMs)
{
    const QString start = QLocale::c().toString(QDateTime::fromMSecsSinceEpoch(startMs, Qt::UTC),
                                                QStringLiteral("yyyyMMdd_HHmmss"));
    QStringList names;
    for (const QString &worker : {QStringLiteral("S1_0_825"), QStringLiteral("S2_725_1550"),
                                  QStringLiteral("S3_1450_2275"), QStringLiteral("S4_2175_3000")}) {
        names.append(QStringLiteral("WORKER_%1_%2.wav").arg(start, worker));
    }
    return names;
}

const qint64 boundaryMs = MadeUpClock::boundaryMs();

// A receiver of a busy band and a station that listens to it.
struct Stream {
    Stream(const QString &behaviour, bool raw, double speed)
    {
        config.audio = busyBand();
        config.raw = raw;
        config.firstSoundDelayMs = 0;
        config.speed = speed;
        config.realTimePeriods = 0;
        config.nowMs = station.clock.reader();
        config.onPeriod = [this](const SentPeriod &period) { sent.append(period); };
        startSim(sim, {QStringLiteral("all=") + behaviour}, config);
    }
    Q_DISABLE_COPY(Stream)

    bool hasHeard(int minFrames, int maxFrames) const
    {
        int frames = 0;
        const bool reached = QTest::qWaitFor([&] {
            frames = soundFrames(station.window->kiwiStatusText());
            return frames >= minFrames;
        });
        return reached && frames <= maxFrames;
    }

    // Stops the clock while the frames before the boundary are in transit, so that none arrives
    // after it.
    void comeToTheBoundary(int framesBefore)
    {
        station.clock.set(boundaryMs - 4000);
        station.connectTo(sim.port());
        QTRY_COMPARE(sim.commands().size(), 7);
        station.clock.set(boundaryMs - 3900);
        QTRY_VERIFY(summaryLine(*station.window).startsWith(QLatin1String("Kiwi Connected")));
        station.clock.set(boundaryMs - 400);
        QVERIFY2(hasHeard(framesBefore, framesBefore),
                 qPrintable(station.window->kiwiStatusText()));
    }

    // Checks that every decoder got every sample of its period.
    void judge()
    {
        QTRY_VERIFY(sent.size() >= periods);
        for (int number = 0; number < periods; ++number) {
            const SentPeriod &period = sent.at(number);
            QCOMPARE(period.startMs, boundaryMs + number * 15000);
            for (const QString &name : wavNames(period.startMs)) {
                const QString path = kept.filePath(name);
                QTRY_VERIFY2(QFile::exists(path), qPrintable(name));
                const QByteArray heard = fileBytes(path).mid(wavHeaderBytes);
                QVERIFY2(heard == sim::toLittleEndian(period.samples), qPrintable(name));
            }
        }
        // Uncompressed, the stream is the band itself.
        if (config.raw) {
            QVERIFY(sent.at(1).samples == config.audio.at(1));
        }
    }

    const QTemporaryDir kept;
    TestStation station{keepingDecoder(kept.path())};
    QList<SentPeriod> sent;
    SimConfig config;
    KiwiSim sim;
};
} // namespace

class StreamTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theDecoderGetsTheStreamSampleForSample_data();
    void theDecoderGetsTheStreamSampleForSample();
    void soundInBurstsIsComplete_data();
    void soundInBurstsIsComplete();
};

void StreamTest::initTestCase()
{
    adoptOrphans();
    // Creates what Qt creates once and keeps, before the first comparison.
    const PuppetReceiver receiver;
    TestStation station;
    station.hearPeriod(receiver);
}

void StreamTest::theDecoderGetsTheStreamSampleForSample_data()
{
    QTest::addColumn<bool>("raw");
    QTest::addColumn<QString>("behaviour");
    QTest::addColumn<int>("frameSamples");
    QTest::addColumn<int>("soundFramesEach"); // that begin with "SND", audio or not
    QTest::newRow("ADPCM") << false << QStringLiteral("stream") << 2048 << 1;
    QTest::newRow("raw") << true << QStringLiteral("stream") << 512 << 1;
    QTest::newRow("ADPCM, odd payloads") << false << QStringLiteral("odd-payload") << 2046 << 1;
    QTest::newRow("raw, odd payloads") << true << QStringLiteral("odd-payload") << 511 << 1;
    QTest::newRow("ADPCM, short frames between")
        << false << QStringLiteral("short-frames") << 2048 << 2;
    QTest::newRow("raw, short frames between")
        << true << QStringLiteral("short-frames") << 512 << 2;
    QTest::newRow("ADPCM, other tags between")
        << false << QStringLiteral("other-tags") << 2048 << 1;
    QTest::newRow("ADPCM, text between") << false << QStringLiteral("text-between") << 2048 << 1;
    QTest::newRow("ADPCM in fragments") << false << QStringLiteral("fragments") << 2048 << 1;
    QTest::newRow("ADPCM, overload flag toggling")
        << false << QStringLiteral("overload") << 2048 << 1;
    QTest::newRow("ADPCM, stale first frame")
        << false << QStringLiteral("stale-first") << 2048 << 1;
}

void StreamTest::theDecoderGetsTheStreamSampleForSample()
{
    QFETCH(bool, raw);
    QFETCH(QString, behaviour);
    QFETCH(int, frameSamples);
    QFETCH(int, soundFramesEach);
    Stream stream(behaviour, raw, 1000);
    stream.comeToTheBoundary(4000 * 12 / frameSamples * soundFramesEach);
    stream.station.clock.set(boundaryMs + periods * 15 + 2); // the sound is 1000 times as fast
    stream.judge();
}

void StreamTest::soundInBurstsIsComplete_data()
{
    QTest::addColumn<bool>("raw");
    QTest::addColumn<int>("frameSamples");
    QTest::newRow("ADPCM in bursts") << false << 2048;
    QTest::newRow("raw in bursts") << true << 512;
}

// Repeatedly nothing for 2.5 s, then everything at once.
void StreamTest::soundInBurstsIsComplete()
{
    constexpr int burstMs = 2500;
    QFETCH(bool, raw);
    QFETCH(int, frameSamples);
    Aftermath aftermath;
    {
        Stream stream(QStringLiteral("bursty:2.5"), raw, 1);
        const int framesBefore = 4000 * 12 / frameSamples;
        stream.comeToTheBoundary(framesBefore);
        for (int burst = 0; burst <= periods * 15000 / burstMs; ++burst) {
            stream.station.clock.set(boundaryMs + burst * burstMs);
            const int frames = framesBefore + burst * burstMs * 12 / frameSamples;
            QVERIFY(stream.hasHeard(frames, frames + 1)); // one starts when the burst ends
        }
        stream.judge();
        QCOMPARE(stream.sent.size(), periods);
    }
    QCOMPARE(aftermath.whatStayed(), QStringList());
    aftermath.print(QTest::currentDataTag());
    QVERIFY(aftermath.staysWithin(100 * 1024));
    QVERIFY(aftermath.answersWithin(4000));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StreamTest)
#include "stream_test.moc"
