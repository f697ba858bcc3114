#pragma once

#include "base/programoptions.h"

namespace outpost
{

// Functions that need neither an application object nor a display.

// The arguments of main(): decoded from the user's encoding off Windows; on Windows, the wide
// command line.
QStringList argumentList(int argc, char **argv);

// Whether Qt finds a display by default. Always true on Windows.
bool hasDisplay();

// Writes the text to standard output, or to standard error if the exit code is not 0. On Windows it
// goes to the standard handle, else to the parent's console, else to a message box.
void showEnding(const Ending &ending);

} // namespace outpost
