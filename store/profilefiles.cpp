#include "app/mainwindow.h"
#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/datapaths.h"
#include "base/dialogs.h"
#include "base/frequency.h"
#include "base/logline.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>

namespace outpost
{

namespace
{

QString profileFilter()
{
    return QStringLiteral("JSON profiles (*.json);;All files (*)");
}

// Always false, so that a failure is told and returned in one.
bool refuseProfile(QWidget *boxParent, const QString &title, const QString &text)
{
    if (boxParent) {
        showWarning(boxParent, title, text);
    }
    return false;
}

bool createFolderOf(const QString &path)
{
    return QDir().mkpath(QFileInfo(path).absolutePath());
}

} // namespace

bool MainWindow::loadProfile(const QString &path, bool showErrors)
{
    QWidget *boxParent = showErrors ? this : nullptr;
    const ProfileReading reading = readProfileFile(path, profile);
    if (!reading.profile) {
        return refuseProfile(boxParent, QStringLiteral("Profile Open Failed"), reading.error);
    }
    profile = *reading.profile;
    return true;
}

bool MainWindow::saveProfile(const QString &path, bool showErrors)
{
    QWidget *boxParent = showErrors ? this : nullptr;
    const QString title = QStringLiteral("Profile Save Failed");
    if (!createFolderOf(path)) {
        return refuseProfile(boxParent, title,
                             QStringLiteral("Could not create the profile folder."));
    }
    const SaveResult saved = saveAtomically(path, profileJson(profile));
    return saved || refuseProfile(boxParent, title, saved.error);
}

void MainWindow::saveDefaultProfileQuietly()
{
    saveProfile(defaultProfilePath(options.dataFolder), false);
}

void MainWindow::loadStartupProfile()
{
    if (options.start.profile) {
        profilePath = options.start.profile->path;
        profile = options.start.profile->profile;
        return;
    }
    profilePath = defaultProfilePath(options.dataFolder);
    if (QFile::exists(profilePath)) {
        loadProfile(profilePath, false);
    } else {
        saveDefaultProfileQuietly();
    }
}

void MainWindow::loadFrequencyFile()
{
    if (unsavedFrequencyMhz) {
        frequencyMhz = *unsavedFrequencyMhz;
        return;
    }
    QFile file(frequencyFilePath(options.dataFolder));
    if (openForReading(file, QIODevice::Text)) {
        frequencyMhz = parseFrequencyFile(file.readAll()).value_or(frequencyMhz);
    }
}

// Nobody is told when it fails: the frequency in use stays right. From here on the file counts.
void MainWindow::saveFrequencyFile()
{
    unsavedFrequencyMhz.reset();
    createFolderOf(frequencyFilePath(options.dataFolder));
    saveAtomically(frequencyFilePath(options.dataFolder), frequencyText(frequencyMhz).toUtf8(),
                   QIODevice::Text);
}

void MainWindow::openProfile()
{
    const QString path =
        QFileDialog::getOpenFileName(this, QStringLiteral("Open PELQ Kiwi Outpost Profile"),
                                     options.dataFolder, profileFilter());
    if (path.isEmpty() || !loadProfile(path, true)) {
        return;
    }
    profilePath = path;
    loadFrequencyFile();
    logLine(QStringLiteral("Profile opened: %1").arg(path));
}

void MainWindow::saveCurrentProfile()
{
    const QString target =
        profilePath.isEmpty() ? defaultProfilePath(options.dataFolder) : profilePath;
    if (!saveProfile(target, true)) {
        return;
    }
    profilePath = target;
    saveFrequencyFile();
    logLine(QStringLiteral("Profile saved: %1").arg(target));
}

void MainWindow::saveProfileAs()
{
    const QString path =
        QFileDialog::getSaveFileName(this, QStringLiteral("Save PELQ Kiwi Outpost Profile"),
                                     suggestedProfilePath(options.dataFolder), profileFilter());
    if (path.isEmpty() || !saveProfile(path, true)) {
        return;
    }
    profilePath = path;
    saveFrequencyFile();
    logLine(QStringLiteral("Profile saved as: %1").arg(path));
}

} // namespace outpost
