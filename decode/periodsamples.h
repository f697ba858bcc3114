#pragma once

#include <QByteArray>
#include <QtEndian>
#include <utility>

namespace outpost
{

// Counted since the start or since the last period ended.
struct PeriodCounters {
    qint64 framesSeen = 0;
    qint64 samples = 0;
    qint64 sumOfSquares = 0; // exact: that of a full period is below 2^48
    int peak = 0;            // largest magnitude of a sample, 0..32768
};

// The samples of the period that is being received, as little-endian bytes.
class PeriodSamples
{
public:
    static constexpr int maxSamples = 180000; // 15 s at 12000 Hz
    static constexpr int maxBytes = 2 * maxSamples;

    const PeriodCounters &counters() const { return counted; }
    void countFrame() { ++counted.framesSeen; }

    // Returns true when the period is full; call take() then.
    bool append(qint16 sample)
    {
        qToLittleEndian(sample, bytes.data() + 2 * counted.samples);
        const int value = sample;
        counted.peak = qMax(counted.peak, qAbs(value));
        counted.sumOfSquares += qint64{value} * value;
        return ++counted.samples == maxSamples;
    }

    QByteArray take()
    {
        clear();
        return std::exchange(bytes, QByteArray(maxBytes, Qt::Uninitialized));
    }

    void clear() { counted = {}; }

private:
    QByteArray bytes{maxBytes,
                     Qt::Uninitialized}; // always this long; the first counted.samples are filled
    PeriodCounters counted;
};

} // namespace outpost
