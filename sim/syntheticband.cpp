#include "sim/syntheticband.h"

#include "sim/simwav.h"

#include <QCryptographicHash>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cmath>
#include <iterator>
#include <random>

namespace outpost
{

namespace sim
{

namespace
{

constexpr int kStations = 28;
constexpr double kLowestHz = 210;
constexpr double kSpacingHz = 96;
constexpr double kReferenceHz = 2500;
constexpr int kGeneratorTimeoutMs = 20000;

// A pseudo-random number below `limit`, the same on every machine (splitmix64).
int pick(int limit, int station, int purpose)
{
    quint64 z = quint64(station) * 1000 + quint64(purpose);
    z += Q_UINT64_C(0x9E3779B97F4A7C15) * (z + 1);
    z = (z ^ (z >> 30)) * Q_UINT64_C(0xBF58476D1CE4E5B9);
    z = (z ^ (z >> 27)) * Q_UINT64_C(0x94D049BB133111EB);
    return int((z ^ (z >> 31)) % quint64(limit));
}

QChar letter(int station, int purpose, int letters = 26)
{
    return QLatin1Char(char('A' + pick(letters, station, purpose)));
}

QString callsign(int station, int purpose)
{
    static const char *const prefixes[] = {
        "K",  "W",  "N",  "KA", "WB", "VE", "G",  "DL", "F",  "I",  "JA", "VK", "ZL", "PY", "LU",
        "OH", "SM", "LA", "OZ", "PA", "ON", "EA", "CT", "SP", "OK", "OM", "HA", "YO", "LZ", "SV"};
    const int index = pick(int(std::size(prefixes)), station, purpose);
    QString call = QString::fromLatin1(prefixes[index]);
    call += QString::number(pick(10, station, purpose + 1));
    for (int i = 0; i < 2 + pick(2, station, purpose + 2); ++i) {
        call += letter(station, purpose + 3 + i);
    }
    return call;
}

QString grid(int station, int purpose)
{
    return QString(letter(station, purpose, 18)) + letter(station, purpose + 1, 18) +
           QString::number(10 + pick(90, station, purpose + 2));
}

QString report(int station, int purpose)
{
    return QString::asprintf("%+03d", pick(35, station, purpose) - 22);
}

// A contact takes six periods; then two other callsigns use the frequency.
QString message(int station, int period)
{
    const int step = station + period;
    const int contact = 100 * (1 + step / 6);
    const QString a = callsign(station, contact);
    const QString b = callsign(station, contact + 10);
    switch (step % 6) {
    case 0:
        return QStringLiteral("CQ %1 %2").arg(a, grid(station, contact + 20));
    case 1:
        return QStringLiteral("%1 %2 %3").arg(a, b, grid(station, contact + 30));
    case 2:
        return QStringLiteral("%1 %2 %3").arg(b, a, report(station, contact + 40));
    case 3:
        return QStringLiteral("%1 %2 R%3").arg(a, b, report(station, contact + 41));
    case 4:
        return QStringLiteral("%1 %2 RR73").arg(b, a);
    default:
        return QStringLiteral("%1 %2 73").arg(a, b);
    }
}

// Amplitude of a sine with this SNR in 2500 Hz of the noise floor, which spans 6000 Hz.
double amplitude(int snrDb)
{
    const double noisePower = kNoiseRms * kNoiseRms * kReferenceHz / (kSampleRateHz / 2.0);
    return std::sqrt(2 * noisePower * std::pow(10, snrDb / 10.0));
}

QStringList generatorArguments(const PlannedStation &station)
{
    // message, frequency, DT, Doppler spread, delay, number of files, SNR (99: no noise)
    return {station.message,
            QString::number(station.audioHz, 'f', 1),
            QString::number(station.offsetSec, 'f', 2),
            QStringLiteral("0"),
            QStringLiteral("0"),
            QStringLiteral("1"),
            QStringLiteral("99")};
}

// Generates one full-scale signal without noise.
PeriodSound generate(const QString &generator, const PlannedStation &station)
{
    const QTemporaryDir scratch;
    QProcess process;
    process.setWorkingDirectory(scratch.path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(generator, generatorArguments(station), QIODevice::ReadOnly);
    if (!process.waitForFinished(kGeneratorTimeoutMs) ||
        process.exitStatus() != QProcess::NormalExit) {
        return {{},
                QStringLiteral("the FT8 signal generator \"%1\" does not run: %2")
                    .arg(generator, process.errorString())};
    }
    PeriodSound signal = readPeriodWav(scratch.filePath(QStringLiteral("000000_000001.wav")));
    if (!signal.error.isEmpty()) {
        signal.error =
            QStringLiteral("the FT8 signal generator \"%1\" made no signal of \"%2\": %3 %4")
                .arg(generator, station.message, signal.error,
                     QString::fromLocal8Bit(process.readAll().left(200)).simplified());
    }
    return signal;
}

PeriodSound mixPeriod(const QString &generator, const QVector<PlannedStation> &stations, int period)
{
    std::mt19937 random{quint32(period)};
    std::normal_distribution<double> noise(0, kNoiseRms);
    QVector<double> sum(kPeriodSamples);
    for (double &sample : sum) {
        sample = noise(random);
    }
    for (const PlannedStation &station : stations) {
        PeriodSound signal = generate(generator, station);
        if (!signal.error.isEmpty()) {
            return signal;
        }
        const double gain = amplitude(station.snrDb) / 32767;
        for (int i = 0; i < kPeriodSamples; ++i) {
            sum[i] += gain * signal.samples.at(i);
        }
    }
    PeriodSound mixed;
    for (const double sample : qAsConst(sum)) {
        mixed.samples.append(qint16(qBound(-32768.0, std::round(sample), 32767.0)));
    }
    return mixed;
}

// The folder's name depends on the plan and the levels, so that a changed band never comes from an
// old cache.
QString cacheFolder(const BandSettings &settings)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(QByteArray::number(kNoiseRms));
    for (int period = 0; period < kBandPeriods; ++period) {
        for (const PlannedStation &station : settings.stations(period)) {
            hash.addData(generatorArguments(station).join(QLatin1Char('|')).toUtf8());
            hash.addData(QByteArray::number(station.snrDb));
        }
    }
    const QString &root = settings.cacheFolder;
    const QString base =
        root.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                             QStringLiteral("/kiwi-sim")
                       : root;
    return base + QStringLiteral("/band-") + QString::fromLatin1(hash.result().toHex().left(16));
}

PeriodSound makePeriod(const BandSettings &settings, int period)
{
    if (settings.progress) {
        settings.progress(QStringLiteral("making period %1 of %2 of the synthetic band")
                              .arg(period + 1)
                              .arg(kBandPeriods));
    }
    const QString generator = settings.generator.isEmpty()
                                  ? QStandardPaths::findExecutable(QStringLiteral("ft8sim"))
                                  : settings.generator;
    if (generator.isEmpty()) {
        return {{},
                QStringLiteral("ft8sim, which makes the synthetic band, is not on PATH (it comes "
                               "with the wsjtx package); give WAV files instead")};
    }
    return mixPeriod(generator, settings.stations(period), period);
}

PeriodSound loadPeriod(const BandSettings &settings, const QDir &folder, int period)
{
    const QString path = folder.filePath(QStringLiteral("period-%1.wav").arg(period));
    PeriodSound cached = readPeriodWav(path);
    if (cached.error.isEmpty()) {
        return cached;
    }
    PeriodSound made = makePeriod(settings, period);
    if (made.error.isEmpty()) {
        folder.mkpath(QStringLiteral("."));
        made.error = writePeriodWav(path, made.samples);
    }
    return made;
}

} // namespace

QVector<PlannedStation> plannedStations(int period)
{
    QVector<PlannedStation> stations;
    for (int i = 0; i < kStations; ++i) {
        PlannedStation station;
        station.audioHz = kLowestHz + kSpacingHz * i + pick(21, i, 1) - 10;
        // 13 is coprime to the 29 levels, so strong and weak stations alternate.
        station.snrDb = 10 - (13 * i + 5 * period) % 29;
        station.offsetSec = pick(10, i, 2) / 10.0 - 0.2;
        station.message = message(i, period);
        stations.append(station);
    }
    return stations;
}

QVector<PlannedStation> weakStations(int period)
{
    constexpr int stationCount = 56;
    QVector<PlannedStation> stations;
    for (int i = 0; i < stationCount; ++i) {
        PlannedStation station;
        station.audioHz = kLowestHz + kSpacingHz / 2 * i + pick(11, i, 3) - 5;
        const int level = 100 * period + 4;
        station.snrDb = i % 8 == 3 ? 8 + pick(16, i, level) : -20 + pick(9, i, level);
        station.offsetSec = pick(10, i, 2) / 10.0 - 0.2;
        station.message = message(i, period);
        stations.append(station);
    }
    return stations;
}

Band loadBand(const BandSettings &settings)
{
    const QDir folder(cacheFolder(settings));
    Band band;
    for (int period = 0; period < kBandPeriods; ++period) {
        const PeriodSound sound = loadPeriod(settings, folder, period);
        if (!sound.error.isEmpty()) {
            return {{}, sound.error};
        }
        band.periods.append(sound.samples);
    }
    return band;
}

} // namespace sim

} // namespace outpost
