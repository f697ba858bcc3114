#include "app/mainwindow.h"
#include "base/dialogs.h"
#include "display/bridgetexts.h"
#include "display/livedialog.h"

#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QTcpServer>
#include <QTimer>

namespace outpost
{

void MainWindow::startBridgeFromMenu()
{
    startBridge();
    if (bridgeListening()) {
        bridgeLastError.clear();
    } else if (bridgeServer) {
        bridgeLastError = bridgeServer->errorString();
    } else {
        bridgeLastError = QStringLiteral("Bridge failed to start");
    }
    refreshBridgeStatus();
}

void MainWindow::stopBridgeFromMenu()
{
    stopBridge();
    refreshBridgeStatus();
}

BridgeState MainWindow::bridgeState() const
{
    BridgeState state;
    state.listening = bridgeListening();
    state.port = profile.bridgePort;
    state.clients = bridgeClients.size();
    state.lastError = bridgeLastError;
    state.lastOutputMs = bridgeLastOutputMs;
    state.lastOutputCount = bridgeLastOutputCount;
    return state;
}

void MainWindow::showBridgeAttachment()
{
    showInformation(this, QStringLiteral("WSJT Bridge Status"),
                    bridgeAttachmentText(bridgeState()));
}

void MainWindow::showBridgeStatusDialog()
{
    if (!bridgeStatusDialog) {
        buildBridgeStatusDialog();
        refreshBridgeStatus();
        bridgeStatusTimer->start();
        bridgeStatusDialog->show();
        return;
    }
    refreshBridgeStatus();
    bridgeStatusDialog->show();
    bridgeStatusDialog->raise();
    bridgeStatusDialog->activateWindow();
}

void MainWindow::buildBridgeStatusDialog()
{
    const LiveDialog live = buildLiveDialog(this, QStringLiteral("PELQ Kiwi Outpost Bridge Status"),
                                            1000, [this] { refreshBridgeStatus(); });
    live.layout->setSizeConstraint(QLayout::SetFixedSize);
    bridgeStatusDialog = live.dialog;
    bridgeStatusLabel = live.label;
    bridgeStatusTimer = live.timer;
    connect(live.dialog, &QObject::destroyed, this, [this] {
        bridgeStatusDialog = nullptr;
        bridgeStatusLabel = nullptr;
        bridgeStatusTimer = nullptr;
    });
}

void MainWindow::refreshBridgeStatus()
{
    if (!bridgeStatusLabel) {
        return;
    }
    bridgeStatusLabel->setText(bridgeStatusText(bridgeState()));
    bridgeStatusDialog->adjustSize();
}

} // namespace outpost
