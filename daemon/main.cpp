#include "base/console.h"
#include "base/datapaths.h"
#include "base/logline.h"
#include "base/names.h"
#include "base/termination.h"
#include "daemon/backgroundwriter.h"
#include "daemon/daemonoptions.h"
#include "daemon/outpostd.h"
#include "daemon/plainfile.h"
#include "daemon/statusserver.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <thread>

using namespace outpost;

namespace
{
constexpr int cannotRun = 1;
constexpr int flushMs = 1000; // for a reader of standard output that is slow
constexpr int endMs = 4000;   // for the end as a whole

int endWith(const Ending &ending)
{
    showEnding(ending);
    return ending.exitCode;
}

int showStatus()
{
    const StatusAnswer answer = askStatus();
    return endWith(answer.error.isEmpty()
                       ? Ending{QString::fromUtf8(answer.text).trimmed(), 0}
                       : Ending{QStringLiteral("kiwi-outpostd: ") + answer.error, cannotRun});
}

QString scratchFolder()
{
    const QString ofWindow =
        captureFolder(QCoreApplication::applicationDirPath(),
                      QStandardPaths::writableLocation(QStandardPaths::CacheLocation));
    return QFileInfo(ofWindow).path() + QStringLiteral("/capture-outpostd");
}

void readAgain(Outpostd &daemon, const QString &configFile)
{
    const QString notPlain = whyNotPlain(configFile);
    const DaemonConfigOutcome read =
        notPlain.isEmpty()
            ? readDaemonConfigFile(configFile)
            : DaemonConfigOutcome{{}, QStringLiteral("%1: %2").arg(configFile, notPlain)};
    if (read.error.isEmpty() && read.config.hasSources()) {
        logLine(QStringLiteral("The configuration is read again."));
        daemon.apply(read.config);
        return;
    }
    logLine(QStringLiteral("The configuration stays as it is. %1")
                .arg(read.error.isEmpty()
                         ? QStringLiteral("The file names no receiver and no bridge.")
                         : escapedControls(read.error)));
}

// Qt waits for every look-up of a host's name, which can take minutes.
void endAtLatestIn(int ms, int exitCode)
{
    std::thread([ms, exitCode] {
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        std::_Exit(exitCode);
    }).detach();
}

int run(const DaemonOptions &options)
{
    BackgroundWriter standardOutput(writeToStandardOutput);
    OutpostdSurroundings surroundings;
    surroundings.captureFolder = scratchFolder();
    if (options.textFormat != TextFormat::None) {
        surroundings.textOutput = std::make_unique<TextOutput>(
            options.textFormat,
            [&standardOutput](const QByteArray &lines) { return standardOutput.write(lines); });
    }
    Outpostd daemon(std::move(surroundings));
    std::function<void()> onHangUp; // without a file, the end of its terminal ends the program
    if (!options.configFile.isEmpty()) {
        onHangUp = [&] { readAgain(daemon, options.configFile); };
    }
    quitOnTermination(onHangUp);

    StatusServer status([&daemon] { return daemon.statusText(); });
    const QString refusal = status.listen();
    if (!refusal.isEmpty()) {
        logLine(QStringLiteral("--status cannot be answered: %1").arg(refusal));
    }
    daemon.apply(options.config);
    const int exitCode = QCoreApplication::exec();
    endAtLatestIn(endMs, exitCode);
    daemon.stop();
    standardOutput.flush(flushMs);
    return exitCode;
}
} // namespace

int main(int argc, char **argv)
{
    ignoreBrokenPipes();
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // where Qt would choose a system log
    QCoreApplication application(argc, argv);
    setNames();
    const DaemonCommandLine commandLine =
        readDaemonCommandLine(argumentList(argc, argv), readDaemonConfigFile);
    if (commandLine.ending) {
        return endWith(*commandLine.ending);
    }
    return commandLine.options.showsStatus ? showStatus() : run(commandLine.options);
}
