#pragma once

#include <functional>

class QMainWindow;
class QMenuBar;

namespace outpost
{

// The actions of the menu entries.
struct MenuChoices {
    using Choice = std::function<void()>;

    Choice openProfile;
    Choice saveProfile;
    Choice saveProfileAs;
    Choice showReceiverDialog;
    Choice disconnectReceiver;
    Choice editHighlightCalls;
    std::function<void(int depth)> chooseDecodeDepth; // 1..3
    Choice selectJt9;
    Choice startBridge;
    Choice stopBridge;
    Choice showBridgeAttachment;
    Choice showStatusLog;
    Choice showStationDisplay;
    Choice showBridgeStatus;
    Choice showHelp;
};

// Fills the window's menu bar. No entry has a shortcut, an icon or a tool tip. `decodeDepth` is
// checked initially.
void buildMenus(QMainWindow *window, const MenuChoices &choices, int decodeDepth);

// In the right corner of the bar, which must have its menus.
void addClearButton(QMenuBar *bar, const MenuChoices::Choice &clear);

} // namespace outpost
