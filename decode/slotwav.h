#pragma once

#include "decode/decodeband.h"
#include "decode/jt9runner.h"
#include "decode/scratchfolder.h"

#include <QByteArray>
#include <QString>

namespace outpost
{

// One worker's share of a period.
struct SlotJob {
    qint64 periodStartMs = 0; // UTC, ms since the epoch
    int worker = 0;           // 0..3
    DecodeBand band = {};
    int depth = 2;            // jt9's, 1..3
    QString captureFolder;    // root of the workers' scratch folders
    bool folderIsOwn = false; // no other copy of the program works in it
    Jt9Limits limits = {};
    QString scratchPrefix = QLatin1String(usualScratchPrefix);
    Jt9Control control = {};
};

constexpr int slotPcmBytes = 360000; // 15 s of signed 16-bit mono at 12000 Hz

// "<prefix><UTC start as yyyyMMdd_HHmmss>_S<worker, 1..4>_<low Hz>_<high Hz>".
QString workerFolderName(const SlotJob &job);

// Writes `samples` (little-endian) as a RIFF WAVE file: a 44-byte header, then the samples.
// Returns an empty text, or why the file is not whole.
QString writeSlotWav(const QString &path, const QByteArray &samples);

// Writes the period to a scratch folder of its own, runs jt9 on it there, removes the folder and
// returns jt9's decode lines. Every failure gives no lines and the cause, but for a folder that
// could not be removed. Blocks as long as jt9 runs; meant for a worker thread.
Jt9Result decodeSlot(const SlotJob &job, const QByteArray &samples);

} // namespace outpost
