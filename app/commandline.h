#pragma once

#include "app/startoptions.h"
#include "base/programoptions.h"

#include <functional>

namespace outpost
{

// What became of the station's command line: it starts with these options unless there is an
// ending.
struct CommandLine {
    StartOptions options;
    std::optional<Ending> ending;
};

using ReadProfile = std::function<ProfileReading(const QString &path)>;

// The program's name comes first among the arguments. `readProfile` is asked for the file that
// they name, if they do.
CommandLine readCommandLine(const QStringList &arguments, const ReadProfile &readProfile);

// Where there is no display, Qt would abort instead of ending with a sentence.
Ending noDisplay();

} // namespace outpost
