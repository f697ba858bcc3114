#include "app/commandline.h"
#include "app/identity.h"
#include "app/mainwindow.h"
#include "app/stationfont.h"
#include "app/termination.h"
#include "base/console.h"

#include <QApplication>

using namespace outpost;

int main(int argc, char *argv[])
{
    ignoreBrokenPipes();
    // Before the application object, which ends a program that has no display.
    const CommandLine commandLine =
        readCommandLine(argumentList(argc, argv),
                        [](const QString &path) { return readProfileFile(path, Profile()); });
    if (commandLine.ending) {
        showEnding(*commandLine.ending);
        return commandLine.ending->exitCode;
    }

    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    setStationFont();
    setIdentity();
    quitOnTermination();
    StationOptions options;
    options.start = commandLine.options;
    MainWindow window(options);
    window.show();
    return QApplication::exec();
}
