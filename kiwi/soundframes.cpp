// What arrives in binary frames: counted, and audio handed to the capture.

#include "app/mainwindow.h"
#include "base/logline.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/kiwicommands.h"
#include "kiwi/receivernotices.h"
#include "kiwi/sndevidence.h"
#include "kiwi/sndframe.h"

#include <QTimer>
#include <QWebSocket>

namespace outpost
{

void MainWindow::onBinaryFrame(QWebSocket *socket, const QByteArray &frame)
{
    if (socket != kiwiSocket) {
        return;
    }
    link.rxFrames += 1;
    link.rxBytes += static_cast<quint64>(frame.size());
    link.lastFrameSize = frame.size();
    if (isSndFrame(frame)) {
        takeSoundFrame(socket, frame);
    } else {
        link.otherBinaryFrames += 1;
    }
    if (frameIsLogged(link.rxFrames)) {
        logLine(QStringLiteral("RX binary frame %1: size=%2, ascii=%3")
                    .arg(QString::number(link.rxFrames), QString::number(frame.size()),
                         frameHead(frame)));
    }
    logReceiverNotices(frame);
    setKiwiStatus(QString());
}

void MainWindow::logReceiverNotices(const QByteArray &frame)
{
    const QStringList notices = receiverNotices(frame);
    for (const QString &notice : notices) {
        if (recentNotices.tell(notice, nowMs())) {
            logLine(QStringLiteral("Receiver says: %1").arg(notice));
        }
    }
}

void MainWindow::takeSoundFrame(QWebSocket *socket, const QByteArray &frame)
{
    startStatusSession();
    link.sndFrames += 1;
    sendKeepaliveWhenDue(socket);
    if (capture && frame.size() >= sndHeaderBytes) {
        showSoundOutcome(capture->takeFrame(frame, link.currentEndpoint, nowMs()));
    }
    if (!link.sndVerified) {
        link.sndVerified = true;
        probeTimer->stop();
        logLine(QStringLiteral("REAL KIWI SND DATA VERIFIED at %1.").arg(link.currentEndpoint));
    }
    if (evidenceIsDue(link.sndFrames)) {
        writeEvidence();
    }
}

void MainWindow::sendKeepaliveWhenDue(QWebSocket *socket)
{
    const qint64 now = nowMs();
    if (!keepaliveIsDue(link.lastKeepaliveMs, now)) {
        return;
    }
    socket->sendTextMessage(kiwiKeepalive());
    link.lastKeepaliveMs = now;
}

// The title keeps the last outcome; nothing sets it back.
void MainWindow::showSoundOutcome(const SoundOutcome &outcome)
{
    if (!outcome.attempted) {
        return;
    }
    setWindowTitle(outcome.succeeded ? QStringLiteral("PELQ Kiwi Outpost (FT8 Decode Complete)")
                                     : QStringLiteral("PELQ Kiwi Outpost (ADPCM WAV Failed)"));
}

} // namespace outpost
