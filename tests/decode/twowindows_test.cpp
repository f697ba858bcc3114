// Two windows side by side, each with its own profile, receiver and bridge port. They share the
// program's folder, the data and the decoder.

#include "base/datapaths.h"
#include "tests/display/bridgeclient.h"
#include "tests/fixture/aftermath.h"
#include "tests/fixture/teststation.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

namespace outpost
{

namespace
{
constexpr int periods = 3;

// Ends only when the same worker of the other window has started; the run of silence also waits for
// the run of noise.
const QByteArray decoderScript = R"(
marks=$(dirname "$0")/../$(basename "$PWD")
if tail -c 1000 "$8" | tr -d '\000' | grep -q .; then own=noise; other=silence
else own=silence; other=noise; fi
touch "$marks.$own"
while [ ! -e "$marks.$other" ]; do sleep 0.02; done
time=$(basename "$PWD" | cut -d_ -f3)
[ $own = noise ] || while [ ! -e "$marks.ended" ]; do sleep 0.02; done
[ $5 = 0 ] && echo "$time -12 0.3 1234 ~ CQ K1ABC $own"
[ $own = silence ] || touch "$marks.ended"
exit 0)";

struct Outpost {
    explicit Outpost(const QString &decoder)
    {
        testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("127.0.0.1")},
                                 {QStringLiteral("Jt9Path"), decoder},
                                 {QStringLiteral("BridgePort"), bridgePort}});
        window = std::make_unique<MainWindow>(testOptions(clock.reader()));
        window->show();
        client = std::make_unique<BridgeClient>(bridgePort);
        QVERIFY(client->waitForGreeting());
    }

    void connectToReceiver()
    {
        inReceiverDialog(*window,
                         [this](ReceiverHands hands) { hands.connectTo(receiver.port()); });
        QTRY_COMPARE(receiver.paths().size(), 1);
        receiver.sendBinary(adpcmFrame(QByteArray(1024, '\0')));
        QTRY_VERIFY(summaryLine(*window).startsWith(QLatin1String("Kiwi Connected")));
        clock.set(MadeUpClock::boundaryMs());
    }

    void hear(char sound) const
    {
        for (int period = 0; period < periods; ++period) {
            receiver.sendBinary(adpcmFrame(QByteArray(90000, sound)));
        }
    }

    QStringList messages() const
    {
        QStringList texts;
        for (const QStringList &row : allRows(*decodeTableOf(*window))) {
            texts.append(row.first() + QLatin1Char(' ') + row.last());
        }
        return texts;
    }

    int bridgePort = freePort();
    PuppetReceiver receiver;
    MadeUpClock clock;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<BridgeClient> client;
};

QStringList expectedMessages(const QString &word)
{
    QStringList texts;
    for (const char *label : {"14:23:15", "14:23:30", "14:23:45"}) {
        texts.append(QStringLiteral("%1 CQ K1ABC %2").arg(QLatin1String(label), word));
    }
    return texts;
}

QByteArray expectedBridgeText(const QByteArray &word)
{
    QByteArray text = BridgeClient::readyLine();
    for (const char *time : {"142315", "142330", "142345"}) {
        text += decodeLine({time, "-12", "0.3", "1234", "CQ K1ABC " + word});
    }
    return text;
}

QDir besideTheCapture()
{
    return QFileInfo(testHome().captureFolder()).dir();
}

QMap<int, int> decodesBySession()
{
    QMap<int, int> decodes;
    const QJsonArray sessions =
        jsonFile(statusLogPath()).value(QStringLiteral("Sessions")).toArray();
    for (const QJsonValue session : sessions) {
        decodes.insert(session.toObject().value(QStringLiteral("Port")).toInt(),
                       session.toObject().value(QStringLiteral("Decodes")).toInt());
    }
    return decodes;
}
} // namespace

class TwoWindowsTest : public QObject
{
    Q_OBJECT

private slots:
    void loseNothingSideBySide()
    {
        const ScriptedDecoder decoder(decoderScript);
        testHome().clear();
        Outpost noisy(decoder.path());
        Outpost silent(decoder.path());
        QVERIFY(!lies("capture.lock"));
        noisy.connectToReceiver();
        QVERIFY(lies("capture.lock"));
        QVERIFY(!lies("capture-2.lock"));
        silent.connectToReceiver();
        QVERIFY(lies("capture-2.lock"));
        noisy.hear('\x77');
        silent.hear('\0');

        const auto complete = [](const Outpost &outpost) {
            return outpost.messages().size() == periods;
        };
        QTRY_VERIFY_WITH_TIMEOUT(complete(noisy) && complete(silent), 60000);
        QCOMPARE(noisy.messages(), expectedMessages(QStringLiteral("noise")));
        QCOMPARE(silent.messages(), expectedMessages(QStringLiteral("silence")));
        QTRY_COMPARE(noisy.client->heard, expectedBridgeText("noise"));
        QTRY_COMPARE(silent.client->heard, expectedBridgeText("silence"));

        const QJsonArray list = QJsonDocument::fromJson(fileBytes(goodReceiversPath())).array();
        QCOMPARE(list.size(), 2);
        noisy.window.reset();
        silent.window.reset();
        const QMap<int, int> decodes = decodesBySession();
        QCOMPARE(decodes, (QMap<int, int>{{noisy.receiver.port(), periods},
                                          {silent.receiver.port(), periods}}));
        QVERIFY(!lies("capture.lock"));
        QVERIFY(!lies("capture-2.lock"));
        QVERIFY(besideTheCapture().rmdir(QStringLiteral("capture-2"))); // it is empty
        QCOMPARE(captureLeftovers(), QStringList());
    }

private:
    static bool lies(const char *name) { return besideTheCapture().exists(QLatin1String(name)); }
};

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::TwoWindowsTest)
#include "twowindows_test.moc"
