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

// A KiwiSDR-like receiver on this machine, for tests and demonstrations. It greets clients, checks
// their commands and streams FT8 periods aligned with UTC boundaries, or misbehaves as configured.
// Event-driven on the thread that created it; only making the synthetic band in listen() blocks.

// One line of the log.
struct SimEvent {
    qint64 utcMs = 0;
    int client = 0; // 1, 2, 3… in the order of connection
    QString path;   // "/kiwi/0/SND"; empty until the request is read
    QString kind;   // "connect", "request", "command", "sent", "period", "closed"
    QString text;   // for "command", the command itself
};

// One period as the client decodes it: 180000 samples, counted from its first boundary.
struct SentPeriod {
    int client = 0;
    qint64 startMs = 0; // nominal UTC start: first boundary + 15000 ms × number
    int number = 0;     // 0 is the client's first period; the first WAV is number `leadPeriods`
    sim::Samples samples;
};

struct SimConfig {
    QString host = QStringLiteral("127.0.0.1");
    quint16 port = 0;            // 0: any free port
    QStringList wavFiles;        // 12000 Hz, mono, 16 bit, 15 s each
    QVector<sim::Samples> audio; // more periods, after the files
    bool syntheticBand = false;  // if neither files nor audio are given; otherwise noise
    QString cacheFolder;         // for the synthetic band; empty: the user's cache
    QString generator;           // signal generator; empty: ft8sim on PATH
    int leadPeriods = 0;         // whole periods of noise at the start
    double rateHz = 12000;       // samples per second; each period has 15 s of them
    double speed = 1;            // how much faster than real time, after
    int realTimePeriods = 1;     // this number of periods in real time
    bool raw = false;            // uncompressed little-endian
    int firstSoundDelayMs = 300; // after the last required command; up to one frame later
    int configKb = 24;           // size of each configuration message in the greeting
    sim::EndpointBehaviours endpoints;
    QString logFile;                                  // events are appended; empty: none
    std::function<qint64()> nowMs;                    // UTC ms; empty: the system clock
    std::function<void(const QString &)> progress;    // while making the synthetic band
    std::function<void(const SimEvent &)> onEvent;    // must not delete the simulator
    std::function<void(const SentPeriod &)> onPeriod; // likewise
};

// False if the host, rate, speed or lead is out of range; `error` is then a sentence.
bool isUsable(const SimConfig &config, QString *error);

class KiwiSim
{
public:
    KiwiSim();
    ~KiwiSim(); // disconnects all clients

    // False if the configuration is unusable, a WAV file is bad, there is no generator, the port is
    // taken or the log cannot be written; `error` is then a sentence.
    bool listen(const SimConfig &config, QString *error);
    void close(); // stops listening and disconnects all clients
    quint16 port() const;

    // Applies to clients that connect from now on.
    void setEndpoints(const sim::EndpointBehaviours &endpoints);

    int liveClients() const;
    const QList<SimEvent> &events() const; // the last 10000
    // Commands received on `path` (on all paths if empty), oldest first.
    QStringList commands(const QString &path = {}) const;
    const QList<SentPeriod> &periods() const; // the last 8 of all clients

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace outpost
