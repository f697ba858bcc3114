#pragma once

#include <functional>

class QObject;

namespace outpost
{

// How the program ends, which differs between the platforms.

// Writing to a log that nobody reads then fails instead of ending the program. To be called before
// anything is written. There is nothing of the kind on Windows.
void ignoreBrokenPipes();

// Makes the polite requests to end (SIGTERM, SIGINT, SIGHUP: a logout, "systemctl stop", Ctrl-C)
// leave the event loop, so that the window is destroyed in order and an open receiver session is
// written. What arrives within 100 ms of the first one belongs to it; a later one, also of another
// kind, ends the program at once. Does nothing on Windows, where Qt answers a log-off. Needs the
// application object; call once.
void quitOnTermination();

// Calls it when Windows has told the program that the user logs off, after which the program may
// be ended at any moment; as long as the owner lives. Elsewhere the event loop is left in order.
void atLogOff(QObject *owner, const std::function<void()> &callback);

} // namespace outpost
