#include "daemon/alltxt.h"

#include "base/logline.h"
#include "base/timetext.h"

#include <QFile>
#include <algorithm>

namespace outpost
{

namespace
{
QDateTime utc(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
}

// What to put before the next line: an LF if a program that was killed left half a line.
QByteArray repairOf(QFile &file)
{
    if (file.size() == 0 || !file.seek(file.size() - 1)) {
        return {};
    }
    return file.read(1) == "\n" ? QByteArray() : QByteArray("\n");
}

// Appends all of `text` or nothing. Returns the system's reason, or an empty text.
QString appendWhole(const QString &path, const QByteArray &text)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Append | QIODevice::Unbuffered)) {
        return file.errorString();
    }
    const QByteArray whole = repairOf(file) + text;
    const qint64 sizeBefore = file.size();
    const qint64 written = file.write(whole);
    if (written == whole.size()) {
        return {};
    }
    QString error = file.errorString();
    // Unless another program has appended meanwhile.
    if (written > 0 && file.size() == sizeBefore + written) {
        file.resize(sizeBefore);
    }
    return error;
}
} // namespace

QByteArray allTxtLine(const Spot &spot)
{
    const QString time = timeText(utc(spot.periodStartMs), QStringLiteral("yyMMdd_hhmmss"));
    return QString::asprintf("%s%10.3f Rx FT8   %4d%5.1f%5d ", qPrintable(time),
                             static_cast<double>(spot.dialHz) / 1e6, spot.snr, spot.dt,
                             spot.audioHz)
               .toUtf8() +
           spot.message.toUtf8() + '\n';
}

QString allTxtFileName(const QString &name, qint64 periodStartMs, bool monthly)
{
    return monthly ? timeText(utc(periodStartMs), QStringLiteral("yyyy-MM-")) + name : name;
}

void AllTxtOutput::take(const PeriodSpots &period)
{
    const QString file = fileOf(period.periodStartMs);
    for (const Spot &spot : period.spots) {
        waiting.append({file, allTxtLine(spot)});
    }
    if (waiting.size() > maxWaiting) {
        const int excess = waiting.size() - maxWaiting;
        waiting.remove(0, excess);
        dropped += excess;
    }
    writeWaiting();
}

// The lines at the front that go into one file.
QByteArray AllTxtOutput::nextBatch() const
{
    QByteArray batch;
    for (const Line &line : waiting) {
        if (line.file != waiting.first().file) {
            break;
        }
        batch += line.text;
    }
    return batch;
}

void AllTxtOutput::writeWaiting()
{
    while (!waiting.isEmpty()) {
        const QString file = waiting.first().file;
        const QString error = appendWhole(file, nextBatch());
        tellOf(error.isEmpty() ? QString() : file + QStringLiteral(": ") + error);
        if (!error.isEmpty()) {
            return;
        }
        waiting.erase(waiting.begin(),
                      std::find_if(waiting.begin(), waiting.end(),
                                   [&](const Line &line) { return line.file != file; }));
    }
}

// Each failure once, until it changes or ends.
void AllTxtOutput::tellOf(const QString &error)
{
    if (error == lastError) {
        return;
    }
    lastError = error;
    if (!error.isEmpty()) {
        logLine(QStringLiteral("ALL.TXT cannot be written; its lines wait. %1")
                    .arg(escapedControls(error)));
        return;
    }
    logLine(dropped == 0
                ? QStringLiteral("ALL.TXT is written again.")
                : QStringLiteral("ALL.TXT is written again; the oldest %1 lines were dropped.")
                      .arg(dropped));
    dropped = 0;
}

} // namespace outpost
