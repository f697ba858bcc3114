#pragma once

#include "sim/samples.h"

#include <QByteArray>
#include <QString>

namespace outpost
{

namespace sim
{

// Reads one FT8 period: RIFF/WAVE, PCM, mono, 16 bit, 12000 Hz, exactly 180000 samples. On failure
// returns false and says in `error` what is wrong with which file; `samples` is left alone.
bool readPeriodWav(const QString &path, Samples *samples, QString *error);

// Writes the same format whole or not at all.
bool writePeriodWav(const QString &path, const Samples &samples, QString *error);

QByteArray toLittleEndian(const Samples &samples);
QByteArray toBigEndian(const Samples &samples);
Samples fromLittleEndian(const QByteArray &bytes); // an odd last byte is dropped

} // namespace sim

} // namespace outpost
