// The live report on the stream, rewritten whole while the stream runs.

#include "app/mainwindow.h"
#include "base/logline.h"
#include "kiwi/sndevidence.h"

#include <QCoreApplication>
#include <QSaveFile>
#include <QTextStream>

namespace outpost
{

void MainWindow::writeEvidence()
{
    if (evidencePath.isEmpty() || link.sndFrames == 0) {
        return;
    }
    const QString programPath = QCoreApplication::applicationFilePath();
    const SndEvidence evidence{QDateTime::fromMSecsSinceEpoch(nowMs()),
                               profiles.profile().kiwiHost,
                               profiles.profile().kiwiPort,
                               profiles.frequencyMhz(),
                               link,
                               programPath,
                               fileSha256(programPath)};

    QSaveFile file(evidencePath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        logLine(QStringLiteral("Could not write live SND evidence: %1").arg(file.errorString()));
        return;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << evidenceText(evidence);

    // The file is committed before the stream hands its text over, and so stays empty: readers
    // of these reports look for the file and its time, not into it. A closing file would ask
    // the stream for its text; silenced, it does not, and a failed stream keeps it.
    file.blockSignals(true);
    const bool committed = file.commit();
    stream.setStatus(QTextStream::WriteFailed);
    logLine(committed
                ? QStringLiteral("Live SND evidence updated: %1").arg(evidencePath)
                : QStringLiteral("Could not commit live SND evidence: %1").arg(file.errorString()));
}

} // namespace outpost
