#pragma once

#include "sim/samples.h"

#include <QByteArray>
#include <QString>

namespace outpost
{

namespace sim
{

// The sound of one FT8 period, or why there is none.
struct PeriodSound {
    Samples samples; // 180000; none after a failure
    QString error;   // empty if there are samples
};

// Reads one FT8 period: RIFF/WAVE, PCM, mono, 16 bit, 12000 Hz, exactly 180000 samples. An error
// names the file.
PeriodSound readPeriodWav(const QString &path);

// Writes the same format, completely or not at all. Returns an empty text, or the file and what is
// wrong with it.
QString writePeriodWav(const QString &path, const Samples &samples);

QByteArray toLittleEndian(const Samples &samples);
QByteArray toBigEndian(const Samples &samples);
Samples fromLittleEndian(const QByteArray &bytes); // drops an odd last byte

} // namespace sim

} // namespace outpost
