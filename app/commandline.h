#pragma once

#include "app/startoptions.h"
#include "base/programoptions.h"

#include <functional>

namespace outpost
{

// The station's parsed command line. If there is an ending, the program must not start.
struct CommandLine {
    StartOptions options;
    std::optional<Ending> ending;
};

using ReadProfile = std::function<ProfileReading(const QString &path)>;

// The first argument is the program's name. `readProfile` is called for the file in the arguments,
// if any.
CommandLine readCommandLine(const QStringList &arguments, const ReadProfile &readProfile);

// Used without a display, where Qt would abort instead of printing a message.
Ending noDisplay();

} // namespace outpost
