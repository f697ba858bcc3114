#pragma once

#include "sim/samples.h"

#include <QByteArray>
#include <QString>

namespace outpost
{

namespace sim
{

// Reads one FT8 period: RIFF/WAVE, PCM, mono, 16 bit, 12000 Hz, exactly 180000 samples. On failure
// returns false, names the file and the problem in `error`, and leaves `samples` unchanged.
bool readPeriodWav(const QString &path, Samples *samples, QString *error);

// Writes the same format, completely or not at all.
bool writePeriodWav(const QString &path, const Samples &samples, QString *error);

QByteArray toLittleEndian(const Samples &samples);
QByteArray toBigEndian(const Samples &samples);
Samples fromLittleEndian(const QByteArray &bytes); // drops an odd last byte

} // namespace sim

} // namespace outpost
