#include "sim/soundfaults.h"

#include "sim/wsframe.h"

#include <QRandomGenerator>

namespace outpost
{

namespace sim
{

qint64 dueMs(const Behaviour &behaviour, const SoundStream &sound)
{
    const qint64 due = sound.dueMs();
    if (!behaviour.is(Fault::Bursty) || sound.position() <= 0) {
        return due;
    }
    const qint64 boundaryMs = sound.plan().boundaryMs;
    const qint64 burstMs = behaviour.parameterMs();
    return boundaryMs + (due - boundaryMs + burstMs - 1) / burstMs * burstMs;
}

QByteArray frameBetween(const Behaviour &behaviour, quint32 soundFramesSent)
{
    switch (behaviour.fault) {
    case Fault::MessagesBetween:
        return wsFrame(Binary, "MSG max_camp=4");
    case Fault::TextBetween:
        return wsFrame(Text, "MSG rx_chans=8");
    case Fault::OtherTags:
        return wsFrame(Binary, soundFramesSent % 2 ? "W/F \1\2\3\4" : "EXT name=value");
    case Fault::ShortFrames:
        return wsFrame(Binary, shortSoundFrame(int(3 + soundFramesSent % 8)));
    case Fault::TinyFrames:
        return wsFrame(Binary, QByteArray("SN").left(int(soundFramesSent % 3)));
    default:
        return {};
    }
}

QByteArray shortSoundFrame(int bytes)
{
    return QByteArray("SND\x10\0\0\0\0\0\0", 10).left(bytes);
}

QByteArray randomSoundFrame()
{
    QByteArray frame("SND");
    const int length = QRandomGenerator::global()->bounded(2048);
    for (int i = 0; i < length; ++i) {
        frame.append(char(QRandomGenerator::global()->bounded(256)));
    }
    return frame;
}

} // namespace sim

} // namespace outpost
