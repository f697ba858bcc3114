// Feeds the decodes of two made-up receivers to UDP servers, as the standard input says.
//
//   station_udpfeeder HOST:PORT
//
//   period N   each receiver brings a period with N decodes; "sent" comes back
//   end        says good-bye and ends

#include "daemon/wsjtxoutput.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <cstdio>

using namespace outpost;

namespace
{

constexpr qint64 firstPeriodMs = 1795283550000; // 2026-11-21 17:52:30 UTC
const SourceState sources[] = {{QStringLiteral("20m"), 14074000, false},
                               {QStringLiteral("40m"), 7074000, false}};

// "CQ K0ABC FN00" of the first receiver, "CQ W0XYZ EN00" of the other, numbered by decode and
// period.
QString message(const SourceState &source, int period, int number)
{
    const QString form = source.dialHz > 10000000 ? QStringLiteral("CQ K%1ABC FN%2%1")
                                                  : QStringLiteral("CQ W%1XYZ EN%2%1");
    return form.arg(QString::number(number), QString::number(period));
}

PeriodSpots periodOf(const SourceState &source, int period, int count)
{
    PeriodSpots spots{source.name, firstPeriodMs + period * 15000, source.dialHz, {}};
    for (int number = 0; number < count; ++number) {
        Spot spot;
        spot.source = source.name;
        spot.periodStartMs = spots.periodStartMs;
        spot.dialHz = source.dialHz;
        spot.snr = number - 12;
        spot.dt = number / 10.0;
        spot.audioHz = 1000 + number;
        spot.message = message(source, period, number);
        spots.spots.append(spot);
    }
    return spots;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList hostAndPort = application.arguments().last().split(QLatin1Char(':'));
    WsjtxConfig config;
    config.targets = {{hostAndPort.first(), hostAndPort.last().toInt()}};
    WsjtxOptions options;
    options.heartbeatMs = 500;
    WsjtxOutput output(config, options);
    for (const SourceState &source : sources) {
        output.showSource(source);
    }

    QFile input;
    if (!input.open(0, QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return 1;
    }
    int period = 0;
    QSocketNotifier told(0, QSocketNotifier::Read);
    QObject::connect(&told, &QSocketNotifier::activated, &output, [&] {
        const QByteArray line = input.readLine().trimmed();
        if (!line.startsWith("period ")) {
            output.close();
            QCoreApplication::quit();
            return;
        }
        for (const SourceState &source : sources) {
            output.take(periodOf(source, period, line.mid(7).toInt()));
        }
        ++period;
        std::puts("sent");
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}
