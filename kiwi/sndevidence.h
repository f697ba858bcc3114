#pragma once

#include "kiwi/linkstate.h"

#include <QDateTime>
#include <QString>

namespace outpost
{

// The contents of the live report about received "SND" audio.
struct SndEvidence {
    QDateTime capturedLocal;
    QString host;
    int port = 0;
    double frequencyMhz = 0;
    LinkState link; // endpoint and counters
    QString programPath;
    QString programSha256; // 64 upper-case hexadecimal digits, or "UNAVAILABLE"
};

// Whether to rewrite the report on this "SND" frame: the first and every twentieth.
bool evidenceIsDue(quint64 sndFrames);

// The report file of a connection that starts at `startLocal`. The folder is used unchanged; an
// empty one gives a path at the root of the current drive.
QString evidenceFilePath(const QString &folder, const QDateTime &startLocal);

// The report's text; each line ends with LF.
QString evidenceText(const SndEvidence &evidence);

// SHA-256 of the file in upper-case hexadecimal; "UNAVAILABLE" if it cannot be read.
QString fileSha256(const QString &path);

} // namespace outpost
