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

    // The order is fixed so: the file is committed before the stream hands over its text, and
    // stays empty. A file that closes would ask the stream for the text; with its signals blocked
    // it does not, and a failed stream keeps it.
    file.blockSignals(true);
    const bool committed = file.commit();
    stream.setStatus(QTextStream::WriteFailed);
    logLine(committed
                ? QStringLiteral("Live SND evidence updated: %1").arg(path)
                : QStringLiteral("Could not commit live SND evidence: %1").arg(file.errorString()));
}

} // namespace outpost
