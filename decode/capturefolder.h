#pragma once

#include "decode/scratchfolder.h"

#include <QString>
#include <memory>

class QLockFile;

namespace outpost
{

// The scratch root of this running copy of the program. A second copy that runs at the same time
// uses "<folder>-2", and so on. The lock file "<folder>.lock" beside the folder is held for the
// lifetime of this object; a stale lock file of a killed copy is taken over. Creates nothing before
// make(). Scratch folders that a killed copy left behind are removed once the folder is locked.
class CaptureFolder
{
public:
    explicit CaptureFolder(const QString &wantedFolder = {},
                           const QString &scratchPrefix = QLatin1String(usualScratchPrefix));
    ~CaptureFolder();
    CaptureFolder(CaptureFolder &&) noexcept;
    CaptureFolder &operator=(CaptureFolder &&) noexcept;

    // Creates the folder and its parents; returns false on failure.
    bool make();

    QString path() const { return chosen; }
    // False if locks do not work here. Other copies may then use the same folder, unless one of
    // them holds its lock: in that case this copy uses "<folder>-<process id>".
    bool isOwn() const { return lock != nullptr; }

private:
    void choose();

    QString wanted;
    QString prefix; // of the scratch folders' names
    QString chosen;
    std::unique_ptr<QLockFile> lock; // null until the folder is locked
};

} // namespace outpost
