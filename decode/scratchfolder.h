#pragma once

#include <QString>

namespace outpost
{

// What the name of a worker's scratch folder begins with.
constexpr const char usualScratchPrefix[] = "WORKER_";

// Removes a worker's scratch folder with all that a decoder may have left in it, folders without
// permissions included; links go, what they point at stays. Of a decoder that was killed a moment
// ago, files can be in use for a moment longer: so it is tried again, every 50 ms. False when
// something stays.
bool removeScratchFolder(const QString &folder, int tries = 20);

// Removes all whose names begin with the prefix from the folder that they lie in.
void removeScratchFolders(const QString &captureFolder, const QString &prefix);

} // namespace outpost
