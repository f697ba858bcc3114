#pragma once

#include "sim/behaviour.h"
#include "sim/samples.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

namespace outpost
{

// A KiwiSDR-like receiver on this machine, for tests and demonstrations: greets, checks the
// commands and streams FT8 periods laid exactly on UTC boundaries, or misbehaves as asked.
// Event-driven on the thread that made it; nothing blocks except making the synthetic band in
// listen().

// One line of the log.
struct SimEvent {
    qint64 utcMs = 0;
    int client = 0; // 1, 2, 3… in order of arrival
    QString path;   // "/kiwi/0/SND"; empty before the request is read
    QString kind;   // "connect", "request", "command", "sent", "period", "closed"
    QString text;   // for "command" the command itself
};

// One period as the listener hears it after the codec: 180000 samples from its first boundary on.
struct SentPeriod {
    int client = 0;
    qint64 startMs = 0; // nominal UTC start: first boundary + 15000 ms × number
    int number = 0;     // 0 is the listener's first period; the first WAV is number `leadPeriods`
    sim::Samples samples;
};

struct SimConfig {
    QString host = QStringLiteral("127.0.0.1");
    quint16 port = 0;            // 0: any free port
    QStringList wavFiles;        // 12000 Hz, mono, 16 bit, 15 s each
    QVector<sim::Samples> audio; // further periods, after the files
    bool syntheticBand = false;  // when there are neither; otherwise noise
    QString cacheFolder;         // of the synthetic band; empty: the user's cache
    QString generator;           // signal generator; empty: ft8sim on PATH
    int leadPeriods = 0;         // whole periods of noise first
    double rateHz = 12000;       // samples a second; each period has 15 s of them
    double speed = 1;            // faster than real time by this, after
    int realTimePeriods = 1;     // so many periods in real time
    bool raw = false;            // uncompressed little-endian
    int firstSoundDelayMs = 300; // from the last command needed; up to one frame more
    int configKb = 24;           // size of each configuration message of the greeting
    sim::EndpointBehaviours endpoints;
    QString logFile;                                  // events are appended; empty: none
    std::function<qint64()> nowMs;                    // UTC ms; empty: the system's clock
    std::function<void(const QString &)> progress;    // of making the synthetic band
    std::function<void(const SimEvent &)> onEvent;    // must not delete the simulator
    std::function<void(const SentPeriod &)> onPeriod; // likewise
};

// False with a sentence in `error`: host, rate, speed or lead that no simulator can have.
bool isUsable(const SimConfig &config, QString *error);

class KiwiSim
{
public:
    KiwiSim();
    ~KiwiSim(); // drops every client

    // False with a sentence in `error`: unusable configuration, bad WAV, no generator, port taken,
    // log not writable.
    bool listen(const SimConfig &config, QString *error);
    void close(); // stops listening and drops every client
    quint16 port() const;

    // Takes effect for clients that connect from now on.
    void setEndpoints(const sim::EndpointBehaviours &endpoints);

    int liveClients() const;
    const QList<SimEvent> &events() const; // the last 10000
    // Commands received on `path` (every path if empty), oldest first.
    QStringList commands(const QString &path = {}) const;
    const QList<SentPeriod> &periods() const; // the last 8 of all clients

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace outpost
