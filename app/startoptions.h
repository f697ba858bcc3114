#pragma once

#include "store/profile.h"

#include <QString>
#include <optional>

namespace outpost
{

// A profile and the file that it was read from.
struct OpenedProfile {
    QString path;
    Profile profile;
};

// What the command line requests for the start.
struct StartOptions {
    std::optional<OpenedProfile> profile; // instead of the default profile
    std::optional<double> frequencyMhz;   // instead of the frequency file's
    bool connects = false;                // once the event loop runs
};

} // namespace outpost
