#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace outpost
{

// Whether the process with this id is running; a zombie is not.
inline bool isAlive(const QByteArray &pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(QString::fromLatin1(pid.trimmed())));
    if (pid.trimmed().isEmpty() || !stat.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray text = stat.readAll();
    return text.mid(text.lastIndexOf(')') + 2, 1) != "Z";
}

// A named pipe that contains a line for the lifetime of this object, so that a script that reads
// from it continues.
class OpenedPipe
{
public:
    explicit OpenedPipe(const QString &path) : pipe(path)
    {
        if (!pipe.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) { // does not block
            qFatal("cannot open the pipe");
        }
        pipe.write("\n");
    }

private:
    QFile pipe;
};

} // namespace outpost
