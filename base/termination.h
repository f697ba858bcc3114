#pragma once

#include <functional>

class QObject;

namespace outpost
{

// How the program ends on each platform.

// Makes writing to a log whose reader is gone fail instead of ending the program. Call before any
// output. Does nothing on Windows.
void ignoreBrokenPipes();

// Makes SIGTERM, SIGINT and SIGHUP (a log-out, "systemctl stop", Ctrl-C) quit the event loop, so
// that the window is destroyed and an open receiver session is saved. Further signals within 100 ms
// belong to the same request; a later one, of any of the three kinds, ends the program at once.
// Does nothing on Windows, where Qt handles a log-off. Requires the application object; call once.
void quitOnTermination();

// On Windows, calls `callback` when the user is logging off, after which the program may be ended
// at any moment. Valid for the lifetime of `owner`. Does nothing elsewhere.
void atLogOff(QObject *owner, const std::function<void()> &callback);

} // namespace outpost
