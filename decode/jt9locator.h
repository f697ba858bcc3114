#pragma once

#include <QString>
#include <QStringList>

class QProcessEnvironment;

namespace outpost
{

// Where a decoder is looked for: files to try in order, folders to search for more, and files to
// try when those gave none.
struct Jt9Places {
    QStringList candidates;     // full paths of jt9 programs, best first
    QStringList roots;          // folders searched recursively for "jt9.exe"
    QStringList lastCandidates; // as candidates
};

// This system's places: the current decoder, the program's own folder, the usual Windows
// installations and, off Windows, "jt9" on PATH, in /usr/local/bin and in /usr/bin.
Jt9Places jt9PlacesOfThisSystem(const QString &currentPath, const QString &applicationDir,
                                const QProcessEnvironment &environment);

// The first installed decoder of these places, cleaned; empty when there is none. Of those found
// under one root, the last modified comes first.
QString findInstalledJt9(const Jt9Places &places);

// The paths trimmed, cleaned and without empty ones; of those that name one file, the first. Either
// kind of separator names the same, and so does other letter case where file names have none.
QStringList distinctPaths(const QStringList &paths, Qt::CaseSensitivity fileNames);

// Whether an absolute path (either kind of separator) lies in a development, build or staging
// tree, from which no decoder is ever used. Looks at the text alone.
bool isRefusedJt9Path(const QString &absolutePath);

// Whether the decoder can run from where it lies: a Qt core library lies beside it (it cannot
// start when copied out of its installation), or it is a native installation, which off Windows
// is an executable "jt9" with an executable WSJT-X, or fork of it, in the same folder.
bool canRunJt9(const QString &path);

// Whether it can run, belongs to a WSJT-X or a fork of it, and does not lie in a refused place.
bool isInstalledJt9(const QString &path);

// Whether the file name is that of a decoder: "jt9.exe" in any case, off Windows also "jt9".
bool isJt9FileName(const QString &fileName);

// What the dialog to choose a decoder offers to show.
QString jt9FileFilter();

} // namespace outpost
