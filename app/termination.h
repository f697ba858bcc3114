#pragma once

// Makes the polite requests to end (SIGTERM, SIGINT, SIGHUP: a logout, "systemctl stop", Ctrl-C)
// leave the event loop, so that the window is destroyed in order and an open receiver session is
// written. Does nothing on Windows, where the toolkit answers a log-off. Needs the application
// object; call once.
void quitOnTermination();
