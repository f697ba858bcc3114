#pragma once

#include "daemon/attemptgate.h"
#include "daemon/daemonreceiver.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/madeupclock.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/fixture/simulator.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThreadPool>
#include <memory>
#include <vector>

namespace outpost
{

// Runs so many times too fast, from 14:23:09 UTC.
class FastClock
{
public:
    explicit FastClock(int timesTooFast) : factor(timesTooFast) { timer.start(); }
    qint64 steady() const { return timer.elapsed() * factor; }
    qint64 utc() const { return MadeUpClock::boundaryMs() - 6000 + steady() + setBy; }
    void setForward(qint64 ms) { setBy += ms; }

private:
    const int factor;
    QElapsedTimer timer;
    qint64 setBy = 0;
};

inline ReceiverConfig receiverConfig(const QString &name, int port)
{
    ReceiverConfig config;
    config.name = name;
    config.host = QStringLiteral("127.0.0.1");
    config.port = port;
    config.schedule = Schedule(14074000);
    config.compression = true;
    return config;
}

// Of all benches that live.
inline std::shared_ptr<LogTrace> commonTrace()
{
    static std::weak_ptr<LogTrace> living;
    std::shared_ptr<LogTrace> trace = living.lock();
    if (!trace) {
        trace = std::make_shared<LogTrace>();
        living = trace;
    }
    return trace;
}

// Receivers, their simulator, and what came of them.
struct ReceiverBench {
    static constexpr int usualHaste = 15; // the simulator looks at its clock each 5 ms
    static QString usualScript()
    {
        return QStringLiteral("echo '142315  -7  0.3 1234 ~  CQ K1ABC FN42'");
    }

    explicit ReceiverBench(const QStringList &behaviours = {},
                           const QString &script = usualScript(), SimConfig simConfig = {},
                           int timesTooFast = usualHaste)
        : clock(timesTooFast), decoder(script.toUtf8())
    {
        simConfig.nowMs = [this] { return clock.utc() - stepMs; };
        simConfig.configKb = 1;
        startSim(sim, behaviours, simConfig);
        pool.setMaxThreadCount(2);
        shared.pool = &pool;
        shared.gate = &gate;
        shared.captureFolder = folder.path();
        shared.decoderPath = [path = decoder.path()] { return path; };
        shared.clock = [this] { return clock.utc(); };
        shared.steadyClock = [this] { return clock.steady(); };
        shared.random = [] { return 0.5; };
        shared.times.tickMs = 10;
        shared.times.openMs = 5000;
        shared.times.dataMs = 2000;
        shared.times.silenceMs = 90000; // 6 s of a busy machine
    }

    DaemonReceiver &listen(const ReceiverConfig &config, const QString &password = {})
    {
        DaemonReceiverCallbacks callbacks;
        callbacks.onPeriod = [this](const PeriodSpots &period) { periods.append(period); };
        callbacks.onState = [this](const ReceiverState &state) { states.append(state); };
        receivers.push_back(std::make_unique<DaemonReceiver>(
            config, [password] { return password; }, shared, callbacks));
        receivers.back()->start();
        return *receivers.back();
    }
    DaemonReceiver &listen() { return listen(receiverConfig(QStringLiteral("20m"), sim.port())); }

    void setClockForward(qint64 ms) // but not the simulator's
    {
        clock.setForward(ms);
        stepMs += ms;
    }

    void behave(const QString &behaviour)
    {
        sim::EndpointBehaviours endpoints;
        QString error;
        if (!endpoints.apply(behaviour, &error)) {
            qFatal("%s", qPrintable(error));
        }
        sim.setEndpoints(endpoints);
    }

    QStringList paths() const
    {
        QStringList paths;
        for (const SimEvent &event : sim.events()) {
            if (event.kind == QLatin1String("request")) {
                paths.append(event.path);
            }
        }
        return paths;
    }

    int count(const QString &text) const { return trace->lines().filter(text).size(); }

    FastClock clock;
    qint64 stepMs = 0;
    const std::shared_ptr<LogTrace> trace = commonTrace();
    const ScriptedDecoder decoder;
    const QTemporaryDir folder;
    QThreadPool pool;
    AttemptGate gate;
    KiwiSim sim;
    ReceiverSurroundings shared;
    QVector<PeriodSpots> periods;
    QVector<ReceiverState> states;
    std::vector<std::unique_ptr<DaemonReceiver>> receivers;
};

} // namespace outpost
