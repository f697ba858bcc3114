#pragma once

#include "base/lockedfile.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

namespace outpost
{

// What became of a save. Unless it was saved, the old file stays as it was, or stays missing.
struct SaveResult {
    enum Outcome { Saved, NotOpened, NotCommitted };

    Outcome outcome = Saved;
    QString error; // the save file's error string; empty when saved

    explicit operator bool() const { return outcome == Saved; }
};

// Replaces the file at `path` by `content`, whole or not at all. The folder must exist. Content
// that does not all reach the disk counts as not committed, and so does a file that another
// program keeps from being replaced for longer than `waitMs` (see base/lockedfile.h). `textFlag`
// is QIODevice::Text for files with the platform's line ends, else nothing.
SaveResult saveAtomically(const QString &path, const QByteArray &content,
                          QIODevice::OpenMode textFlag = {}, int waitMs = lockedFileMs);

} // namespace outpost
