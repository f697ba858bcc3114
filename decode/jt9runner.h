#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include "decode/decodeband.h"

// How long one run may take, in ms.
struct Jt9Limits {
    int startMs = 5000;   // until it runs
    int finishMs = 45000; // until it has ended by itself: three periods
    int killMs = 5000;    // until it has ended when killed
};

// Runs the decoder that the environment variable PELQ_JT9_PATH names, read anew at each run, on
// one WAV file and one sub-band, and returns its decode lines. The decoder works in
// `workerFolder` and takes it for its home, so that what it leaves behind goes with that folder.
// Every failure (no decoder, one that cannot run from where it lies, no start, overrun, crash, an
// exit code other than 0) gives an empty list. When this returns, nothing that the decoder
// started is running any more (`folderIsOwn`: no other run has this folder, nor another copy of
// the program; otherwise what has left the decoder's process group goes on). `depth` is 1..3.
// Blocks; may run on several threads at once.
QStringList runJt9(const QString &wavPath, const QString &workerFolder, const DecodeBand &band,
                   int depth, const Jt9Limits &limits = {}, bool folderIsOwn = true);

// Gathers the decode lines of a decoder's standard output as it arrives: those that contain "~",
// trimmed, in order. Reading ends at the first NUL byte. Everything else is dropped as it comes,
// and no more than about mostBytes of lines are kept, so that a decoder that prints without end
// does not fill the memory.
class Jt9Output
{
public:
    static constexpr int mostBytes = 256 * 1024; // a crowded band takes a few kB

    void add(const QByteArray &bytes); // in the local 8-bit encoding
    QStringList finish();              // also takes a last line without an end

private:
    void takeLines(QByteArray wholeLines);

    QByteArray partialLine;
    QStringList lines;
    int keptBytes = 0;
    bool ended = false; // the rest is not looked at
};
