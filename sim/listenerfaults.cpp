#include "sim/listener.h"
#include "sim/tcpreset.h"

#include <QRandomGenerator>

namespace outpost
{

namespace sim
{

namespace
{

constexpr int kReminderMs = 500;
constexpr int kLostSamples = 300;
constexpr int kBurstMs = 60000;
constexpr qint64 kHugePayloadBytes = 16 << 20;
constexpr int kFloodInFlightBytes = 256 * 1024;
constexpr int kHeaderBytesPerTick = 4096; // slow enough to watch the client's memory grow

// Longer than a ping may be is a protocol error, so 125 bytes at most.
QByteArray pings()
{
    return wsFrame(Ping, QByteArray(125, 'p')).repeated(100);
}

QByteArray headerLines()
{
    const QByteArray line = "X-Filler: " + QByteArray(54, 'x') + "\r\n";
    return line.repeated(kHeaderBytesPerTick / line.size());
}

QByteArray shortSoundFrame(quint32 turn)
{
    return QByteArray("SND\x10\0\0\0\0\0\0", 10).left(int(3 + turn % 8));
}

} // namespace

bool Listener::refuseRequest()
{
    if (is(Fault::Refuse)) {
        resetTcp();
    } else if (is(Fault::NoAnswer) || is(Fault::NoConnect)) {
        m_phase = Phase::Silent;
    } else if (is(Fault::HttpError)) {
        note(QStringLiteral("sent"), QString::fromLatin1(m_behaviour.text));
        const bool redirects = m_behaviour.text.startsWith("307");
        sendRaw(httpReply(m_behaviour.text,
                          redirects ? "Location: http://127.0.0.1:9/\r\n" : QByteArray()));
        m_phase = Phase::Silent;
        m_socket->disconnectFromHost();
    } else if (is(Fault::EndlessHeaders)) {
        note(QStringLiteral("sent"), QStringLiteral("headers without end"));
        sendRaw("HTTP/1.1 101 Switching Protocols\r\n");
        m_phase = Phase::Flooding;
    } else {
        return false;
    }
    return true;
}

bool Listener::refuseGreeting()
{
    if (is(Fault::Notice)) {
        turnAway(m_behaviour.text);
    } else if (is(Fault::OpenNotice)) {
        refuse(m_behaviour.text);
    }
    return is(Fault::Notice) || is(Fault::OpenNotice) || is(Fault::TooBusy) ||
           is(Fault::TextOnly) || is(Fault::OtherTagsOnly);
}

bool Listener::neverSounds() const
{
    switch (m_behaviour.fault) {
    case Fault::Monitor:
    case Fault::MessagesOnly:
    case Fault::TextOnly:
    case Fault::OtherTagsOnly:
    case Fault::TooBusy:
    case Fault::Notice:
    case Fault::OpenNotice:
        return true;
    default:
        return false;
    }
}

// What comes again and again instead of sound.
void Listener::remind(qint64 nowMs)
{
    if (!neverSounds() || !m_commands.authorised() || nowMs < m_nextFaultMs) {
        return;
    }
    m_nextFaultMs = nowMs + (is(Fault::TooBusy) ? faultMs() : kReminderMs);
    if (is(Fault::Monitor)) {
        sendBinary("MSG monitor");
    } else if (is(Fault::TooBusy)) {
        sendBinary("MSG too_busy=8");
    } else if (is(Fault::MessagesOnly)) {
        sendBinary("MSG max_camp=4");
    } else if (is(Fault::TextOnly)) {
        sendRaw(wsFrame(Text, "MSG rx_chans=8"));
    } else if (is(Fault::OtherTagsOnly)) {
        sendBinary(m_framesSent++ % 2 ? "W/F \1\2\3\4" : "EXT name=value");
    }
}

qint64 Listener::dueMs() const
{
    const qint64 due = m_sound->dueMs();
    const qint64 boundaryMs = m_sound->plan().boundaryMs;
    if (!is(Fault::Bursty) || m_sound->position() <= 0) {
        return due;
    }
    const qint64 bursts = (due - boundaryMs + faultMs() - 1) / faultMs();
    return boundaryMs + bursts * faultMs();
}

void Listener::disturbSound(qint64 nowMs)
{
    m_sound->setOverload(is(Fault::Overload) && m_framesSent % 2);
    if (nowMs < m_nextFaultMs || m_sound->position() < 0) {
        return;
    }
    m_nextFaultMs += qMax<qint64>(faultMs(), 1);
    if (is(Fault::LostSamples)) {
        m_sound->loseSamples(kLostSamples);
    } else if (is(Fault::SequenceGaps)) {
        m_sound->nextFrame();
    } else if (is(Fault::MinuteBurst)) {
        m_sound->runAhead(kBurstMs);
        m_behaviour = {};
        note(QStringLiteral("sent"), QStringLiteral("a minute's audio at once"));
    }
}

void Listener::sendBetween()
{
    if (is(Fault::MessagesBetween)) {
        sendBinary("MSG max_camp=4");
    } else if (is(Fault::TextBetween)) {
        sendRaw(wsFrame(Text, "MSG rx_chans=8"));
    } else if (is(Fault::OtherTags)) {
        sendBinary(m_framesSent % 2 ? "W/F \1\2\3\4" : "EXT name=value");
    } else if (is(Fault::ShortFrames)) {
        sendBinary(shortSoundFrame(m_framesSent));
    } else if (is(Fault::TinyFrames)) {
        sendBinary(QByteArray("SN").left(int(m_framesSent % 3)));
    }
}

// Called once the behaviour's seconds of sound have passed.
void Listener::endSound()
{
    const auto become = [this](Phase phase, const char *what) {
        note(QStringLiteral("sent"), QString::fromLatin1(what));
        m_phase = phase;
    };
    switch (m_behaviour.fault) {
    case Fault::Kick:
        return turnAway("too_busy=8");
    case Fault::OwnerKick:
        return turnAway("kiwi_kick=1,You%20were%20kicked!");
    case Fault::Inactivity:
        return turnAway("inactivity_timeout=1");
    case Fault::CloseFrame:
        become(Phase::Silent, "close frame without status code");
        sendRaw(wsFrame(Close, {}));
        return m_socket->disconnectFromHost();
    case Fault::DropTcp:
        become(Phase::Silent, "end of TCP without a close frame");
        return m_socket->disconnectFromHost();
    case Fault::ResetTcp:
        return resetTcp();
    case Fault::Stall:
        return become(Phase::Silent, "nothing more: stall");
    case Fault::HalfFrame:
        become(Phase::Silent, "half a frame");
        return sendRaw(wsFrame(Binary, m_sound->nextFrame()).left(520));
    case Fault::HugeFrame:
        become(Phase::Flooding, "sound frame of 16 MiB");
        m_floodBytesLeft = kHugePayloadBytes;
        return sendRaw(frameHeader(Binary, 10 + kHugePayloadBytes) + shortSoundFrame(7));
    case Fault::EndlessFragments:
        become(Phase::Flooding, "fragments without end");
        return sendRaw(wsFrame(Binary, shortSoundFrame(7), false));
    case Fault::PingFlood:
        return become(Phase::Flooding, "pings without end");
    default:
        return;
    }
}

// As much as fits without holding more than a bound; the rest follows at the next tick.
void Listener::flood()
{
    if (is(Fault::EndlessHeaders) && m_socket->bytesToWrite() < kFloodInFlightBytes) {
        return sendRaw(headerLines());
    }
    while (m_phase == Phase::Flooding && m_socket->bytesToWrite() < kFloodInFlightBytes) {
        if (is(Fault::PingFlood)) {
            sendRaw(pings());
        } else if (is(Fault::EndlessFragments)) {
            sendRaw(wsFrame(Continuation, QByteArray(16384, '\x08'), false));
        } else if (is(Fault::HugeFrame)) {
            sendRaw(QByteArray(16384, '\x08'));
            m_floodBytesLeft -= 16384;
            if (m_floodBytesLeft == 0) {
                m_phase = Phase::Sounding;
                m_behaviour = {};
            }
        } else {
            return;
        }
    }
}

void Listener::refuse(const QByteArray &message)
{
    note(QStringLiteral("sent"), QString::fromLatin1(message));
    m_phase = Phase::Silent;
    sendBinary("MSG " + message);
}

// A refusing message, then a close without status code.
void Listener::turnAway(const QByteArray &message)
{
    refuse(message);
    sendRaw(wsFrame(Close, {}));
    m_socket->disconnectFromHost();
}

void Listener::resetTcp()
{
    note(QStringLiteral("sent"), QStringLiteral("TCP reset"));
    resetOnClose(m_socket->socketDescriptor());
    end();
}

QByteArray Listener::randomFrame()
{
    m_sound->nextFrame(); // keeps the pace
    QByteArray frame("SND");
    const int length = QRandomGenerator::global()->bounded(2048);
    for (int i = 0; i < length; ++i) {
        frame.append(char(QRandomGenerator::global()->bounded(256)));
    }
    return frame;
}

} // namespace sim

} // namespace outpost
