#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace outpost
{

// Whether the process of that number runs; one that has ended and is not yet reaped does not.
inline bool isAlive(const QByteArray &pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(QString::fromLatin1(pid.trimmed())));
    if (pid.trimmed().isEmpty() || !stat.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray text = stat.readAll();
    return text.mid(text.lastIndexOf(')') + 2, 1) != "Z";
}

// A named pipe with a line in it for as long as this lives: a script that reads from the pipe, or
// is about to, goes on.
class OpenedPipe
{
public:
    explicit OpenedPipe(const QString &path) : pipe(path)
    {
        if (!pipe.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) { // never blocks
            qFatal("cannot open the pipe");
        }
        pipe.write("\n");
    }

private:
    QFile pipe;
};

} // namespace outpost
