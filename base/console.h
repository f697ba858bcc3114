#pragma once

#include "base/programoptions.h"

namespace outpost
{

// What a program does before it has an application object, and without a display.

// The arguments of main: off Windows in the user's encoding, on Windows as they were written.
QStringList argumentList(int argc, char **argv);

// Whether Qt can open windows, unless it is told where. Always on Windows.
bool hasDisplay();

// To standard output, or to standard error when the program could not do what was asked for. On
// Windows to the console that the program was started from, or else in a box.
void showEnding(const Ending &ending);

} // namespace outpost
