#pragma once

// Makes the polite requests to end (SIGTERM, SIGINT, SIGHUP: a logout, "systemctl stop", Ctrl-C)
// leave the event loop, so that the window is destroyed in order and an open receiver session is
// written. Windows sends the window a close instead; there this does nothing. Needs the
// application object; call once.
void quitOnTermination();
