#pragma once

#include <QByteArray>
#include <QVector>

namespace outpost
{

namespace sim
{

// What a receiver says to a listener before the sound: binary messages, ASCII "MSG " and blank-
// separated name=value pairs, in the receiver's order. `configKb` is the size of each of the three
// URL-encoded configuration messages.
QVector<QByteArray> greeting(const QByteArray &clientAddress, double rateHz, int configKb);

// The part of the greeting that a listener gets when there is no channel for it: no audio_init.
QVector<QByteArray> greetingWithoutAudio(const QByteArray &clientAddress, double rateHz,
                                         int configKb);

} // namespace sim

} // namespace outpost
