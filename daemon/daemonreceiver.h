#pragma once

#include "daemon/daemonconfig.h"
#include "daemon/receiverstate.h"
#include "daemon/retryplan.h"
#include "daemon/spot.h"

#include <QDateTime>
#include <QObject>
#include <functional>
#include <memory>

class QThreadPool;

namespace outpost
{

class AttemptGate;

// In ms.
struct ReceiverTimes {
    RetryTimes retry;
    int openMs = 5000;     // to open the WebSocket
    int dataMs = 6000;     // then to the first sound
    int silenceMs = 10000; // sound that stops for this long has ended
    int tickMs = 250;      // between looks at the clock
};

// What the receivers of a program share. The pool and the gate outlive them; the pool's thread
// count limits the decoders that run at once.
struct ReceiverSurroundings {
    QThreadPool *pool = nullptr;
    AttemptGate *gate = nullptr;
    QString captureFolder;                // each receiver has a scratch folder below it
    std::function<QString()> decoderPath; // of jt9, empty for none; called on any thread
    int depth = 2;                        // jt9's, 1..3
    int split = 1;                        // runs of jt9 a period: 1 or 4
    ReceiverTimes times;
    std::function<qint64()> clock = QDateTime::currentMSecsSinceEpoch; // UTC, ms since the epoch
    std::function<qint64()> steadyClock; // ms that only run on; null: the system's
    std::function<double()> random;      // 0..1; null: the system's
};

// Never called from the constructor, stop() or the destructor, nor after stop(). They may stop the
// receiver, but must not delete it.
struct DaemonReceiverCallbacks {
    std::function<void(const PeriodSpots &)> onPeriod = [](const PeriodSpots &) {}; // not empty
    std::function<void(const ReceiverState &)> onState = [](const ReceiverState &) {};
};

// One receiver with its capture, kept connected through all ends and refusals, on the frequency
// that its schedule says. It lives on the main thread.
class DaemonReceiver : public QObject
{
public:
    // `passwordToAsk` is called at each attempt.
    DaemonReceiver(const ReceiverConfig &configToUse, std::function<QString()> passwordToAsk,
                   const ReceiverSurroundings &surroundingsToUse,
                   DaemonReceiverCallbacks callbacksToUse, QObject *parent = nullptr);
    ~DaemonReceiver() override; // waits for its running decoders

    void start();
    // Disconnects and ends the decoders; nothing is called back any more. Stop all receivers before
    // deleting the first, so that their decoders end at the same time.
    void stop();
    ReceiverState state() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace outpost
