#include "kiwi/kiwicommands.h"

namespace outpost
{

QStringList kiwiSndEndpoints()
{
    return {QStringLiteral("/kiwi/0/SND"), QStringLiteral("/kiwi/1/SND"),
            QStringLiteral("/kiwi/2/SND"), QStringLiteral("/kiwi/3/SND")};
}

QString kiwiUrl(const QString &host, int port, const QString &endpoint)
{
    return QStringLiteral("ws://%1:%2%3").arg(host, QString::number(port), endpoint);
}

QStringList kiwiCommands(double frequencyMhz)
{
    const QString frequencyKhz = QString::number(frequencyMhz * 1000.0, 'f', 3);
    return {
        QStringLiteral("SET auth t=kiwi p="), // empty password
        QStringLiteral("SET ident_user=PELQ_Kiwi_Outpost"),
        kiwiKeepalive(),
        QStringLiteral("SET AR OK in=12000 out=12000"),
        QStringLiteral("SET compression=1"),
        QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=%1").arg(frequencyKhz),
        QStringLiteral("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50"),
    };
}

QString kiwiKeepalive()
{
    return QStringLiteral("SET keepalive");
}

bool keepaliveIsDue(qint64 lastMs, qint64 nowMs)
{
    constexpr qint64 intervalMs = 5000;
    return nowMs - lastMs >= intervalMs || nowMs < lastMs;
}

QString shortenedText(const QString &message)
{
    constexpr int shownCharacters = 180;
    if (message.size() <= shownCharacters) {
        return message;
    }
    return message.left(shownCharacters) + QStringLiteral("...");
}

} // namespace outpost
