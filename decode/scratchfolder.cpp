#include "decode/scratchfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

namespace outpost
{

namespace
{
// Restores permissions that a decoder may have removed; without them, the contents of a folder
// cannot be removed.
void openFolders(const QString &folder)
{
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QStringList inner =
        QDir(folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QString &name : inner) {
        openFolders(folder + QLatin1Char('/') + name);
    }
}

// Removes a link itself, never its target. Windows removes a link to a folder as a folder, other
// systems as a file.
bool removeOnce(const QString &folder)
{
    const QFileInfo info(folder);
    if (info.isSymLink() || info.isJunction()) {
        return QFile::remove(folder) || QDir().rmdir(folder);
    }
    if (info.isDir()) {
        openFolders(folder);
    }
    return QDir(folder).removeRecursively();
}
} // namespace

bool removeScratchFolder(const QString &folder, int tries)
{
    constexpr unsigned long pauseMs = 50;
    for (int i = 1; !removeOnce(folder); ++i) {
        if (i == tries) {
            return false;
        }
        QThread::msleep(pauseMs);
    }
    return true;
}

void removeScratchFolders(const QString &captureFolder, const QString &prefix)
{
    const QDir folder(captureFolder);
    const QStringList names = folder.entryList(QDir::Dirs | QDir::Files | QDir::System |
                                               QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QString &name : names) {
        if (name.startsWith(prefix)) {
            removeScratchFolder(folder.filePath(name), 1);
        }
    }
}

} // namespace outpost
