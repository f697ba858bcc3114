#pragma once

#include <QString>

namespace outpost
{

// Usual prefix of the names of workers' scratch folders.
constexpr const char usualScratchPrefix[] = "WORKER_";

// Removes a worker's scratch folder with everything that a decoder may have left in it, including
// folders without permissions. Links are removed, not their targets. Files of a decoder that was
// just killed may still be in use, so the removal is retried every 50 ms. Returns false if
// something remains.
bool removeScratchFolder(const QString &folder, int tries = 20);

// Removes all scratch folders with this prefix from `captureFolder`.
void removeScratchFolders(const QString &captureFolder, const QString &prefix);

} // namespace outpost
