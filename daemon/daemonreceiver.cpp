#include "daemon/daemonreceiver.h"

#include "base/frequency.h"
#include "base/logline.h"
#include "daemon/attemptgate.h"
#include "daemon/decodecount.h"
#include "daemon/decodeplan.h"
#include "daemon/dtwatch.h"
#include "daemon/receiveraudio.h"
#include "daemon/refusal.h"
#include "daemon/spots.h"
#include "kiwi/kiwilink.h"
#include "kiwi/receivernotices.h"
#include "kiwi/sndframe.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QSet>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <utility>

namespace outpost
{

namespace
{
constexpr int maxWaitingPeriods = 3;
constexpr int maxWaitMs = 45000;

// A name of one folder, whatever is in the receiver's, short enough for every file system.
QString folderName(const QString &receiver)
{
    constexpr int maxLength = 120;
    const QByteArray encoded = QUrl::toPercentEncoding(receiver, {}, ".");
    if (encoded.size() <= maxLength) {
        return QString::fromLatin1(encoded);
    }
    return QString::fromLatin1(QCryptographicHash::hash(encoded, QCryptographicHash::Sha1).toHex());
}

double mhzOf(qint64 hz)
{
    return static_cast<double>(hz) / 1e6;
}

bool isPassedOver(const FinishedPeriod &period)
{
    return std::any_of(
        period.failures.begin(), period.failures.end(),
        [](const Jt9Failure &failure) { return failure.cause == Jt9Cause::PassedOver; });
}

// FT8 is decoded at 12000 samples a second; a receiver's clock is off by much less than this.
bool isUsableRate(double rateHz)
{
    return rateHz > 11400 && rateHz < 12600;
}

QVector<double> dtsOf(const PeriodSpots &period)
{
    QVector<double> dts;
    for (const Spot &spot : period.spots) {
        dts.append(spot.dt);
    }
    return dts;
}

ReceiverSurroundings complete(ReceiverSurroundings surroundings)
{
    if (!surroundings.steadyClock) {
        QElapsedTimer timer;
        timer.start();
        surroundings.steadyClock = [timer] { return timer.elapsed(); };
    }
    if (!surroundings.random) {
        surroundings.random = [] { return QRandomGenerator::global()->generateDouble(); };
    }
    return surroundings;
}
} // namespace

struct DaemonReceiver::Private {
    Private(const ReceiverConfig &configToUse, std::function<QString()> passwordToAsk,
            const ReceiverSurroundings &surroundings, DaemonReceiverCallbacks callbacksToUse);

    // The supervisor
    void tick();
    void rest();
    void connect();
    void lookAfterLink();
    void end(const Ending &ending);
    Ending explained(const Ending &ending) const;
    void closeLink();
    void retune();
    void changed();
    void log(const QString &text) const;
    bool isStarted() const { return ticker.isActive(); } // a callback may stop the receiver

    // The link's
    KiwiLinkOptions linkOptions();
    KiwiLinkCallbacks linkCallbacks();
    void takeSound(const QByteArray &frame);
    void takeOtherFrame(const QByteArray &frame);
    void checkRate(double rateHz);

    // The capture's
    CaptureOptions captureOptions() const;
    void finish(const FinishedPeriod &period);
    void warnOfDt(const PeriodSpots &period);

    const ReceiverConfig config;
    const std::function<QString()> password;
    const ReceiverSurroundings shared;
    const DaemonReceiverCallbacks callbacks;
    KiwiSession session; // of the current attempt
    KiwiLink link;
    ReceiverAudio audio;
    QTimer ticker;
    RetryPlan plan;
    DecodeCount decodes;
    DtWatch dtWatch;
    ReceiverState state;
    QString loggedState;
    QSet<int> told;     // causes, since the last good link
    qint64 tunedHz = 0; // what the receiver was told last
    qint64 dueMs = 0;   // of the next attempt, on the steady clock like all below
    qint64 attemptMs = 0;
    qint64 firstSoundMs = -1; // of this link; -1: none yet
    qint64 lastSoundMs = 0;
    qint64 noticedMs = 0;
    Ending notice;  // the last of this link
    Ending mustEnd; // at the next tick
    bool holdsGate = false;
    int pendingPeriods = 0;
};

DaemonReceiver::Private::Private(const ReceiverConfig &configToUse,
                                 std::function<QString()> passwordToAsk,
                                 const ReceiverSurroundings &surroundings,
                                 DaemonReceiverCallbacks callbacksToUse)
    : config(configToUse), password(std::move(passwordToAsk)), shared(complete(surroundings)),
      callbacks(std::move(callbacksToUse)),
      link(
          [this] {
              return KiwiTarget{config.host, config.port,
                                mhzOf(config.schedule.dialHzAt(shared.clock()))};
          },
          linkCallbacks(), linkOptions()),
      audio(captureOptions(), shared.captureFolder + QLatin1Char('/') + folderName(config.name),
            shared.depth, [this](const FinishedPeriod &period) { finish(period); }),
      plan(shared.times.retry)
{
    state.name = config.name;
    QObject::connect(&ticker, &QTimer::timeout, &ticker, [this] { tick(); });
}

void DaemonReceiver::Private::tick()
{
    const bool isOn = config.schedule.dialHzAt(shared.clock()) != 0;
    switch (state.phase) {
    case ReceiverPhase::Resting:
    case ReceiverPhase::Waiting:
        if (!isOn) {
            rest();
        } else if (shared.steadyClock() >= dueMs) {
            connect();
        }
        return;
    case ReceiverPhase::Connecting:
    case ReceiverPhase::Receiving:
        if (isOn) {
            lookAfterLink();
        } else {
            closeLink();
            rest();
        }
    }
}

void DaemonReceiver::Private::rest()
{
    if (state.phase == ReceiverPhase::Resting) {
        return;
    }
    state.phase = ReceiverPhase::Resting;
    state.dialHz = 0;
    state.untilMs = config.schedule.nextChangeMs(shared.clock());
    state.reason.clear();
    changed();
}

void DaemonReceiver::Private::connect()
{
    const qint64 now = shared.steadyClock();
    if (!shared.gate->begin(config.host, config.port, now)) {
        return; // another attempt; the next tick asks again
    }
    holdsGate = true;
    attemptMs = now;
    session.password = password ? password() : QString();
    state.phase = ReceiverPhase::Connecting;
    state.dialHz = config.schedule.dialHzAt(shared.clock());
    state.untilMs = -1;
    state.reason.clear();
    changed();
    if (isStarted()) {
        link.connectKiwi();
    }
}

void DaemonReceiver::Private::lookAfterLink()
{
    retune();
    const ReceiverTimes &times = shared.times;
    const qint64 now = shared.steadyClock();
    const bool isReceiving = state.phase == ReceiverPhase::Receiving;
    if (mustEnd.cause != Refusal::None) {
        end(std::exchange(mustEnd, {})); // closeLink() forgets it
    } else if (link.state().phase == LinkPhase::Disconnected) {
        end(explained(isReceiving ? Ending{Refusal::Ended, {}}
                                  : endingOfError(link.state().lastError)));
    } else if (isReceiving && now - lastSoundMs >= times.silenceMs) {
        end(explained({Refusal::SoundStopped, {}}));
    } else if (!isReceiving && now - attemptMs >= times.openMs + times.dataMs + times.silenceMs) {
        end(explained({Refusal::NoSound, {}})); // sound frames without sound
    }
}

void DaemonReceiver::Private::end(const Ending &ending)
{
    const qint64 soundMs = firstSoundMs < 0 ? 0 : lastSoundMs - firstSoundMs;
    closeLink();
    if (soundMs >= shared.times.retry.goodMs) {
        told.clear();
    }
    const qint64 delayMs = plan.delayMs(soundMs, isHopeless(ending.cause), shared.random());
    dueMs = shared.steadyClock() + delayMs;
    state.phase = ReceiverPhase::Waiting;
    state.untilMs = shared.clock() + delayMs;
    state.reason = withoutPassword(endingText(ending), session.password);
    if (!told.contains(static_cast<int>(ending.cause))) {
        told.insert(static_cast<int>(ending.cause));
        const QString advice = endingAdvice(ending.cause);
        log(QStringLiteral("%1:%2 gives no sound: %3.")
                .arg(config.host, QString::number(config.port), state.reason) +
            (advice.isEmpty() ? QString() : QLatin1Char(' ') + advice));
    }
    changed();
}

// A notice explains the end that follows it.
Ending DaemonReceiver::Private::explained(const Ending &ending) const
{
    const bool isRecent = shared.steadyClock() - noticedMs < 2LL * shared.times.silenceMs;
    const bool explains = notice.cause != Refusal::None && (firstSoundMs < 0 || isRecent);
    return explains ? notice : ending;
}

void DaemonReceiver::Private::closeLink()
{
    link.disconnectKiwi(false);
    if (std::exchange(holdsGate, false)) {
        shared.gate->end(config.host, config.port);
    }
    firstSoundMs = -1;
    notice = {};
    mustEnd = {};
}

// Schedules change at full minutes, where periods begin.
void DaemonReceiver::Private::retune()
{
    const qint64 wantedHz = config.schedule.dialHzAt(shared.clock());
    if (wantedHz == 0 || wantedHz == tunedHz || tunedHz == 0) {
        return;
    }
    tunedHz = wantedHz;
    link.send({kiwiTuneCommand(session, mhzOf(wantedHz))});
    state.dialHz = wantedHz;
    changed();
}

void DaemonReceiver::Private::changed()
{
    if (!isStarted()) {
        return;
    }
    QString text = receiverPhaseText(state);
    if (state.phase == ReceiverPhase::Connecting || state.phase == ReceiverPhase::Receiving) {
        text += QStringLiteral(", %1 MHz").arg(frequencyText(mhzOf(state.dialHz)));
    }
    if (text != loggedState) {
        loggedState = text;
        const QString figures = receiverFiguresText(state);
        log(figures.isEmpty() ? text : QStringLiteral("%1 (%2)").arg(text, figures));
    }
    callbacks.onState(state);
}

void DaemonReceiver::Private::log(const QString &text) const
{
    logLine(QStringLiteral("%1: %2").arg(config.name, escapedControls(text)));
}

KiwiLinkOptions DaemonReceiver::Private::linkOptions()
{
    session.compression = config.compression;
    session.lowHz = config.lowHz;
    session.highHz = config.highHz;
    if (!config.user.isEmpty()) {
        session.user = config.user;
    }
    KiwiLinkOptions options;
    options.clock = shared.clock;
    options.endpoints = [this] { return QStringList{shared.gate->uniquePath(shared.clock())}; };
    options.commands = [this](double frequencyMhz) {
        tunedHz = qRound64(frequencyMhz * 1e6);
        return kiwiSessionCommands(session, frequencyMhz);
    };
    options.maskSecrets = [this](const QString &line) {
        return config.name + QStringLiteral(": ") + withoutPassword(line, session.password);
    };
    options.framesAreLogged = false;
    options.evidenceFolder = nullptr;
    options.timeouts = {shared.times.openMs, shared.times.dataMs};
    return options;
}

KiwiLinkCallbacks DaemonReceiver::Private::linkCallbacks()
{
    KiwiLinkCallbacks of;
    of.onSound = [this](const QByteArray &frame) { takeSound(frame); };
    of.onOtherFrame = [this](const QByteArray &frame) { takeOtherFrame(frame); };
    return of;
}

void DaemonReceiver::Private::takeSound(const QByteArray &frame)
{
    if (frame.size() <= sndHeaderBytes) {
        return;
    }
    lastSoundMs = shared.steadyClock();
    if (firstSoundMs < 0) {
        firstSoundMs = lastSoundMs;
        holdsGate = false;
        shared.gate->end(config.host, config.port);
        state.phase = ReceiverPhase::Receiving;
        audio.begin();
        changed();
    }
    retune();
    if (mustEnd.cause != Refusal::None || !isStarted()) {
        return;
    }
    const int completed = audio.take(frame, shared.clock(), lastSoundMs);
    if (completed > 0) {
        pendingPeriods += completed;
        state.decoding = true;
        changed();
        checkRate(audio.rateHz().value_or(12000));
    }
}

void DaemonReceiver::Private::takeOtherFrame(const QByteArray &frame)
{
    for (const QString &text : receiverNotices(frame)) {
        notice = endingOfNotice(text);
        noticedMs = shared.steadyClock();
    }
    checkRate(receiverSampleRate(frame).value_or(12000));
}

// The link must not be closed in its own callback.
void DaemonReceiver::Private::checkRate(double rateHz)
{
    if (!isUsableRate(rateHz)) {
        mustEnd = {Refusal::WrongRate, QString::number(rateHz, 'f', 0)};
    }
}

CaptureOptions DaemonReceiver::Private::captureOptions() const
{
    CaptureOptions options;
    options.bands = decodeBands(config.lowHz, config.highHz, shared.split);
    options.sharedPool = shared.pool;
    options.keepsFftPlans = true;
    options.maxWaitingPeriods = maxWaitingPeriods;
    options.maxWaitMs = maxWaitMs;
    options.priority = [name = config.name](qint64 startMs) {
        return decodePriority(name, startMs);
    };
    options.decoderPath = shared.decoderPath;
    options.log = [this](const QString &line) { log(line); };
    return options;
}

void DaemonReceiver::Private::finish(const FinishedPeriod &period)
{
    if (!isStarted()) {
        return; // one of several that came to an end at once
    }
    const PeriodSpots heard = spotsOf(period.decodes, config.name, period.startMs,
                                      config.schedule.dialHzAt(period.startMs));
    pendingPeriods -= 1;
    decodes.add(period.startMs, heard.spots.size());
    state.decodesLastPeriod = heard.spots.size();
    state.passedOver += isPassedOver(period) ? 1 : 0;
    state.lagMs = shared.clock() - period.startMs - KiwiAudioCapture::periodMs;
    state.decoding = pendingPeriods > 0;
    if (!heard.spots.isEmpty()) {
        callbacks.onPeriod(heard);
        warnOfDt(heard);
    }
    changed();
}

void DaemonReceiver::Private::warnOfDt(const PeriodSpots &period)
{
    const std::optional<double> dt = dtWatch.take(period.periodStartMs, dtsOf(period));
    if (dt) {
        log(QStringLiteral("The median DT has been %1 s for ten minutes: look at the computer's "
                           "clock, or the receiver is far behind.")
                .arg(*dt, 0, 'f', 1));
    }
}

DaemonReceiver::DaemonReceiver(const ReceiverConfig &configToUse,
                               std::function<QString()> passwordToAsk,
                               const ReceiverSurroundings &surroundingsToUse,
                               DaemonReceiverCallbacks callbacksToUse, QObject *parent)
    : QObject(parent), d(std::make_unique<Private>(configToUse, std::move(passwordToAsk),
                                                   surroundingsToUse, std::move(callbacksToUse)))
{
}

DaemonReceiver::~DaemonReceiver()
{
    stop();
}

void DaemonReceiver::start()
{
    d->dueMs = d->shared.steadyClock();
    d->ticker.start(d->shared.times.tickMs);
    d->tick();
}

void DaemonReceiver::stop()
{
    d->ticker.stop();
    d->closeLink();
    d->audio.abort();
}

ReceiverState DaemonReceiver::state() const
{
    ReceiverState now = d->state;
    now.decodesLastPeriod = d->decodes.inLastPeriod();
    now.decodesLastHour = d->decodes.inLastHour(d->shared.clock());
    return now;
}

} // namespace outpost
