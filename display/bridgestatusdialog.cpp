#include "display/bridgestatusdialog.h"

#include "base/dialogs.h"
#include "display/bridgetexts.h"

#include <QLabel>
#include <QVBoxLayout>
#include <utility>

namespace outpost
{

BridgeStatusDialog::BridgeStatusDialog(QWidget *parent, std::function<void()> onRefreshDue)
    : LiveDialog(parent, QStringLiteral("PELQ Kiwi Outpost Bridge Status"), 1000,
                 std::move(onRefreshDue)),
      text(addText())
{
    contents()->setSizeConstraint(QLayout::SetFixedSize);
    addCloseBox();
}

void BridgeStatusDialog::refresh(const BridgeState &bridge)
{
    text->setText(bridgeStatusText(bridge));
    adjustSize();
}

void showBridgeAttachment(QWidget *parent, const BridgeState &bridge)
{
    showInformation(parent, QStringLiteral("WSJT Bridge Status"), bridgeAttachmentText(bridge));
}

} // namespace outpost
