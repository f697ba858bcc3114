#pragma once

#include "decode/scratchfolder.h"

#include <QString>
#include <memory>

class QLockFile;

namespace outpost
{

// The folder in which the decoders of this running copy of the program work. A second copy that
// runs at the same time takes "<folder>-2", and so on: "<folder>.lock", beside the folder, is held
// for as long as this lives and then removed. That of a copy that was killed is taken over. Nothing
// is made before make() is called. Scratch folders that a killed copy left in the folder go as soon
// as it is this copy's own.
class CaptureFolder
{
public:
    explicit CaptureFolder(const QString &wantedFolder = {},
                           const QString &scratchPrefix = QLatin1String(usualScratchPrefix));
    ~CaptureFolder();
    CaptureFolder(CaptureFolder &&) noexcept;
    CaptureFolder &operator=(CaptureFolder &&) noexcept;

    // Makes the folder, with all parents; false when it cannot be made.
    bool make();

    QString path() const { return chosen; }
    // False where no lock can be had: then other copies may work in the folder, too, unless one
    // has it for its own. In that case this copy takes "<folder>-<process id>".
    bool isOwn() const { return lock != nullptr; }

private:
    void choose();

    QString wanted;
    QString prefix; // of the scratch folders' names
    QString chosen;
    std::unique_ptr<QLockFile> lock; // null until it is had
};

} // namespace outpost
