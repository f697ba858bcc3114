#include "base/programoptions.h"

#include "base/buildconfig.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <algorithm>
#include <array>

namespace outpost
{

namespace
{
constexpr int wrongUseExitCode = 2;

// Options of QGuiApplication, QApplication and the X11 platform plugin.
const QStringList &qtFlags()
{
    static const QStringList flags{QStringLiteral("dograb"),     QStringLiteral("nograb"),
                                   QStringLiteral("qdebug"),     QStringLiteral("qdevel"),
                                   QStringLiteral("reverse"),    QStringLiteral("testability"),
                                   QStringLiteral("widgetcount")};
    return flags;
}

// Options whose value is the next argument.
const QStringList &qtOptionsWithValue()
{
    static const QStringList options{
        QStringLiteral("display"),       QStringLiteral("geometry"),
        QStringLiteral("icon"),          QStringLiteral("name"),
        QStringLiteral("platform"),      QStringLiteral("platformpluginpath"),
        QStringLiteral("platformtheme"), QStringLiteral("plugin"),
        QStringLiteral("qmljsdebugger"), QStringLiteral("qwindowgeometry"),
        QStringLiteral("qwindowicon"),   QStringLiteral("qwindowtitle"),
        QStringLiteral("session"),       QStringLiteral("style"),
        QStringLiteral("stylesheet"),    QStringLiteral("title"),
        QStringLiteral("visual")};
    return options;
}

bool holdsItsQtValue(const QString &name)
{
    const QStringList begins{QStringLiteral("qmljsdebugger="), QStringLiteral("style="),
                             QStringLiteral("stylesheet=")};
    return std::any_of(begins.begin(), begins.end(),
                       [&name](const QString &begin) { return name.startsWith(begin); });
}

// The name without its one or two hyphens; empty if the argument is not an option.
QString optionName(const QString &argument)
{
    if (!argument.startsWith(QLatin1Char('-'))) {
        return QString();
    }
    return argument.mid(argument.startsWith(QLatin1String("--")) ? 2 : 1);
}

// QCommandLineParser takes the program's name from the application object and needs one to exist.
QString helpText(const QCommandLineParser &parser, const QString &program)
{
    QByteArray name = program.toLocal8Bit();
    int argc = 1;
    std::array<char *, 2> argv{name.data(), nullptr};
    std::optional<QCoreApplication> application;
    if (QCoreApplication::instance() == nullptr) {
        application.emplace(argc, argv.data());
    }
    const QString help = parser.helpText();
    const QString usage = help.section(QLatin1Char('\n'), 0, 0);
    const QString operands = usage.section(QStringLiteral(" [options]"), 1);
    return QStringLiteral("Usage: %1 [options]%2\n").arg(program, operands) +
           help.section(QLatin1Char('\n'), 1).trimmed();
}
} // namespace

QStringList withoutQtOptions(const QStringList &arguments)
{
    QStringList rest;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString name = optionName(arguments.at(i));
        if (qtOptionsWithValue().contains(name)) {
            ++i;
        } else if (!qtFlags().contains(name) && !holdsItsQtValue(name)) {
            rest.append(arguments.at(i));
        }
    }
    return rest;
}

bool chooseDisplay(const QStringList &arguments)
{
    return std::any_of(arguments.begin(), arguments.end(), [](const QString &argument) {
        const QString name = optionName(argument);
        return name == QLatin1String("platform") || name == QLatin1String("display");
    });
}

std::optional<Ending> parseArguments(QCommandLineParser *parser, const QString &program,
                                     const QStringList &arguments)
{
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help and exit."));
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Show the version and exit."));
    parser->setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser->addOptions({help, version});
    if (!parser->parse(arguments)) {
        return wrongUse(program, parser->errorText());
    }
    if (parser->isSet(help)) {
        return Ending{helpText(*parser, program), 0};
    }
    if (parser->isSet(version)) {
        return Ending{program + QStringLiteral(" " OUTPOST_VERSION), 0};
    }
    return std::nullopt;
}

std::optional<Ending> refuseOtherArguments(const QCommandLineParser &parser, const QString &program)
{
    const QStringList others = parser.positionalArguments();
    if (others.isEmpty()) {
        return std::nullopt;
    }
    return wrongUse(program, QStringLiteral("Unexpected argument '%1'.").arg(others.first()));
}

Ending wrongUse(const QString &program, const QString &sentence)
{
    return {QStringLiteral("%1: %2").arg(program, sentence), wrongUseExitCode};
}

} // namespace outpost
