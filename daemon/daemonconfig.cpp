#include "daemon/daemonconfig.h"

#include "base/frequency.h"
#include "daemon/hostport.h"

#include <QDir>
#include <algorithm>
#include <iterator>
#include <tuple>

namespace outpost
{

namespace
{
auto keys(const DecoderConfig &decoder)
{
    return std::tie(decoder.jt9, decoder.passes, decoder.atOnce, decoder.split);
}

auto keys(const ReceiverConfig &receiver)
{
    return std::tie(receiver.name, receiver.host, receiver.port, receiver.schedule, receiver.user,
                    receiver.passwordFile, receiver.compression, receiver.lowHz, receiver.highHz);
}

auto keys(const BridgeConfig &bridge)
{
    return std::tie(bridge.name, bridge.port, bridge.mhz, bridge.frequencyFile);
}

auto keys(const WsjtxConfig &wsjtx)
{
    return std::tie(wsjtx.targets, wsjtx.interface, wsjtx.ttl, wsjtx.id);
}

auto keys(const AllTxtConfig &allTxt)
{
    return std::tie(allTxt.folder, allTxt.fileName, allTxt.split);
}

QString decoderText(const DecoderConfig &decoder)
{
    const QString program =
        decoder.jt9.isEmpty() ? QStringLiteral("the jt9 that is installed") : decoder.jt9;
    const QString passes = decoder.passes == 1 ? QStringLiteral("1 pass")
                                               : QStringLiteral("%1 passes").arg(decoder.passes);
    const QString runs = decoder.split == 1 ? QStringLiteral("the whole band in one run")
                                            : QStringLiteral("%1 sub-bands").arg(decoder.split);
    const QString atOnce = decoder.atOnce == 0
                               ? QStringLiteral("one decoder for each core")
                               : QStringLiteral("at most %1 at once").arg(decoder.atOnce);
    return QStringLiteral("Decoder: %1, %2, %3, %4").arg(program, passes, runs, atOnce);
}

QString timeText(int minute)
{
    return QStringLiteral("%1:%2")
        .arg(minute / 60, 2, 10, QLatin1Char('0'))
        .arg(minute % 60, 2, 10, QLatin1Char('0'));
}

QString mhzText(qint64 dialHz)
{
    return frequencyText(static_cast<double>(dialHz) / 1e6) + QStringLiteral(" MHz");
}

QString scheduleText(const Schedule &schedule)
{
    if (schedule == Schedule(schedule.dialHzAt(0))) {
        return mhzText(schedule.dialHzAt(0));
    }
    QStringList spans;
    for (const ScheduleSpan &span : schedule.spans()) {
        spans.append(
            QStringLiteral("%1 from %2 to %3")
                .arg(mhzText(span.dialHz), timeText(span.fromMinute), timeText(span.toMinute)));
    }
    return spans.join(QStringLiteral(", ")) + QStringLiteral(" UTC");
}

QString receiverText(const ReceiverConfig &receiver)
{
    QStringList parts{hostPortText(receiver.host, receiver.port), scheduleText(receiver.schedule),
                      QStringLiteral("%1 to %2 Hz").arg(receiver.lowHz).arg(receiver.highHz),
                      receiver.compression ? QStringLiteral("compressed")
                                           : QStringLiteral("uncompressed")};
    if (!receiver.user.isEmpty()) {
        parts.append(QStringLiteral("as \"%1\"").arg(receiver.user));
    }
    if (!receiver.passwordFile.isEmpty()) {
        parts.append(QStringLiteral("password from ") + receiver.passwordFile);
    }
    return QStringLiteral("Receiver \"%1\": ").arg(receiver.name) +
           parts.join(QStringLiteral(", "));
}

QString bridgeFrequencyText(const BridgeConfig &bridge)
{
    if (bridge.mhz > 0) {
        return frequencyText(bridge.mhz) + QStringLiteral(" MHz");
    }
    return QStringLiteral("frequency from ") + (bridge.frequencyFile.isEmpty()
                                                    ? QStringLiteral("the window's own file")
                                                    : bridge.frequencyFile);
}

QString bridgeText(const BridgeConfig &bridge)
{
    return QStringLiteral("Bridge \"%1\": port %2 of this computer, %3")
        .arg(bridge.name, QString::number(bridge.port), bridgeFrequencyText(bridge));
}

QString wsjtxText(const WsjtxConfig &wsjtx)
{
    QStringList targets;
    for (const WsjtxTarget &target : wsjtx.targets) {
        targets.append(hostPortText(target.host, target.port));
    }
    const QString interface =
        wsjtx.interface.isEmpty() ? QStringLiteral("the loopback interface") : wsjtx.interface;
    return QStringLiteral("WSJT-X UDP: %1, as \"%2\", multicast through %3 with TTL %4")
        .arg(targets.join(QStringLiteral(", ")),
             QString(wsjtx.id).replace(QStringLiteral("%1"), QStringLiteral("NAME")), interface,
             QString::number(wsjtx.ttl));
}

QString allTxtText(const AllTxtConfig &allTxt)
{
    const bool isMonthly = allTxt.split == AllTxtSplit::Monthly;
    return QStringLiteral("ALL.TXT: ") +
           QDir(allTxt.folder)
               .filePath((isMonthly ? QStringLiteral("YYYY-MM-") : QString()) + allTxt.fileName);
}
} // namespace

bool DecoderConfig::operator==(const DecoderConfig &other) const
{
    return keys(*this) == keys(other);
}

bool ReceiverConfig::operator==(const ReceiverConfig &other) const
{
    return keys(*this) == keys(other);
}

bool BridgeConfig::operator==(const BridgeConfig &other) const
{
    return keys(*this) == keys(other);
}

bool WsjtxTarget::operator==(const WsjtxTarget &other) const
{
    return host == other.host && port == other.port;
}

bool WsjtxConfig::operator==(const WsjtxConfig &other) const
{
    return keys(*this) == keys(other);
}

bool AllTxtConfig::operator==(const AllTxtConfig &other) const
{
    return keys(*this) == keys(other);
}

QString daemonConfigText(const DaemonConfig &config)
{
    QStringList lines{QStringLiteral("Station \"%1\"").arg(config.station),
                      decoderText(config.decoder)};
    std::transform(config.receivers.begin(), config.receivers.end(), std::back_inserter(lines),
                   receiverText);
    std::transform(config.bridges.begin(), config.bridges.end(), std::back_inserter(lines),
                   bridgeText);
    std::transform(config.wsjtx.begin(), config.wsjtx.end(), std::back_inserter(lines), wsjtxText);
    if (!config.allTxt.folder.isEmpty()) {
        lines.append(allTxtText(config.allTxt));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace outpost
