#pragma once

#include "base/lockedfile.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

namespace outpost
{

// The result of a save. If the save failed, the old file is unchanged, or still missing.
struct SaveResult {
    enum Outcome { Saved, NotOpened, NotCommitted };

    Outcome outcome = Saved;
    QString error; // QSaveFile's error string; empty when saved

    explicit operator bool() const { return outcome == Saved; }
};

// Replaces the file at `path` with `content`, completely or not at all. The folder must exist. The
// result is NotCommitted if the content does not reach the disk completely, or if another program
// blocks the replacement for longer than `waitMs` (see base/lockedfile.h). Pass QIODevice::Text as
// `textFlag` for the platform's line endings.
SaveResult saveAtomically(const QString &path, const QByteArray &content,
                          QIODevice::OpenMode textFlag = {}, int waitMs = lockedFileMs);

} // namespace outpost
