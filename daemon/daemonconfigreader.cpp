#include "daemon/daemonconfig.h"
#include "daemon/hostport.h"
#include "daemon/tomltable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>

namespace outpost
{

namespace
{
constexpr int maxFileBytes = 1024 * 1024;
constexpr int maxAudioHz = 5000;
constexpr int maxPort = 65535;
constexpr int maxDecoders = 256;
constexpr int maxTtl = 255;
constexpr int minutesPerDay = 1440;
constexpr double hzPerMhz = 1e6;

// Names stand in ids, topics and names of folders.
bool isName(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A[\\p{L}\\p{N}]([\\p{L}\\p{N} ._-]{0,38}[\\p{L}\\p{N}])?\\z"),
        QRegularExpression::UseUnicodePropertiesOption);
    return pattern.match(text).hasMatch();
}

QString nameRight(const char *example)
{
    return QStringLiteral("1 to 40 letters, digits, blanks, \".\", \"_\" or \"-\", with a letter "
                          "or a digit at both ends, as in %1")
        .arg(QLatin1String(example));
}

QString errorPlace(const QString &fileName, int line)
{
    return line == 0 ? fileName + QStringLiteral(": ")
                     : QStringLiteral("%1:%2: ").arg(fileName, QString::number(line));
}

// Minute of the day, "24:00" included.
std::optional<int> parseTime(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A(?:([01][0-9]|2[0-3]):([0-5][0-9])|(24):(00))\\z"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    return text.left(2).toInt() * 60 + text.right(2).toInt();
}

class ConfigReader
{
public:
    explicit ConfigReader(const QString &fileName) : folder(QFileInfo(fileName).path()) {}

    DaemonConfig read(const TomlValue &root);
    QString firstProblem() const { return problems.first(); }

private:
    DecoderConfig decoder(const TomlValue &value);
    ReceiverConfig receiver(const TomlValue &value);
    BridgeConfig bridge(const TomlValue &value);
    WsjtxConfig wsjtx(const TomlValue &value, const DaemonConfig &config);
    AllTxtConfig allTxt(const TomlValue &value);

    Schedule schedule(TomlTable &table);
    std::optional<ScheduleSpan> span(const TomlValue &value);
    std::optional<int> time(TomlTable &table, const char *key, const QString &right);
    std::optional<WsjtxTarget> target(const TomlValue &value);
    std::optional<QString> stationName(TomlTable &table);
    QString sourceName(TomlTable &table);
    QString host(TomlTable &table);
    QString senderId(TomlTable &table, const DaemonConfig &config);
    QString path(TomlTable &table, const char *key, const char *right);

    const QString folder;
    ConfigProblems problems;
    QStringList names; // of the sources before, in lower case
    QVector<int> bridgePorts;
    QVector<WsjtxTarget> targets;
};

DaemonConfig ConfigReader::read(const TomlValue &root)
{
    TomlTable table(root, QString(), problems);
    DaemonConfig config;
    config.station = stationName(table).value_or(config.station);
    config.decoder = decoder(table.table("decoder"));
    for (const TomlValue &value : table.list(
             "receiver", TomlType::Table, QStringLiteral("tables that begin with [[receiver]]"))) {
        config.receivers.append(receiver(value));
    }
    for (const TomlValue &value : table.list("bridge", TomlType::Table,
                                             QStringLiteral("tables that begin with [[bridge]]"))) {
        config.bridges.append(bridge(value));
    }
    for (const TomlValue &value :
         table.list("wsjtx", TomlType::Table, QStringLiteral("tables that begin with [[wsjtx]]"))) {
        config.wsjtx.append(wsjtx(value, config));
    }
    const TomlValue allTxtTable = table.table("all_txt");
    if (table.has("all_txt")) {
        config.allTxt = allTxt(allTxtTable);
    }
    table.refuseOthers();
    return config;
}

DecoderConfig ConfigReader::decoder(const TomlValue &value)
{
    TomlTable table(value, QStringLiteral("decoder"), problems);
    DecoderConfig decoder;
    decoder.jt9 = path(table, "jt9", "the path of jt9, as in \"/usr/bin/jt9\"");
    decoder.passes = table.whole("passes", 1, 3).value_or(decoder.passes);
    decoder.atOnce = table.whole("at_once", 1, maxDecoders).value_or(decoder.atOnce);
    decoder.split = table.whole("split", 1, 4).value_or(decoder.split);
    if (decoder.split == 2 || decoder.split == 3) {
        table.refuse("split", QStringLiteral("%1 is neither").arg(decoder.split),
                     QStringLiteral("1, the whole band in one run, or 4, four sub-bands"));
    }
    table.refuseOthers();
    return decoder;
}

ReceiverConfig ConfigReader::receiver(const TomlValue &value)
{
    TomlTable table(value, QStringLiteral("receiver"), problems);
    ReceiverConfig receiver;
    receiver.name = sourceName(table);
    receiver.host = host(table);
    receiver.port = table.whole("port", 1, maxPort).value_or(receiver.port);
    receiver.schedule = schedule(table);
    receiver.user =
        table.text("user", QStringLiteral("a text, as in \"K1ABC\"")).value_or(QString());
    receiver.passwordFile =
        path(table, "password_file", "the path of a file whose first line is the password");
    receiver.compression = table.flag("compression").value_or(receiver.compression);
    receiver.lowHz = table.whole("low_hz", 0, maxAudioHz).value_or(receiver.lowHz);
    receiver.highHz = table.whole("high_hz", 0, maxAudioHz).value_or(receiver.highHz);
    if (receiver.lowHz >= receiver.highHz) {
        table.refuse(table.has("high_hz") ? "high_hz" : "low_hz",
                     QStringLiteral("the band from %1 to %2 Hz is empty")
                         .arg(receiver.lowHz)
                         .arg(receiver.highHz),
                     QStringLiteral("a band whose low_hz is below its high_hz"));
    }
    table.refuseOthers();
    return receiver;
}

BridgeConfig ConfigReader::bridge(const TomlValue &value)
{
    TomlTable table(value, QStringLiteral("bridge"), problems);
    BridgeConfig bridge;
    bridge.name = sourceName(table);
    bridge.port = table.whole("port", 1, maxPort).value_or(bridge.port);
    if (bridgePorts.contains(bridge.port)) {
        table.refuse("port", QStringLiteral("another bridge has port %1").arg(bridge.port),
                     QStringLiteral("the port of another window"));
    }
    bridgePorts.append(bridge.port);
    bridge.mhz = table.mhz("mhz").value_or(0);
    bridge.frequencyFile =
        path(table, "frequency_file", "the path of a text file with the frequency in MHz");
    if (table.has("mhz") && table.has("frequency_file")) {
        table.refuse("frequency_file", QStringLiteral("mhz is given, too"),
                     QStringLiteral("one of the two"));
    }
    table.refuseOthers();
    return bridge;
}

WsjtxConfig ConfigReader::wsjtx(const TomlValue &value, const DaemonConfig &config)
{
    TomlTable table(value, QStringLiteral("wsjtx"), problems);
    const QString right =
        QStringLiteral("a list of servers, as in targets = [ \"127.0.0.1:2237\" ]");
    WsjtxConfig wsjtx;
    table.refuseMissing("targets", right);
    for (const TomlValue &text : table.list("targets", TomlType::Text, right)) {
        if (const auto target = this->target(text)) {
            wsjtx.targets.append(*target);
        }
    }
    wsjtx.interface =
        table.text("interface", QStringLiteral("the name of a network interface, as in \"eth0\""))
            .value_or(QString());
    wsjtx.ttl = table.whole("ttl", 0, maxTtl).value_or(wsjtx.ttl);
    wsjtx.id = senderId(table, config);
    table.refuseOthers();
    return wsjtx;
}

AllTxtConfig ConfigReader::allTxt(const TomlValue &value)
{
    TomlTable table(value, QStringLiteral("all_txt"), problems);
    AllTxtConfig allTxt;
    const char *right = "a folder, as in \"/var/log/ft8\"";
    table.refuseMissing("folder", QString::fromLatin1(right));
    allTxt.folder = path(table, "folder", right);
    const QString splitRight = QStringLiteral("\"never\" or \"monthly\"");
    const QString split = table.text("split", splitRight).value_or(QStringLiteral("never"));
    if (split == QLatin1String("monthly")) {
        allTxt.split = AllTxtSplit::Monthly;
    } else if (split != QLatin1String("never")) {
        table.refuse("split", quotedText(split) + QStringLiteral(" is neither"), splitRight);
    }
    table.refuseOthers();
    return allTxt;
}

// Of `mhz` or of the table `schedule`.
Schedule ConfigReader::schedule(TomlTable &table)
{
    const auto mhz = table.mhz("mhz");
    QVector<ScheduleSpan> spans;
    const QString right =
        QStringLiteral("spans, as in [ { from = \"06:00\", to = \"18:00\", mhz = 14.074 } ]");
    for (const TomlValue &value : table.list("schedule", TomlType::Table, right)) {
        const auto span = this->span(value);
        if (!span) {
            continue;
        }
        spans.append(*span);
        if (firstOverlap(spans)) {
            problems.add(value.line, QStringLiteral("receiver.schedule"),
                         QStringLiteral("the span overlaps one before it"),
                         QStringLiteral("a span that begins when others have ended"));
            break;
        }
    }
    if (table.has("mhz") && table.has("schedule")) {
        table.refuse("schedule", QStringLiteral("mhz is given, too"),
                     QStringLiteral("one of the two"));
    }
    if (!table.has("schedule")) {
        table.refuseMissing("mhz",
                            QStringLiteral("a frequency, as in mhz = 14.074, or a schedule in "
                                           "its place"));
        return Schedule(static_cast<qint64>(std::llround(mhz.value_or(0) * hzPerMhz)));
    }
    std::sort(spans.begin(), spans.end(), [](const ScheduleSpan &left, const ScheduleSpan &right2) {
        return left.fromMinute < right2.fromMinute;
    });
    return Schedule(spans);
}

std::optional<ScheduleSpan> ConfigReader::span(const TomlValue &value)
{
    TomlTable table(value, QStringLiteral("receiver.schedule"), problems);
    const auto from =
        time(table, "from", QStringLiteral("a time, UTC, from \"00:00\" to \"23:59\""));
    const auto to = time(table, "to", QStringLiteral("a time, UTC, from \"00:00\" to \"24:00\""));
    table.refuseMissing("mhz", QStringLiteral("a frequency, as in mhz = 14.074"));
    const auto mhz = table.mhz("mhz");
    table.refuseOthers();
    if (!from || !to || !mhz) {
        return std::nullopt;
    }
    if (*from == minutesPerDay) {
        table.refuse("from", QStringLiteral("\"24:00\" is the end of a day"),
                     QStringLiteral("\"00:00\""));
        return std::nullopt;
    }
    if (*from == *to) {
        table.refuse("to", QStringLiteral("the span is empty"),
                     QStringLiteral("another time than from; mhz without a schedule is all day"));
        return std::nullopt;
    }
    const int toMinute = *to == 0 ? minutesPerDay : *to;
    return ScheduleSpan{*from, toMinute, static_cast<qint64>(std::llround(*mhz * hzPerMhz))};
}

std::optional<int> ConfigReader::time(TomlTable &table, const char *key, const QString &right)
{
    table.refuseMissing(key, right);
    const auto text = table.text(key, right);
    if (!text) {
        return std::nullopt;
    }
    const auto minute = parseTime(*text);
    if (!minute) {
        table.refuse(key, quotedText(*text) + QStringLiteral(" is no time"), right);
    }
    return minute;
}

std::optional<WsjtxTarget> ConfigReader::target(const TomlValue &value)
{
    const auto refuse = [&](const char *wrong) {
        problems.add(
            value.line, QStringLiteral("wsjtx.targets"),
            quotedText(value.text) + QString::fromLatin1(wrong),
            QStringLiteral("HOST:PORT, by name or IPv4 address, as in \"127.0.0.1:2237\""));
    };
    const auto parsed = parseHostPort(value.text, WsjtxTarget().port);
    if (!parsed) {
        refuse(" is no server");
        return std::nullopt;
    }
    if (parsed->host.contains(QLatin1Char(':'))) {
        refuse(" is an IPv6 address, where these programs do not listen");
    }
    const WsjtxTarget target{parsed->host, parsed->port};
    if (targets.contains(target)) {
        refuse(" is named twice, so that it would get each decode twice");
    }
    targets.append(target);
    return target;
}

std::optional<QString> ConfigReader::stationName(TomlTable &table)
{
    const QString right = nameRight("\"Shed\"");
    auto name = table.text("station", right);
    if (name && !isName(*name)) {
        table.refuse("station", quotedText(*name) + QStringLiteral(" is no name"), right);
    }
    return name;
}

QString ConfigReader::sourceName(TomlTable &table)
{
    const QString right = nameRight("name = \"20m\"");
    table.refuseMissing("name", right);
    const auto name = table.text("name", right);
    if (!name) {
        return QString();
    }
    if (!isName(*name)) {
        table.refuse("name", quotedText(*name) + QStringLiteral(" is no name"), right);
    } else if (names.contains(name->toLower())) {
        table.refuse("name", quotedText(*name) + QStringLiteral(" is another's name"),
                     QStringLiteral("a name that no other receiver or bridge has"));
    }
    names.append(name->toLower());
    return *name;
}

QString ConfigReader::host(TomlTable &table)
{
    const QString right = QStringLiteral(
        "a name or an address without scheme and port, as in host = \"kiwi.example\"");
    table.refuseMissing("host", right);
    const auto text = table.text("host", right);
    if (!text) {
        return QString();
    }
    const auto host = parseHost(*text);
    if (!host) {
        table.refuse("host", quotedText(*text) + QStringLiteral(" is no host"), right);
    }
    return host.value_or(QString());
}

// Servers tell the sources apart by it.
QString ConfigReader::senderId(TomlTable &table, const DaemonConfig &config)
{
    const QString right = QStringLiteral("a text with %1 where the source's name is to stand");
    const auto text = table.text("id", right);
    if (!text) {
        return config.station + QStringLiteral(" %1");
    }
    const bool namesSource = text->contains(QLatin1String("%1"));
    if (!namesSource && config.receivers.size() + config.bridges.size() > 1) {
        table.refuse("id", QStringLiteral("all sources would have the same"), right);
    }
    if (QString(*text).remove(QStringLiteral("%1")).contains(QLatin1Char('%'))) {
        table.refuse("id", QStringLiteral("it holds a % that is not %1's"), right);
    }
    return *text;
}

// Relative paths begin at the file's folder.
QString ConfigReader::path(TomlTable &table, const char *key, const char *right)
{
    const auto text = table.text(key, QString::fromLatin1(right));
    if (!text) {
        return QString();
    }
    if (text->startsWith(QLatin1Char('~'))) {
        table.refuse(key, QStringLiteral("~ is not replaced"), QStringLiteral("the whole path"));
    }
    return QDir::cleanPath(QDir(folder).filePath(*text));
}
} // namespace

DaemonConfigOutcome readDaemonConfig(const QByteArray &toml, const QString &fileName)
{
    const TomlOutcome document = readToml(toml);
    if (!document.error.isEmpty()) {
        return {{}, errorPlace(fileName, document.errorLine) + document.error};
    }
    ConfigReader reader(fileName);
    const DaemonConfig config = reader.read(document.table);
    const QString problem = reader.firstProblem();
    if (!problem.isEmpty()) {
        return {{}, fileName + QLatin1Char(':') + problem};
    }
    return {config, QString()};
}

DaemonConfigOutcome readDaemonConfigFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {{}, QStringLiteral("%1: %2").arg(path, file.errorString())};
    }
    const QByteArray toml = file.read(maxFileBytes + 1); // one too many is refused
    if (file.error() != QFileDevice::NoError) {
        return {{}, QStringLiteral("%1: %2").arg(path, file.errorString())};
    }
    return readDaemonConfig(toml, path);
}

} // namespace outpost
