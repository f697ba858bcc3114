#include "sim/listener.h"
#include "sim/soundfaults.h"

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

// A ping payload is at most 125 bytes (RFC 6455, 5.5).
QByteArray pings()
{
    return wsFrame(Ping, QByteArray(125, 'p')).repeated(100);
}

QByteArray headerLines()
{
    const QByteArray line = "X-Filler: " + QByteArray(54, 'x') + "\r\n";
    return line.repeated(kHeaderBytesPerTick / line.size());
}

} // namespace

bool Listener::refuseRequest()
{
    if (m_behaviour.is(Fault::Refuse)) {
        note(QStringLiteral("sent"), QStringLiteral("TCP reset"));
        m_wire.reset();
    } else if (m_behaviour.is(Fault::NoAnswer) || m_behaviour.is(Fault::NoConnect)) {
        m_phase = Phase::Silent;
    } else if (m_behaviour.is(Fault::HttpError)) {
        note(QStringLiteral("sent"), QString::fromLatin1(m_behaviour.text));
        const bool redirects = m_behaviour.text.startsWith("307");
        m_wire.send(httpReply(m_behaviour.text,
                              redirects ? "Location: http://127.0.0.1:9/\r\n" : QByteArray()));
        m_phase = Phase::Silent;
        m_wire.hangUp();
    } else if (m_behaviour.is(Fault::EndlessHeaders)) {
        note(QStringLiteral("sent"), QStringLiteral("headers without end"));
        m_wire.send("HTTP/1.1 101 Switching Protocols\r\n");
        m_phase = Phase::Flooding;
    } else {
        return false;
    }
    return true;
}

bool Listener::refuseGreeting()
{
    if (m_behaviour.is(Fault::Notice)) {
        turnAway(m_behaviour.text);
    } else if (m_behaviour.is(Fault::OpenNotice)) {
        refuse(m_behaviour.text);
    }
    return m_behaviour.is(Fault::Notice) || m_behaviour.is(Fault::OpenNotice) ||
           m_behaviour.is(Fault::TooBusy) || m_behaviour.is(Fault::TextOnly) ||
           m_behaviour.is(Fault::OtherTagsOnly);
}

// Messages sent repeatedly instead of sound.
void Listener::remind(qint64 nowMs)
{
    if (!m_behaviour.neverSounds() || !m_commands.authorised() || nowMs < m_nextFaultMs) {
        return;
    }
    m_nextFaultMs =
        nowMs + (m_behaviour.is(Fault::TooBusy) ? m_behaviour.parameterMs() : kReminderMs);
    if (m_behaviour.is(Fault::Monitor)) {
        m_wire.sendBinary("MSG monitor");
    } else if (m_behaviour.is(Fault::TooBusy)) {
        m_wire.sendBinary("MSG too_busy=8");
    } else if (m_behaviour.is(Fault::MessagesOnly)) {
        m_wire.sendBinary("MSG max_camp=4");
    } else if (m_behaviour.is(Fault::TextOnly)) {
        m_wire.sendText("MSG rx_chans=8");
    } else if (m_behaviour.is(Fault::OtherTagsOnly)) {
        m_wire.sendBinary(m_framesSent++ % 2 ? "W/F \1\2\3\4" : "EXT name=value");
    }
}

void Listener::disturbSound(qint64 nowMs)
{
    m_sound->setOverload(m_behaviour.is(Fault::Overload) && m_framesSent % 2);
    if (nowMs < m_nextFaultMs || m_sound->position() < 0) {
        return;
    }
    m_nextFaultMs += qMax<qint64>(m_behaviour.parameterMs(), 1);
    if (m_behaviour.is(Fault::LostSamples)) {
        m_sound->loseSamples(kLostSamples);
    } else if (m_behaviour.is(Fault::SequenceGaps)) {
        m_sound->nextFrame();
    } else if (m_behaviour.is(Fault::MinuteBurst)) {
        m_sound->runAhead(kBurstMs);
        m_behaviour = {};
        note(QStringLiteral("sent"), QStringLiteral("a minute's audio at once"));
    }
}

// Called when the behaviour's seconds of sound are over.
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
        m_wire.send(wsFrame(Close, {}));
        return m_wire.hangUp();
    case Fault::DropTcp:
        become(Phase::Silent, "end of TCP without a close frame");
        return m_wire.hangUp();
    case Fault::ResetTcp:
        become(Phase::Silent, "TCP reset");
        return m_wire.reset();
    case Fault::Stall:
        return become(Phase::Silent, "nothing more: stall");
    case Fault::HalfFrame:
        become(Phase::Silent, "half a frame");
        return m_wire.send(wsFrame(Binary, m_sound->nextFrame()).left(520));
    case Fault::HugeFrame:
        become(Phase::Flooding, "sound frame of 16 MiB");
        m_floodBytesLeft = kHugePayloadBytes;
        return m_wire.send(frameHeader(Binary, 10 + kHugePayloadBytes) + shortSoundFrame());
    case Fault::EndlessFragments:
        become(Phase::Flooding, "fragments without end");
        return m_wire.send(wsFrame(Binary, shortSoundFrame(), false));
    case Fault::PingFlood:
        return become(Phase::Flooding, "pings without end");
    default:
        return;
    }
}

// Sends as much as the limit on unsent bytes allows; the rest follows at the next tick.
void Listener::flood()
{
    if (m_behaviour.is(Fault::EndlessHeaders) && m_wire.waitingBytes() < kFloodInFlightBytes) {
        return m_wire.send(headerLines());
    }
    while (m_phase == Phase::Flooding && m_wire.waitingBytes() < kFloodInFlightBytes) {
        if (m_behaviour.is(Fault::PingFlood)) {
            m_wire.send(pings());
        } else if (m_behaviour.is(Fault::EndlessFragments)) {
            m_wire.send(wsFrame(Continuation, QByteArray(16384, '\x08'), false));
        } else if (m_behaviour.is(Fault::HugeFrame)) {
            m_wire.send(QByteArray(16384, '\x08'));
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
    m_wire.sendBinary("MSG " + message);
}

// Sends a refusal, then closes without a status code.
void Listener::turnAway(const QByteArray &message)
{
    refuse(message);
    m_wire.send(wsFrame(Close, {}));
    m_wire.hangUp();
}

} // namespace sim

} // namespace outpost
