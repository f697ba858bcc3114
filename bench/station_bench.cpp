// A station in real time. Measures how long after the last sample of a period its rows are in the
// table, compared with four decoders that a shell runs on the same WAV file, and the processor time
// of the station itself.
// Usage: station_bench KIWI-SIM BAND-CACHE CPU-PERIODS LATENCY-PERIODS

#include "app/mainwindow.h"
#include "app/startup.h"
#include "bench/processortime.h"
#include "fixture/home.h"
#include "fixture/operator.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTableWidget>
#include <ctime>

namespace outpost
{

namespace
{
double hashingSeconds = 0; // processor time

double threadSeconds()
{
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}
} // namespace

// The linker redirects calls of fileSha256() here (--wrap).
QString realFileSha256(const QString &path) __asm__("__real__ZN7outpost10fileSha256ERK7QString");
QString timedFileSha256(const QString &path) __asm__("__wrap__ZN7outpost10fileSha256ERK7QString");
QString timedFileSha256(const QString &path)
{
    const double start = threadSeconds();
    QString hash = realFileSha256(path);
    hashingSeconds += threadSeconds() - start;
    return hash;
}

namespace
{
// Readings in seconds, all taken at the same time.
struct Usage {
    double wall = 0;
    double own = processorSeconds(RUSAGE_SELF);
    double decoder = processorSeconds(RUSAGE_CHILDREN);
    double hashing = hashingSeconds;
};

int startReceiver(QProcess *receiver, const QString &program, const QString &cache,
                  const QString &saved)
{
    receiver->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    receiver->start(program, {QStringLiteral("--port"), QStringLiteral("0"),
                              QStringLiteral("--cache"), cache, QStringLiteral("--save"), saved});
    receiver->waitForReadyRead(120000); // making the band takes long
    const QList<QByteArray> words = receiver->readLine().trimmed().split(' ');
    if (words.size() != 5) {
        qFatal("the simulated receiver does not listen");
    }
    return words.last().toInt();
}

// Run from a shell as the station runs them, each in its own folder.
const QString bareDecoders = QStringLiteral("cd \"$1\" || exit\n"
                                            "for band in 0:825 725:1550 1450:2275 2175:3000; do\n"
                                            "  (cd $band && exec jt9 --ft8 -d 2 -L ${band%:*}"
                                            " -H ${band#*:} \"$2\" >decodes 2>/dev/null) &\n"
                                            "done\n"
                                            "wait\n");

QString freshFolders()
{
    QString root = testHome().path(QStringLiteral("bare"));
    QDir(root).removeRecursively();
    for (const char *band : {"0:825", "725:1550", "1450:2275", "2175:3000"}) {
        QDir().mkpath(root + QLatin1Char('/') + QLatin1String(band));
    }
    return root;
}

class StationBench : public QObject
{
public:
    StationBench(const QString &savedFolder, int cpuPeriodsToRun, int latencyPeriodsToRun);
    void start() { window.show(), window.connectKiwi(); }
    QJsonObject result() const;

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    double now() const { return double(clock.nsecsElapsed()) / 1e9; }
    Usage usage() const;
    void onPeriodClosed();
    void onRowsShown();
    void runBareDecoders();

    const QDir saved;
    const int cpuPeriods;
    const int latencyPeriods;
    MainWindow window;
    QElapsedTimer clock;
    double lastArrival = 0; // of data on a socket
    double lastSample = 0;
    int closedPeriods = 0;
    Usage atFirst;
    Usage atLast;
    QJsonArray own;
    QJsonArray reference;
};

StationBench::StationBench(const QString &savedFolder, int cpuPeriodsToRun, int latencyPeriodsToRun)
    : saved(savedFolder), cpuPeriods(cpuPeriodsToRun), latencyPeriods(latencyPeriodsToRun)
{
    clock.start();
    QCoreApplication::instance()->installEventFilter(this);
    // The window's title changes when a period was handed to the decoders.
    QObject::connect(&window, &QWidget::windowTitleChanged, this, [this](const QString &title) {
        if (title.contains(QStringLiteral("Decode Complete"))) {
            onPeriodClosed();
        }
    });
    QObject::connect(decodeTableOf(window)->model(), &QAbstractItemModel::rowsInserted, this,
                     [this] {
                         if (lastSample == 0) {
                             return; // not the first row of the batch
                         }
                         const double sampleTime = lastSample;
                         lastSample = 0;
                         QMetaObject::invokeMethod(
                             this,
                             [this, sampleTime] {
                                 own.append(now() - sampleTime);
                                 onRowsShown();
                             },
                             Qt::QueuedConnection);
                     });
}

bool StationBench::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::SockAct) {
        lastArrival = now();
    }
    return false;
}

Usage StationBench::usage() const
{
    Usage taken;
    taken.wall = now();
    return taken;
}

void StationBench::onPeriodClosed()
{
    lastSample = qEnvironmentVariableIsSet("PELQ_JT9_PATH") ? lastArrival : 0;
    window.setWindowTitle(QString()); // so that the next period changes it again
    if (closedPeriods == 0) {
        atFirst = usage();
    }
    if (closedPeriods == cpuPeriods) {
        atLast = usage();
    }
    ++closedPeriods;
}

void StationBench::onRowsShown()
{
    if (closedPeriods > cpuPeriods) {
        runBareDecoders();
    } else {
        own.removeLast();
    }
}

// The station has no decoder meanwhile, since it would decode the next period.
void StationBench::runBareDecoders()
{
    const QByteArray decoder = qgetenv("PELQ_JT9_PATH");
    qunsetenv("PELQ_JT9_PATH");
    const QStringList wavs = saved.entryList({QStringLiteral("*.wav")}, QDir::Files, QDir::Name);
    auto *shell = new QProcess(this);
    const QStringList arguments = {QStringLiteral("-c"), bareDecoders, QStringLiteral("sh"),
                                   freshFolders(), saved.filePath(wavs.last())};
    const double start = now();
    connect(shell, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this, shell, start, decoder] {
                qputenv("PELQ_JT9_PATH", decoder);
                reference.append(now() - start);
                shell->deleteLater();
                if (reference.size() >= latencyPeriods) {
                    QCoreApplication::quit();
                }
            });
    shell->start(QStringLiteral("/bin/sh"), arguments);
}

QJsonObject StationBench::result() const
{
    return {{QStringLiteral("own"), own},
            {QStringLiteral("reference"), reference},
            {QStringLiteral("wallSeconds"), atLast.wall - atFirst.wall},
            {QStringLiteral("ownSeconds"), atLast.own - atFirst.own},
            {QStringLiteral("hashingSeconds"), atLast.hashing - atFirst.hashing},
            {QStringLiteral("decoderSeconds"), atLast.decoder - atFirst.decoder}};
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    testHome();
    const auto application = startApplication(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5) {
        qFatal("usage: station_bench KIWI-SIM BAND-CACHE CPU-PERIODS LATENCY-PERIODS");
    }

    const QString saved = testHome().path(QStringLiteral("saved"));
    QProcess receiver;
    const int port = startReceiver(&receiver, arguments.at(1), arguments.at(2), saved);
    testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("127.0.0.1")},
                             {QStringLiteral("Port"), port},
                             {QStringLiteral("BridgePort"), freePort()}});
    QJsonObject result;
    {
        StationBench bench(saved, arguments.at(3).toInt(), arguments.at(4).toInt());
        bench.start();
        QApplication::exec();
        result = bench.result();
    }
    receiver.kill();
    receiver.waitForFinished();
    std::printf("%s", QJsonDocument(result).toJson().constData());
    return 0;
}
