// A station without a window: how the parts are connected in a program that is linked only with
// outpost_station.

#include "app/receiversound.h"
#include "decode/kiwiaudiocapture.h"
#include "display/wsjtbridge.h"
#include "kiwi/kiwilink.h"
#include "kiwi/sounddecoder.h"
#include "sim/simwav.h"
#include "tests/display/bridgeclient.h"
#include "tests/fixture/freeport.h"
#include "tests/fixture/madeupclock.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/fixture/simulator.h"

#include <QtTest>

namespace outpost
{

namespace
{

struct Station {
    Station(int receiverPort, const QString &decoderPath, std::function<qint64()> clockToUse)
        : clock(std::move(clockToUse)), capture(captureCallbacks(), captureOptions(decoderPath)),
          bridge([this] { return bridgePort; }, {[](int /*corrected*/) {}, [] {}}, clock),
          link(
              [receiverPort] {
                  return KiwiTarget{QStringLiteral("127.0.0.1"), receiverPort, 14.074};
              },
              linkCallbacks(), linkOptions())
    {
        capture.setCaptureFolder(folder.path());
        bridge.start();
        link.connectKiwi();
    }
    ~Station()
    {
        bridge.stop();
        link.disconnectKiwi(false);
    }
    Q_DISABLE_COPY(Station)

    const std::function<qint64()> clock;
    const int bridgePort = freePort();
    QStringList table;
    QTemporaryDir folder;
    SoundDecoder sound;
    KiwiAudioCapture capture;
    WsjtBridge bridge;
    KiwiLink link; // last, since it calls the others back

private:
    CaptureCallbacks captureCallbacks()
    {
        CaptureCallbacks callbacks;
        callbacks.onWorkerDecodes = [this](const QString &label,
                                           const QVector<Ft8Decode> &decodes) {
            bridge.broadcast(label, decodes);
        };
        callbacks.onPeriodDecodes = [this](const QString &label,
                                           const QVector<Ft8Decode> &decodes) {
            for (const Ft8Decode &decode : decodes) {
                table.append(label + QStringLiteral(" | ") + decode.line);
            }
        };
        return callbacks;
    }
    static CaptureOptions captureOptions(const QString &decoderPath)
    {
        CaptureOptions options;
        options.decoderPath = [decoderPath] { return decoderPath; };
        return options;
    }
    KiwiLinkCallbacks linkCallbacks()
    {
        KiwiLinkCallbacks callbacks;
        callbacks.onSound = [this](const QByteArray &frame) {
            captureFrame(capture, sound, frame, link.state().currentEndpoint, clock());
        };
        callbacks.onDisconnected = [this] { capture.reset(); };
        return callbacks;
    }
    KiwiLinkOptions linkOptions() const
    {
        KiwiLinkOptions options;
        options.clock = clock;
        options.evidenceFolder = nullptr;
        return options;
    }
};

} // namespace

class WindowlessTest : public QObject
{
    Q_OBJECT

private slots:
    void itReceivesDecodesAndServesTheBridge();
    void itIsLinkedWithoutWidgetsAndGui();
};

// The first two workers hear the same signal where their sub-bands overlap.
void WindowlessTest::itReceivesDecodesAndServesTheBridge()
{
    const ScriptedDecoder decoder(
        "cp \"$8\" \"$here/$5.wav\"\n"
        "[ $5 -gt 725 ] || echo '142315 -12  0.3  790 ~  CQ K1ABC FN42'\n"
        "[ $5 -gt 0 ]   || echo '142315   3 -1.2  500 ~  K1ABC W9XYZ EN37'");
    MadeUpClock clock;
    const qint64 boundaryMs = MadeUpClock::boundaryMs();
    KiwiSim receiver;
    SimConfig config;
    config.nowMs = clock.reader();
    config.firstSoundDelayMs = 0;
    config.speed = 1000;
    config.realTimePeriods = 0;
    startSim(receiver, {}, config);

    clock.set(boundaryMs - 4000);
    Station station(receiver.port(), decoder.path(), clock.reader());
    const BridgeClient client(station.bridgePort);
    QVERIFY(client.waitForGreeting());
    QTRY_COMPARE(receiver.commands().size(), 7);
    // Stops the clock while frames are in transit, so that none sent before the boundary arrives
    // after it.
    clock.set(boundaryMs - 3900);
    QTRY_VERIFY(station.link.state().phase == LinkPhase::Connected);
    clock.set(boundaryMs - 400);
    QTRY_COMPARE(station.link.state().sndFrames, quint64{23}); // with 2048 samples each
    clock.set(boundaryMs + 20);

    QTRY_COMPARE(station.table,
                 (QStringList{QStringLiteral("14:23:15 | 142315   3 -1.2  500 ~  K1ABC W9XYZ EN37"),
                              QStringLiteral("14:23:15 | 142315 -12  0.3  790 ~  CQ K1ABC FN42")}));
    QTRY_COMPARE(client.heard, BridgeClient::readyLine() +
                                   decodeLine({"142315", "-12", "0.3", "790", "CQ K1ABC FN42"}) +
                                   decodeLine({"142315", "3", "-1.2", "500", "K1ABC W9XYZ EN37"}));
    const QByteArray sent = sim::toLittleEndian(receiver.periods().first().samples);
    for (const char *band : {"0.wav", "725.wav", "1450.wav", "2175.wav"}) {
        constexpr int wavHeaderBytes = 44;
        QVERIFY2(decoder.readLeft(QLatin1String(band)).mid(wavHeaderBytes) == sent, band);
    }
}

void WindowlessTest::itIsLinkedWithoutWidgetsAndGui()
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    QVERIFY(maps.open(QIODevice::ReadOnly));
    const QByteArray libraries = maps.readAll();
    QVERIFY(libraries.contains("/libQt5WebSockets.so"));
    for (const char *library : {"/libQt5Gui.so", "/libQt5Widgets.so"}) {
        QVERIFY2(!libraries.contains(library), library);
    }
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::WindowlessTest)
#include "windowless_test.moc"
