// A station uses only the folders that it is given.

#include "decode/ft8decode.h"
#include "tests/fixture/teststation.h"

#include <QDir>
#include <QTableWidget>
#include <QTest>

namespace outpost
{

namespace
{
QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files, QDir::Name);
}
} // namespace

class StationOptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFileGoesWhereTheOptionsSay()
    {
        const QTemporaryDir own;
        const PuppetReceiver receiver;
        TestStation station(ScriptedDecoder::printing(0, {"101530 -12 0.3 1234 ~ CQ K1ABC FN42"}));
        station.window.reset();
        testHome().clear();
        station.options.dataFolder = own.filePath(QStringLiteral("data"));
        station.options.captureFolder = own.filePath(QStringLiteral("scratch"));
        station.options.settings = SettingsStore(own.filePath(QStringLiteral("station.ini")));
        putFile(own.filePath(QStringLiteral("data/default-profile.json")), profile(station));
        station.restart();
        choose(*station.window, {QStringLiteral("Settings"), QStringLiteral("Decoder"),
                                 QStringLiteral("3 Decode Passes (Deep)")});
        station.hearPeriod(receiver);
        QTRY_VERIFY(station.trace.contains(QStringLiteral("Good receiver recorded")));
        choose(*station.window,
               {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
        station.window.reset();

        QCOMPARE(filesIn(own.filePath(QStringLiteral("data"))),
                 QStringList({QStringLiteral("default-profile.json"),
                              QStringLiteral("good-kiwi-receivers.json"),
                              QStringLiteral("kiwi-frequency.txt"),
                              QStringLiteral("receiver-status-log.json")}));
        QVERIFY(QDir(own.filePath(QStringLiteral("scratch"))).exists());
        QCOMPARE(SettingsStore(own.filePath(QStringLiteral("station.ini")))
                     .open()
                     .value(QStringLiteral("decoder/depth"))
                     .toInt(),
                 3);
        QCOMPARE(filesIn(testHome().dataFile(QString())), QStringList());
        QCOMPARE(settingOnDisk(QStringLiteral("decoder/depth")),
                 QStringList{QStringLiteral("absent")});
    }

    void settingsOfTheGivenFileAreUsed()
    {
        const QTemporaryDir own;
        const QString ini = own.filePath(QStringLiteral("station.ini"));
        putFile(ini, "[highlight]\ncalls=K1ABC, W1XYZ\n");
        TestStation station;
        station.options.settings = SettingsStore(ini);
        station.restart();
        station.window->appendDecodes(
            QStringLiteral("14:23:15"),
            parseDecodeLines({QStringLiteral("142315 -12 0.3 1234 ~ CQ W1XYZ FN42")}));
        QCOMPARE(decodeTableOf(*station.window)->item(0, 4)->background(), QBrush(Qt::yellow));
    }

private:
    static QByteArray profile(const TestStation &station)
    {
        Profile profile;
        profile.jt9Path = station.decoder.path();
        profile.bridgePort = station.bridgePort;
        return profileJson(profile);
    }
};

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StationOptionsTest)
#include "stationoptions_test.moc"
