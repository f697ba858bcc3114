#pragma once

#include "daemon/output.h"

#include <QByteArray>
#include <functional>

namespace outpost
{

enum class TextFormat { None, Table, JsonLines };

// The table's first line, with its LF.
QByteArray tableHead();
// A decode as a line of the table: date and time of the period's start (UTC), source, dial
// frequency in MHz, SNR, DT, audio frequency, message.
QByteArray tableLine(const Spot &spot);

// A decode as one JSON object on a line: "mode", "timestamp" (UTC, ms), "freq" (dial and audio
// frequency together, Hz), "msg", and "callsign" and "locator" of the sender where they can be
// told; beside these "receiver", "dial", "audio" (Hz), "snr" (dB), "dt" (s), and
// "low_confidence" where jt9 doubts.
QByteArray jsonLine(const Spot &spot);

// Decodes as text for a person or a program, on standard output.
class TextOutput : public Output
{
public:
    // Takes whole lines and never blocks; false if it drops them.
    using Writer = std::function<bool(const QByteArray &lines)>;

    TextOutput(TextFormat formatToUse, Writer writerToUse);

    void showSource(const SourceState &) override {}
    void dropSource(const QString &) override {}
    void take(const PeriodSpots &period) override;
    void close() override {}

private:
    const TextFormat format;
    const Writer write;
    bool headIsWritten = false;
    bool drops = false; // what was written last
};

} // namespace outpost
