#include "app/mainwindow.h"
#include "base/dialogs.h"
#include "base/logline.h"
#include "decode/jt9locator.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

namespace outpost
{

void MainWindow::findJt9(const Jt9Places &places)
{
    const QString path = findInstalledJt9(places);
    if (path.isEmpty()) {
        logLine(QStringLiteral("JT9 finder: no usable jt9.exe found."));
        showWarning(this, QStringLiteral("WSJT Decoder Not Found"),
                    QStringLiteral("No installed WSJT jt9.exe was found."));
        return;
    }
    if (path != QDir::cleanPath(profiles.profile().jt9Path)) {
        profiles.setJt9Path(path);
        if (!options.start.profile) {
            profiles.saveDefaultProfileQuietly();
        }
    }
    useJt9(path);
    logLine(QStringLiteral("JT9 decoder ready: %1").arg(path));
}

void MainWindow::selectJt9()
{
    const QString current = profiles.profile().jt9Path.trimmed();
    const QString startFolder =
        current.isEmpty() ? QDir::rootPath() : QFileInfo(current).absolutePath();
    const QString chosen = QFileDialog::getOpenFileName(
        this, QStringLiteral("Select Installed WSJT jt9.exe"), startFolder, jt9FileFilter());
    if (chosen.isEmpty()) {
        logLine(QStringLiteral("Manual jt9.exe selection cancelled."));
        return;
    }
    if (!isJt9FileName(QFileInfo(chosen).fileName()) || !isInstalledJt9(chosen)) {
        showWarning(
            this, QStringLiteral("Invalid WSJT Decoder"),
            QStringLiteral("Select jt9.exe from an installed stock WSJT-X application or an "
                           "installed WSJT-X fork.\n\nDevelopment, build, STEP and STAGE copies "
                           "are not accepted."));
        logLine(QStringLiteral("Rejected manual jt9.exe path: %1").arg(chosen));
        return;
    }

    const QString path = QDir::cleanPath(chosen);
    profiles.setJt9Path(path);
    profiles.saveDefaultProfileQuietly();
    useJt9(path);
    logLine(QStringLiteral("Installed jt9.exe selected and saved: %1").arg(path));
    showInformation(this, QStringLiteral("WSJT Decoder Selected"),
                    QStringLiteral("Installed jt9.exe selected and saved:\n\n%1")
                        .arg(QDir::toNativeSeparators(path)));
}

// The decode workers read the variable at each run.
void MainWindow::useJt9(const QString &path)
{
    qputenv("PELQ_JT9_PATH", path.toLocal8Bit());
}

} // namespace outpost
