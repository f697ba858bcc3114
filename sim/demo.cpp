// Demonstrates the station: runs the receiver simulator and the real main window in one program,
// operates the real dialog, and keeps data and settings in a temporary folder.

#include "app/mainwindow.h"
#include "app/startup.h"
#include "base/console.h"
#include "base/termination.h"
#include "base/timetext.h"
#include "sim/kiwisim.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

namespace outpost
{

namespace
{
struct DemoOptions {
    int periods = 0; // 0: until the window is closed
    QStringList wavFiles;
    QString screenshot;
};

// A decoder may take up to three periods before it is killed; the rest is margin.
constexpr qint64 decoderTimeMs = 60000;

void print(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

QString periodLabel(qint64 startMs)
{
    return timeText(QDateTime::fromMSecsSinceEpoch(startMs, Qt::UTC), QStringLiteral("HH:mm:ss"));
}

QString counted(int count, const QString &thing)
{
    return QStringLiteral("%1 %2%3").arg(QString::number(count), thing,
                                         count == 1 ? QString() : QStringLiteral("s"));
}

class Demo
{
public:
    Demo(const DemoOptions &demoOptions, const QString &bandCache);

    bool listen(QString *error);
    void connectStation();
    int exitStatus();

private:
    void enterReceiver(QWidget *dialog) const;
    void watchDialogs();
    void printNewRows();
    void finishWhenDone();
    void leaveOutUnfinished();
    int decodesOf(qint64 startMs) const { return decodes.value(periodLabel(startMs)); }

    const DemoOptions options;
    SimConfig config;
    KiwiSim receiver;
    MainWindow window;
    QTableWidget *table = nullptr;
    QTimer watch;
    bool receiverEntered = false;
    QList<qint64> played;        // UTC starts, ms since the epoch
    QHash<QString, int> decodes; // by period label
    int totalDecodes = 0;
};

Demo::Demo(const DemoOptions &demoOptions, const QString &bandCache) : options(demoOptions)
{
    config.cacheFolder = bandCache;
    config.syntheticBand = options.wavFiles.isEmpty();
    // With more periods than recordings, the recordings repeat.
    const int files = options.wavFiles.size();
    for (int i = 0; i < qMax(options.periods, files) && files > 0; ++i) {
        config.wavFiles.append(options.wavFiles.at(i % files));
    }
    config.progress = [](const QString &line) { print(line); };
    config.onPeriod = [this](const SentPeriod &period) {
        if (options.periods == 0 || played.size() < options.periods) {
            played.append(period.startMs);
        }
    };
    table = qobject_cast<QTableWidget *>(window.centralWidget());
    QObject::connect(
        table->model(), &QAbstractItemModel::rowsInserted, &watch, [this] { printNewRows(); },
        Qt::QueuedConnection);
    QObject::connect(&watch, &QTimer::timeout, &watch, [this] {
        watchDialogs();
        finishWhenDone();
    });
}

bool Demo::listen(QString *error)
{
    return receiver.listen(config, error);
}

// As an operator would: Settings > Kiwi Receiver..., enter the address, Apply and Connect, Close.
void Demo::connectStation()
{
    window.show();
    watch.start(100);
    for (const QAction *menu : window.menuBar()->actions()) {
        for (QAction *entry : menu->menu()->actions()) {
            if (entry->text() == QStringLiteral("Kiwi Receiver...")) {
                QTimer::singleShot(0, entry, [entry] { entry->trigger(); });
            }
        }
    }
}

void Demo::watchDialogs()
{
    QWidget *dialog = QApplication::activeModalWidget();
    if (dialog == nullptr) {
        return;
    }
    if (const auto *box = qobject_cast<QMessageBox *>(dialog)) {
        print(box->text());
        if (options.periods > 0) {
            QCoreApplication::exit(1);
        }
        return;
    }
    if (!receiverEntered && dialog->windowTitle() == QStringLiteral("Kiwi Receiver")) {
        receiverEntered = true;
        enterReceiver(dialog);
    }
}

void Demo::enterReceiver(QWidget *dialog) const
{
    for (const QLabel *label : dialog->findChildren<QLabel *>()) {
        auto *edit = qobject_cast<QLineEdit *>(label->buddy());
        if (edit != nullptr && label->text() == QStringLiteral("Receiver:")) {
            edit->setText(config.host);
        }
        if (edit != nullptr && label->text() == QStringLiteral("Port:")) {
            edit->setText(QString::number(receiver.port()));
        }
    }
    const auto *buttons = dialog->findChild<QDialogButtonBox *>();
    for (QAbstractButton *button : buttons->buttons()) {
        if (button->text() == QStringLiteral("Apply and Connect")) {
            button->click();
        }
    }
    buttons->button(QDialogButtonBox::Close)->click();
}

// The table gets all rows of a period at once, so the rows with the last label are the new ones.
void Demo::printNewRows()
{
    const int rows = table->rowCount();
    const QString label = rows > 0 ? table->item(rows - 1, 0)->text() : QString();
    if (label.isEmpty() || decodes.contains(label)) {
        return;
    }
    for (int row = 0; row < rows; ++row) {
        if (table->item(row, 0)->text() != label) {
            continue;
        }
        QStringList cells;
        for (int column = 0; column < table->columnCount(); ++column) {
            cells.append(table->item(row, column)->text());
        }
        print(cells.join(QLatin1Char(' ')));
        decodes[label] += 1;
        totalDecodes += 1;
    }
    if (!options.screenshot.isEmpty() && !window.grab().save(options.screenshot)) {
        print(QStringLiteral("Could not write %1").arg(options.screenshot));
    }
}

void Demo::finishWhenDone()
{
    if (options.periods == 0 || played.size() < options.periods) {
        return;
    }
    bool allDecoded = true;
    for (const qint64 startMs : qAsConst(played)) {
        allDecoded = allDecoded && decodesOf(startMs) > 0;
    }
    const qint64 waitedMs = QDateTime::currentMSecsSinceEpoch() - (played.last() + 15000);
    if (allDecoded || waitedMs > decoderTimeMs) {
        watch.stop();
        window.close();
        QCoreApplication::quit();
    }
}

// If the window is closed, periods that are still being decoded do not count.
void Demo::leaveOutUnfinished()
{
    while (options.periods == 0 && !played.isEmpty() && decodesOf(played.last()) == 0) {
        played.removeLast();
    }
}

int Demo::exitStatus()
{
    leaveOutUnfinished();
    print(QStringLiteral("%1, %2").arg(counted(played.size(), QStringLiteral("period")),
                                       counted(totalDecodes, QStringLiteral("decode"))));
    for (const qint64 startMs : qAsConst(played)) {
        if (decodesOf(startMs) == 0) {
            return 1;
        }
    }
    return played.isEmpty() ? 1 : 0;
}

// Data, settings and cache go to a folder that is removed when the demonstration ends.
void useHome(const QTemporaryDir &home)
{
    const QByteArray root = QFile::encodeName(home.path());
    for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME",
                             "PELQ_KIWI_STAGE_CAPTURE_DIR"}) {
        qputenv(name, root);
    }
}

QString program()
{
    return QStringLiteral("kiwi-outpost-demo");
}

QCommandLineOption periodsOption()
{
    return {QStringLiteral("periods"), QStringLiteral("Stop after N periods."),
            QStringLiteral("N")};
}

QCommandLineOption wavOption()
{
    return {QStringLiteral("wav"), QStringLiteral("Play this recording. May be repeated."),
            QStringLiteral("FILE")};
}

QCommandLineOption screenshotOption()
{
    return {QStringLiteral("screenshot"),
            QStringLiteral("Save a picture of the window with the latest decodes."),
            QStringLiteral("FILE")};
}

struct DemoCommandLine {
    DemoOptions options;
    std::optional<Ending> ending;
};

// Without a display there is no window to close, so the demonstration ends by itself.
DemoCommandLine readDemoCommandLine(const QStringList &arguments, bool display)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows the station decoding a simulated receiver's FT8 band."));
    parser.addOptions({periodsOption(), wavOption(), screenshotOption()});
    if (const auto ending = parseArguments(&parser, program(), withoutQtOptions(arguments))) {
        return {{}, ending};
    }
    if (const auto ending = refuseOtherArguments(parser, program())) {
        return {{}, ending};
    }
    DemoOptions options;
    options.periods = display ? 0 : 2;
    options.wavFiles = parser.values(wavOption());
    options.screenshot = parser.value(screenshotOption());
    if (parser.isSet(periodsOption())) {
        options.periods = parser.value(periodsOption()).toInt();
        if (options.periods < 1) {
            const QString sentence =
                QStringLiteral("--periods takes a whole number from 1 on; see --help.");
            return {{}, wrongUse(program(), sentence)};
        }
    }
    return {options, std::nullopt};
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char *argv[])
{
    ignoreBrokenPipes();
    const bool display = hasDisplay();
    const DemoCommandLine commandLine = readDemoCommandLine(argumentList(argc, argv), display);
    if (commandLine.ending) {
        showEnding(*commandLine.ending);
        return commandLine.ending->exitCode;
    }
    if (!display && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QString bandCache =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
        QStringLiteral("/kiwi-sim");
    const QTemporaryDir home;
    useHome(home);

    const auto application = startApplication(argc, argv);
    // Keep the output readable; QT_LOGGING_RULES="default.info=true" shows the log again.
    QLoggingCategory::setFilterRules(QStringLiteral("default.info=false"));
    Demo demo(commandLine.options, bandCache);
    QString error;
    if (!demo.listen(&error)) {
        showEnding({program() + QStringLiteral(": ") + error, 1});
        return 1;
    }
    demo.connectStation();
    const int early = QApplication::exec();
    const int status = demo.exitStatus();
    return early != 0 ? early : status;
}
