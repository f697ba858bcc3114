#pragma once

#include <QJsonObject>
#include <QString>

// The receiver session being timed; all fields at rest while none is.
struct StatusSession {
    bool statusSessionActive = false;
    QString sessionHost;              // trimmed, in the operator's own case
    int sessionPort = 0;
    double sessionFrequencyMhz = 0;
    qint64 sessionStartMs = 0;        // UTC, ms since the epoch
    qint64 sessionDecodes = 0;
};
