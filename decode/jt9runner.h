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

// Time limits of one run, in ms.
struct Jt9Limits {
    int startMs = 5000;   // to start
    int finishMs = 45000; // to finish: three periods
    int killMs = 5000;    // to exit after it was killed
};

// The current value of the environment variable PELQ_JT9_PATH.
QString jt9PathOfEnvironment();

struct Jt9Control {
    std::function<QString()> decoderPath = jt9PathOfEnvironment; // called at each run
    std::shared_ptr<const std::atomic<bool>> aborted;            // may become true at any time
};

// Runs the decoder on one WAV file and one sub-band, and returns its decode lines. `workerFolder`
// is the decoder's working directory and home, so that the files it leaves behind are removed with
// that folder. `depth` is 1..3. Every failure gives no lines and the cause: no decoder, a decoder
// that cannot run from its folder or does not start, a timeout, an abort, a crash, an exit code
// other than 0.
//
// On return, all processes of the run have been killed. The only exception is a process that has
// left the decoder's process group and closed all inherited files. If `folderIsOwn` is false, any
// process that has left the group survives; it means that no other run and no other copy of the
// program uses the folder.
//
// Blocks; may run on several threads at once.
Jt9Result runJt9(const QString &wavPath, const QString &workerFolder, const DecodeBand &band,
                 int depth, const Jt9Limits &limits = {}, bool folderIsOwn = true,
                 const Jt9Control &control = {});

// Collects the decode lines of the decoder's standard output as it arrives: those that contain "~",
// trimmed, in order. Reading stops at the first NUL byte. Lines over maxLineBytes and lines after
// the first maxLines are dropped, so that a runaway decoder can fill neither memory nor the table.
class Jt9Output
{
public:
    // Without the line end; a decode line has fewer than 80.
    static constexpr int maxLineBytes = 512;
    static constexpr int maxLines = 500; // a sub-band holds fewer than 60 signals

    void add(const QByteArray &bytes);               // in the local 8-bit encoding
    QStringList finish();                            // includes a last line without a line end
    bool hasDroppedLines() const { return dropped; } // because of maxLines

private:
    void extendLine(const QByteArray &part);
    void takeLine();

    QByteArray line; // if too long, only its start
    QStringList lines;
    bool dropped = false;
    bool ended = false; // the rest is ignored
};

} // namespace outpost
