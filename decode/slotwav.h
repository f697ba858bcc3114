#pragma once

#include "decode/decodeband.h"
#include "decode/jt9runner.h"
#include "decode/scratchfolder.h"

#include <QByteArray>
#include <QString>

namespace outpost
{

// One worker's sub-band of a period.
struct SlotJob {
    qint64 periodStartMs = 0; // UTC, ms since the epoch
    int worker = 0;           // 0..3
    DecodeBand band = {};
    int depth = 2;            // jt9's, 1..3
    QString captureFolder;    // root of the workers' scratch folders
    bool folderIsOwn = false; // no other copy of the program uses it
    Jt9Limits limits = {};
    QString scratchPrefix = QLatin1String(usualScratchPrefix);
    // Gives jt9 the FFT plans that an earlier run saved, which halves its processor time.
    bool keepsFftPlans = false;
    Jt9Control control = {};
};

constexpr int slotPcmBytes = 360000; // 15 s of signed 16-bit mono at 12000 Hz

// "<prefix><UTC start as yyyyMMdd_HHmmss>_S<worker, 1..4>_<low Hz>_<high Hz>".
QString workerFolderName(const SlotJob &job);

// Writes `samples` (little-endian) as a RIFF WAVE file with a 44-byte header. Returns an empty
// text, or why the file is incomplete.
QString writeSlotWav(const QString &path, const QByteArray &samples);

// Writes the period to a new scratch folder, runs jt9 there, removes the folder and returns jt9's
// decode lines. Every failure gives no lines and the cause, except that the lines are kept if only
// the folder could not be removed. Blocks while jt9 runs; meant for a worker thread.
Jt9Result decodeSlot(const SlotJob &job, const QByteArray &samples);

} // namespace outpost
