// Every sample on its way from the receiver to the decoder: the WAV files that the decoder is
// given are the stream after the codec, period after period without a gap.

#include "tests/fixture/simulator.h"
#include "tests/fixture/teststation.h"

#include "sim/simwav.h"

#include <QDir>
#include <QtTest>

namespace
{
constexpr int periods = 3;
constexpr int wavHeaderBytes = 44;

// Noise at the level of a busy band, another one for each period.
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

// The decoder keeps each WAV under the name of its worker's folder.
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
} // namespace

class StreamTest : public QObject
{
    Q_OBJECT

private slots:
    void theDecoderGetsTheStreamSampleForSample_data();
    void theDecoderGetsTheStreamSampleForSample();
};

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
    const QTemporaryDir kept;
    TestStation station(keepingDecoder(kept.path()));
    QList<SentPeriod> sent;
    SimConfig config;
    config.audio = busyBand();
    config.raw = raw;
    config.firstSoundDelayMs = 0;
    config.speed = 1000;
    config.realTimePeriods = 0;
    config.nowMs = station.clock.reader();
    config.onPeriod = [&sent](const SentPeriod &period) { sent.append(period); };
    KiwiSim sim;
    startSim(sim, {QStringLiteral("all=") + behaviour}, config);

    // The clock stands still while the frames before the boundary are on their way, so that none
    // of them can arrive after it.
    const qint64 boundaryMs = MadeUpClock::boundaryMs();
    station.clock.set(boundaryMs - 4000);
    station.connectTo(sim.port());
    QTRY_COMPARE(sim.commands().size(), 7);
    station.clock.set(boundaryMs - 3900);
    QTRY_VERIFY(summaryLine(*station.window).startsWith(QLatin1String("Kiwi Connected")));
    station.clock.set(boundaryMs - 400);
    const int framesBefore = 4000 * 12 / frameSamples * soundFramesEach;
    QTRY_VERIFY2(station.window->kiwiStatusText().contains(
                     QStringLiteral("\nSND: %1 frames ").arg(framesBefore)),
                 qPrintable(station.window->kiwiStatusText()));
    station.clock.set(boundaryMs + periods * 15 + 2); // the stream is 1000 times as fast

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
    // Uncompressed, it is the band itself.
    if (raw) {
        QVERIFY(sent.at(1).samples == config.audio.at(1));
    }
}

OUTPOST_WINDOW_TEST_MAIN(StreamTest)
#include "stream_test.moc"
