#pragma once

#include <QString>

namespace outpost
{

// What the operator asks for in the Kiwi Receiver dialog.
struct ReceiverInput {
    QString host; // trimmed, in the operator's own case
    int port = 0;
    double frequencyMhz = 0;
    QString refusal; // why it cannot be used; empty when it can
};

// Reads the three edits, each without the white space around it. The first failing check gives
// the refusal, in the order host, port (1..65535), frequency; then nothing else is to be used.
ReceiverInput readReceiverInput(const QString &hostText, const QString &portText,
                                const QString &frequencyText);

} // namespace outpost
