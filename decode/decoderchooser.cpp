#include "decode/decoderchooser.h"

#include "base/dialogs.h"
#include "base/logline.h"
#include "decode/jt9locator.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <utility>

namespace outpost
{

namespace
{
void publish(const QString &path)
{
    qputenv("PELQ_JT9_PATH", path.toLocal8Bit());
}
} // namespace

DecoderChooser::DecoderChooser(QWidget *boxParent, std::function<QString()> askCurrentPath,
                               DecoderChooserCallbacks callbacksToUse)
    : parent(boxParent), currentPath(std::move(askCurrentPath)),
      callbacks(std::move(callbacksToUse))
{
}

void DecoderChooser::findJt9(const Jt9Places &places) const
{
    const QString path = findInstalledJt9(places);
    if (path.isEmpty()) {
        logLine(QStringLiteral("JT9 finder: no usable jt9.exe found."));
        showWarning(parent, QStringLiteral("WSJT Decoder Not Found"),
                    QStringLiteral("No installed WSJT jt9.exe was found."));
        return;
    }
    if (path != QDir::cleanPath(currentPath())) {
        callbacks.onFound(path);
    }
    publish(path);
    logLine(QStringLiteral("JT9 decoder ready: %1").arg(path));
}

void DecoderChooser::selectJt9() const
{
    const QString current = currentPath().trimmed();
    const QString startFolder =
        current.isEmpty() ? QDir::rootPath() : QFileInfo(current).absolutePath();
    const QString chosen = QFileDialog::getOpenFileName(
        parent, QStringLiteral("Select Installed WSJT jt9.exe"), startFolder, jt9FileFilter());
    if (chosen.isEmpty()) {
        logLine(QStringLiteral("Manual jt9.exe selection cancelled."));
        return;
    }
    if (!isJt9FileName(QFileInfo(chosen).fileName()) || !isInstalledJt9(chosen)) {
        showWarning(
            parent, QStringLiteral("Invalid WSJT Decoder"),
            QStringLiteral("Select jt9.exe from an installed stock WSJT-X application or an "
                           "installed WSJT-X fork.\n\nDevelopment, build, STEP and STAGE copies "
                           "are not accepted."));
        logLine(QStringLiteral("Rejected manual jt9.exe path: %1").arg(chosen));
        return;
    }

    const QString path = QDir::cleanPath(chosen);
    callbacks.onSelected(path);
    publish(path);
    logLine(QStringLiteral("Installed jt9.exe selected and saved: %1").arg(path));
    showInformation(parent, QStringLiteral("WSJT Decoder Selected"),
                    QStringLiteral("Installed jt9.exe selected and saved:\n\n%1")
                        .arg(QDir::toNativeSeparators(path)));
}

} // namespace outpost
