#pragma once

#include "decode/decodeband.h"
#include "decode/jt9result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <memory>

namespace outpost
{

// How long one run may take, in ms.
struct Jt9Limits {
    int startMs = 5000;   // until it runs
    int finishMs = 45000; // until it has ended by itself: three periods
    int killMs = 5000;    // until it has ended when killed
};

// The path in the environment variable PELQ_JT9_PATH, as it is at the moment.
QString jt9PathOfEnvironment();

struct Jt9Control {
    std::function<QString()> decoderPath = jt9PathOfEnvironment; // asked at each run
    std::shared_ptr<const std::atomic<bool>> aborted;            // may become true at any time
};

// Runs the decoder on one WAV file and one sub-band, and returns its decode lines. The decoder
// works in `workerFolder` and takes it for its home, so that what it leaves behind goes with that
// folder. Every failure (no decoder, one that cannot run from where it lies, no start, overrun,
// abortion, crash, an exit code other than 0) gives no lines and the cause. On return, what the
// decoder started is ended, but for a process that has left the decoder's process group and closed
// everything that it was given (`folderIsOwn`: no other run has this folder, nor another copy of
// the program; if false, whatever has left the group lives on). `depth` is 1..3. Blocks; may run on
// several threads at once.
Jt9Result runJt9(const QString &wavPath, const QString &workerFolder, const DecodeBand &band,
                 int depth, const Jt9Limits &limits = {}, bool folderIsOwn = true,
                 const Jt9Control &control = {});

// Gathers the decode lines of a decoder's standard output as it arrives: those that contain "~",
// trimmed, in order. Reading ends at the first NUL byte. Lines over maxLineBytes and lines after
// the first maxLines are dropped, so that a runaway decoder fills neither memory nor the window.
class Jt9Output
{
public:
    static constexpr int maxLineBytes = 512; // without its end; a decode takes fewer than 80
    static constexpr int maxLines = 500;     // a sub-band holds fewer than 60 signals

    void add(const QByteArray &bytes);               // in the local 8-bit encoding
    QStringList finish();                            // also takes a last line without an end
    bool hasDroppedLines() const { return dropped; } // after the first maxLines

private:
    void extendLine(const QByteArray &part);
    void takeLine();

    QByteArray line; // of one that is too long, the beginning
    QStringList lines;
    bool dropped = false;
    bool ended = false; // the rest is not looked at
};

} // namespace outpost
