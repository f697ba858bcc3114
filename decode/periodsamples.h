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

    bool isFull() const { return counted.samples == maxSamples; } // call take() then

    // Appends what fits in. Returns how many samples that are.
    int append(const qint16 *samples, int count)
    {
        const int taken = qMin(count, static_cast<int>(maxSamples - counted.samples));
        qToLittleEndian<qint16>(samples, taken, bytes.data() + 2 * counted.samples);
        int peak = counted.peak; // local variables can stay in registers
        qint64 sumOfSquares = 0;
        for (int i = 0; i < taken; ++i) {
            const int value = samples[i];
            peak = qMax(peak, qAbs(value));
            sumOfSquares += qint64{value} * value;
        }
        counted.peak = peak;
        counted.sumOfSquares += sumOfSquares;
        counted.samples += taken;
        return taken;
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
