#pragma once

#include "base/receiverkey.h"

#include <QHash>
#include <QString>

namespace outpost
{

// Keeps the connections of one program from crowding a receiver: never more than one attempt at a
// time for each host and port, and attempts a second apart.
class AttemptGate
{
public:
    explicit AttemptGate(int spacingMs = 1000) : spacing(spacingMs) {}

    // Whether an attempt may begin now; if so, it runs until end(). `steadyMs` is a time in ms that
    // only runs on.
    bool begin(const QString &host, int port, qint64 steadyMs);
    void end(const QString &host, int port);

    // A path of the sound socket, never given before: its number is the time in ms, as browsers
    // use. A receiver silently ignores a second connection with the same number.
    QString uniquePath(qint64 utcMs);

private:
    struct Receiver {
        bool busy = false;
        qint64 lastBeginMs = 0;
    };

    const int spacing;
    QHash<ReceiverKey, Receiver> receivers; // that were tried
    qint64 lastNumber = 0;
};

} // namespace outpost
