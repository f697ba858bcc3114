// How many stations of a crowded band with many weak ones are decoded from the sound as it is, and
// from the sound that the receiver has compressed.
// Usage: codec_bench BAND-CACHE PERIODS

#include "daemon/decodeplan.h"
#include "daemon/decoderlookup.h"
#include "decode/ft8decode.h"
#include "decode/jt9runner.h"
#include "sim/imaadpcmencoder.h"
#include "sim/simwav.h"
#include "sim/syntheticband.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTemporaryDir>
#include <future>

namespace outpost
{

namespace
{
constexpr int depth = 2;
constexpr DecodeBand usualBand{200, 3000};

QSet<QString> messagesOf(int period)
{
    QSet<QString> messages;
    for (const sim::PlannedStation &station : sim::weakStations(period)) {
        messages.insert(station.message);
    }
    return messages;
}

// How many of the messages the decoder finds.
int found(const sim::Samples &samples, const QString &folder, const QSet<QString> &messages)
{
    QDir().mkpath(folder);
    const QString wav = folder + QStringLiteral("/period.wav");
    const QString error = sim::writePeriodWav(wav, samples);
    Jt9Control control;
    control.decoderPath = [] { return usableDecoder({}); };
    const Jt9Result decoded = runJt9(wav, folder, usualBand, depth, {}, true, control);
    if (!error.isEmpty() || decoded.failure.cause != Jt9Cause::None) {
        qFatal("the decoder does not run");
    }
    QSet<QString> heard;
    for (const Ft8Decode &decode : parseDecodeLines(decoded.lines)) {
        heard.insert(decode.key);
    }
    return heard.intersect(messages).size();
}

QJsonObject measure(const QString &cache, int periods)
{
    sim::BandSettings settings;
    settings.cacheFolder = cache;
    settings.stations = sim::weakStations;
    const sim::Band band = sim::loadBand(settings);
    if (!band.error.isEmpty()) {
        qFatal("%s", qPrintable(band.error));
    }
    const QTemporaryDir folder;
    sim::AdpcmState encoder;
    sim::AdpcmState decoder;
    int planned = 0;
    int plain = 0;
    int compressed = 0;
    for (int period = 0; period < periods; ++period) {
        const QSet<QString> messages = messagesOf(period);
        const sim::Samples &sound = band.periods.at(period);
        auto ofPlain = std::async(std::launch::async, [&] {
            return found(sound, folder.filePath(QStringLiteral("plain")), messages);
        });
        const sim::Samples received = sim::decodeAdpcm(&decoder, sim::encodeAdpcm(&encoder, sound));
        compressed += found(received, folder.filePath(QStringLiteral("compressed")), messages);
        plain += ofPlain.get();
        planned += messages.size();
    }
    return {{QStringLiteral("planned"), planned},
            {QStringLiteral("plain"), plain},
            {QStringLiteral("compressed"), compressed}};
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int periods = arguments.value(2).toInt();
    if (periods < 1 || periods > sim::kBandPeriods) {
        qFatal("usage: codec_bench BAND-CACHE PERIODS");
    }
    const QJsonObject result = measure(arguments.at(1), periods);
    std::printf("%s", QJsonDocument(result).toJson().constData());
    return 0;
}
