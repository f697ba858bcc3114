#pragma once

#include <QString>
#include <QStringList>

class QProcessEnvironment;

namespace outpost
{

// Where to look for a decoder: files to try in order, then folders to search, then files to try
// last.
struct Jt9Places {
    QStringList candidates;     // full paths of jt9 programs, best first
    QStringList roots;          // folders searched recursively for "jt9.exe"
    QStringList lastCandidates; // as candidates
};

// The places on this system: the current decoder, the program's own folder, the usual Windows
// installations and, off Windows, "jt9" on PATH, in /usr/local/bin and in /usr/bin.
Jt9Places jt9PlacesOfThisSystem(const QString &currentPath, const QString &applicationDir,
                                const QProcessEnvironment &environment);

// The first installed decoder in these places, as a clean path; empty if there is none. Of the
// files found under one root, the last modified comes first.
QString findInstalledJt9(const Jt9Places &places);

// The paths trimmed, cleaned and without empty ones. Of paths to the same file, the first is kept;
// the kind of separator does not matter, nor does the case if file names are case-insensitive.
QStringList distinctPaths(const QStringList &paths, Qt::CaseSensitivity fileNames);

// Whether an absolute path (with either separator) is in a development, build or staging tree. Such
// decoders are never used. Checks only the text.
bool isRefusedJt9Path(const QString &absolutePath);

// Whether the decoder can run from its folder: either a Qt core library is beside it (without one,
// it was copied out of its installation and cannot start), or it is a native installation. Off
// Windows that is an executable "jt9" with an executable WSJT-X, or a fork of it, in the same
// folder.
bool canRunJt9(const QString &path);

// Whether it can run, belongs to WSJT-X or a fork of it, and is not in a refused place.
bool isInstalledJt9(const QString &path);

// Whether the file name is a decoder's: "jt9.exe" in any case; off Windows also "jt9".
bool isJt9FileName(const QString &fileName);

// The name filter of the dialog that selects a decoder.
QString jt9FileFilter();

} // namespace outpost
