#include "decode/capturefolder.h"

#include "base/lockfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>

namespace outpost
{

CaptureFolder::CaptureFolder(const QString &wantedFolder, const QString &scratchPrefix)
    : wanted(wantedFolder.isEmpty() ? QString() : QDir::cleanPath(wantedFolder)),
      prefix(scratchPrefix), chosen(wanted)
{
}

CaptureFolder::~CaptureFolder() = default;
CaptureFolder::CaptureFolder(CaptureFolder &&) noexcept = default;
CaptureFolder &CaptureFolder::operator=(CaptureFolder &&) noexcept = default;

bool CaptureFolder::make()
{
    if (!isOwn()) {
        choose();
    }
    return QDir().mkpath(chosen);
}

void CaptureFolder::choose()
{
    constexpr int maxCopies = 100;
    bool isAnothers = false; // whether another copy has `wanted`
    QDir().mkpath(QFileInfo(wanted).path());
    for (int copy = 1; copy <= maxCopies; ++copy) {
        const QString candidate = copy == 1 ? wanted : wanted + QStringLiteral("-%1").arg(copy);
        std::unique_ptr<QLockFile> attempt = takeLock(candidate);
        if (attempt->isLocked()) {
            chosen = candidate;
            lock = std::move(attempt);
            removeScratchFolders(chosen, prefix);
            return;
        }
        if (attempt->error() != QLockFile::LockFailedError) {
            break; // locks do not work here
        }
        isAnothers = true;
    }
    const QString ownName = QStringLiteral("-%1").arg(QCoreApplication::applicationPid());
    chosen = isAnothers ? wanted + ownName : wanted;
}

} // namespace outpost
