#pragma once

#include <QString>

namespace outpost
{

// Why a file must not be read while the program runs: it is a pipe or a device, which might keep
// the event loop waiting. Empty for a regular file, and for what is missing or a folder, which
// cannot be opened anyway.
QString whyNotPlain(const QString &path);

} // namespace outpost
