#pragma once

#include <QString>
#include <memory>

class QLockFile;

namespace outpost
{

// How long to wait for another copy of the program that changes a file. It takes a few ms; one that
// is stuck must not stop this one's window for long.
constexpr int changeWaitMs = 1000;

// Keeps other running copies of the program from what is at `path`: takes the lock file
// "<path>.lock", and removes it when the result goes. One that a killed copy has left is taken
// over. Waits for up to `waitMs` while another copy holds it; isLocked() and error() of the result
// (never null) tell what became of it.
std::unique_ptr<QLockFile> takeLock(const QString &path, int waitMs = 0);

} // namespace outpost
