#include "app/mainwindow.h"

#include "app/help.h"
#include "base/frequency.h"
#include "base/logline.h"
#include "base/termination.h"
#include "decode/decoderchooser.h"
#include "decode/jt9locator.h"
#include "decode/kiwiaudiocapture.h"
#include "display/bridgestatusdialog.h"
#include "display/bridgetexts.h"
#include "display/decodetable.h"
#include "display/highlightcalls.h"
#include "display/highlighteditor.h"
#include "display/stationdisplay.h"
#include "display/statussummary.h"
#include "display/wsjtbridge.h"
#include "kiwi/kiwilink.h"
#include "store/profilemenu.h"
#include "store/receiverdialog.h"
#include "store/receiverinput.h"
#include "store/statuslogwindow.h"

#include <QApplication>
#include <QDialog>
#include <QMenuBar>
#include <QProcessEnvironment>
#include <QStatusBar>
#include <QTimer>
#include <utility>

namespace outpost
{

MainWindow::MainWindow(StationOptions stationOptions)
    : options(std::move(stationOptions)), bridge(newBridge()), profiles(options.dataFolder),
      goodReceivers(options.dataFolder, options.settings),
      sessionLog(options.dataFolder, options.clock, [this] { refreshSession(); }),
      chooser(newDecoderChooser())
{
    setWindowTitle(QStringLiteral("PELQ Kiwi Outpost"));
    resize(345, 245);
    setMinimumSize(345, 175);
    buildLink();
    buildMenus(this, menuChoices(), storedDecodeDepth(options.settings.open()));
    buildDecodeTable();
    addClearButton(menuBar(), [this] { decodeTable->removeAll(); });
    statusSummary = new StatusSummary(statusBar(), font(), minimumWidth());
    refreshStatusBar();
    buildCapture();
    loadStartupProfile();
    QTimer::singleShot(0, this, [this] {
        chooser->findJt9(jt9PlacesOfThisSystem(profiles.profile().jt9Path,
                                               QCoreApplication::applicationDirPath(),
                                               QProcessEnvironment::systemEnvironment()));
    });
    if (options.start.connects) {
        QTimer::singleShot(0, this, [this] { connectAtStart(); });
    }
    bridge->start();
    prepareForLogOff();
}

MainWindow::~MainWindow()
{
    bridge->stop();
    link->disconnectKiwi(false);
}

// Windows may ask first and cancel the log-off, so a query closes nothing. Once the log-off is
// certain, Windows may end the program before the event loop ends and the window is destroyed.
void MainWindow::prepareForLogOff()
{
    QGuiApplication::setFallbackSessionManagementEnabled(false);
    atLogOff(this, [this] { finishStatusSession(); });
}

// Like "Apply and Connect" with the current values, but saves nothing.
void MainWindow::connectAtStart()
{
    const Profile &profile = profiles.profile();
    const ReceiverInput input =
        readReceiverInput(profile.kiwiHost, QString::number(profile.kiwiPort),
                          frequencyText(profiles.frequencyMhz()));
    if (!input.refusal.isEmpty()) {
        logLine(input.refusal);
        return;
    }
    profiles.setReceiver(input.host, input.port);
    connectKiwi();
}

MenuChoices MainWindow::menuChoices()
{
    MenuChoices choices;
    choices.openProfile = [this] { openProfile(this, &profiles); };
    choices.saveProfile = [this] { saveProfile(this, &profiles); };
    choices.saveProfileAs = [this] { saveProfileAs(this, &profiles); };
    choices.showReceiverDialog = [this] { showReceiverDialog(); };
    choices.disconnectReceiver = [this] { link->disconnectKiwi(true); };
    choices.editHighlightCalls = [this] { editHighlightCalls(); };
    choices.chooseDecodeDepth = [this](int depth) {
        capture->setDecodeDepth(depth); // from the next period on
        options.settings.save(QStringLiteral("decoder/depth"), depth);
    };
    choices.selectJt9 = [this] { chooser->selectJt9(); };
    choices.startBridge = [this] {
        bridge->startOnRequest();
        refreshBridgeStatus();
    };
    choices.stopBridge = [this] {
        bridge->stop();
        refreshBridgeStatus();
    };
    choices.showBridgeAttachment = [this] { showBridgeAttachment(this, bridge->state()); };
    choices.showStatusLog = [this] { showStatusLogWindow(); };
    choices.showStationDisplay = [this] { showStationDisplay(); };
    choices.showBridgeStatus = [this] { showBridgeStatusDialog(); };
    choices.showHelp = [this] { showHelpAbout(this); };
    return choices;
}

// --profile and --mhz replace the files; their values are not saved automatically.
void MainWindow::loadStartupProfile()
{
    if (options.start.profile) {
        profiles.useProfile(options.start.profile->path, options.start.profile->profile);
    } else {
        profiles.loadStartupProfile();
    }
    if (options.start.frequencyMhz) {
        profiles.useFrequency(*options.start.frequencyMhz);
    }
    profiles.loadFrequencyFile();
}

void MainWindow::setKiwiStatus(const QString &text)
{
    if (receiverDialog) {
        receiverDialog->setStatus(text.isEmpty() ? kiwiStatusText() : text);
    }
    refreshStatusBar();
}

void MainWindow::showReceiverDialog()
{
    profiles.loadFrequencyFile();
    const ReceiverDialogValues values{profiles.profile().kiwiHost, profiles.profile().kiwiPort,
                                      profiles.frequencyMhz(), kiwiStatusText(),
                                      goodReceivers.receivers()};
    const ReceiverDialogCallbacks callbacks{
        [this](const ReceiverInput &input) { applyReceiver(input); },
        [this] { link->disconnectKiwi(true); },
        [this](const QString &host, int port) {
            return goodReceivers.removeGoodReceiver(host, port);
        }};
    ReceiverDialog dialog(values, callbacks, this);
    receiverDialog = &dialog;
    dialog.exec();
    receiverDialog = nullptr;
}

void MainWindow::applyReceiver(const ReceiverInput &input)
{
    goodReceivers.onReceiverApplied(input.host, input.port);
    profiles.setReceiver(input.host, input.port);
    profiles.setFrequency(input.frequencyMhz);
    profiles.saveDefaultProfileQuietly();
    profiles.saveFrequencyFile();
    connectKiwi();
}

void MainWindow::recordGoodReceiver(int decodeCount)
{
    const Profile &profile = profiles.profile();
    goodReceivers.recordGoodReceiver(
        {profile.kiwiHost.trimmed(), profile.kiwiPort, profiles.frequencyMhz(), decodeCount},
        options.clock());
}

void MainWindow::startStatusSession()
{
    const Profile &profile = profiles.profile();
    sessionLog.startStatusSession(profile.kiwiHost, profile.kiwiPort, profiles.frequencyMhz());
}

void MainWindow::refreshSession()
{
    refreshStatusBar();
    refreshStatusLogView();
}

void MainWindow::showStatusLogWindow()
{
    if (!statusLogWindow) {
        sessionLog.rebuildStatusHistory();
        statusLogWindow = new StatusLogWindow(this, [this] { refreshStatusLogView(); });
        refreshStatusLogView();
    }
    statusLogWindow->present();
}

void MainWindow::refreshStatusLogView()
{
    if (statusLogWindow) {
        statusLogWindow->refresh(sessionLog.text());
    }
}

void MainWindow::buildDecodeTable()
{
    decodeTable = new DecodeTable(this, [this](int width) { fitToDecodes(width); });
    decodeTable->highlight(storedHighlightCalls(options.settings));
    setCentralWidget(decodeTable);
}

// The window follows the width of the table and keeps its height.
void MainWindow::fitToDecodes(int tableWidth)
{
    setMinimumWidth(qMax(tableWidth, menuBar()->sizeHint().width() + 20));
    resize(tableWidth, height());
}

// The profile may be loaded later, since the bridge asks for the port only when it is started or
// shown.
WsjtBridge *MainWindow::newBridge()
{
    return new WsjtBridge(
        [this] { return profiles.profile().bridgePort; },
        {[this](int port) { profiles.setBridgePort(port); }, [this] { refreshStatusBar(); }},
        options.clock, this);
}

void MainWindow::buildCapture()
{
    CaptureCallbacks callbacks;
    callbacks.onWorkerDecodes = [this](const QString &periodLabel,
                                       const QVector<Ft8Decode> &decodes) {
        QMetaObject::invokeMethod(
            this, [this, periodLabel, decodes] { onDecodesDelivered(periodLabel, decodes); },
            Qt::QueuedConnection);
    };
    callbacks.onPeriodDecodes = [this](const QString &periodLabel,
                                       const QVector<Ft8Decode> &decodes) {
        QMetaObject::invokeMethod(
            this, [this, periodLabel, decodes] { appendDecodes(periodLabel, decodes); },
            Qt::QueuedConnection);
    };
    CaptureOptions captureOptions;
    captureOptions.decoderLimits = options.decoderLimits;
    capture = std::make_unique<KiwiAudioCapture>(callbacks, captureOptions);
    capture->setCaptureFolder(options.captureFolder);
    capture->setDecodeDepth(storedDecodeDepth(options.settings.open()));
}

// If a profile was given on the command line, a decoder found by the search is not saved.
std::unique_ptr<DecoderChooser> MainWindow::newDecoderChooser()
{
    DecoderChooserCallbacks callbacks;
    callbacks.onFound = [this](const QString &path) {
        profiles.setJt9Path(path);
        if (!options.start.profile) {
            profiles.saveDefaultProfileQuietly();
        }
    };
    callbacks.onSelected = [this](const QString &path) {
        profiles.setJt9Path(path);
        profiles.saveDefaultProfileQuietly();
    };
    return std::make_unique<DecoderChooser>(
        this, [this] { return profiles.profile().jt9Path; }, callbacks);
}

void MainWindow::appendDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    int rows = 0;
    // Kept, but always true: the constructor makes the table before anything can deliver decodes.
    if (decodeTable) {
        addSessionDecodes(decodeTable->append(periodLabel, decodes));
        rows = decodeTable->rowCount();
    }
    recordGoodReceiver(rows);
    refreshStationDisplay();
    refreshStatusBar();
}

void MainWindow::editHighlightCalls()
{
    const auto calls = editedHighlightCalls(this, decodeTable->highlighted());
    if (calls) {
        saveHighlightCalls(options.settings, *calls);
        decodeTable->highlight(*calls);
    }
}

void MainWindow::refreshStatusBar()
{
    // Kept, but always true: the constructor makes it before its first refresh.
    if (statusSummary) {
        statusSummary->refresh(link->state().phase == LinkPhase::Connected, bridge->state().clients,
                               sessionLog.session().decodes);
    }
}

void MainWindow::showStationDisplay()
{
    if (!stationDisplay) {
        stationDisplay = new StationDisplay(this, [this] { refreshStationDisplay(); });
    }
    refreshStationDisplay();
    stationDisplay->present();
}

void MainWindow::refreshStationDisplay()
{
    if (stationDisplay) {
        stationDisplay->refresh(
            {sessionLog.session(), options.clock(), bridge->state(), decodeTable->rows()});
    }
}

void MainWindow::onDecodesDelivered(const QString &periodLabel, const QVector<Ft8Decode> &decodes)
{
    recordGoodReceiver(decodes.size());
    bridge->broadcast(periodLabel, decodes);
}

void MainWindow::showBridgeStatusDialog()
{
    if (!bridgeStatusDialog) {
        bridgeStatusDialog = new BridgeStatusDialog(this, [this] { refreshBridgeStatus(); });
    }
    refreshBridgeStatus();
    bridgeStatusDialog->present();
}

void MainWindow::refreshBridgeStatus()
{
    if (bridgeStatusDialog) {
        bridgeStatusDialog->refresh(bridge->state());
    }
}

} // namespace outpost
