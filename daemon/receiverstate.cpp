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

QString receiverFiguresText(const ReceiverState &state)
{
    if (state.decodesLastHour == 0 && state.passedOver == 0) {
        return {};
    }
    return QStringLiteral(
               "%1 decodes in the last period, %2 in the last hour, lag %3 s, %4 periods "
               "passed over")
        .arg(state.decodesLastPeriod)
        .arg(state.decodesLastHour)
        .arg(static_cast<double>(state.lagMs) / 1000.0, 0, 'f', 1)
        .arg(state.passedOver);
}

SourceState sourceState(const ReceiverState &state)
{
    return {state.name, state.dialHz, state.decoding};
}

} // namespace outpost
