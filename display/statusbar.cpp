#include "app/mainwindow.h"
#include "display/bridgetexts.h"
#include "display/stationdisplay.h"
#include "display/stationtexts.h"
#include "display/tabletexts.h"

#include <QLabel>

namespace outpost
{

void MainWindow::refreshStatusBar()
{
    if (!statusSummaryLabel) {
        return;
    }
    const QString text =
        statusSummaryText(link.sndVerified, bridgeClients.size(), sessionLog.session().decodes);
    if (statusSummaryLabel->text() != text) {
        statusSummaryLabel->setText(text);
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
            {sessionLog.session(), nowMs(), bridgeState(), cellTexts(*decodeTable)});
    }
}

} // namespace outpost
