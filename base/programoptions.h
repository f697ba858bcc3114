#pragma once

#include <QStringList>
#include <optional>

class QCommandLineParser;

namespace outpost
{

// What a program prints and returns instead of starting.
struct Ending {
    QString text;
    int exitCode = 0; // 0: success; 1: cannot run; 2: invalid options
};

// The arguments without the options that Qt itself understands, and without their values. Like Qt,
// accepts one or two hyphens.
QStringList withoutQtOptions(const QStringList &arguments);

// Whether the arguments select a platform or a display for Qt.
bool chooseDisplay(const QStringList &arguments);

// Parses the arguments; the first one is skipped. Handles what all programs have in common: --help,
// --version and unknown options. Returns an Ending if the program must not start.
std::optional<Ending> parseArguments(QCommandLineParser *parser, const QString &program,
                                     const QStringList &arguments);

// For programs that take only options: refuses the first positional argument.
std::optional<Ending> refuseOtherArguments(const QCommandLineParser &parser,
                                           const QString &program);

Ending wrongUse(const QString &program, const QString &sentence);

} // namespace outpost
