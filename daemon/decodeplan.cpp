#include "daemon/decodeplan.h"

#include <QHash>

namespace outpost
{

namespace
{
// Spreads neighbouring numbers (Murmur3's last step).
uint mixed(uint number)
{
    number = (number ^ (number >> 16)) * 0x85ebca6bU;
    number = (number ^ (number >> 13)) * 0xc2b2ae35U;
    return number ^ (number >> 16);
}
} // namespace

QVector<DecodeBand> decodeBands(int lowHz, int highHz, int split)
{
    constexpr int overlapHz = 100;
    constexpr int minSplitHz = 400; // narrower bands are not worth four runs
    if (split <= 1 || highHz - lowHz < minSplitHz) {
        return {{lowHz, highHz}};
    }
    QVector<DecodeBand> bands;
    const int stepHz = (highHz - lowHz - overlapHz) / split;
    for (int i = 0; i < split; ++i) {
        const int low = lowHz + i * stepHz;
        bands.append({low, i == split - 1 ? highHz : low + stepHz + overlapHz});
    }
    return bands;
}

int decodePriority(const QString &receiver, qint64 periodStartMs)
{
    constexpr qint64 periodMs = 15000;
    constexpr int turns = 256;
    constexpr int periods = 1 << 22; // two years, until the numbers begin again
    const auto period = static_cast<int>(periodStartMs / periodMs % periods);
    const auto turn = static_cast<int>(mixed(qHash(receiver) ^ static_cast<uint>(period)) % turns);
    return turn - period * turns;
}

} // namespace outpost
