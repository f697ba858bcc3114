#pragma once

#include "kiwi/imaadpcm.h"

#include <QByteArray>
#include <QVector>

namespace outpost
{

// Byte order of uncompressed samples. FlagDecides: flag 0x80 of the frame means little-endian.
enum class SampleOrder { LittleEndian, BigEndian, FlagDecides };

// Decodes sound frames (layout: kiwi/sndframe.h) into signed 16-bit samples, 12000 per second. The
// ADPCM state continues from frame to frame until reset().
class SoundDecoder
{
public:
    explicit SoundDecoder(SampleOrder orderOfPlainSamples = SampleOrder::LittleEndian);

    void reset() { adpcm = {}; }

    // The samples of a frame of at least sndHeaderBytes. Valid until the next call.
    const QVector<qint16> &decode(const QByteArray &frame);

    const ImaAdpcmState &adpcmState() const { return adpcm; }

private:
    void decodeAdpcm(const QByteArray &frame);
    void decodePlain(const QByteArray &frame);
    bool isLittleEndian(const QByteArray &frame) const;

    SampleOrder order;
    ImaAdpcmState adpcm;
    QVector<qint16> samples; // keeps its capacity, so that decoding does not allocate
};

} // namespace outpost
