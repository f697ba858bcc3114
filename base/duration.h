#pragma once

#include <QString>

namespace outpost
{

// "HH:mm:ss", or "<days>d HH:mm:ss" from one day on. Negative durations count as 0 s.
QString formatDuration(qint64 seconds);

} // namespace outpost
