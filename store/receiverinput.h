#pragma once

#include <QString>

namespace outpost
{

// The operator's input in the Kiwi Receiver dialog.
struct ReceiverInput {
    QString host; // trimmed, case kept
    int port = 0;
    double frequencyMhz = 0;
    QString refusal; // why the input is invalid; empty if it is valid
};

// Checks the trimmed input in the order host, port (1..65535), frequency. The first error is the
// refusal; the other fields are then not set.
ReceiverInput readReceiverInput(const QString &hostText, const QString &portText,
                                const QString &frequencyText);

} // namespace outpost
