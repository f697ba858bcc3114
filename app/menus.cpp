// The menu bar. No entry has a shortcut, an icon or a tool tip.

#include "app/mainwindow.h"
#include "decode/kiwiaudiocapture.h"

#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

namespace outpost
{

void MainWindow::buildMenus()
{
    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    addEntry(file, QStringLiteral("Open Profile..."), [this] { openProfile(); });
    addEntry(file, QStringLiteral("Save Profile"), [this] { saveCurrentProfile(); });
    addEntry(file, QStringLiteral("Save Profile As..."), [this] { saveProfileAs(); });
    file->addSeparator();
    addEntry(file, QStringLiteral("Exit"), [this] { close(); });

    QMenu *settings = menuBar()->addMenu(QStringLiteral("&Settings"));
    addEntry(settings, QStringLiteral("Kiwi Receiver..."), [this] { showReceiverDialog(); });
    addEntry(settings, QStringLiteral("Disconnect Receiver"), [this] { disconnectKiwi(true); });
    settings->addSeparator();
    addEntry(settings, QStringLiteral("Highlight Calls..."), [this] { editHighlightCalls(); });
    buildDecodeMenu(settings);
    buildDecoderMenu(settings);
    buildBridgeMenu(settings);
    buildViewMenu(settings);

    QMenu *help = menuBar()->addMenu(QStringLiteral("&Help"));
    addEntry(help, QStringLiteral("Help / About PELQ Kiwi Outpost"), [this] { showHelpAbout(); });
}

QAction *MainWindow::addEntry(QMenu *menu, const QString &text, std::function<void()> onChoice)
{
    QAction *entry = menu->addAction(text);
    connect(entry, &QAction::triggered, this, [chosen = std::move(onChoice)] { chosen(); });
    return entry;
}

// These entries are shown and do nothing: decoding runs by itself while audio arrives.
void MainWindow::buildDecodeMenu(QMenu *settings)
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
        connect(entry, &QAction::triggered, this, [entry] { const QString inert = entry->text(); });
    }
}

void MainWindow::buildDecoderMenu(QMenu *settings)
{
    QMenu *menu = settings->addMenu(QStringLiteral("Decoder"));
    auto *depths = new QActionGroup(this);
    depths->setExclusive(true);
    const int stored = storedDecodeDepth(options.settings.open());
    const QStringList texts = {QStringLiteral("1 Decode Pass (Fastest)"),
                               QStringLiteral("2 Decode Passes (Recommended)"),
                               QStringLiteral("3 Decode Passes (Deep)")};
    for (int depth = 1; depth <= texts.size(); ++depth) {
        QAction *entry = menu->addAction(texts.at(depth - 1));
        entry->setCheckable(true);
        entry->setData(depth);
        entry->setChecked(depth == stored);
        depths->addAction(entry);
    }
    connect(depths, &QActionGroup::triggered, this,
            [this](QAction *entry) { chooseDecodeDepth(entry->data().toInt()); });
    addEntry(menu, QStringLiteral("Select Installed jt9.exe..."), [this] { selectJt9(); });
}

// Used by the decoder from its next run on.
void MainWindow::chooseDecodeDepth(int depth)
{
    if (depth < 1 || depth > 3) {
        return;
    }
    if (capture) {
        capture->setDecodeDepth(depth);
    }
    options.settings.save(QStringLiteral("decoder/depth"), depth);
}

void MainWindow::buildBridgeMenu(QMenu *settings)
{
    QMenu *menu = settings->addMenu(QStringLiteral("Bridge"));
    addEntry(menu, QStringLiteral("Start Local WSJT Bridge"), [this] { startBridgeFromMenu(); });
    addEntry(menu, QStringLiteral("Stop Local WSJT Bridge"), [this] { stopBridgeFromMenu(); });
    addEntry(menu, QStringLiteral("Test WSJT Attachment"), [this] { showBridgeAttachment(); });
}

void MainWindow::buildViewMenu(QMenu *settings)
{
    QMenu *menu = settings->addMenu(QStringLiteral("View"));
    addEntry(menu, QStringLiteral("Status Log"), [this] { showStatusLogWindow(); });
    addEntry(menu, QStringLiteral("Station Display"), [this] { showStationDisplay(); });
    addEntry(menu, QStringLiteral("Bridge Status"), [this] { showBridgeStatusDialog(); });
}

} // namespace outpost
