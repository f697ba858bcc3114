#pragma once

#include "sim/samples.h"

#include <QString>
#include <functional>

namespace outpost
{

namespace sim
{

// A busy FT8 band, the same on every machine: stations over 200..2900 Hz, +10..-18 dB, in pairs
// that call, answer and sign off from period to period.
struct PlannedStation {
    double audioHz = 0;   // lowest tone
    int snrDb = 0;        // in 2500 Hz of noise
    double offsetSec = 0; // DT
    QString message;
};

constexpr int kBandPeriods = 8; // then the band begins again

QVector<PlannedStation> plannedStations(int period);

// Where and with what the band is made. Empty fields stand for the user's cache folder and for the
// generator on PATH.
struct BandSettings {
    QString cacheFolder;
    QString generator; // the FT8 signal generator of the decoder's package
    std::function<void(const QString &)> progress;
};

// All periods, from the cache or freshly made and then cached. About 10 s when nothing is cached.
bool loadBand(const BandSettings &settings, QVector<Samples> *periods, QString *error);

} // namespace sim

} // namespace outpost
