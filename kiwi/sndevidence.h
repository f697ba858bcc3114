#pragma once

#include "kiwi/linkstate.h"

#include <QDateTime>
#include <QString>

namespace outpost
{

// The report that real "SND" audio arrived: where from, how much, and which program file ran.
struct SndEvidence {
    QDateTime capturedLocal;
    QString host;
    int port = 0;
    double frequencyMhz = 0;
    LinkState link; // endpoint and counters
    QString programPath;
    QString programSha256; // 64 upper-case hexadecimal digits, or "UNAVAILABLE"
};

// Whether the report is rewritten on this "SND" frame: on the first and on every twentieth.
bool evidenceIsDue(quint64 sndFrames);

// The file of the connection that starts at `startLocal`. The folder goes in as it stands: an
// empty one gives a path at the root of the current drive, and that is meant so.
QString evidenceFilePath(const QString &folder, const QDateTime &startLocal);

// The report's text; each line ends with LF.
QString evidenceText(const SndEvidence &evidence);

// SHA-256 of the whole file in upper-case hexadecimal; "UNAVAILABLE" when it cannot be read.
QString fileSha256(const QString &path);

} // namespace outpost
