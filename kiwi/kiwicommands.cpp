#include "kiwi/kiwicommands.h"

#include <QUrl>

namespace outpost
{

namespace
{
QString authCommand()
{
    return QStringLiteral("SET auth t=kiwi p=");
}

// The receiver splits commands at blanks.
QString percentEncoded(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}
} // namespace

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
    return kiwiSessionCommands({}, frequencyMhz);
}

QStringList kiwiSessionCommands(const KiwiSession &session, double frequencyMhz)
{
    return {
        authCommand() + percentEncoded(session.password),
        QStringLiteral("SET ident_user=") + percentEncoded(session.user),
        kiwiKeepalive(),
        QStringLiteral("SET AR OK in=12000 out=12000"),
        QStringLiteral("SET compression=%1").arg(session.compression ? 1 : 0),
        kiwiTuneCommand(session, frequencyMhz),
        QStringLiteral("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50"),
    };
}

QString kiwiTuneCommand(const KiwiSession &session, double frequencyMhz)
{
    return QStringLiteral("SET mod=usb low_cut=%1 high_cut=%2 freq=%3")
        .arg(QString::number(session.lowHz), QString::number(session.highHz),
             QString::number(frequencyMhz * 1000.0, 'f', 3));
}

QString withoutPassword(QString line, const QString &password)
{
    constexpr int tellingLength = 4;
    const QString mask = QStringLiteral("***");
    const int auth = line.indexOf(authCommand());
    if (auth >= 0) {
        const int value = auth + authCommand().size();
        const int end = line.indexOf(QLatin1Char(' '), value);
        line.replace(value, (end < 0 ? line.size() : end) - value, mask);
    }
    if (password.size() >= tellingLength) {
        line.replace(password, mask);
        line.replace(percentEncoded(password), mask);
    }
    return line;
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
