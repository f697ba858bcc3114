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

// The cells of one jt9 line (time, SNR, DT, DF, "~" and a message of one word or more), its time
// replaced by the period's label; nothing for a line without a message.
std::optional<DecodeCells> decodeCells(const QString &periodLabel, const Ft8Decode &decode);

// The texts of one column, top to bottom.
QStringList columnTexts(const QVector<DecodeCells> &rows, DecodeColumn column);

// The rules below see the table's rows as their column-0 texts, top to bottom; a row without
// that cell counts as an empty text. Labels are compared trimmed.

// The labels of the three periods that appeared last, by the order of the rows and not by the
// clock. An empty label is never kept.
QStringList keptPeriodLabels(const QStringList &rowLabels);

// How many rows belong to the period of the last row.
int latestPeriodCount(const QStringList &rowLabels);

} // namespace outpost
