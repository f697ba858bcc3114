#pragma once

#include <QString>
#include <QStringList>

namespace outpost
{

class SettingsStore;

// The operator's callsigns of interest: upper case, 1 to 15 characters of A-Z, 0-9 and "/", no
// two the same.
constexpr int maxHighlightCalls = 10;

// The calls of a stored list: the first ten valid ones; the rest is dropped silently.
QStringList validHighlightCalls(const QStringList &stored);

QStringList storedHighlightCalls(const SettingsStore &settings);
void saveHighlightCalls(const SettingsStore &settings, const QStringList &calls);

struct HighlightEdit {
    QStringList calls;    // in the order typed; may hold more than maxHighlightCalls
    QString invalidEntry; // upper case; the first line that is no call, empty when all are
};

// Reads what the operator typed, one call on a line. Reading ends at an invalid entry.
HighlightEdit parseHighlightCalls(const QString &typed);

// Whether the text holds one of the calls standing alone: no letter, digit or "/" touches it.
// Letter case does not matter.
bool containsCall(const QString &text, const QStringList &calls);

} // namespace outpost
