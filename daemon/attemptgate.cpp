#include "daemon/attemptgate.h"

namespace outpost
{

bool AttemptGate::begin(const QString &host, int port, qint64 steadyMs)
{
    const ReceiverKey key = receiverKey(host, port);
    const auto known = receivers.constFind(key);
    if (known != receivers.constEnd() && (known->busy || steadyMs - known->lastBeginMs < spacing)) {
        return false;
    }
    receivers.insert(key, {true, steadyMs});
    return true;
}

void AttemptGate::end(const QString &host, int port)
{
    const auto known = receivers.find(receiverKey(host, port));
    if (known != receivers.end()) {
        known->busy = false;
    }
}

QString AttemptGate::uniquePath(qint64 utcMs)
{
    lastNumber = qMax(lastNumber + 1, utcMs);
    return QStringLiteral("/kiwi/%1/SND").arg(lastNumber);
}

} // namespace outpost
