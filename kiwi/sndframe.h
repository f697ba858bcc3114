#pragma once

#include <QByteArray>
#include <QString>

namespace outpost
{

// A binary frame of the receiver's sound socket, offsets from its first byte:
//   0  3  ASCII "SND"
//   3  1  flags; 0x10 set: the payload is IMA ADPCM, clear: little-endian 16-bit samples
//   4  4  sequence number (little-endian), not read
//   8  2  S-meter (big-endian), not read
//  10  …  audio payload
constexpr int sndHeaderBytes = 10;

// Whether the frame begins with "SND"; it may be as short as those three bytes.
bool isSndFrame(const QByteArray &frame);

// Whether the flags say ADPCM; false if the frame is too short to have flags.
bool isAdpcmFrame(const QByteArray &frame);

// Whether to log this frame: the first ten of a connection, then every fiftieth.
bool frameIsLogged(quint64 frameNumber);

// The first 8 bytes for the log: Latin-1 up to the first zero byte, HTML-escaped.
QString frameHead(const QByteArray &frame);

} // namespace outpost
