#include "daemon/receiverstate.h"

#include "base/timetext.h"

#include <QDateTime>

namespace outpost
{

namespace
{
QString untilText(qint64 utcMs)
{
    if (utcMs < 0) {
        return {};
    }
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(utcMs, Qt::UTC);
    return QStringLiteral(" until %1 UTC").arg(timeText(time, QStringLiteral("HH:mm:ss")));
}
} // namespace

QString receiverPhaseText(const ReceiverState &state)
{
    switch (state.phase) {
    case ReceiverPhase::Resting:
        return QStringLiteral("resting") + untilText(state.untilMs);
    case ReceiverPhase::Waiting:
        return QStringLiteral("waiting") + untilText(state.untilMs) +
               (state.reason.isEmpty() ? QString() : QStringLiteral(": ") + state.reason);
    case ReceiverPhase::Connecting:
        return QStringLiteral("connecting");
    case ReceiverPhase::Receiving:
        return QStringLiteral("receiving");
    }
    return {};
}

SourceState sourceState(const ReceiverState &state)
{
    return {state.name, state.dialHz, state.decoding};
}

} // namespace outpost
