#pragma once

#include "daemon/attemptgate.h"
#include "daemon/bridgesource.h"
#include "daemon/daemonconfig.h"
#include "daemon/daemonreceiver.h"
#include "daemon/decoderlookup.h"

#include <QMap>
#include <QObject>
#include <QThreadPool>
#include <memory>
#include <vector>

namespace outpost
{

struct OutpostdSurroundings {
    QString captureFolder;              // each receiver has a folder of its own in it
    std::unique_ptr<Output> textOutput; // may be null
    ReceiverTimes times;
    BridgeSourceOptions bridges;
};

// The station without a window: receivers and bridges whose decodes go to every output, as the
// configuration says. A new configuration changes only what differs.
class Outpostd : public QObject
{
public:
    explicit Outpostd(OutpostdSurroundings surroundingsToUse, QObject *parent = nullptr);
    ~Outpostd() override;

    void apply(const DaemonConfig &wanted);
    // Ends all decoders, flushes and closes the outputs. Nothing is received any more.
    void stop();
    QByteArray statusText() const;

private:
    struct Receiver {
        ReceiverConfig config;
        std::unique_ptr<DaemonReceiver> station;
    };
    struct Bridge {
        BridgeConfig config;
        std::unique_ptr<BridgeSource> source;
    };
    struct Server {
        WsjtxConfig config;
        std::unique_ptr<Output> output;
    };

    void endReceivers(bool keepsDecoder);
    void endBridges();
    void startReceivers();
    void startBridges();
    void applyOutputs(const DaemonConfig &before);
    void applyAllTxt();
    void startReceiver(const ReceiverConfig &wanted);
    void startBridge(const BridgeConfig &wanted);
    void showAllSources(Output &output) const;
    void showSource(const SourceState &source);
    void dropSource(const QString &name);
    void take(const PeriodSpots &period);
    std::vector<Output *> outputs() const;

    OutpostdSurroundings surroundings;
    DaemonConfig config;
    std::shared_ptr<DecoderLookup> decoder; // asked on the decoders' threads
    QThreadPool decoders;
    AttemptGate gate;
    std::vector<Server> servers;
    std::unique_ptr<Output> allTxt;
    QMap<QString, SourceState> sources; // by name
    std::vector<Receiver> receivers;
    std::vector<Bridge> bridges;
};

} // namespace outpost
