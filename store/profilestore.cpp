#include "store/profilestore.h"

#include "base/datafile.h"
#include "base/datapaths.h"
#include "base/frequency.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace outpost
{

namespace
{
bool createFolderOf(const QString &path)
{
    return QDir().mkpath(QFileInfo(path).absolutePath());
}
} // namespace

ProfileStore::ProfileStore(const QString &folder)
    : dataFolder(folder), openedPath(defaultProfilePath(folder))
{
}

void ProfileStore::setReceiver(const QString &host, int port)
{
    current.kiwiHost = host;
    current.kiwiPort = port;
}

void ProfileStore::setFrequency(double frequencyMhz)
{
    mhz = frequencyMhz;
}

void ProfileStore::setJt9Path(const QString &path)
{
    current.jt9Path = path;
}

void ProfileStore::setBridgePort(int port)
{
    current.bridgePort = port;
}

void ProfileStore::loadStartupProfile()
{
    if (QFile::exists(openedPath)) {
        loadProfile(openedPath);
    } else {
        saveDefaultProfileQuietly();
    }
}

void ProfileStore::useProfile(const QString &path, const Profile &profile)
{
    openedPath = path;
    current = profile;
}

void ProfileStore::useFrequency(double frequencyMhz)
{
    mhz = frequencyMhz;
    ignoresFrequencyFile = true;
}

ProfileReading ProfileStore::loadProfile(const QString &path)
{
    ProfileReading reading = readProfileFile(path, current);
    current = reading.profile.value_or(current);
    return reading;
}

ProfileReading ProfileStore::openProfile(const QString &path)
{
    ProfileReading reading = loadProfile(path);
    if (reading.profile) {
        openedPath = path;
        loadFrequencyFile();
    }
    return reading;
}

SaveResult ProfileStore::saveProfile(const QString &path) const
{
    if (!createFolderOf(path)) {
        return {SaveResult::NotOpened, QStringLiteral("Could not create the profile folder.")};
    }
    return saveAtomically(path, profileJson(current));
}

SaveResult ProfileStore::keepProfile(const QString &path)
{
    SaveResult saved = saveProfile(path);
    if (saved) {
        openedPath = path;
        saveFrequencyFile();
    }
    return saved;
}

void ProfileStore::saveDefaultProfileQuietly() const
{
    saveProfile(defaultProfilePath(dataFolder));
}

void ProfileStore::loadFrequencyFile()
{
    QFile file(frequencyFilePath(dataFolder));
    if (!ignoresFrequencyFile && openForReading(file, QIODevice::Text)) {
        mhz = parseFrequencyFile(file.readAll()).value_or(mhz);
    }
}

// From now on the file's value is used.
void ProfileStore::saveFrequencyFile()
{
    const QString path = frequencyFilePath(dataFolder);
    ignoresFrequencyFile = false;
    createFolderOf(path);
    saveAtomically(path, frequencyText(mhz).toUtf8(), QIODevice::Text);
}

} // namespace outpost
