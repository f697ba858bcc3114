#include "base/console.h"

#include <QtGlobal>
#include <clocale>
#include <cstdio>

namespace outpost
{

QStringList argumentList(int argc, char **argv)
{
    std::setlocale(LC_ALL, ""); // Qt looks up the encoding once
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return arguments;
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void showEnding(const Ending &ending)
{
    std::FILE *stream = ending.exitCode == 0 ? stdout : stderr;
    std::fprintf(stream, "%s\n", ending.text.toLocal8Bit().constData());
    std::fflush(stream);
}

} // namespace outpost
