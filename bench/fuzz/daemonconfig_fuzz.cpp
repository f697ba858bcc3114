#include "bench/fuzz/fuzzing.h"
#include "daemon/daemonconfig.h"

#include <QSet>

namespace outpost
{

namespace
{
const QString &fileName()
{
    static const QString name = QStringLiteral("/etc/outpostd.toml");
    return name;
}

bool isPort(int port)
{
    return port >= 1 && port <= 65535;
}

void checkSchedule(const Schedule &schedule)
{
    require(!schedule.spans().isEmpty(), "a receiver has a frequency");
    require(!firstOverlap(schedule.spans()), "spans do not overlap");
    for (const ScheduleSpan &span : schedule.spans()) {
        require(span.fromMinute >= 0 && span.fromMinute < 1440, "a span begins within a day");
        require(span.toMinute >= 1 && span.toMinute <= 1440, "a span ends within a day");
        require(span.dialHz >= 1000 && span.dialHz <= 3000000000, "a frequency is in the range");
    }
}

void checkReceiver(const ReceiverConfig &receiver)
{
    require(!receiver.host.isEmpty() && isPort(receiver.port), "a receiver has a place");
    require(receiver.lowHz >= 0 && receiver.lowHz < receiver.highHz && receiver.highHz <= 5000,
            "the band is one");
    checkSchedule(receiver.schedule);
}

void checkNames(const DaemonConfig &config)
{
    QSet<QString> names;
    for (const ReceiverConfig &receiver : config.receivers) {
        names.insert(receiver.name.toLower());
    }
    for (const BridgeConfig &bridge : config.bridges) {
        require(isPort(bridge.port), "a bridge has a port");
        names.insert(bridge.name.toLower());
    }
    require(names.size() == config.receivers.size() + config.bridges.size() &&
                !names.contains(QString()),
            "each source has a name of its own");
}

void checkOutputs(const DaemonConfig &config)
{
    for (const WsjtxConfig &wsjtx : config.wsjtx) {
        require(!wsjtx.targets.isEmpty() && wsjtx.ttl >= 0 && wsjtx.ttl <= 255,
                "an output has servers");
        for (const WsjtxTarget &target : wsjtx.targets) {
            require(!target.host.isEmpty() && isPort(target.port), "a server has a place");
        }
    }
}

void checkError(const DaemonConfigOutcome &outcome)
{
    require(outcome.error.startsWith(fileName() + QLatin1Char(':')), "an error names the file");
    require(!outcome.error.contains(QLatin1Char('\n')), "an error is one line");
    require(!outcome.config.hasSources() && outcome.config.wsjtx.isEmpty(), "nothing is half read");
}
} // namespace

// Input: a configuration file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const DaemonConfigOutcome outcome = readDaemonConfig(FuzzInput(data, size).rest(), fileName());
    if (!outcome.error.isEmpty()) {
        checkError(outcome);
        return 0;
    }
    for (const ReceiverConfig &receiver : outcome.config.receivers) {
        checkReceiver(receiver);
    }
    checkNames(outcome.config);
    checkOutputs(outcome.config);
    require(daemonConfigText(outcome.config).count(QLatin1Char('\n')) ==
                1 + outcome.config.receivers.size() + outcome.config.bridges.size() +
                    outcome.config.wsjtx.size() + (outcome.config.allTxt.folder.isEmpty() ? 0 : 1),
            "a line tells of each");
    return 0;
}

} // namespace outpost
