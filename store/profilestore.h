#pragma once

#include "base/atomicfile.h"
#include "store/profile.h"

#include <QString>

namespace outpost
{

// The profile and the dial frequency in use, and their files: profiles anywhere, the default
// profile and the shared frequency in the data folder.
class ProfileStore
{
public:
    explicit ProfileStore(const QString &dataFolder);

    const Profile &profile() const { return current; }
    double frequencyMhz() const { return mhz; }
    QString folder() const { return dataFolder; }
    QString profilePath() const { return openedPath; } // last opened or saved

    // These do not save anything.
    void setReceiver(const QString &host, int port);
    void setFrequency(double frequencyMhz);
    void setJt9Path(const QString &path);
    void setBridgePort(int port);

    // For the start: load the default profile (created if it is missing) or use another one, and
    // use a frequency instead of the file's until one is saved.
    void loadStartupProfile();
    void useProfile(const QString &path, const Profile &profile);
    void useFrequency(double frequencyMhz);

    // Failures are in the result and leave everything unchanged.
    ProfileReading loadProfile(const QString &path);
    ProfileReading openProfile(const QString &path); // also reads the frequency again
    SaveResult saveProfile(const QString &path) const;
    SaveResult keepProfile(const QString &path); // and the frequency; later saves go to `path`

    // Failures are not shown to the operator; the values in use stay valid.
    void saveDefaultProfileQuietly() const; // never the opened profile
    void loadFrequencyFile();
    void saveFrequencyFile();

private:
    const QString dataFolder;
    QString openedPath;
    Profile current;
    double mhz = 14.074;
    bool ignoresFrequencyFile = false;
};

} // namespace outpost
