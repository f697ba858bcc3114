#pragma once

#include "sim/imaadpcmencoder.h"
#include "sim/samples.h"
#include "sim/soundplan.h"

#include <QByteArray>
#include <functional>
#include <random>

namespace outpost
{

namespace sim
{

enum class Codec { Adpcm, LittleEndian, BigEndian };

struct StreamFormat {
    Codec codec = Codec::Adpcm;
    double rateHz = kSampleRateHz;
    bool resample = false;   // stretch each period to the rate instead of keeping its samples
    double speed = 1;        // how much faster than real time, after
    int realTimePeriods = 1; // this number of periods in real time
    int payloadBytes = 1024;

    int frameSamples() const;
    double frameMs() const { return frameSamples() * 1000.0 / rateHz; }
    int slotSamples() const { return qRound(15 * rateHz); }
};

// The audio of period n = 0, 1, 2…, counted from the client's first boundary. Short or empty audio
// is padded with noise.
using PeriodAudio = std::function<Samples(int period)>;

// The sound of one client, frame by frame: filler noise up to the boundary, then periods without
// gaps. Knows when each frame is due, but does no I/O and reads no clock.
class SoundStream
{
public:
    SoundStream(const StreamFormat &format, const SoundPlan &plan, const PeriodAudio &audio,
                quint32 noiseSeed);

    const SoundPlan &plan() const { return m_plan; }
    // The first sample of the next frame, counted from the boundary; negative for filler.
    qint64 position() const { return m_position; }
    qint64 dueMs() const; // UTC

    // A complete "SND" message: 10-byte header and payload.
    QByteArray nextFrame();

    // Applies from the next frame on; the filler still ends at the boundary.
    void setCodec(Codec codec);
    // Drops the remaining filler, which could arrive after the boundary.
    void skipFiller() { m_position = qMax<qint64>(m_position, 0); }
    void loseSamples(int count) { m_position += count; }
    void runAhead(int ms) { m_aheadMs += ms; }
    void setFirstFrameTone(bool on) { m_toneFirst = on; }
    void setOverload(bool on) { m_overload = on; }

private:
    qint16 noise();
    Samples nextSamples();
    Samples tone();
    qint16 sampleAt(qint64 position);
    quint8 flags() const;
    QByteArray payload(const Samples &samples);

    StreamFormat m_format;
    SoundPlan m_plan;
    PeriodAudio m_audio;
    std::mt19937 m_random;
    std::normal_distribution<float> m_noise{0.0F, float(kNoiseRms)};
    AdpcmState m_adpcm;
    Samples m_period;
    int m_periodNumber = -1;
    qint64 m_position = 0;
    qint64 m_aheadMs = 0;
    quint32 m_sequence = 0;
    bool m_toneFirst = false;
    bool m_overload = false;
};

// Decodes the frames sent to a client as the client does, from state (0, 0), and splits the samples
// into the client's periods of 180000. Stores at most one period.
class PeriodRecorder
{
public:
    // Takes one frame. Sound before the boundary is decoded, but not recorded (`kept` is false).
    // Returns the periods that this frame completes.
    QVector<Samples> take(const QByteArray &soundFrame, bool kept);

private:
    AdpcmState m_adpcm;
    Samples m_samples;
};

} // namespace sim

} // namespace outpost
