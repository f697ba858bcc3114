#pragma once

class QString;

// The program's one diagnostic trace: an information-level message in the category "default",
// the local time "HH:mm:ss", a blank, the text. Nothing of it reaches the window.
void logLine(const QString &text);
