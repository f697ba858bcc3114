#pragma once

#include "daemon/bridgeinput.h"
#include "daemon/daemonconfig.h"
#include "daemon/dialhistory.h"
#include "daemon/output.h"

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QObject>
#include <QTcpSocket>
#include <QTimer>
#include <functional>

namespace outpost
{

struct BridgeSourceCallbacks {
    std::function<void(const PeriodSpots &)> onPeriod = [](const PeriodSpots &) {};
    std::function<void(const SourceState &)> onSource = [](const SourceState &) {};
};

struct BridgeSourceOptions {
    std::function<qint64()> clock = QDateTime::currentMSecsSinceEpoch; // UTC, ms since the epoch
    int retryMs = 5000; // from the end of a connection, or a failed one, to the next
};

// A running window's bridge on this machine as a source of decodes. It attaches when it is started,
// and again whenever the bridge has gone.
class BridgeSource : public QObject
{
public:
    BridgeSource(BridgeConfig configToUse, BridgeSourceCallbacks callbacksToUse,
                 BridgeSourceOptions optionsToUse = {}, QObject *parent = nullptr);
    ~BridgeSource() override;

    void start();
    bool isAttached() const { return socket.state() == QAbstractSocket::ConnectedState; }
    SourceState state() const;

private:
    void attach();
    void onAttached();
    void onGone();
    void readLines();
    QVector<Spot> newSpots(const QByteArray &lines);
    void watchFrequencyFile();
    void readFrequencyFile();
    void setDial(qint64 dialHz);

    const BridgeConfig config;
    const BridgeSourceCallbacks callbacks;
    const BridgeSourceOptions options;
    QTcpSocket socket;
    QTimer retry;
    QFileSystemWatcher watcher;
    DialHistory dial;
    NearDoubles nearDoubles;
    QByteArray unfinishedLine;
    bool refusalIsLogged = false; // since it was last attached
};

} // namespace outpost
