#include "decode/jt9runner.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QProcessEnvironment>

#include "decode/jt9locator.h"
#include "decode/jt9process.h"

namespace
{
// The decoder finds its own libraries first and keeps its files in the worker's folder.
QProcessEnvironment jt9Environment(const QString &jt9Folder, const QString &workerFolder)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString path = QStringLiteral("PATH");
    environment.insert(path, jt9Folder + QDir::listSeparator() + environment.value(path));
    environment.insert(QStringLiteral("HOME"), workerFolder);
    environment.insert(QStringLiteral("LOCALAPPDATA"), workerFolder);
    environment.insert(QStringLiteral("APPDATA"), workerFolder);
    return environment;
}

// Absolute, since the decoder is started in another folder.
QString jt9PathInUse()
{
    const QString path = QDir::cleanPath(QString::fromLocal8Bit(qgetenv("PELQ_JT9_PATH")));
    return path.isEmpty() ? path : QDir::current().absoluteFilePath(path);
}

// Takes in the output while the decoder runs; false when it has not ended in time. Waiting for
// the end alone would gather all output first, and never time out while more of it keeps coming.
bool readUntilFinished(QProcess &process, int finishMs, Jt9Output &output)
{
    const QDeadlineTimer deadline(finishMs);
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired()) {
        process.waitForReadyRead(static_cast<int>(deadline.remainingTime()));
        output.add(process.readAllStandardOutput());
    }
    return process.state() == QProcess::NotRunning;
}
} // namespace

QStringList runJt9(const QString &wavPath, const QString &workerFolder, const DecodeBand &band,
                   int depth, const Jt9Limits &limits, bool folderIsOwn)
{
    const QString jt9Path = jt9PathInUse();
    if (jt9Path.isEmpty() || !QFileInfo::exists(jt9Path) || !canRunJt9(jt9Path))
        return {};

    Jt9Process process(folderIsOwn);
    process.setWorkingDirectory(workerFolder);
    process.setProcessEnvironment(jt9Environment(QFileInfo(jt9Path).absolutePath(), workerFolder));
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    const QStringList arguments = {QStringLiteral("--ft8"),      QStringLiteral("-d"),
                                   QString::number(depth),       QStringLiteral("-L"),
                                   QString::number(band.lowHz),  QStringLiteral("-H"),
                                   QString::number(band.highHz), wavPath};
    if (!process.launch(jt9Path, arguments, limits.startMs))
        return {};

    Jt9Output output;
    if (!readUntilFinished(process, limits.finishMs, output)) {
        process.killFamily();
        process.waitForFinished(limits.killMs);
        return {};
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return {};
    return output.finish();
}

void Jt9Output::add(const QByteArray &bytes)
{
    if (ended)
        return;
    partialLine += bytes;
    const int nul = partialLine.indexOf('\0');
    if (nul >= 0) {
        partialLine.truncate(nul);
        ended = true;
    }
    const int lastEnd = qMax(partialLine.lastIndexOf('\n'), partialLine.lastIndexOf('\r'));
    if (lastEnd >= 0) {
        takeLines(partialLine.left(lastEnd));
        partialLine.remove(0, lastEnd + 1);
    }
    if (partialLine.size() > mostBytes || keptBytes > mostBytes) {
        partialLine.clear();
        ended = true;
    }
}

QStringList Jt9Output::finish()
{
    takeLines(partialLine);
    partialLine.clear();
    ended = true;
    return lines;
}

// Line by line: the conversion drops a byte order mark from the front of what it is given, which
// must not hang on how the output happened to arrive.
void Jt9Output::takeLines(QByteArray wholeLines)
{
    for (const QByteArray &part : wholeLines.replace('\r', '\n').split('\n')) {
        if (!part.contains('~'))
            continue; // not worth converting
        const QString line = QString::fromLocal8Bit(part).trimmed();
        if (!line.contains(QLatin1Char('~')))
            continue;
        lines.append(line);
        keptBytes += line.size();
    }
}
