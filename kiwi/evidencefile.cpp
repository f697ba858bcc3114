#include "kiwi/evidencefile.h"

#include "base/logline.h"
#include "kiwi/sndevidence.h"

#include <QSaveFile>
#include <QTextStream>

namespace outpost
{

void writeEvidenceFile(const QString &path, const SndEvidence &evidence)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        logLine(QStringLiteral("Could not write live SND evidence: %1").arg(file.errorString()));
        return;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << evidenceText(evidence);

    // The order is fixed: the file is committed before the stream writes its text, so the file
    // stays empty. Blocking the signals keeps commit() from flushing the stream; a stream in an
    // error state does not write later.
    file.blockSignals(true);
    const bool committed = file.commit();
    stream.setStatus(QTextStream::WriteFailed);
    logLine(committed
                ? QStringLiteral("Live SND evidence updated: %1").arg(path)
                : QStringLiteral("Could not commit live SND evidence: %1").arg(file.errorString()));
}

} // namespace outpost
