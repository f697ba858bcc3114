#pragma once

#include <QString>
#include <QStringList>

namespace outpost
{

class SettingsStore;

// The callsigns that the operator highlights: upper case, 1 to 15 characters of A-Z, 0-9 and "/",
// without duplicates.
constexpr int maxHighlightCalls = 10;

// The callsigns of a stored list: the first ten valid ones. Others are dropped silently.
QStringList validHighlightCalls(const QStringList &stored);

QStringList storedHighlightCalls(const SettingsStore &settings);
void saveHighlightCalls(const SettingsStore &settings, const QStringList &calls);

struct HighlightEdit {
    QStringList calls;    // in the order entered; may exceed maxHighlightCalls
    QString invalidEntry; // upper case; the first line that is not a callsign, or empty
};

// Parses the operator's input, one callsign per line, up to the first invalid line.
HighlightEdit parseHighlightCalls(const QString &typed);

// Whether the text contains one of the callsigns as a whole word: not next to a letter, a digit or
// "/". Case-insensitive.
bool containsCall(const QString &text, const QStringList &calls);

} // namespace outpost
