#include "kiwi/linkstate.h"

#include "base/frequency.h"

namespace outpost
{

namespace
{
constexpr double bytesPerMegabyte = 1048576.0;
}

QString kiwiStatusText(const LinkState &link, double frequencyMhz)
{
    if (link.phase == LinkPhase::Connected) {
        return QStringLiteral("Connected — %1 MHz\nEndpoint: %2\nSND: %3 frames   %4 MB\n"
                              "Other: %5   Last: %6 bytes")
            .arg(frequencyText(frequencyMhz), link.currentEndpoint, QString::number(link.sndFrames),
                 QString::number(static_cast<double>(link.rxBytes) / bytesPerMegabyte, 'f', 2),
                 QString::number(link.otherBinaryFrames), QString::number(link.lastFrameSize));
    }
    if (link.phase != LinkPhase::Disconnected) {
        return QStringLiteral("Connecting — %1 MHz\nEndpoint: %2\nNo verified SND data yet.")
            .arg(frequencyText(frequencyMhz),
                 link.currentEndpoint.isEmpty() ? QStringLiteral("--") : link.currentEndpoint);
    }
    return QStringLiteral("Disconnected");
}

} // namespace outpost
