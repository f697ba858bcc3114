#include "daemon/soundclock.h"

#include <algorithm>

namespace outpost
{

namespace
{
constexpr int samplesPerPeriod = 180000;
constexpr double samplesPerMs = 12;
constexpr qint64 windowLengthMs = 15000;
constexpr int maxWindows = 20; // five minutes
constexpr int minWindows = 5;  // for an estimate
constexpr qint64 minSlopeMs = 5000;
constexpr qint64 stepMs = 500;
// Right before the first period sound is not measured: the simulated receiver hurries it.
constexpr qint64 hurriedMs = 1000;

double median(QVector<double> values)
{
    const auto middle = values.begin() + values.size() / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}
} // namespace

void SoundClock::start(qint64 firstPeriodMs)
{
    *this = {};
    firstMs = firstPeriodMs;
}

bool SoundClock::hasStepped(qint64 utcMs, qint64 steadyMs)
{
    const qint64 offset = utcMs - steadyMs;
    const qint64 before = clockOffsetMs.value_or(offset);
    clockOffsetMs = offset;
    return qAbs(offset - before) > stepMs;
}

QVector<SoundPiece> SoundClock::take(int samples, qint64 utcMs)
{
    if (counted == 0) {
        originMs = static_cast<double>(utcMs) - samples / samplesPerMs / 2;
    }
    counted += samples;
    if (begun || !least || utcMs < firstMs - hurriedMs) {
        note(samples, utcMs);
    }

    QVector<SoundPiece> pieces;
    int at = begun ? 0 : firstOfPeriods(samples);
    while (at < samples) {
        const int dropped = qMin(toDrop, samples - at);
        toDrop -= dropped;
        at += dropped;
        const int kept = qMin(samples - at, samplesPerPeriod - inPeriod);
        if (kept == 0) {
            break;
        }
        pieces.append({at, kept});
        at += kept;
        inPeriod += kept;
        if (inPeriod == samplesPerPeriod) {
            const int missing = correction(utcMs);
            shift(missing / samplesPerMs);
            inPeriod = qMax(missing, 0);
            toDrop = qMax(-missing, 0);
            if (inPeriod > 0) {
                pieces.append({-1, inPeriod});
            }
        }
    }
    return pieces;
}

double SoundClock::countedMs() const
{
    return originMs + static_cast<double>(counted) / samplesPerMs;
}

void SoundClock::note(int samples, qint64 utcMs)
{
    const double middleMs = countedMs() - samples / samplesPerMs / 2;
    const Point now{utcMs, static_cast<double>(utcMs) - middleMs};
    if (least && (utcMs - windowMs >= windowLengthMs || utcMs < windowMs)) {
        windows.append(*least);
        windows = windows.mid(qMax(0, windows.size() - maxWindows));
        least.reset();
    }
    if (!least) {
        windowMs = utcMs;
    }
    if (!least || now.latenessMs < least->latenessMs) {
        least = now;
    }
}

// Of the newest frame; its number of samples while the first period has not begun. Sound that has
// come early in a burst is told from the least lateness so far.
int SoundClock::firstOfPeriods(int samples)
{
    double leastMs = least->latenessMs;
    for (const Point &window : qAsConst(windows)) {
        leastMs = qMin(leastMs, window.latenessMs);
    }
    const double ofPeriodsMs = countedMs() + leastMs - static_cast<double>(firstMs);
    const qint64 ofPeriods = qRound64(ofPeriodsMs * samplesPerMs);
    if (ofPeriods <= 0) {
        return samples;
    }
    begun = true;
    shift(leastMs);
    return static_cast<int>(qMax<qint64>(samples - ofPeriods, 0));
}

// Samples that are missing; negative: too many.
int SoundClock::correction(qint64 utcMs) const
{
    const double behindMs = latenessMs(utcMs).value_or(0);
    if (qAbs(behindMs) <= toleranceMs || qAbs(behindMs) > lostMs) {
        return 0;
    }
    return qRound(behindMs * samplesPerMs);
}

void SoundClock::shift(double ms)
{
    originMs += ms;
    if (least) {
        least->latenessMs -= ms;
    }
    for (Point &window : windows) {
        window.latenessMs -= ms;
    }
}

// Theil and Sen's line: the median of the slopes between all pairs, then of what is left.
std::optional<double> SoundClock::latenessMs(qint64 utcMs) const
{
    if (windows.size() < minWindows) {
        return {};
    }
    const double drift = slope();
    QVector<double> now;
    for (const Point &window : windows) {
        now.append(window.latenessMs + drift * static_cast<double>(utcMs - window.utcMs));
    }
    return median(now);
}

double SoundClock::slope() const
{
    QVector<double> slopes;
    for (int i = 0; i < windows.size(); ++i) {
        for (int j = i + 1; j < windows.size(); ++j) {
            const qint64 apart = windows.at(j).utcMs - windows.at(i).utcMs;
            if (apart >= minSlopeMs) {
                slopes.append((windows.at(j).latenessMs - windows.at(i).latenessMs) /
                              static_cast<double>(apart));
            }
        }
    }
    return slopes.isEmpty() ? 0 : median(slopes);
}

bool SoundClock::isLost(qint64 utcMs) const
{
    return qAbs(latenessMs(utcMs).value_or(0)) > lostMs;
}

std::optional<double> SoundClock::rateHz() const
{
    if (windows.size() < minWindows) {
        return {};
    }
    return 1000 * samplesPerMs * (1 - slope());
}

} // namespace outpost
