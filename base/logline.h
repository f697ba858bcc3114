#pragma once

class QString;

namespace outpost
{

// The program's only diagnostic log: an information-level message in the category "default" with
// the local time "HH:mm:ss", a space and the text. The window does not show it.
void logLine(const QString &text);

// Makes text from a peer or a file safe for a log line: line breaks, terminal control characters
// and characters that change the reading direction become "\u001b" and the like.
QString escapedControls(const QString &foreign);

} // namespace outpost
