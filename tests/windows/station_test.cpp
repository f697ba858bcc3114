// The station's window on Windows: its decoder, its registry keys, its files, its bridge.

#include "app/mainwindow.h"
#include "base/datapaths.h"
#include "decode/decoderchooser.h"
#include "decode/ft8decode.h"
#include "decode/jt9locator.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/windows/standindecoder.h"

#include <QApplication>
#include <QJsonDocument>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>

namespace outpost
{

namespace
{
QStringList settingsEntry(const char *menu, const char *name)
{
    return {QStringLiteral("Settings"), QString::fromLatin1(menu), QString::fromLatin1(name)};
}

// A value in the station's registry key, as the system sees it.
QString registryValue(const QString &key, const QString &name)
{
    QProcess reg;
    reg.start(QStringLiteral("reg"),
              {QStringLiteral("query"),
               QStringLiteral("HKCU\\") + qEnvironmentVariable("OUTPOST_TEST_REGISTRY_KEY") +
                   QStringLiteral("\\Software\\PELQ\\PELQ Kiwi Outpost\\") + key,
               QStringLiteral("/v"), name});
    reg.waitForFinished();
    return QString::fromLocal8Bit(reg.readAllStandardOutput()).simplified();
}
} // namespace

class StationTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        testHome().clear();
        decoder = std::make_unique<StandInDecoder>(QStringList(),
                                                   QStringLiteral("J\u00fcrgen/WSJT-X/bin"));
        port = freePort();
        testHome().writeProfile(
            {{QStringLiteral("Jt9Path"), decoder->path()}, {QStringLiteral("BridgePort"), port}});
    }

    void dataLieInTheRoamingFolder()
    {
        QStandardPaths::setTestModeEnabled(false);
        const QString roaming = QDir::fromNativeSeparators(qEnvironmentVariable("APPDATA"));
        const QString profilePath = defaultProfilePath();
        QStandardPaths::setTestModeEnabled(true);
        QCOMPARE(profilePath, roaming + QStringLiteral("/PELQ/KiwiOutpost/default-profile.json"));
    }

    void settingsLieInTheRegistry()
    {
        MainWindow window;
        choose(window, settingsEntry("Decoder", "3 Decode Passes (Deep)"));
        const QString depth = registryValue(QStringLiteral("decoder"), QStringLiteral("depth"));
        QVERIFY2(depth.endsWith(QStringLiteral("depth REG_DWORD 0x3")), qPrintable(depth));
    }

    void theSavedDecoderIsUsedAndKept()
    {
        const LogTrace trace;
        const QByteArray before = fileBytes(defaultProfilePath());
        MainWindow window;
        QTRY_VERIFY(trace.contains(QStringLiteral("JT9 decoder ready: ") + decoder->path()));
        QCOMPARE(QString::fromLocal8Bit(qgetenv("PELQ_JT9_PATH")), decoder->path());
        QCOMPARE(fileBytes(defaultProfilePath()), before);
    }

    void aFoundDecoderIsSavedUnderItsName()
    {
        testHome().writeProfile({{QStringLiteral("BridgePort"), port}});
        const LogTrace trace;
        MainWindow window;
        window.decoderChooser().findJt9({{QDir::toNativeSeparators(decoder->path())}, {}, {}});
        const QJsonObject saved = jsonFile(defaultProfilePath());
        QCOMPARE(saved.value(QLatin1String("Jt9Path")).toString(), decoder->path());
    }

    void localProgramsAttachToTheBridge()
    {
        const MainWindow window;
        QProcess client;
        client.start(QStringLiteral(BRIDGE_CLIENT), {QString::number(port), QStringLiteral("2")});
        QTRY_COMPARE_WITH_TIMEOUT(client.bytesAvailable(), qint64(18), 20000);
        const_cast<MainWindow &>(window).onDecodesDelivered(
            QStringLiteral("10:15:30"),
            parseDecodeLines({QStringLiteral("101530 -12  0.3 1234 ~  CQ K1ABC FN42")}));
        QTRY_COMPARE_WITH_TIMEOUT(client.state(), QProcess::NotRunning, 20000);
        QCOMPARE(client.readAllStandardOutput(),
                 QByteArray("PELQBRIDGE2|READY\n"
                            "PELQOUTPOST2|MTAxNTMwCS0xMgkwLjMJMTIzNAlDUSBLMUFCQyBGTjQy\n"));
        QTRY_VERIFY(summaryLine(window).contains(QStringLiteral("Bridge Disconnected")));
    }

    void aPortInUseIsNotShared()
    {
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::LocalHost, static_cast<quint16>(port)));
        const LogTrace trace;
        const MainWindow window;
        QVERIFY(
            trace.contains(QStringLiteral("Local WSJT bridge failed on 127.0.0.1:%1: ").arg(port)));
    }

    void theCaptureFolderLiesBesideTheProgramsFolder()
    {
        const QString program = QStringLiteral("C:/Users/J\u00fcrgen/AppData/Local/Programs/"
                                               "PELQ Kiwi Outpost/bin");
        QCOMPARE(captureFolder(program, QStringLiteral("C:/cache")),
                 program.chopped(3) + QStringLiteral("capture"));
    }

private:
    std::unique_ptr<StandInDecoder> decoder;
    int port = 0;
};

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StationTest)
#include "station_test.moc"
