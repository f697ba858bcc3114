#include "base/atomicfile.h"

#include "base/lockedfile.h"

#include <QSaveFile>

namespace outpost
{

namespace
{

// On a full disk QSaveFile's write() and commit() both report success and replace the old file with
// an empty or truncated one. The error shows only after flush().
bool reachesDisk(QSaveFile &file, const QByteArray &content)
{
    return file.write(content) == content.size() && file.flush() &&
           file.error() == QFileDevice::NoError;
}

// A failed commit() discards the content, so each attempt writes it again.
SaveResult saveOnce(QSaveFile &file, const QByteArray &content, QIODevice::OpenMode textFlag)
{
    if (!file.open(QIODevice::WriteOnly | textFlag)) {
        return {SaveResult::NotOpened, file.errorString()};
    }
    if (!reachesDisk(file, content)) {
        const QString error = file.errorString(); // cancelWriting() replaces it
        file.cancelWriting();
        file.commit();
        return {SaveResult::NotCommitted, error};
    }
    if (!file.commit()) {
        return {SaveResult::NotCommitted, file.errorString()};
    }
    return {};
}

} // namespace

SaveResult saveAtomically(const QString &path, const QByteArray &content,
                          QIODevice::OpenMode textFlag, int waitMs)
{
    SaveResult result;
    whileLocked(waitMs, [&] {
        QSaveFile file(path);
        result = saveOnce(file, content, textFlag);
        return file.error() != QFileDevice::RenameError;
    });
    return result;
}

} // namespace outpost
