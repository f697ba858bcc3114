// Connects the receiver link with the capture, the session log and the status shown.

#include "app/mainwindow.h"
#include "app/receiversound.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/kiwilink.h"

namespace outpost
{

void MainWindow::buildLink()
{
    const auto target = [this] {
        const Profile &profile = profiles.profile();
        return KiwiTarget{profile.kiwiHost, profile.kiwiPort, profiles.frequencyMhz()};
    };
    KiwiLinkCallbacks callbacks;
    callbacks.onStatus = [this](const QString &text) { setKiwiStatus(text); };
    callbacks.onSoundFrame = [this] { startStatusSession(); };
    callbacks.onSound = [this](const QByteArray &frame) { takeSound(frame); };
    callbacks.onStreamEnded = [this] { finishStatusSession(); };
    callbacks.onDisconnected = [this] { capture->reset(); };
    KiwiLinkOptions linkOptions;
    linkOptions.clock = options.clock;
    linkOptions.timeouts = options.linkTimeouts;
    link = new KiwiLink(target, callbacks, linkOptions, this);
}

void MainWindow::connectKiwi()
{
    link->connectKiwi();
}

QString MainWindow::kiwiStatusText() const
{
    return link->kiwiStatusText();
}

// The title keeps the last outcome; nothing resets it.
void MainWindow::takeSound(const QByteArray &frame)
{
    const SoundOutcome outcome =
        captureFrame(*capture, soundDecoder, frame, link->state().currentEndpoint, options.clock());
    if (!outcome.attempted) {
        return;
    }
    setWindowTitle(outcome.succeeded ? QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)")
                                     : QStringLiteral("PELQ Kiwi Outpost (ADPCM WAV Failed)"));
}

} // namespace outpost
