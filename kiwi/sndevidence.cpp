#include "kiwi/sndevidence.h"

#include "base/frequency.h"
#include "base/timetext.h"

#include <QCryptographicHash>
#include <QFile>

namespace outpost
{

namespace
{
// A label, its value on the next line, and a blank line.
QString row(QLatin1String label, const QString &value)
{
    return label + QLatin1Char('\n') + value + QStringLiteral("\n\n");
}
} // namespace

bool evidenceIsDue(quint64 sndFrames)
{
    return sndFrames == 1 || sndFrames % 20 == 0;
}

QString evidenceFilePath(const QString &folder, const QDateTime &startLocal)
{
    return folder + QStringLiteral("/PELQ_KIWI_STAGE17C_LIVE_SND_EVIDENCE_%1.txt")
                        .arg(timeText(startLocal, QStringLiteral("yyyyMMdd_HHmmss")));
}

QString evidenceText(const SndEvidence &evidence)
{
    const LinkState &link = evidence.link;
    QString text = QStringLiteral("PELQ KIWI STAGE17C LIVE SND EVIDENCE\n\n"
                                  "RESULT: LIVE SND VERIFIED\n\n");
    text += QStringLiteral("Captured local: ") +
            timeText(evidence.capturedLocal, QStringLiteral("yyyy-MM-dd HH:mm:ss")) +
            QStringLiteral("\n\n");
    text += row(QLatin1String("Host:"), evidence.host);
    text += row(QLatin1String("Port:"), QString::number(evidence.port));
    text += row(QLatin1String("Endpoint:"), link.currentEndpoint);
    text += row(QLatin1String("Frequency MHz:"), frequencyText(evidence.frequencyMhz));
    text += row(QLatin1String("RX frames:"), QString::number(link.rxFrames));
    text += row(QLatin1String("SND frames:"), QString::number(link.sndFrames));
    text += row(QLatin1String("Other binary frames:"), QString::number(link.otherBinaryFrames));
    text += row(QLatin1String("RX bytes:"), QString::number(link.rxBytes));
    text += row(QLatin1String("Last frame size:"), QString::number(link.lastFrameSize));
    text += row(QLatin1String("Executable:"), evidence.programPath);
    text += row(QLatin1String("Executable SHA-256:"), evidence.programSha256);
    text += row(QLatin1String(".NET runtime:"), QStringLiteral("NOT USED"));
    text += row(QLatin1String("Audio decoding:"), QStringLiteral("NOT STARTED IN STAGE17C"));
    text += row(QLatin1String("Next step:"),
                QStringLiteral("The receiver's ADPCM decoding was moved into the native program."));
    return text;
}

QString fileSha256(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
        return QStringLiteral("UNAVAILABLE");
    }
    return QString::fromLatin1(hash.result().toHex().toUpper());
}

} // namespace outpost
