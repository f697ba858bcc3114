#pragma once

#include "base/atomicfile.h"
#include "store/profile.h"

#include <QString>

namespace outpost
{

// The profile and the dial frequency in use, and the files that keep them: profiles wherever the
// operator wants them, the default profile and the frequency, which all of them share, in the data
// folder.
class ProfileStore
{
public:
    explicit ProfileStore(const QString &dataFolder);

    const Profile &profile() const { return current; }
    double frequencyMhz() const { return mhz; }
    QString folder() const { return dataFolder; }
    QString profilePath() const { return openedPath; } // last opened or saved

    // Nothing is saved by these.
    void setReceiver(const QString &host, int port);
    void setFrequency(double frequencyMhz);
    void setJt9Path(const QString &path);
    void setBridgePort(int port);

    // For the start: the default profile, which is made when it is missing, or another one; and a
    // frequency in place of the file's, until one is saved.
    void loadStartupProfile();
    void useProfile(const QString &path, const Profile &profile);
    void useFrequency(double frequencyMhz);

    // Failures are in the result; all stays as it was then.
    ProfileReading loadProfile(const QString &path);
    ProfileReading openProfile(const QString &path); // and reads the frequency again
    SaveResult saveProfile(const QString &path) const;
    SaveResult keepProfile(const QString &path); // and the frequency; saved there from now on

    // Nobody is told when these fail: the values in use stay right.
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
