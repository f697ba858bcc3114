#include "kiwi/sounddecoder.h"

#include "kiwi/sndframe.h"

#include <QtEndian>

namespace outpost
{

SoundDecoder::SoundDecoder(SampleOrder orderOfPlainSamples) : order(orderOfPlainSamples) {}

const QVector<qint16> &SoundDecoder::decode(const QByteArray &frame)
{
    if (isAdpcmFrame(frame)) {
        decodeAdpcm(frame);
    } else {
        decodePlain(frame);
    }
    return samples;
}

void SoundDecoder::decodeAdpcm(const QByteArray &frame)
{
    samples.resize(2 * (frame.size() - sndHeaderBytes));
    qint16 *next = samples.data();
    ImaAdpcmState state = adpcm; // a local variable can stay in registers
    for (int i = sndHeaderBytes; i < frame.size(); ++i) {
        const int byte = static_cast<quint8>(frame.at(i));
        *next++ = decodeImaNibble(state, byte & 0x0f);
        *next++ = decodeImaNibble(state, byte >> 4);
    }
    adpcm = state;
}

// An odd last byte is dropped.
void SoundDecoder::decodePlain(const QByteArray &frame)
{
    const int count = (frame.size() - sndHeaderBytes) / 2;
    const char *payload = frame.constData() + sndHeaderBytes;
    samples.resize(count);
    if (isLittleEndian(frame)) {
        qFromLittleEndian<qint16>(payload, count, samples.data());
    } else {
        qFromBigEndian<qint16>(payload, count, samples.data());
    }
}

bool SoundDecoder::isLittleEndian(const QByteArray &frame) const
{
    constexpr int littleEndianFlag = 0x80;
    return order == SampleOrder::LittleEndian ||
           (order == SampleOrder::FlagDecides && (frame.at(3) & littleEndianFlag) != 0);
}

} // namespace outpost
