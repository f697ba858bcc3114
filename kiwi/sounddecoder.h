#pragma once

#include "kiwi/imaadpcm.h"

#include <QByteArray>
#include <QVector>

namespace outpost
{

// Byte order of uncompressed samples. Receivers set flag 0x80 for little-endian ones.
enum class SampleOrder { LittleEndian, BigEndian, FlagDecides };

// Turns sound frames (layout: kiwi/sndframe.h) into signed 16-bit samples, 12000 a second. The
// ADPCM state runs on from frame to frame until it is reset.
class SoundDecoder
{
public:
    explicit SoundDecoder(SampleOrder orderOfPlainSamples = SampleOrder::LittleEndian);

    void reset() { adpcm = {}; }

    // Samples of a frame of at least sndHeaderBytes; valid until the next call.
    const QVector<qint16> &decode(const QByteArray &frame);

    const ImaAdpcmState &adpcmState() const { return adpcm; }

private:
    void decodeAdpcm(const QByteArray &frame);
    void decodePlain(const QByteArray &frame);
    bool isLittleEndian(const QByteArray &frame) const;

    SampleOrder order;
    ImaAdpcmState adpcm;
    QVector<qint16> samples; // grows to the largest frame, so that decoding does not allocate
};

} // namespace outpost
