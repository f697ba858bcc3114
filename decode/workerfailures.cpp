#include "decode/workerfailures.h"

namespace outpost
{

QString WorkerFailures::report(const QString &periodLabel, int worker, const DecodeBand &band,
                               const Jt9Failure &failure)
{
    Jt9Failure &last = known[worker];
    if (failure == last) {
        return {};
    }
    last = failure;
    const QString text =
        failure.cause == Jt9Cause::None ? QStringLiteral("decoding again") : failureText(failure);
    return QStringLiteral("Period %1, worker %2 (%3-%4 Hz): %5")
        .arg(periodLabel, QString::number(worker + 1), QString::number(band.lowHz),
             QString::number(band.highHz), text);
}

} // namespace outpost
