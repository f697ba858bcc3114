#pragma once

#include "base/livedialog.h"

namespace outpost
{

struct BridgeState;

// Shows the bridge's status in two lines, refreshed every second.
class BridgeStatusDialog : public LiveDialog
{
public:
    BridgeStatusDialog(QWidget *parent, std::function<void()> onRefreshDue);

    void refresh(const BridgeState &bridge);

private:
    QLabel *const text;
};

// Shows the message box of "Test WSJT Attachment".
void showBridgeAttachment(QWidget *parent, const BridgeState &bridge);

} // namespace outpost
