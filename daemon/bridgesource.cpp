#include "daemon/bridgesource.h"

#include "base/frequency.h"
#include "base/logline.h"
#include "daemon/plainfile.h"

#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QMap>
#include <utility>

namespace outpost
{

namespace
{
constexpr int maxLineBytes = 4096; // a decode takes fewer than 200
constexpr qint64 maxReadBytes = 256LL * 1024;

qint64 toHz(double mhz)
{
    return qRound64(mhz * 1e6);
}
} // namespace

BridgeSource::BridgeSource(BridgeConfig configToUse, BridgeSourceCallbacks callbacksToUse,
                           BridgeSourceOptions optionsToUse, QObject *parent)
    : QObject(parent), config(std::move(configToUse)), callbacks(std::move(callbacksToUse)),
      options(std::move(optionsToUse)), socket(this), retry(this), watcher(this)
{
    retry.setSingleShot(true);
    socket.setReadBufferSize(maxReadBytes);
    connect(&retry, &QTimer::timeout, this, [this] { attach(); });
    connect(&socket, &QTcpSocket::connected, this, [this] { onAttached(); });
    connect(&socket, &QTcpSocket::readyRead, this, [this] { readLines(); });
    connect(&socket, &QTcpSocket::stateChanged, this, [this](QAbstractSocket::SocketState now) {
        if (now == QAbstractSocket::UnconnectedState) {
            onGone();
        }
    });
    connect(&watcher, &QFileSystemWatcher::fileChanged, this, [this] { readFrequencyFile(); });
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this, [this] { readFrequencyFile(); });
}

BridgeSource::~BridgeSource()
{
    socket.disconnect(this); // closing it reports its end
}

void BridgeSource::start()
{
    if (config.frequencyFile.isEmpty()) {
        setDial(toHz(config.mhz));
    } else {
        readFrequencyFile();
    }
    attach();
}

SourceState BridgeSource::state() const
{
    return {config.name, dial.dialHzAt(options.clock()), false};
}

void BridgeSource::attach()
{
    unfinishedLine.clear();
    socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(config.port));
}

void BridgeSource::onAttached()
{
    refusalIsLogged = false;
    logLine(QStringLiteral("%1: attached to the bridge on port %2.")
                .arg(config.name, QString::number(config.port)));
    if (state().dialHz == 0) {
        logLine(QStringLiteral("%1: its dial frequency is not known yet: it is not in %2.")
                    .arg(config.name, escapedControls(config.frequencyFile)));
    }
    callbacks.onSource(state());
}

void BridgeSource::onGone()
{
    if (!std::exchange(refusalIsLogged, true)) {
        logLine(QStringLiteral("%1: no bridge on port %2 (%3); trying again every %4 s.")
                    .arg(config.name, QString::number(config.port), socket.errorString(),
                         QString::number(options.retryMs / 1000.0)));
    }
    retry.start(options.retryMs);
}

void BridgeSource::readLines()
{
    const QByteArray bytes = std::exchange(unfinishedLine, {}) + socket.readAll();
    const int end = bytes.lastIndexOf('\n') + 1;
    unfinishedLine = bytes.mid(end).left(maxLineBytes + 1); // too long: no line of the bridge's
    QMap<qint64, PeriodSpots> periods;
    for (const Spot &spot : newSpots(bytes.left(end))) {
        PeriodSpots &period = periods[spot.periodStartMs];
        period.source = spot.source;
        period.periodStartMs = spot.periodStartMs;
        period.dialHz = spot.dialHz;
        period.spots.append(spot);
    }
    for (const PeriodSpots &period : std::as_const(periods)) {
        callbacks.onPeriod(period);
    }
}

QVector<Spot> BridgeSource::newSpots(const QByteArray &lines)
{
    QVector<Spot> spots;
    for (const QByteArray &line : lines.split('\n')) {
        const auto decode = line.size() > maxLineBytes ? std::nullopt : parseBridgeLine(line);
        const auto startMs =
            decode ? periodStartOf(decode->time, options.clock()) : std::optional<qint64>();
        const auto spot = startMs ? spotOf(*decode, config.name, *startMs, dial.dialHzAt(*startMs))
                                  : std::nullopt;
        if (spot && nearDoubles.isNew(*spot)) {
            spots.append(*spot);
        }
    }
    return spots;
}

// A program that replaces the file ends the watch of it, but changes its folder.
void BridgeSource::watchFrequencyFile()
{
    const QFileInfo file(config.frequencyFile);
    for (const QString &path : {file.absoluteFilePath(), file.absolutePath()}) {
        if (QFileInfo::exists(path)) {
            watcher.addPath(path);
        }
    }
}

// What is no frequency, as a file that is being written, changes nothing.
void BridgeSource::readFrequencyFile()
{
    watchFrequencyFile();
    QFile file(config.frequencyFile);
    if (!whyNotPlain(config.frequencyFile).isEmpty() || !file.open(QIODevice::ReadOnly)) {
        return;
    }
    constexpr qint64 maxFileBytes = 1024;
    if (const auto mhz = parseFrequencyFile(file.read(maxFileBytes))) {
        setDial(toHz(*mhz));
    }
}

void BridgeSource::setDial(qint64 dialHz)
{
    const qint64 now = options.clock();
    if (dialHz != dial.dialHzAt(now)) {
        dial.set(dialHz, now);
        callbacks.onSource(state());
    }
}

} // namespace outpost
