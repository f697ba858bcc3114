#include "sim/listener.h"

#include "sim/greeting.h"
#include "sim/simwav.h"
#include "sim/soundfaults.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QRegularExpression>

namespace outpost
{

namespace sim
{

namespace
{

constexpr int kTickMs = 5;
constexpr int kLargestMessageBytes = 64 * 1024;
constexpr int kFramesPerTick = 400;
// Limit on the sound queued for a client that does not read.
constexpr int kWriteQueueBytes = 4 << 20;
constexpr int kKeepaliveLimitMs = 60000;
constexpr int kChannels = 8;
// If sound would start this late, it is planned again; filler this close to the boundary is not
// sent.
constexpr int kLateStartMs = 100;
constexpr int kFillerEndMs = 20;

QString utcText(qint64 utcMs)
{
    return QDateTime::fromMSecsSinceEpoch(utcMs, Qt::UTC).toString(Qt::ISODateWithMs);
}

// The client number in "/kiwi/N/SND", "/ws/kiwi/N/SND" or "/N/SND"; empty for any other path.
QString clientNumber(const QString &path)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A/(?:(?:ws/)?kiwi/)?([0-9]{1,18})/SND\\z"));
    return pattern.match(path).captured(1);
}

} // namespace

StreamFormat ReceiverRoom::streamFormat(const Behaviour &behaviour, bool uncompressed) const
{
    StreamFormat format;
    if (config.raw || uncompressed) {
        format.codec = Codec::LittleEndian;
    }
    if (behaviour.is(Fault::BigEndian)) {
        format.codec = Codec::BigEndian;
    }
    format.rateHz = config.rateHz;
    if (behaviour.is(Fault::Rate) || behaviour.is(Fault::WideBand)) {
        format.rateHz = behaviour.parameter;
    }
    format.resample = behaviour.is(Fault::WideBand);
    format.speed = config.speed;
    format.realTimePeriods = config.realTimePeriods;
    format.payloadBytes -= behaviour.is(Fault::OddPayload) ? 1 : 0;
    return format;
}

Listener::Listener(QTcpSocket *socket, int client, ReceiverRoom *room, QObject *parent)
    : QObject(parent), m_wire(socket), m_client(client), m_room(room)
{
    socket->setParent(this);
    note(QStringLiteral("connect"), m_wire.peerAddress());
    connect(socket, &QTcpSocket::readyRead, this, [this] { readSocket(); });
    connect(socket, &QTcpSocket::disconnected, this, [this] { gone(); });
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.start(kTickMs);
    connect(&m_timer, &QTimer::timeout, this, [this] { tick(); });
}

void Listener::end()
{
    m_wire.drop();
}

void Listener::gone()
{
    if (m_phase == Phase::Ended) {
        return;
    }
    m_phase = Phase::Ended;
    m_timer.stop();
    if (m_hasChannel) {
        m_room->channels.remove(m_channel);
    }
    note(QStringLiteral("closed"), QStringLiteral("%1 sound frames sent").arg(m_framesSent));
    if (onGone) {
        onGone();
    }
}

void Listener::note(const QString &kind, const QString &text)
{
    m_room->report({m_room->nowMs(), m_client, m_path, kind, text});
}

void Listener::readSocket()
{
    // During a ping flood the answers are not read. While the opening is held back, later bytes
    // wait.
    if (m_phase == Phase::Opening ||
        (m_phase == Phase::Flooding && m_behaviour.is(Fault::PingFlood))) {
        return;
    }
    m_received += m_wire.read();
    if (m_phase == Phase::Request) {
        takeRequest();
    } else {
        takeFrames();
    }
}

void Listener::takeRequest()
{
    const HttpRequest request = parseRequest(m_received);
    if (request.status == Parse::NeedMore) {
        return;
    }
    if (request.status == Parse::Bad) {
        return end();
    }
    m_received.remove(0, request.consumed);
    m_path = QString::fromLatin1(request.path);
    m_requestKey = request.headers.value("sec-websocket-key");
    note(QStringLiteral("request"), QString::fromLatin1(request.method + ' ' + request.path));
    const QString number = clientNumber(m_path);
    m_channel = m_wire.peerAddress() + QLatin1Char('/') + number;
    m_behaviour = m_room->config.endpoints.of(number.toLongLong());
    if (number.isEmpty()) {
        m_behaviour = {Fault::HttpError, 0, "404 Not Found"};
    } else if (m_requestKey.isEmpty()) {
        m_behaviour = {Fault::HttpError, 0, "426 Upgrade Required"};
    }
    if (refuseRequest()) {
        return;
    }
    if (m_behaviour.is(Fault::SlowOpen)) {
        m_nextFaultMs = m_room->nowMs() + m_behaviour.parameterMs();
        m_phase = Phase::Opening;
        return;
    }
    openLink();
}

void Listener::openLink()
{
    m_wire.send(upgradeReply(m_requestKey));
    note(QStringLiteral("sent"), QStringLiteral("upgrade"));
    m_phase = m_behaviour.is(Fault::OpenSilent) ? Phase::Silent : Phase::Open;
    readSocket();
}

void Listener::takeFrames()
{
    while (m_phase != Phase::Ended) {
        const ClientFrame frame = parseClientFrame(m_received);
        if (frame.status == Parse::NeedMore) {
            return;
        }
        if (frame.status == Parse::Bad) {
            return end();
        }
        m_received.remove(0, frame.consumed);
        takeFrame(frame);
    }
}

void Listener::takeFrame(const ClientFrame &frame)
{
    switch (frame.opcode) {
    case Ping:
        if (!m_behaviour.is(Fault::NoPong) && m_phase != Phase::Silent &&
            m_phase != Phase::Flooding) {
            m_wire.send(wsFrame(Pong, frame.payload));
        }
        return;
    case Pong:
        return;
    case Close:
        m_wire.send(wsFrame(Close, {}));
        return m_wire.hangUp();
    default:
        m_message += frame.payload;
    }
    if (m_message.size() > kLargestMessageBytes) {
        return end();
    }
    if (frame.final) {
        takeMessage(QString::fromUtf8(std::exchange(m_message, {})));
    }
}

void Listener::takeMessage(const QString &text)
{
    note(QStringLiteral("command"), text);
    if (m_phase == Phase::Open && !takeChannel()) {
        return;
    }
    const bool wasAuthorised = m_commands.authorised();
    m_commands.take(text);
    if (ReceiverCommands::isKeepalive(text)) {
        m_keepaliveMs = m_room->nowMs();
    }
    if (m_sound) {
        m_sound->setCodec(m_room->streamFormat(m_behaviour, m_commands.uncompressed()).codec);
    }
    if (m_phase != Phase::Waiting) {
        return;
    }
    if (!wasAuthorised && m_commands.authorised()) {
        greet();
    }
    if (m_commands.tooManyEarlyKeepalives()) {
        note(QStringLiteral("sent"), QStringLiteral("close: keepalives without commands"));
        return m_wire.hangUp();
    }
    if (m_phase == Phase::Waiting && m_commands.complete() && !m_behaviour.neverSounds()) {
        planSoundFrom(m_room->nowMs() + m_room->config.firstSoundDelayMs);
    }
}

// A client gets its channel with its first message. A second connection with the same number from
// the same address is ignored silently.
bool Listener::takeChannel()
{
    m_phase = Phase::Waiting;
    m_keepaliveMs = m_room->nowMs();
    if (m_room->channels.contains(m_channel)) {
        note(QStringLiteral("sent"), QStringLiteral("nothing: client number already live"));
        m_phase = Phase::Silent;
        return false;
    }
    if (m_room->channels.size() >= kChannels) {
        turnAway("too_busy=" + QByteArray::number(kChannels));
        return false;
    }
    m_room->channels.insert(m_channel);
    m_hasChannel = true;
    return true;
}

void Listener::greet()
{
    if (refuseGreeting()) {
        return;
    }
    const int configKb =
        m_behaviour.is(Fault::BigMessage) ? int(m_behaviour.parameter) : m_room->config.configKb;
    const QByteArray address = m_wire.peerAddress().toLatin1();
    const double rateHz = m_room->streamFormat(m_behaviour, m_commands.uncompressed()).rateHz;
    const auto messages = m_behaviour.is(Fault::Monitor)
                              ? greetingWithoutAudio(address, rateHz, configKb)
                              : greeting(address, rateHz, configKb);
    for (const QByteArray &message : messages) {
        m_wire.sendBinary(message);
    }
    note(QStringLiteral("sent"), QStringLiteral("greeting"));
}

void Listener::planSoundFrom(qint64 earliestMs)
{
    const StreamFormat format = m_room->streamFormat(m_behaviour, m_commands.uncompressed());
    const SoundPlan plan = planSound(earliestMs, format.frameMs());
    m_sound = std::make_unique<SoundStream>(format, plan, m_room->audio, quint32(m_client));
    m_sound->setFirstFrameTone(m_behaviour.is(Fault::StaleFirst));
    m_nextFaultMs = plan.boundaryMs + m_behaviour.parameterMs();
    m_phase = Phase::Sounding;
}

void Listener::tick()
{
    const qint64 now = m_room->nowMs();
    if (m_phase == Phase::Opening && now >= m_nextFaultMs) {
        openLink();
    } else if (m_phase == Phase::Waiting) {
        remind(now);
    } else if (m_phase == Phase::Flooding) {
        flood();
    } else if (m_phase == Phase::Sounding) {
        sendDueSound(now);
    }
}

void Listener::sendDueSound(qint64 now)
{
    if (now - m_keepaliveMs > kKeepaliveLimitMs) {
        note(QStringLiteral("sent"), QStringLiteral("nothing more: no keepalive for 60 s"));
        m_phase = Phase::Silent;
        return;
    }
    if (m_firstSoundMs == 0 && now > m_sound->plan().firstFrameMs + kLateStartMs) {
        planSoundFrom(now);
    }
    if (now >= m_sound->plan().boundaryMs - kFillerEndMs) {
        m_sound->skipFiller();
    }
    for (int i = 0; i < kFramesPerTick && m_phase == Phase::Sounding; ++i) {
        disturbSound(now);
        if (dueMs(m_behaviour, *m_sound) > now || m_wire.waitingBytes() > kWriteQueueBytes) {
            break;
        }
        const bool kept = m_sound->position() >= 0;
        if (m_sound->position() == 0) {
            note(QStringLiteral("sent"), QStringLiteral("first frame of the period of %1")
                                             .arg(utcText(m_sound->plan().boundaryMs)));
        }
        QByteArray frame = m_sound->nextFrame();
        if (m_behaviour.is(Fault::RandomPayload)) {
            frame = randomSoundFrame();
        }
        sendSound(frame);
        record(frame, kept);
        m_wire.send(frameBetween(m_behaviour, m_framesSent));
    }
    if (m_firstSoundMs != 0 && now - m_firstSoundMs >= m_behaviour.parameterMs()) {
        endSound();
    }
}

void Listener::sendSound(const QByteArray &frame)
{
    if (m_framesSent++ == 0) {
        m_firstSoundMs = m_room->nowMs();
        note(QStringLiteral("sent"), QStringLiteral("first sound frame"));
    }
    if (!m_behaviour.is(Fault::Fragments)) {
        return m_wire.sendBinary(frame);
    }
    const int third = frame.size() / 3;
    m_wire.send(wsFrame(Binary, frame.left(third), false));
    m_wire.send(wsFrame(Continuation, frame.mid(third, third), false));
    m_wire.send(wsFrame(Continuation, frame.mid(2 * third), true));
}

void Listener::record(const QByteArray &frame, bool kept)
{
    if (m_behaviour.is(Fault::RandomPayload)) {
        return;
    }
    for (const Samples &samples : m_recorder.take(frame, kept)) {
        const qint64 startMs = m_sound->plan().boundaryMs + qint64(m_periodNumber) * kPeriodMs;
        const QByteArray hash =
            QCryptographicHash::hash(toLittleEndian(samples), QCryptographicHash::Sha256);
        note(QStringLiteral("period"),
             QStringLiteral("%1 of %2 sha256 %3")
                 .arg(m_periodNumber)
                 .arg(utcText(startMs), QString::fromLatin1(hash.toHex())));
        m_room->keepPeriod({m_client, startMs, m_periodNumber, samples});
        ++m_periodNumber;
    }
}

} // namespace sim

} // namespace outpost
