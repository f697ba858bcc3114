#pragma once

#include "sim/samples.h"

#include <QString>
#include <functional>

namespace outpost
{

namespace sim
{

// A busy FT8 band, the same on every machine: stations from 200 to 2900 Hz and from +10 to -18 dB,
// in pairs that call, answer and sign off from period to period.
struct PlannedStation {
    double audioHz = 0;   // lowest tone
    int snrDb = 0;        // in 2500 Hz of noise
    double offsetSec = 0; // DT
    QString message;
};

constexpr int kBandPeriods = 8; // then the band repeats

QVector<PlannedStation> plannedStations(int period);

// A crowded band, in which many weak stations lie between a few very strong ones: every eighth is
// at +8 to +23 dB, the others at -20 to -12 dB.
QVector<PlannedStation> weakStations(int period);

// Where the band is cached and what generates it. Empty fields mean the user's cache folder and the
// generator on PATH.
struct BandSettings {
    QString cacheFolder;
    QString generator; // FT8 signal generator of the decoder's package
    std::function<void(const QString &)> progress;
    QVector<PlannedStation> (*stations)(int period) = plannedStations;
};

// The sound of all periods, or why there is none.
struct Band {
    QVector<Samples> periods; // kBandPeriods; none after a failure
    QString error;            // empty if there are periods
};

// Reads the band from the cache, or makes and caches it, which takes about 10 s.
Band loadBand(const BandSettings &settings);

} // namespace sim

} // namespace outpost
