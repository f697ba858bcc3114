#pragma once

#include <Qt>

namespace outpost
{

// Platform differences in the search for a decoder.
struct Jt9Platform {
    static const bool nativeFormCounts; // whether a program "jt9" that uses the system's Qt counts
    static const Qt::CaseSensitivity fileNames;
};

} // namespace outpost
