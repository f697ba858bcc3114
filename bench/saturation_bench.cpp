// More periods than the decoders can take at once, from receivers of the station without a window,
// beside the same number of decoders that a shell runs on the same sound.
// Usage: saturation_bench BAND-CACHE RECEIVERS ROUNDS

#include "daemon/decodeplan.h"
#include "daemon/decoderlookup.h"
#include "daemon/receiveraudio.h"
#include "kiwi/sndframe.h"
#include "sim/simwav.h"
#include "sim/syntheticband.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QThreadPool>
#include <cstdio>
#include <memory>
#include <vector>

namespace outpost
{

namespace
{
constexpr int depth = 2;
constexpr int lowHz = 200;
constexpr int highHz = 3000;
constexpr int frameSamples = 512;
constexpr int leadSeconds = 10;
constexpr qint64 boundaryMs = 1700000010000; // UTC, of a period

// As many at once as the station runs. The folders are made beforehand.
const QString bareDecoders =
    QStringLiteral("cd \"$1\" && ls -d */ | xargs -P \"$2\" -n 1 sh -c "
                   "'cd \"$0\" && exec jt9 --ft8 -d 2 -L 200 -H 3000 period.wav >decodes 2>&1'");

QByteArray rawFrame(const sim::Samples &samples)
{
    return QByteArray("SND\0\0\0\0\0\0\0", sndHeaderBytes) + sim::toBigEndian(samples);
}

class SaturationBench
{
public:
    SaturationBench(sim::Band bandToPlay, int receiversToRun);

    void runOwn();
    void runBare();
    QJsonObject result() const;

private:
    CaptureOptions captureOptions(int receiver);
    void feed(ReceiverAudio &audio, const sim::Samples &period);
    QString bareFolder(int receiver) const;

    const sim::Band band;
    const int receivers;
    const QString decoder = usableDecoder({});
    const QTemporaryDir folder;
    QThreadPool pool;
    QJsonArray own;
    QJsonArray reference;
    int ownDecodes = 0;
};

SaturationBench::SaturationBench(sim::Band bandToPlay, int receiversToRun)
    : band(std::move(bandToPlay)), receivers(receiversToRun)
{
    pool.setMaxThreadCount(QThread::idealThreadCount());
    pool.setExpiryTimeout(-1);
    for (int i = 0; i < receivers; ++i) {
        QDir().mkpath(bareFolder(i));
        const QString error = sim::writePeriodWav(bareFolder(i) + QStringLiteral("/period.wav"),
                                                  band.periods.at(i % sim::kBandPeriods));
        if (!error.isEmpty()) {
            qFatal("%s", qPrintable(error));
        }
    }
}

QString SaturationBench::bareFolder(int receiver) const
{
    return folder.filePath(QStringLiteral("bare/%1").arg(receiver));
}

CaptureOptions SaturationBench::captureOptions(int receiver)
{
    CaptureOptions options;
    options.bands = decodeBands(lowHz, highHz, 1);
    options.sharedPool = &pool;
    options.keepsFftPlans = true;
    options.priority = [receiver](qint64 startMs) {
        return decodePriority(QString::number(receiver), startMs);
    };
    options.decoderPath = [this] { return decoder; };
    return options;
}

// Silence before the period, at the times of a perfect clock, and at once.
void SaturationBench::feed(ReceiverAudio &audio, const sim::Samples &period)
{
    const sim::Samples lead(leadSeconds * sim::kSampleRateHz);
    const sim::Samples sound = lead + period + sim::Samples(frameSamples);
    const qint64 startMs = boundaryMs - 1000LL * leadSeconds;
    int completed = 0;
    for (int at = 0; at + frameSamples <= sound.size(); at += frameSamples) {
        const qint64 now = startMs + (at + frameSamples) / (sim::kSampleRateHz / 1000);
        completed += audio.take(rawFrame(sound.mid(at, frameSamples)), now, now);
    }
    if (completed != 1) {
        qFatal("the sound does not become a period");
    }
}

void SaturationBench::runOwn()
{
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    int left = receivers;
    ownDecodes = 0;
    std::vector<std::unique_ptr<ReceiverAudio>> audios;
    for (int i = 0; i < receivers; ++i) {
        const auto onFinished = [&](const FinishedPeriod &period) {
            ownDecodes += period.decodes.size();
            if (--left == 0) {
                loop.quit();
            }
        };
        audios.push_back(std::make_unique<ReceiverAudio>(
            captureOptions(i), folder.filePath(QStringLiteral("own/%1").arg(i)), depth,
            onFinished));
        feed(*audios.back(), band.periods.at(i % sim::kBandPeriods));
    }
    loop.exec();
    own.append(double(clock.nsecsElapsed()) / 1e9);
}

void SaturationBench::runBare()
{
    QElapsedTimer clock;
    clock.start();
    QProcess shell;
    shell.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"), bareDecoders, QStringLiteral("sh"),
                 folder.filePath(QStringLiteral("bare")), QString::number(pool.maxThreadCount())});
    shell.waitForFinished(-1);
    reference.append(double(clock.nsecsElapsed()) / 1e9);
}

QJsonObject SaturationBench::result() const
{
    int bareDecodes = 0;
    for (int i = 0; i < receivers; ++i) {
        QFile decodes(bareFolder(i) + QStringLiteral("/decodes"));
        bareDecodes += decodes.open(QIODevice::ReadOnly) ? decodes.readAll().count('~') : 0;
    }
    return {{QStringLiteral("own"), own},
            {QStringLiteral("reference"), reference},
            {QStringLiteral("ownDecodes"), ownDecodes},
            {QStringLiteral("referenceDecodes"), bareDecodes}};
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        qFatal("usage: saturation_bench BAND-CACHE RECEIVERS ROUNDS");
    }
    sim::BandSettings settings;
    settings.cacheFolder = arguments.at(1);
    const sim::Band band = sim::loadBand(settings);
    if (!band.error.isEmpty()) {
        qFatal("%s", qPrintable(band.error));
    }
    SaturationBench bench(band, arguments.at(2).toInt());
    for (int round = 0; round < arguments.at(3).toInt(); ++round) {
        bench.runOwn();
        bench.runBare();
    }
    std::printf("%s", QJsonDocument(bench.result()).toJson().constData());
    return 0;
}
