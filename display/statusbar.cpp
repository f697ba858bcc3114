#include "app/mainwindow.h"
#include "display/stationtexts.h"

#include <QLabel>

namespace outpost
{

void MainWindow::refreshStatusBar()
{
    if (!statusSummaryLabel) {
        return;
    }
    const QString text =
        statusSummaryText(link.sndVerified, bridgeClients.size(), statusSession.sessionDecodes);
    if (statusSummaryLabel->text() != text) {
        statusSummaryLabel->setText(text);
    }
}

} // namespace outpost
