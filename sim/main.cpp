#include "base/programoptions.h"
#include "base/termination.h"
#include "sim/kiwisim.h"
#include "sim/simwav.h"
#include "sim/syntheticband.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QLocale>
#include <cstdio>

namespace outpost
{

namespace
{

constexpr int cannotListen = 1;

QCommandLineOption option(const char *name, const char *help, const char *value = "",
                          const char *standard = "")
{
    return {QString::fromLatin1(name), QString::fromLatin1(help), QString::fromLatin1(value),
            QString::fromLatin1(standard)};
}

void describe(QCommandLineParser *parser)
{
    parser->setApplicationDescription(
        QStringLiteral("A simulated KiwiSDR receiver. It plays the WAV files (12000 Hz, mono, 16 "
                       "bit, 15 s), each exactly on a\nUTC period boundary, or without files a "
                       "synthetic FT8 band.\n\nBehaviours of an endpoint, with their parameter and "
                       "its default:\n%1")
            .arg(sim::behaviourHelp().chopped(1)));
    parser->addOptions({
        option("host", "IP address to listen on.", "address", "127.0.0.1"),
        option("port", "Port to listen on; 0 picks a free one.", "port", "8073"),
        option("speed", "How many times faster than real time, after the first period.", "X", "1"),
        option("rate", "Samples per second.", "Hz", "12000"),
        option("raw", "Uncompressed little-endian sound."),
        option("endpoint", "Behaviour of endpoint K: 0, 1, 2, 3 or all. May be repeated.",
               "K=BEHAVIOUR"),
        option("log", "Append what happens to this file.", "file"),
        option("lead", "How many whole periods of noise before the first WAV.", "N", "0"),
        option("cache", "Folder in which the synthetic band is kept.", "folder"),
        option("save",
               "Save every period as its listener hears it after the codec, as "
               "<UTC start>-client-<number>.wav.",
               "folder"),
        option("plan", "Print the stations of the synthetic band and end."),
    });
    parser->addPositionalArgument(QStringLiteral("WAV"), QStringLiteral("Periods to play."),
                                  QStringLiteral("[WAV...]"));
}

bool number(const QCommandLineParser &parser, const char *name, double *value, QString *error)
{
    const QString text = parser.value(QString::fromLatin1(name));
    bool isNumber = false;
    *value = text.toDouble(&isNumber);
    if (!isNumber) {
        *error =
            QStringLiteral("--%1: \"%2\" is not a number").arg(QString::fromLatin1(name), text);
    }
    return isNumber;
}

bool wholeNumber(const QCommandLineParser &parser, const char *name, const char *kind, int most,
                 int *value, QString *error)
{
    const QString text = parser.value(QString::fromLatin1(name));
    bool isNumber = false;
    *value = text.toInt(&isNumber);
    if (isNumber && *value >= 0 && *value <= most) {
        return true;
    }
    *error = QStringLiteral("--%1: \"%2\" is not a %3 from 0 to %4")
                 .arg(QString::fromLatin1(name), text, QString::fromLatin1(kind))
                 .arg(most);
    return false;
}

bool readOptions(const QCommandLineParser &parser, SimConfig *config, QString *error)
{
    int port = 0;
    if (!wholeNumber(parser, "port", "port", 65535, &port, error) ||
        !wholeNumber(parser, "lead", "whole number", 100000, &config->leadPeriods, error) ||
        !number(parser, "speed", &config->speed, error) ||
        !number(parser, "rate", &config->rateHz, error)) {
        return false;
    }
    config->port = quint16(port);
    config->host = parser.value(QStringLiteral("host"));
    config->raw = parser.isSet(QStringLiteral("raw"));
    config->logFile = parser.value(QStringLiteral("log"));
    config->cacheFolder = parser.value(QStringLiteral("cache"));
    config->wavFiles = parser.positionalArguments();
    config->syntheticBand = true;
    const QStringList endpoints = parser.values(QStringLiteral("endpoint"));
    return std::all_of(
               endpoints.begin(), endpoints.end(),
               [&](const QString &endpoint) { return config->endpoints.apply(endpoint, error); }) &&
           isUsable(*config, error);
}

void say(std::FILE *stream, const QString &text)
{
    std::fprintf(stream, "%s\n", qUtf8Printable(text));
    std::fflush(stream);
}

void printPlan()
{
    say(stdout, QStringLiteral("period Hz dB DT message"));
    for (int period = 0; period < sim::kBandPeriods; ++period) {
        for (const sim::PlannedStation &station : sim::plannedStations(period)) {
            say(stdout, QStringLiteral("%1 %2 %3 %4 %5")
                            .arg(period)
                            .arg(station.audioHz)
                            .arg(station.snrDb)
                            .arg(station.offsetSec)
                            .arg(station.message));
        }
    }
}

void savePeriod(const QDir &folder, const SentPeriod &period)
{
    // ASCII digits in every language.
    const QString start = QLocale::c().toString(
        QDateTime::fromMSecsSinceEpoch(period.startMs, Qt::UTC), QStringLiteral("yyyyMMdd_HHmmss"));
    const QString name = QStringLiteral("%1-client-%2.wav").arg(start).arg(period.client);
    const QString error = sim::writePeriodWav(folder.filePath(name), period.samples);
    if (!error.isEmpty()) {
        say(stderr, QStringLiteral("kiwi-sim: ") + error);
    }
}

QString program()
{
    return QStringLiteral("kiwi-sim");
}

int endWith(const Ending &ending)
{
    say(ending.exitCode == 0 ? stdout : stderr, ending.text);
    return ending.exitCode;
}

} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    ignoreBrokenPipes();
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    describe(&parser);
    if (const auto ending = parseArguments(&parser, program(), QCoreApplication::arguments())) {
        return endWith(*ending);
    }
    if (parser.isSet(QStringLiteral("plan"))) {
        printPlan();
        return 0;
    }
    SimConfig config;
    QString error;
    if (!readOptions(parser, &config, &error)) {
        return endWith(wrongUse(program(), error));
    }
    config.progress = [](const QString &text) { say(stderr, text); };
    if (parser.isSet(QStringLiteral("save"))) {
        const QDir folder(parser.value(QStringLiteral("save")));
        folder.mkpath(QStringLiteral("."));
        config.onPeriod = [folder](const SentPeriod &period) { savePeriod(folder, period); };
    }
    KiwiSim receiver;
    if (!receiver.listen(config, &error)) {
        return endWith({QStringLiteral("%1: %2").arg(program(), error), cannotListen});
    }
    say(stdout, QStringLiteral("listening on %1 port %2").arg(config.host).arg(receiver.port()));
    return QCoreApplication::exec();
}
