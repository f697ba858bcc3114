#pragma once

#include <QStringList>
#include <optional>

class QCommandLineParser;

namespace outpost
{

// What a program shows and ends with instead of starting.
struct Ending {
    QString text;
    int exitCode = 0; // 0: what was asked for; 1: cannot run; 2: cannot use the options
};

// Without the options that Qt itself takes from the command line, and their values. As with Qt,
// each begins with one hyphen or two.
QStringList withoutQtOptions(const QStringList &arguments);

// Whether they tell Qt where to open windows.
bool chooseDisplay(const QStringList &arguments);

// Reads the arguments, of which the first is skipped, into the parser. What all programs answer
// alike is answered here: --help, --version, and options that the program does not have.
std::optional<Ending> parseArguments(QCommandLineParser *parser, const QString &program,
                                     const QStringList &arguments);

// For a program that takes options only: refuses the first other argument.
std::optional<Ending> refuseOtherArguments(const QCommandLineParser &parser,
                                           const QString &program);

Ending wrongUse(const QString &program, const QString &sentence);

} // namespace outpost
