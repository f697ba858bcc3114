#pragma once

#include <QString>

namespace outpost
{

// Who sent a message, and where from, as far as the message tells.
struct Ft8Sender {
    QString callsign; // without "<>"; empty when it cannot be told
    QString locator;  // four characters; empty when it is not sent
};

// Reads a message as jt9 prints it, with or without its mark of a doubtful or a-priori decode ("?",
// "a1"). Free text, telemetry and whatever else has not the form of a standard message tell
// nothing.
Ft8Sender senderOf(const QString &message);

} // namespace outpost
