#include "app/menus.h"

#include <QActionGroup>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

namespace outpost
{

namespace
{
void addEntry(QMenu *menu, const QString &text, const MenuChoices::Choice &choice)
{
    QAction *entry = menu->addAction(text);
    QObject::connect(entry, &QAction::triggered, menu, [choice] { choice(); });
}

void addFileMenu(QMainWindow *window, const MenuChoices &choices)
{
    QMenu *menu = window->menuBar()->addMenu(QStringLiteral("&File"));
    addEntry(menu, QStringLiteral("Open Profile..."), choices.openProfile);
    addEntry(menu, QStringLiteral("Save Profile"), choices.saveProfile);
    addEntry(menu, QStringLiteral("Save Profile As..."), choices.saveProfileAs);
    menu->addSeparator();
    addEntry(menu, QStringLiteral("Exit"), [window] { window->close(); });
}

// These entries have no effect: decoding runs automatically while audio arrives.
void addDecodeMenu(QMenu *settings)
{
    QMenu *menu = settings->addMenu(QStringLiteral("Decode"));
    const QStringList entries = {QStringLiteral("Start Decode Monitor"),
                                 QStringLiteral("Stop Decode Monitor"),
                                 QStringLiteral("Test jt9.exe"),
                                 QStringLiteral("Run Live FT8 Slot Decode"),
                                 QStringLiteral("Stop Automatic FT8 Decode"),
                                 QStringLiteral("Start SND Capture"),
                                 QStringLiteral("Stop / Save SND Capture")};
    for (const QString &text : entries) {
        QAction *entry = menu->addAction(text);
        QObject::connect(entry, &QAction::triggered, menu,
                         [entry] { const QString inert = entry->text(); });
    }
}

void addDecoderMenu(QMainWindow *window, QMenu *settings, const MenuChoices &choices,
                    int decodeDepth)
{
    QMenu *menu = settings->addMenu(QStringLiteral("Decoder"));
    auto *depths = new QActionGroup(window);
    depths->setExclusive(true);
    const QStringList texts = {QStringLiteral("1 Decode Pass (Fastest)"),
                               QStringLiteral("2 Decode Passes (Recommended)"),
                               QStringLiteral("3 Decode Passes (Deep)")};
    for (int depth = 1; depth <= texts.size(); ++depth) {
        QAction *entry = menu->addAction(texts.at(depth - 1));
        entry->setCheckable(true);
        entry->setData(depth);
        entry->setChecked(depth == decodeDepth);
        depths->addAction(entry);
    }
    const auto choose = choices.chooseDecodeDepth;
    QObject::connect(depths, &QActionGroup::triggered, depths,
                     [choose](QAction *entry) { choose(entry->data().toInt()); });
    addEntry(menu, QStringLiteral("Select Installed jt9.exe..."), choices.selectJt9);
}

void addBridgeMenu(QMenu *settings, const MenuChoices &choices)
{
    QMenu *menu = settings->addMenu(QStringLiteral("Bridge"));
    addEntry(menu, QStringLiteral("Start Local WSJT Bridge"), choices.startBridge);
    addEntry(menu, QStringLiteral("Stop Local WSJT Bridge"), choices.stopBridge);
    addEntry(menu, QStringLiteral("Test WSJT Attachment"), choices.showBridgeAttachment);
}

void addViewMenu(QMenu *settings, const MenuChoices &choices)
{
    QMenu *menu = settings->addMenu(QStringLiteral("View"));
    addEntry(menu, QStringLiteral("Status Log"), choices.showStatusLog);
    addEntry(menu, QStringLiteral("Station Display"), choices.showStationDisplay);
    addEntry(menu, QStringLiteral("Bridge Status"), choices.showBridgeStatus);
}
} // namespace

void buildMenus(QMainWindow *window, const MenuChoices &choices, int decodeDepth)
{
    addFileMenu(window, choices);
    QMenu *settings = window->menuBar()->addMenu(QStringLiteral("&Settings"));
    addEntry(settings, QStringLiteral("Kiwi Receiver..."), choices.showReceiverDialog);
    addEntry(settings, QStringLiteral("Disconnect Receiver"), choices.disconnectReceiver);
    settings->addSeparator();
    addEntry(settings, QStringLiteral("Highlight Calls..."), choices.editHighlightCalls);
    addDecodeMenu(settings);
    addDecoderMenu(window, settings, choices, decodeDepth);
    addBridgeMenu(settings, choices);
    addViewMenu(settings, choices);
    QMenu *help = window->menuBar()->addMenu(QStringLiteral("&Help"));
    addEntry(help, QStringLiteral("Help / About PELQ Kiwi Outpost"), choices.showHelp);
}

void addClearButton(QMenuBar *bar, const MenuChoices::Choice &clear)
{
    auto *button = new QPushButton(QStringLiteral("Clear"), bar);
    button->setToolTip(QStringLiteral("Clear the displayed decode list"));
    button->setFocusPolicy(Qt::NoFocus);
    button->setMinimumWidth(52);
    button->setFixedHeight(qMax(20, bar->sizeHint().height() - 2));
    QObject::connect(button, &QPushButton::clicked, bar, [clear] { clear(); });
    bar->setCornerWidget(button, Qt::TopRightCorner);
}

} // namespace outpost
