#include "store/profilemenu.h"

#include "base/datapaths.h"
#include "base/dialogs.h"
#include "base/logline.h"
#include "store/profilestore.h"

#include <QFileDialog>

namespace outpost
{

namespace
{

QString profileFilter()
{
    return QStringLiteral("JSON profiles (*.json);;All files (*)");
}

// `logged` contains a placeholder for the path.
void saveIn(const QString &path, const QString &logged, QWidget *window, ProfileStore *profiles)
{
    const SaveResult saved = profiles->keepProfile(path);
    if (!saved) {
        return showWarning(window, QStringLiteral("Profile Save Failed"), saved.error);
    }
    logLine(logged.arg(path));
}

} // namespace

void openProfile(QWidget *window, ProfileStore *profiles)
{
    const QString path =
        QFileDialog::getOpenFileName(window, QStringLiteral("Open PELQ Kiwi Outpost Profile"),
                                     profiles->folder(), profileFilter());
    if (path.isEmpty()) {
        return;
    }
    const ProfileReading reading = profiles->openProfile(path);
    if (!reading.profile) {
        return showWarning(window, QStringLiteral("Profile Open Failed"), reading.error);
    }
    logLine(QStringLiteral("Profile opened: %1").arg(path));
}

void saveProfile(QWidget *window, ProfileStore *profiles)
{
    saveIn(profiles->profilePath(), QStringLiteral("Profile saved: %1"), window, profiles);
}

void saveProfileAs(QWidget *window, ProfileStore *profiles)
{
    const QString path =
        QFileDialog::getSaveFileName(window, QStringLiteral("Save PELQ Kiwi Outpost Profile"),
                                     suggestedProfilePath(profiles->folder()), profileFilter());
    if (!path.isEmpty()) {
        saveIn(path, QStringLiteral("Profile saved as: %1"), window, profiles);
    }
}

} // namespace outpost
