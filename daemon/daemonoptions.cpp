#include "daemon/daemonoptions.h"

#include "base/frequency.h"
#include "daemon/hostport.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>
#include <cmath>

namespace outpost
{

namespace
{
constexpr double hzPerMhz = 1e6;

QString program()
{
    return QStringLiteral("kiwi-outpostd");
}

QCommandLineOption configOption()
{
    return {QStringLiteral("config"),
            QStringLiteral("Run what this file says; a hang-up signal has it read again."),
            QStringLiteral("FILE")};
}

QCommandLineOption bridgeOption()
{
    return {QStringLiteral("bridge"),
            QStringLiteral("Take the decodes of a window that runs on this computer, from the port "
                           "of its bridge (27777).")};
}

QCommandLineOption frequencyFileOption()
{
    return {QStringLiteral("frequency-file"),
            QStringLiteral("Read that window's frequency, in MHz, from this file in place of its "
                           "own."),
            QStringLiteral("FILE")};
}

QCommandLineOption wsjtxOption()
{
    return {QStringLiteral("wsjtx"),
            QStringLiteral("Send the decodes to this server of WSJT-X's UDP protocol (port 2237). "
                           "May be given several times."),
            QStringLiteral("HOST:PORT")};
}

QCommandLineOption allTxtOption()
{
    return {QStringLiteral("all-txt"),
            QStringLiteral("Append the decodes to this file, in the form of WSJT-X's ALL.TXT."),
            QStringLiteral("FILE")};
}

QCommandLineOption jsonOption()
{
    return {QStringLiteral("json"),
            QStringLiteral("Write the decodes to standard output as one JSON object a line.")};
}

QCommandLineOption checkOption()
{
    return {QStringLiteral("check"), QStringLiteral("Say what would run and exit.")};
}

QCommandLineOption statusOption()
{
    return {QStringLiteral("status"),
            QStringLiteral("Show the receivers of the daemon that runs and exit.")};
}

// QCommandLineParser has no options whose value may be missing: the port becomes an operand.
QStringList withBridgePortApart(const QStringList &arguments)
{
    static const QRegularExpression pattern(QStringLiteral("\\A--?bridge=(.*)\\z"));
    QStringList apart;
    for (const QString &argument : arguments) {
        const QRegularExpressionMatch match = pattern.match(argument);
        apart.append(match.hasMatch() ? QStringList{QStringLiteral("--bridge"), match.captured(1)}
                                      : QStringList{argument});
    }
    return apart;
}

// What the arguments ask for, or the sentence that refuses them.
template <typename Value>
struct Read {
    Value value;
    QString refusal;
};

QString notTogether(const QCommandLineOption &left, const QString &right)
{
    return QStringLiteral("'--%1' and %2 exclude each other.").arg(left.names().first(), right);
}

// The first of the arguments that an option does not go with; empty if there is none.
QString otherThan(const QCommandLineParser &parser, const QVector<QCommandLineOption> &options)
{
    for (const QCommandLineOption &option : options) {
        if (parser.isSet(option)) {
            return QStringLiteral("'--%1'").arg(option.names().first());
        }
    }
    const QStringList operands = parser.positionalArguments();
    return operands.isEmpty() ? QString() : QStringLiteral("'%1'").arg(operands.first());
}

QString emptyValue(const QCommandLineParser &parser)
{
    for (const QCommandLineOption &option :
         {configOption(), frequencyFileOption(), wsjtxOption(), allTxtOption()}) {
        if (parser.values(option).contains(QString())) {
            return QStringLiteral("Missing value after '--%1'.").arg(option.names().first());
        }
    }
    return QString();
}

// The receiver's source stands in ids and names of folders: "kiwi.example 14.074".
QString sourceName(const QString &host, double mhz)
{
    QString name = host + QLatin1Char(' ') + QString::number(mhz, 'g', 10);
    return name.replace(QLatin1Char(':'), QLatin1Char('.'))
        .remove(QRegularExpression(QStringLiteral("\\A\\.+")));
}

Read<ReceiverConfig> receiverIn(const QStringList &operands)
{
    ReceiverConfig receiver;
    const auto place = parseHostPort(operands.first(), receiver.port);
    if (!place) {
        return {{}, QStringLiteral("\"%1\" is not HOST or HOST:PORT.").arg(operands.first())};
    }
    if (operands.size() < 2) {
        return {{}, QStringLiteral("Missing frequency after '%1'.").arg(operands.first())};
    }
    const auto mhz = parseFrequency(operands.at(1));
    if (!mhz) {
        return {{},
                QStringLiteral("\"%1\" is not a frequency from 0.001 to 3000 MHz.")
                    .arg(operands.at(1))};
    }
    if (operands.size() > 2) {
        return {{}, QStringLiteral("Unexpected argument '%1'.").arg(operands.at(2))};
    }
    receiver.name = sourceName(place->host, *mhz);
    receiver.host = place->host;
    receiver.port = place->port;
    receiver.schedule = Schedule(static_cast<qint64>(std::llround(*mhz * hzPerMhz)));
    return {receiver, QString()};
}

Read<BridgeConfig> bridgeIn(const QCommandLineParser &parser)
{
    const QStringList operands = parser.positionalArguments();
    BridgeConfig bridge;
    bridge.name = QStringLiteral("window");
    const auto port = operands.isEmpty() ? std::optional(bridge.port) : parsePort(operands.first());
    if (!port) {
        return {{}, QStringLiteral("\"%1\" is not a port from 1 to 65535.").arg(operands.first())};
    }
    if (operands.size() > 1) {
        return {{}, QStringLiteral("Unexpected argument '%1'.").arg(operands.at(1))};
    }
    bridge.port = *port;
    if (parser.isSet(frequencyFileOption())) {
        bridge.frequencyFile = QFileInfo(parser.value(frequencyFileOption())).absoluteFilePath();
    }
    return {bridge, QString()};
}

Read<WsjtxConfig> wsjtxIn(const QStringList &servers)
{
    WsjtxConfig wsjtx;
    for (const QString &server : servers) {
        const auto place = parseHostPort(server, WsjtxTarget().port);
        if (!place || place->host.contains(QLatin1Char(':'))) {
            return {{},
                    QStringLiteral("\"%1\" is not HOST or HOST:PORT, by name or IPv4 address.")
                        .arg(server)};
        }
        const WsjtxTarget target{place->host, place->port};
        if (!wsjtx.targets.contains(target)) {
            wsjtx.targets.append(target);
        }
    }
    return {wsjtx, QString()};
}

AllTxtConfig allTxtIn(const QString &path)
{
    const QFileInfo file(path);
    AllTxtConfig allTxt;
    allTxt.folder = file.absolutePath();
    allTxt.fileName = file.fileName();
    return allTxt;
}

// One receiver or one bridge; neither where there are no operands.
Read<DaemonConfig> sourceIn(const QCommandLineParser &parser)
{
    DaemonConfig config;
    if (parser.isSet(bridgeOption())) {
        const auto bridge = bridgeIn(parser);
        config.bridges.append(bridge.value);
        return {config, bridge.refusal};
    }
    if (parser.isSet(frequencyFileOption())) {
        return {config, QStringLiteral("'--frequency-file' goes with '--bridge'.")};
    }
    if (parser.positionalArguments().isEmpty()) {
        return {config, QString()};
    }
    const auto receiver = receiverIn(parser.positionalArguments());
    config.receivers.append(receiver.value);
    return {config, receiver.refusal};
}

Read<DaemonConfig> configIn(const QCommandLineParser &parser)
{
    auto [config, refusal] = sourceIn(parser);
    const auto wsjtx = wsjtxIn(parser.values(wsjtxOption()));
    if (!wsjtx.value.targets.isEmpty()) {
        config.wsjtx.append(wsjtx.value);
    }
    const QString file = parser.value(allTxtOption());
    if (QFileInfo(file).isDir() || file.endsWith(QLatin1Char('/'))) {
        return {config, QStringLiteral("\"%1\" is a folder; '--all-txt' takes a file.").arg(file)};
    }
    if (!file.isEmpty()) {
        config.allTxt = allTxtIn(file);
    }
    return {config, refusal.isEmpty() ? wsjtx.refusal : refusal};
}

Read<DaemonConfig> configInFile(const QCommandLineParser &parser,
                                const ReadDaemonConfig &readConfig)
{
    const QString other =
        otherThan(parser, {bridgeOption(), frequencyFileOption(), wsjtxOption(), allTxtOption()});
    if (!other.isEmpty()) {
        return {{}, notTogether(configOption(), other)};
    }
    const DaemonConfigOutcome outcome = readConfig(parser.value(configOption()));
    return {outcome.config, outcome.error};
}

// What the options say of the config they run; nothing of their kind is left to the caller.
DaemonCommandLine statusLine(const QCommandLineParser &parser)
{
    const QString other =
        otherThan(parser, {configOption(), bridgeOption(), frequencyFileOption(), wsjtxOption(),
                           allTxtOption(), jsonOption(), checkOption()});
    if (!other.isEmpty()) {
        return {{}, wrongUse(program(), notTogether(statusOption(), other))};
    }
    DaemonOptions options;
    options.showsStatus = true;
    return {options, std::nullopt};
}

TextFormat textFormatIn(const QCommandLineParser &parser)
{
    if (parser.isSet(jsonOption())) {
        return TextFormat::JsonLines;
    }
    return parser.isSet(configOption()) ? TextFormat::None : TextFormat::Table;
}

DaemonCommandLine runLine(const QCommandLineParser &parser, const ReadDaemonConfig &readConfig)
{
    const bool isInFile = parser.isSet(configOption());
    const auto read = isInFile ? configInFile(parser, readConfig) : configIn(parser);
    if (!read.refusal.isEmpty()) {
        return {{}, wrongUse(program(), read.refusal)};
    }
    if (!read.value.hasSources()) {
        return {{},
                wrongUse(program(), QStringLiteral("No receiver is configured; name one, as in "
                                                   "'%1 HOST MHZ', or see --help.")
                                        .arg(program()))};
    }
    if (parser.isSet(checkOption())) {
        return {{}, Ending{daemonConfigText(read.value), 0}};
    }
    DaemonOptions options;
    options.config = read.value;
    options.textFormat = textFormatIn(parser);
    if (isInFile) {
        options.configFile = QFileInfo(parser.value(configOption())).absoluteFilePath();
    }
    return {options, std::nullopt};
}
} // namespace

DaemonCommandLine readDaemonCommandLine(const QStringList &arguments,
                                        const ReadDaemonConfig &readConfig)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Receive-only FT8 station without a window, for any number of KiwiSDR "
                       "receivers.\nOne receiver is named by its host and a dial frequency in "
                       "MHz, more of them in a file."));
    parser.addPositionalArgument(QStringLiteral("HOST[:PORT] MHZ"),
                                 QStringLiteral("A receiver and its dial frequency; or, with "
                                                "--bridge, its port."),
                                 QStringLiteral("[HOST[:PORT] MHZ | --bridge [PORT] | --config "
                                                "FILE]"));
    parser.addOptions({configOption(), bridgeOption(), frequencyFileOption(), wsjtxOption(),
                       allTxtOption(), jsonOption(), checkOption(), statusOption()});
    if (const auto ending = parseArguments(&parser, program(), withBridgePortApart(arguments))) {
        return {{}, ending};
    }
    const QString missing = emptyValue(parser);
    if (!missing.isEmpty()) {
        return {{}, wrongUse(program(), missing)};
    }
    return parser.isSet(statusOption()) ? statusLine(parser) : runLine(parser, readConfig);
}

} // namespace outpost
