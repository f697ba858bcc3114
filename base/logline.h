#pragma once

class QString;

namespace outpost
{

// The program's one diagnostic trace: an information-level message in the category "default",
// the local time "HH:mm:ss", a blank, the text. Nothing of it reaches the window.
void logLine(const QString &text);

// A peer's or a file's text for a log line: what would break the line, steer a terminal or turn
// the reading direction is written as "\u001b".
QString escapedControls(const QString &foreign);

} // namespace outpost
