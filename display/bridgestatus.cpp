#include "app/mainwindow.h"
#include "base/dialogs.h"
#include "display/bridgestatusdialog.h"
#include "display/bridgetexts.h"

#include <QTcpServer>

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
    state.port = profiles.profile().bridgePort;
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
        bridgeStatusDialog = new BridgeStatusDialog(this, [this] { refreshBridgeStatus(); });
    }
    refreshBridgeStatus();
    bridgeStatusDialog->present();
}

void MainWindow::refreshBridgeStatus()
{
    if (bridgeStatusDialog) {
        bridgeStatusDialog->refresh(bridgeState());
    }
}

} // namespace outpost
