#pragma once

#include <QString>

namespace outpost
{

// "HH:mm:ss", or "<days>d HH:mm:ss" from one day on; a negative duration counts as none.
QString formatDuration(qint64 seconds);

} // namespace outpost
