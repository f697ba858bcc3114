#pragma once

#include <QByteArray>
#include <QVector>

namespace outpost
{

namespace sim
{

// The messages that a receiver sends before the sound, in its order: binary, ASCII "MSG " followed
// by name=value pairs separated by spaces. `configKb` is the size of each of the three URL-encoded
// configuration messages.
QVector<QByteArray> greeting(const QByteArray &clientAddress, double rateHz, int configKb);

// The greeting of a client for which no channel is free: the same without audio_init.
QVector<QByteArray> greetingWithoutAudio(const QByteArray &clientAddress, double rateHz,
                                         int configKb);

} // namespace sim

} // namespace outpost
