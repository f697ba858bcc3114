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
// that everything is destroyed in order and an open receiver session is saved. Further signals
// within 100 ms belong to the same request; a later one, of any of the three kinds, ends the
// program at once. With `onHangUp`, SIGHUP is no such request: the event loop calls `onHangUp` for
// it. On Windows, where Qt handles a log-off, Ctrl-C and the end of the console quit the event loop
// of a console program. Requires the application object; call once.
void quitOnTermination(const std::function<void()> &onHangUp = {});

// A crash leaves no image of the memory, which would hold the passwords that the program has read.
// Cannot be taken back. Does nothing on Windows, which keeps none unless it is told to.
void leaveNoCrashDump();

// On Windows, calls `callback` when the user is logging off, after which the program may be ended
// at any moment. Valid for the lifetime of `owner`. Does nothing elsewhere.
void atLogOff(QObject *owner, const std::function<void()> &callback);

} // namespace outpost
