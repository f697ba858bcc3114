#pragma once

#include <QTcpSocket>

namespace outpost
{

namespace sim
{

// Makes a bound socket listen in such a way that connections to it are neither accepted nor
// refused, as if their packets were lost. `firstInQueue` must live as long as `bound`. Returns
// false if the system does not support this.
bool leaveConnectsUnanswered(const QTcpSocket &bound, QTcpSocket *firstInQueue);

} // namespace sim

} // namespace outpost
