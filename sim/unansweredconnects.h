#pragma once

#include <QTcpSocket>

namespace outpost
{

namespace sim
{

// Lets a bound socket listen so that no TCP connect to it is ever accepted or refused, as if its
// packets were lost. `firstInQueue` has to live as long. Returns false where the system cannot.
bool leaveConnectsUnanswered(const QTcpSocket &bound, QTcpSocket *firstInQueue);

} // namespace sim

} // namespace outpost
