#include "sim/soundstream.h"

#include "sim/simwav.h"

#include <QtEndian>
#include <cmath>

namespace outpost
{

namespace sim
{

namespace
{

constexpr int kSmeterDbm = -97;
// Filler is sent at least this early, so that even a busy client has read it by the boundary.
constexpr int kFillerLeadMs = 400;

enum Flag : quint8 {
    PassbandChanged = 0x01,
    AdcOverload = 0x02,
    FrequencyChanged = 0x04,
    AdpcmPayload = 0x10,
    LittleEndianPayload = 0x80,
};

} // namespace

int StreamFormat::frameSamples() const
{
    return codec == Codec::Adpcm ? payloadBytes * 2 : payloadBytes / 2;
}

SoundStream::SoundStream(const StreamFormat &format, const SoundPlan &plan,
                         const PeriodAudio &audio, quint32 noiseSeed)
    : m_format(format), m_plan(plan), m_audio(audio), m_random(noiseSeed),
      m_position(-qint64(plan.fillerFrames) * format.frameSamples())
{
}

qint64 SoundStream::dueMs() const
{
    const double samplesPerMs = m_format.rateHz / 1000;
    const qint64 realTime = qint64(m_format.realTimePeriods) * m_format.slotSamples();
    const auto slow = double(qMin(m_position, realTime));
    const auto fast = double(qMax<qint64>(m_position - realTime, 0));
    const double offsetMs = slow / samplesPerMs + fast / samplesPerMs / m_format.speed;
    const qint64 nominalMs = m_plan.boundaryMs + qint64(std::ceil(offsetMs)) - m_aheadMs;
    return m_position < 0 ? qMin(nominalMs, m_plan.boundaryMs - kFillerLeadMs) : nominalMs;
}

void SoundStream::setCodec(Codec codec)
{
    m_format.codec = codec;
    if (m_position < 0) {
        m_position -= m_position % m_format.frameSamples();
    }
}

QByteArray SoundStream::nextFrame()
{
    const Samples samples = m_toneFirst && m_sequence == 0 ? tone() : nextSamples();
    QByteArray frame("SND");
    frame.append(char(flags()));
    frame.resize(10);
    ++m_sequence;
    qToLittleEndian(m_sequence, frame.data() + 4);
    qToBigEndian(quint16((kSmeterDbm + 127) * 10), frame.data() + 8);
    return frame + payload(samples);
}

quint8 SoundStream::flags() const
{
    int flags = m_format.codec == Codec::Adpcm ? AdpcmPayload : 0;
    if (m_format.codec == Codec::LittleEndian) {
        flags |= LittleEndianPayload;
    }
    if (m_sequence == 0) {
        flags |= PassbandChanged | FrequencyChanged;
    }
    if (m_overload) {
        flags |= AdcOverload;
    }
    return quint8(flags);
}

QByteArray SoundStream::payload(const Samples &samples)
{
    switch (m_format.codec) {
    case Codec::Adpcm:
        return encodeAdpcm(&m_adpcm, samples);
    case Codec::LittleEndian:
        return toLittleEndian(samples) + QByteArray(m_format.payloadBytes % 2, '\x7F');
    case Codec::BigEndian:
        return toBigEndian(samples) + QByteArray(m_format.payloadBytes % 2, '\x7F');
    }
    return {};
}

Samples SoundStream::nextSamples()
{
    Samples samples;
    samples.reserve(m_format.frameSamples());
    for (int i = 0; i < m_format.frameSamples(); ++i) {
        samples.append(sampleAt(m_position++));
    }
    return samples;
}

// 1000 Hz at half scale.
Samples SoundStream::tone()
{
    Samples samples;
    for (int i = 0; i < m_format.frameSamples(); ++i) {
        samples.append(qint16(16384 * std::sin(2 * kPi * 1000 * i / kSampleRateHz)));
    }
    m_position += samples.size();
    return samples;
}

qint16 SoundStream::sampleAt(qint64 position)
{
    if (position < 0) {
        return noise();
    }
    const int number = int(position / m_format.slotSamples());
    if (number != m_periodNumber) {
        m_period = m_audio(number);
        m_periodNumber = number;
    }
    const double offset = double(position % m_format.slotSamples());
    if (!m_format.resample) {
        return offset < m_period.size() ? m_period.at(int(offset)) : noise();
    }
    const double at = offset * kSampleRateHz / m_format.rateHz;
    const int left = int(at);
    if (left + 1 >= m_period.size()) {
        return noise();
    }
    const double between = at - left;
    return qint16(m_period.at(left) * (1 - between) + m_period.at(left + 1) * between);
}

qint16 SoundStream::noise()
{
    return qint16(std::lround(m_noise(m_random)));
}

QVector<Samples> PeriodRecorder::take(const QByteArray &soundFrame, bool kept)
{
    const QByteArray payload = soundFrame.mid(10);
    const bool compressed = quint8(soundFrame.at(3)) & AdpcmPayload;
    const Samples samples = compressed ? decodeAdpcm(&m_adpcm, payload) : fromLittleEndian(payload);
    if (!kept) {
        return {};
    }
    m_samples += samples;
    QVector<Samples> complete;
    while (m_samples.size() >= kPeriodSamples) {
        complete.append(m_samples.mid(0, kPeriodSamples));
        m_samples = m_samples.mid(kPeriodSamples);
    }
    return complete;
}

} // namespace sim

} // namespace outpost
