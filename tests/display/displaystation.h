#pragma once

#include "app/mainwindow.h"
#include "base/settings.h"
#include "jt9lines.h"
#include "tests/fixture/home.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/fixture/testoptions.h"

#include <QJsonObject>

namespace outpost
{

// A visible window with a new home. Its clock stands still until the test moves it, its bridge
// listens on a free port, and its decoder finds nothing.
class DisplayStation
{
public:
    explicit DisplayStation(const QStringList &storedHighlightCalls = {})
    {
        testHome().clear();
        testHome().writeProfile(profile(bridgePort));
        QSettings settings = stationSettings();
        settings.clear();
        settings.setValue(QStringLiteral("highlight/calls"), storedHighlightCalls);
        settings.sync();
        window = std::make_unique<MainWindow>(testOptions(clock()));
        window->show();
    }

    MainWindow *operator->() const { return window.get(); }
    MainWindow &operator*() const { return *window; }
    std::function<qint64()> clock()
    {
        return [this] { return nowMs += tickMs; };
    }
    QJsonObject profile(int port) const
    {
        return {{QStringLiteral("Host"), QStringLiteral("receiver.test")},
                {QStringLiteral("Port"), 8073},
                {QStringLiteral("Jt9Path"), decoder.path()},
                {QStringLiteral("BridgePort"), port}};
    }

    int bridgePort = freePort();
    qint64 nowMs = 1769768144000; // 10:15:44 UTC on 30 January 2026
    qint64 tickMs = 0;            // advances the clock at each reading
    std::unique_ptr<MainWindow> window;

private:
    ScriptedDecoder decoder{"exit 0"};
};

} // namespace outpost
