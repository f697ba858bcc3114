#pragma once

#include <QVector>
#include <QtGlobal>
#include <optional>

namespace outpost
{

// Samples of a frame that belong to periods, or zeros in their place.
struct SoundPiece {
    int from = 0; // first sample; -1: zeros
    int count = 0;
};

// Keeps the periods of a receiver on this computer's clock, although the receiver's own is off by a
// little and sound is lost on the way. Samples are counted; a frame's lateness is its arrival minus
// the time that the count says of its middle. The network only ever delays, so that the least
// lateness in a window of 15 s tells where the sound is. A line through the windows of five
// minutes, robust against those that were all late, is compared with the clock at each period's
// end: beyond 40 ms, samples are dropped there or zeros put in. Times are UTC, ms since the epoch.
class SoundClock
{
public:
    static constexpr double toleranceMs = 25;
    static constexpr double lostMs = 2000; // beyond it the periods are cut anew

    // The first period is to begin at this time. Forgets everything before.
    void start(qint64 firstPeriodMs);

    // Whether the computer's clock was set since the last call. `steadyMs` only runs on.
    bool hasStepped(qint64 utcMs, qint64 steadyMs);

    // Divides a frame of so many samples, which arrives now. Pieces end where periods end. Empty
    // before the first period.
    QVector<SoundPiece> take(int samples, qint64 utcMs);

    // How far the sound is behind the counted time; known after a good minute.
    std::optional<double> latenessMs(qint64 utcMs) const;
    bool isLost(qint64 utcMs) const;
    std::optional<double> rateHz() const; // as measured

private:
    struct Point {
        qint64 utcMs;
        double latenessMs;
    };

    void note(int samples, qint64 utcMs);
    double countedMs() const;
    int firstOfPeriods(int samples);
    int correction(qint64 utcMs) const;
    void shift(double ms);
    double slope() const;

    double originMs = 0;                 // UTC of the first counted sample; corrections move it
    qint64 counted = 0;                  // samples that have arrived
    qint64 firstMs = 0;                  // start of the first period
    bool begun = false;                  // the first period has
    int inPeriod = 0;                    // samples and zeros in the current period
    int toDrop = 0;                      // samples
    qint64 windowMs = 0;                 // start of the current window
    std::optional<Point> least;          // in the current window
    QVector<Point> windows;              // the least of each of the last ones, oldest first
    std::optional<qint64> clockOffsetMs; // UTC minus the steady clock
};

} // namespace outpost
