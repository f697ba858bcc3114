#include "daemon/outpostd.h"

#include "base/datapaths.h"
#include "base/logline.h"
#include "base/termination.h"
#include "daemon/alltxt.h"
#include "daemon/backgroundoutput.h"
#include "daemon/passwordfile.h"
#include "daemon/statustable.h"
#include "daemon/wsjtxoutput.h"

#include <QDeadlineTimer>
#include <QDir>
#include <algorithm>
#include <utility>

namespace outpost
{

namespace
{
qint64 steadyMs()
{
    return QDeadlineTimer::current(Qt::PreciseTimer).deadline();
}

// Whether receivers that run with the one may go on with the other.
bool sameDecoder(const DecoderConfig &left, DecoderConfig right)
{
    right.atOnce = left.atOnce;
    return left == right;
}

QString passwordIn(const QString &file)
{
    if (file.isEmpty()) {
        return {};
    }
    leaveNoCrashDump();
    const PasswordOutcome outcome = readPassword(file);
    if (!outcome.error.isEmpty()) {
        logLine(QStringLiteral("No password: %1").arg(escapedControls(outcome.error)));
    }
    return outcome.password;
}

template <typename Config>
bool contains(const QVector<Config> &configs, const Config &config)
{
    return std::find(configs.begin(), configs.end(), config) != configs.end();
}
} // namespace

Outpostd::Outpostd(OutpostdSurroundings surroundingsToUse, QObject *parent)
    : QObject(parent), surroundings(std::move(surroundingsToUse))
{
    decoders.setExpiryTimeout(-1);
}

Outpostd::~Outpostd()
{
    stop();
}

void Outpostd::apply(const DaemonConfig &wanted)
{
    const DaemonConfig before = std::exchange(config, wanted);
    const bool keepsDecoder = decoder != nullptr && sameDecoder(before.decoder, config.decoder);
    if (!keepsDecoder) {
        decoder = std::make_shared<DecoderLookup>(
            [path = config.decoder.jt9] { return usableDecoder(path); }, steadyMs);
    }
    const int atOnce = config.decoder.atOnce;
    decoders.setMaxThreadCount(atOnce > 0 ? atOnce : QThread::idealThreadCount());
    applyOutputs(before);
    endReceivers(keepsDecoder);
    endBridges(); // a name may go from one kind to the other
    startReceivers();
    startBridges();
    if (!config.receivers.isEmpty()) {
        decoder->path(); // says at once if there is none
    }
}

// Those that stay go on without a gap.
void Outpostd::endReceivers(bool keepsDecoder)
{
    std::vector<Receiver> going;
    const auto stays = [&](const Receiver &receiver) {
        return keepsDecoder && contains(config.receivers, receiver.config);
    };
    const auto firstGoing = std::stable_partition(receivers.begin(), receivers.end(), stays);
    std::move(firstGoing, receivers.end(), std::back_inserter(going));
    receivers.erase(firstGoing, receivers.end());
    for (Receiver &receiver : going) {
        receiver.station->stop();
        dropSource(receiver.config.name);
    }
    going.clear(); // waits for their decoders, which are ending
}

void Outpostd::startReceivers()
{
    for (const ReceiverConfig &wanted : std::as_const(config.receivers)) {
        const bool runs = std::any_of(receivers.begin(), receivers.end(),
                                      [&](const Receiver &r) { return r.config == wanted; });
        if (!runs) {
            startReceiver(wanted);
        }
    }
}

void Outpostd::startReceiver(const ReceiverConfig &wanted)
{
    ReceiverSurroundings around;
    around.pool = &decoders;
    around.gate = &gate;
    around.captureFolder = surroundings.captureFolder;
    around.decoderPath = [lookup = decoder] { return lookup->path(); };
    around.depth = config.decoder.passes;
    around.split = config.decoder.split;
    around.times = surroundings.times;
    DaemonReceiverCallbacks callbacks;
    callbacks.onPeriod = [this](const PeriodSpots &period) { take(period); };
    callbacks.onState = [this](const ReceiverState &state) { showSource(sourceState(state)); };
    const auto password = [file = wanted.passwordFile] { return passwordIn(file); };
    receivers.push_back(
        {wanted, std::make_unique<DaemonReceiver>(wanted, password, around, callbacks)});
    receivers.back().station->start();
}

void Outpostd::endBridges()
{
    const auto goes = [&](const Bridge &bridge) {
        return !contains(config.bridges, bridge.config);
    };
    for (const Bridge &bridge : bridges) {
        if (goes(bridge)) {
            dropSource(bridge.config.name);
        }
    }
    bridges.erase(std::remove_if(bridges.begin(), bridges.end(), goes), bridges.end());
}

void Outpostd::startBridges()
{
    for (const BridgeConfig &wanted : std::as_const(config.bridges)) {
        const bool runs = std::any_of(bridges.begin(), bridges.end(),
                                      [&](const Bridge &b) { return b.config == wanted; });
        if (!runs) {
            startBridge(wanted);
        }
    }
}

void Outpostd::startBridge(const BridgeConfig &wanted)
{
    BridgeSourceCallbacks callbacks;
    callbacks.onPeriod = [this](const PeriodSpots &period) { take(period); };
    callbacks.onSource = [this](const SourceState &state) { showSource(state); };
    BridgeConfig withFile = wanted;
    if (wanted.mhz == 0 && wanted.frequencyFile.isEmpty()) {
        withFile.frequencyFile = frequencyFilePath(); // the window's
    }
    bridges.push_back(
        {wanted, std::make_unique<BridgeSource>(withFile, callbacks, surroundings.bridges)});
    bridges.back().source->start();
}

void Outpostd::applyOutputs(const DaemonConfig &before)
{
    const auto goes = [&](const Server &server) { return !contains(config.wsjtx, server.config); };
    for (Server &server : servers) {
        if (goes(server)) {
            server.output->close();
        }
    }
    servers.erase(std::remove_if(servers.begin(), servers.end(), goes), servers.end());
    for (const WsjtxConfig &wanted : std::as_const(config.wsjtx)) {
        const bool runs = std::any_of(servers.begin(), servers.end(),
                                      [&](const Server &s) { return s.config == wanted; });
        if (!runs) {
            servers.push_back({wanted, std::make_unique<WsjtxOutput>(wanted)});
            showAllSources(*servers.back().output);
        }
    }
    if (allTxt == nullptr || !(before.allTxt == config.allTxt)) {
        applyAllTxt();
    }
}

void Outpostd::applyAllTxt()
{
    if (allTxt != nullptr) {
        allTxt->close();
        allTxt.reset();
    }
    const AllTxtConfig &wanted = config.allTxt;
    if (wanted.folder.isEmpty()) {
        return;
    }
    const auto fileOf = [wanted](qint64 periodStartMs) {
        const bool monthly = wanted.split == AllTxtSplit::Monthly;
        return QDir(wanted.folder)
            .filePath(allTxtFileName(wanted.fileName, periodStartMs, monthly));
    };
    allTxt = std::make_unique<BackgroundOutput>(QStringLiteral("ALL.TXT"),
                                                std::make_unique<AllTxtOutput>(fileOf));
}

void Outpostd::stop()
{
    for (Receiver &receiver : receivers) {
        receiver.station->stop();
    }
    for (Output *output : outputs()) {
        output->close();
    }
    receivers.clear(); // waits for their decoders, which are ending
    bridges.clear();
    servers.clear();
    allTxt.reset();
    surroundings.textOutput.reset();
}

QByteArray Outpostd::statusText() const
{
    QVector<ReceiverState> states;
    for (const Receiver &receiver : receivers) {
        states.append(receiver.station->state());
    }
    QVector<BridgeSourceState> attached;
    for (const Bridge &bridge : bridges) {
        attached.append(
            {bridge.config.name, bridge.source->isAttached(), bridge.source->state().dialHz});
    }
    return statusTable(states, attached).toUtf8();
}

std::vector<Output *> Outpostd::outputs() const
{
    std::vector<Output *> all;
    for (const Server &server : servers) {
        all.push_back(server.output.get());
    }
    for (Output *single : {allTxt.get(), surroundings.textOutput.get()}) {
        if (single != nullptr) {
            all.push_back(single);
        }
    }
    return all;
}

void Outpostd::showSource(const SourceState &source)
{
    sources.insert(source.name, source);
    for (Output *output : outputs()) {
        output->showSource(source);
    }
}

void Outpostd::showAllSources(Output &output) const
{
    for (const SourceState &source : sources) {
        output.showSource(source);
    }
}

void Outpostd::dropSource(const QString &name)
{
    sources.remove(name);
    for (Output *output : outputs()) {
        output->dropSource(name);
    }
}

void Outpostd::take(const PeriodSpots &period)
{
    for (Output *output : outputs()) {
        output->take(period);
    }
}

} // namespace outpost
