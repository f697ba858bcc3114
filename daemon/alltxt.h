#pragma once

#include "daemon/output.h"

#include <QByteArray>
#include <QString>
#include <QVector>
#include <functional>
#include <utility>

namespace outpost
{

// One line of ALL.TXT, with its LF, in WSJT-X's columns:
//   yyMMdd_hhmmss  start of the period, UTC
//   %10.3f         dial frequency, MHz
//   " Rx FT8   "
//   %4d%5.1f%5d   SNR in dB, DT in s, audio frequency in Hz
//   a blank and the message
QByteArray allTxtLine(const Spot &spot);

// Names the file that takes a period: `name` ("ALL.TXT"), or "2026-11-ALL.TXT" by the UTC month.
QString allTxtFileName(const QString &name, qint64 periodStartMs, bool monthly);

// Appends each decode to ALL.TXT, once. What cannot be written waits in memory, the newest
// maxWaiting lines of it, and goes out as soon as there is room: a failure leaves no torn line.
class AllTxtOutput : public Output
{
public:
    static constexpr int maxWaiting = 20000; // lines; some hours of a busy band

    // Names the file of a period's start (UTC, ms since the epoch).
    using FileOf = std::function<QString(qint64 periodStartMs)>;

    explicit AllTxtOutput(FileOf fileOfPeriod) : fileOf(std::move(fileOfPeriod)) {}

    void showSource(const SourceState &) override {}
    void dropSource(const QString &) override {}
    void take(const PeriodSpots &period) override;
    void close() override { writeWaiting(); }
    int waitingLines() const { return waiting.size(); }

private:
    struct Line {
        QString file;
        QByteArray text;
    };

    void writeWaiting();
    QByteArray nextBatch() const;
    void tellOf(const QString &error);

    const FileOf fileOf;
    QVector<Line> waiting; // oldest first
    int dropped = 0;       // since the failure began
    QString lastError;     // empty: the last write went well
};

} // namespace outpost
