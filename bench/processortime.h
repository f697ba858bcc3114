#pragma once

#include <sys/resource.h>

namespace outpost
{

// Of this process (RUSAGE_SELF) or of its children that have ended (RUSAGE_CHILDREN).
inline double processorSeconds(int who)
{
    rusage usage = {};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

} // namespace outpost
