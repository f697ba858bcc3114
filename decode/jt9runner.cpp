#include "decode/jt9runner.h"

#include "decode/jt9locator.h"
#include "decode/jt9process.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <utility>

namespace outpost
{

namespace
{
// The decoder finds its own libraries first, and writes its files to the worker's folder.
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

// Absolute, since the decoder is started in another working directory.
QString jt9PathInUse(const Jt9Control &control)
{
    const QString path = QDir::cleanPath(control.decoderPath());
    return path.isEmpty() ? path : QDir::current().absoluteFilePath(path);
}

bool isAborted(const Jt9Control &control)
{
    return control.aborted && *control.aborted;
}

// Reads the output while the decoder runs; returns false if it has not finished in time.
// waitForFinished() alone would buffer all output first, and would not time out while more output
// arrives.
bool readUntilFinished(QProcess &process, int finishMs, const Jt9Control &control,
                       Jt9Output &output)
{
    const qint64 stepMs = control.aborted ? 100 : finishMs; // between checks for an abort
    const QDeadlineTimer deadline(finishMs);
    while (process.state() != QProcess::NotRunning && !deadline.hasExpired() &&
           !isAborted(control)) {
        process.waitForReadyRead(static_cast<int>(qMin(stepMs, deadline.remainingTime())));
        output.add(process.readAllStandardOutput());
    }
    return process.state() == QProcess::NotRunning;
}

Jt9Failure failureOf(const QProcess &finished)
{
    const QString code = exitCodeText(finished.exitCode());
    if (finished.exitStatus() != QProcess::NormalExit) {
        return {Jt9Process::crashIsSignal ? Jt9Cause::Killed : Jt9Cause::ExitCode, code};
    }
    return finished.exitCode() == 0 ? Jt9Failure() : Jt9Failure{Jt9Cause::ExitCode, code};
}

Jt9Result resultOf(Jt9Output &output)
{
    Jt9Result result;
    result.lines = output.finish();
    if (output.hasDroppedLines()) {
        result.failure = {Jt9Cause::TooManyLines, QString::number(Jt9Output::maxLines)};
    }
    return result;
}

QString seconds(int ms)
{
    return QString::number(ms / 1000.0);
}

// Index of the next line end in `bytes`, or -1.
int lineEnd(const QByteArray &bytes, int from)
{
    for (int at = from; at < bytes.size(); ++at) {
        if (bytes.at(at) == '\n' || bytes.at(at) == '\r') {
            return at;
        }
    }
    return -1;
}
} // namespace

QString jt9PathOfEnvironment()
{
    return QString::fromLocal8Bit(qgetenv("PELQ_JT9_PATH"));
}

Jt9Result runJt9(const QString &wavPath, const QString &workerFolder, const DecodeBand &band,
                 int depth, const Jt9Limits &limits, bool folderIsOwn, const Jt9Control &control)
{
    if (isAborted(control)) {
        return {{}, {Jt9Cause::Aborted, {}}};
    }
    const QString jt9Path = jt9PathInUse(control);
    if (jt9Path.isEmpty() || !QFileInfo::exists(jt9Path) || !canRunJt9(jt9Path)) {
        return {{}, {Jt9Cause::NoDecoder, jt9Path}};
    }

    Jt9Process process(folderIsOwn);
    process.setWorkingDirectory(workerFolder);
    process.setProcessEnvironment(jt9Environment(QFileInfo(jt9Path).absolutePath(), workerFolder));
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    const QStringList arguments = {QStringLiteral("--ft8"),      QStringLiteral("-d"),
                                   QString::number(depth),       QStringLiteral("-L"),
                                   QString::number(band.lowHz),  QStringLiteral("-H"),
                                   QString::number(band.highHz), wavPath};
    if (!process.launch(jt9Path, arguments, limits.startMs)) {
        return {{}, {Jt9Cause::NotStarted, process.errorString()}};
    }

    Jt9Output output;
    if (!readUntilFinished(process, limits.finishMs, control, output)) {
        process.killFamily();
        process.waitForFinished(limits.killMs);
        if (isAborted(control)) {
            return {{}, {Jt9Cause::Aborted, {}}};
        }
        return {{}, {Jt9Cause::Overran, seconds(limits.finishMs)}};
    }
    const Jt9Failure failure = failureOf(process);
    if (failure.cause != Jt9Cause::None) {
        return {{}, failure};
    }
    return resultOf(output);
}

void Jt9Output::add(const QByteArray &bytes)
{
    if (ended) {
        return;
    }
    const int nul = bytes.indexOf('\0');
    const QByteArray text = nul < 0 ? bytes : bytes.left(nul);
    int begin = 0;
    for (int end = lineEnd(text, 0); end >= 0 && !ended; end = lineEnd(text, begin)) {
        extendLine(text.mid(begin, end - begin));
        takeLine();
        begin = end + 1;
    }
    extendLine(text.mid(begin));
    ended = ended || nul >= 0;
}

QStringList Jt9Output::finish()
{
    takeLine();
    ended = true;
    return lines;
}

// Keeps one byte more than the limit, which marks the line as too long.
void Jt9Output::extendLine(const QByteArray &part)
{
    line += part.left(maxLineBytes + 1 - line.size());
}

// fromLocal8Bit() drops a byte order mark at the start of its input. Converting line by line makes
// the result independent of how the output was split into reads.
void Jt9Output::takeLine()
{
    const QByteArray whole = std::exchange(line, {});
    if (!whole.contains('~') || whole.size() > maxLineBytes) {
        return; // not a decode line
    }
    const QString text = QString::fromLocal8Bit(whole).trimmed();
    if (!text.contains(QLatin1Char('~'))) {
        return;
    }
    if (lines.size() == maxLines) {
        dropped = true;
        ended = true;
        return;
    }
    lines.append(text);
}

} // namespace outpost
