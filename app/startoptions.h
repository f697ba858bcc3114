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

// What the operator asks for at the start of the program.
struct StartOptions {
    std::optional<OpenedProfile> profile; // in place of the default profile
    std::optional<double> frequencyMhz;   // in place of the frequency file's
    bool connects = false;                // to the receiver, once the event loop runs
};

} // namespace outpost
