#pragma once

#include "base/programoptions.h"
#include "daemon/daemonconfig.h"
#include "daemon/textoutput.h"

#include <functional>

namespace outpost
{

struct DaemonOptions {
    bool showsStatus = false; // of the daemon that runs; nothing else is started
    QString configFile;       // absolute, read again at a hang-up; empty: all is in the arguments
    DaemonConfig config;      // what to run
    TextFormat textFormat = TextFormat::None; // of decodes on standard output
};

// The daemon starts with these options unless there is an ending.
struct DaemonCommandLine {
    DaemonOptions options;
    std::optional<Ending> ending;
};

using ReadDaemonConfig = std::function<DaemonConfigOutcome(const QString &path)>;

// The program's name comes first among the arguments. `readConfig` is asked for the file that they
// name, if they do.
DaemonCommandLine readDaemonCommandLine(const QStringList &arguments,
                                        const ReadDaemonConfig &readConfig);

} // namespace outpost
