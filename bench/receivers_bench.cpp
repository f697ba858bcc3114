// The station without a window, at real time: its own processor time, its memory, and whether all
// sound became periods, with a decoder that takes no time. The simulated receivers are a process
// of their own.
// Usage: receivers_bench FOLDER RECEIVERS PERIODS raw|compressed; FOLDER is that of the benchmarks.

#include "base/names.h"
#include "bench/processortime.h"
#include "daemon/outpostd.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QUdpSocket>
#include <cstdio>
#include <memory>
#include <unistd.h>

namespace outpost
{

namespace
{
constexpr qint64 periodMs = 15000;
constexpr qint64 connectMs = 5000;
// Into a period: the one before has been decoded, and the buffer is nearly full.
constexpr qint64 lateMs = 13500;
constexpr int samplesPerPeriod = 180000;

qint64 residentBytes()
{
    QFile pages(QStringLiteral("/proc/self/statm"));
    if (!pages.open(QIODevice::ReadOnly)) {
        qFatal("the memory cannot be read");
    }
    return pages.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

// Periods, and those of raw sound that are whole and begin with the sample after the last one of
// the period before.
class Tally : public Output
{
public:
    explicit Tally(qint64 firstPeriodMs) : firstMs(firstPeriodMs) {}

    void showSource(const SourceState &) override {}
    void dropSource(const QString &) override {}
    void take(const PeriodSpots &period) override
    {
        if (period.periodStartMs < firstMs) {
            return;
        }
        ++periods;
        bool isNumber = false;
        const int first = period.spots.first().message.toInt(&isNumber);
        const auto expected = next.constFind(period.source);
        whole += isNumber && (expected == next.constEnd() || *expected == first) ? 1 : 0;
        next.insert(period.source, (first + samplesPerPeriod) % 65536);
    }
    void close() override {}

    int periods = 0;
    int whole = 0;

private:
    const qint64 firstMs;
    QHash<QString, int> next; // first sample, by receiver
};

struct Plan {
    QDir programs;
    int receivers = 0;
    int periods = 0;
    bool compressed = false;
};

int startFeed(QProcess *feed, const Plan &plan)
{
    feed->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    feed->start(plan.programs.filePath(QStringLiteral("sound_feed")),
                {plan.compressed ? QStringLiteral("compressed") : QStringLiteral("raw")});
    if (!feed->waitForReadyRead(30000)) {
        qFatal("sound_feed: %s", qPrintable(feed->errorString()));
    }
    return feed->readLine().trimmed().toInt();
}

// Each receiver has an address of its own, so that all connect at once.
QVector<ReceiverConfig> receivers(const Plan &plan, int port)
{
    QVector<ReceiverConfig> all;
    for (int i = 1; i <= plan.receivers; ++i) {
        ReceiverConfig receiver;
        receiver.name = QStringLiteral("R%1").arg(i);
        receiver.host = QStringLiteral("127.0.1.%1").arg(i);
        receiver.port = port;
        receiver.schedule = Schedule(14074000);
        receiver.compression = plan.compressed;
        all.append(receiver);
    }
    return all;
}

DaemonConfig configuration(const Plan &plan, int port, const QUdpSocket &server,
                           const QString &folder)
{
    DaemonConfig config;
    config.decoder.jt9 = plan.programs.absoluteFilePath(QStringLiteral("idle/jt9"));
    config.receivers = receivers(plan, port);
    WsjtxConfig wsjtx;
    wsjtx.targets = {{QStringLiteral("127.0.0.1"), server.localPort()}};
    config.wsjtx = {wsjtx};
    config.allTxt.folder = folder;
    return config;
}

void waitUntil(qint64 utcMs)
{
    QEventLoop loop;
    const auto left = qMax<qint64>(0, utcMs - QDateTime::currentMSecsSinceEpoch());
    QTimer::singleShot(int(left), Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

QJsonObject measure(const Plan &plan)
{
    QProcess feed;
    const int port = startFeed(&feed, plan);
    QUdpSocket server;
    const QTemporaryDir folder;
    if (port == 0 || !server.bind(QHostAddress(QHostAddress::LocalHost)) || !folder.isValid()) {
        qFatal("the receivers do not listen");
    }

    const qint64 start = QDateTime::currentMSecsSinceEpoch();
    const qint64 first = (start + connectMs + periodMs) / periodMs * periodMs;
    auto ownTally = std::make_unique<Tally>(first);
    const Tally &tally = *ownTally;
    OutpostdSurroundings surroundings;
    surroundings.captureFolder = folder.filePath(QStringLiteral("capture"));
    surroundings.textOutput = std::move(ownTally);
    Outpostd daemon(std::move(surroundings));
    daemon.apply(configuration(plan, port, server, folder.path()));

    waitUntil(first + lateMs);
    const double ownBefore = processorSeconds(RUSAGE_SELF);
    const qint64 wallBefore = QDateTime::currentMSecsSinceEpoch();
    waitUntil(first + lateMs + plan.periods * periodMs);
    const double own = processorSeconds(RUSAGE_SELF) - ownBefore;
    const qint64 wall = QDateTime::currentMSecsSinceEpoch() - wallBefore;
    QJsonObject taken = {{QStringLiteral("ownSeconds"), own},
                         {QStringLiteral("wallSeconds"), double(wall) / 1000},
                         {QStringLiteral("residentBytes"), residentBytes()},
                         {QStringLiteral("expectedPeriods"), plan.receivers * plan.periods},
                         {QStringLiteral("periods"), tally.periods},
                         {QStringLiteral("wholePeriods"), tally.whole}};
    daemon.stop();
    feed.closeWriteChannel();
    feed.waitForFinished();
    return taken;
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    setNames();
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5 || arguments.at(2).toInt() < 1 || arguments.at(2).toInt() > 254) {
        qFatal("usage: receivers_bench FOLDER RECEIVERS PERIODS raw|compressed");
    }
    const QJsonObject result =
        measure({QDir(arguments.at(1)), arguments.at(2).toInt(), arguments.at(3).toInt(),
                 arguments.at(4) == QLatin1String("compressed")});
    std::printf("%s", QJsonDocument(result).toJson().constData());
    return 0;
}
