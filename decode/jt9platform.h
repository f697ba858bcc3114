#pragma once

#include <Qt>

namespace outpost
{

// What the search for a decoder has to know of the system.
struct Jt9Platform {
    static const bool nativeFormCounts; // a program "jt9" may be one, with the system's Qt
    static const Qt::CaseSensitivity fileNames;
};

} // namespace outpost
