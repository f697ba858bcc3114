#include "kiwi/sndframe.h"

namespace outpost
{

bool isSndFrame(const QByteArray &frame)
{
    return frame.startsWith("SND");
}

bool isAdpcmFrame(const QByteArray &frame)
{
    constexpr int adpcmFlag = 0x10;
    return frame.size() > 3 && (frame.at(3) & adpcmFlag) != 0;
}

bool frameIsLogged(quint64 frameNumber)
{
    return frameNumber <= 10 || frameNumber % 50 == 0;
}

QString frameHead(const QByteArray &frame)
{
    const QByteArray head = frame.left(8);
    // With a pointer, fromLatin1() stops at the first zero byte.
    return QString::fromLatin1(head.constData()).toHtmlEscaped();
}

} // namespace outpost
