#include "app/commandline.h"
#include "app/mainwindow.h"
#include "app/startup.h"
#include "base/console.h"
#include "base/termination.h"

#include <QApplication>

using namespace outpost;

namespace
{
int endWith(const Ending &ending)
{
    showEnding(ending);
    return ending.exitCode;
}
} // namespace

int main(int argc, char *argv[])
{
    ignoreBrokenPipes();
    // Checked before the application object exists, since without a display that would end the
    // program.
    const QStringList arguments = argumentList(argc, argv);
    const CommandLine commandLine = readCommandLine(
        arguments, [](const QString &path) { return readProfileFile(path, Profile()); });
    if (commandLine.ending) {
        return endWith(*commandLine.ending);
    }
    if (!hasDisplay() && !chooseDisplay(arguments) &&
        qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        return endWith(noDisplay());
    }

    const auto application = startApplication(argc, argv);
    quitOnTermination();
    StationOptions options;
    options.start = commandLine.options;
    MainWindow window(options);
    window.show();
    return QApplication::exec();
}
