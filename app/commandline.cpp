#include "app/commandline.h"

#include "base/frequency.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace outpost
{

namespace
{
QString program()
{
    return QStringLiteral("kiwi-outpost");
}

QCommandLineOption profileOption()
{
    return {QStringLiteral("profile"),
            QStringLiteral("Use this profile in place of the default one. No profile is written "
                           "until you apply, choose or save something."),
            QStringLiteral("FILE")};
}

QCommandLineOption mhzOption()
{
    return {QStringLiteral("mhz"),
            QStringLiteral("Use this dial frequency, in MHz, in place of the saved one."),
            QStringLiteral("FREQUENCY")};
}

QCommandLineOption connectOption()
{
    return {QStringLiteral("connect"), QStringLiteral("Connect to the receiver at the start.")};
}

CommandLine refused(const QString &sentence)
{
    return {{}, wrongUse(program(), sentence)};
}

QString profileRefusal(const ProfileReading &reading)
{
    return reading.isNoObject ? QStringLiteral("The profile is not a JSON object.") : reading.error;
}

// Nothing if the option was not given.
std::optional<QString> valueOf(const QCommandLineParser &parser, const QCommandLineOption &option)
{
    return parser.isSet(option) ? std::optional(parser.value(option)) : std::nullopt;
}
} // namespace

CommandLine readCommandLine(const QStringList &arguments, const ReadProfile &readProfile)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Receive-only FT8 station for a KiwiSDR receiver. Qt's own options, such as "
                       "-style\nand -geometry, are accepted, too."));
    parser.addOptions({profileOption(), mhzOption(), connectOption()});
    if (const auto ending = parseArguments(&parser, program(), withoutQtOptions(arguments))) {
        return {{}, ending};
    }
    if (const auto ending = refuseOtherArguments(parser, program())) {
        return {{}, ending};
    }
    StartOptions options;
    options.connects = parser.isSet(connectOption());
    if (const auto text = valueOf(parser, mhzOption())) {
        options.frequencyMhz = parseFrequency(*text);
        if (!options.frequencyMhz) {
            return refused(
                QStringLiteral("\"%1\" is not a frequency from 0.001 to 3000 MHz.").arg(*text));
        }
    }
    if (const auto path = valueOf(parser, profileOption())) {
        if (path->isEmpty()) {
            return refused(QStringLiteral("Missing value after '--profile'."));
        }
        const ProfileReading reading = readProfile(*path);
        if (!reading.profile) {
            return refused(QStringLiteral("%1: %2").arg(*path, profileRefusal(reading)));
        }
        // Absolute, since Save Profile may write to it later, when the working directory has
        // changed.
        options.profile = OpenedProfile{QFileInfo(*path).absoluteFilePath(), *reading.profile};
    }
    return {options, std::nullopt};
}

Ending noDisplay()
{
    return {
        QStringLiteral("%1: There is no display. Start it in a desktop session.").arg(program()),
        1};
}

} // namespace outpost
