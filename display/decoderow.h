#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <array>
#include <optional>

namespace outpost
{

struct Ft8Decode;

// Columns of a decode row, in the table and in the Station Display.
enum DecodeColumn { TimeColumn, SnrColumn, DtColumn, DfColumn, MessageColumn, DecodeColumnCount };

using DecodeCells = std::array<QString, DecodeColumnCount>;

// "Time", "SNR", "DT", "DF", "Message"
QStringList decodeHeaders();

// "Message (<n>)"
QString messageHeader(int latestPeriodCount);

// The cells of one jt9 line (time, SNR, DT, DF, "~" and a message of at least one word), with the
// period's label as the time. Nothing for a line without a message.
std::optional<DecodeCells> decodeCells(const QString &periodLabel, const Ft8Decode &decode);

// The texts of one column, top to bottom.
QStringList columnTexts(const QVector<DecodeCells> &rows, DecodeColumn column);

// The following functions take the texts of column 0, top to bottom; a missing cell counts as an
// empty text. Labels are compared trimmed.

// The labels of the three periods that appeared last, by row order rather than by time. An empty
// label is never kept.
QStringList keptPeriodLabels(const QStringList &rowLabels);

// The number of rows in the period of the last row.
int latestPeriodCount(const QStringList &rowLabels);

} // namespace outpost
