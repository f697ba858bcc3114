// Starting with options: what the window then uses, and what it leaves unchanged.

#include "base/settings.h"
#include "decode/decoderchooser.h"
#include "decode/jt9locator.h"
#include "tests/fixture/receiverform.h"
#include "tests/fixture/teststation.h"

#include <QFileInfo>
#include <QLineEdit>
#include <QTest>

namespace outpost
{

namespace
{
const QString saved = QStringLiteral("default-profile.json");
const QString savedFrequency = QStringLiteral("kiwi-frequency.txt");

bool hasDataFile(const QString &name)
{
    return QFileInfo::exists(testHome().dataFile(name));
}
} // namespace

class StartOptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        testHome().clear();
        clock = std::make_unique<MadeUpClock>();
        trace = std::make_unique<LogTrace>();
    }

    void cleanup()
    {
        window.reset();
        trace.reset();
    }

    void aProfileStandsInForTheDefaultOne()
    {
        start(withProfile());
        QTRY_VERIFY(trace->contains(QStringLiteral("JT9 decoder ready: ") + decoder.path()));
        QVERIFY2(!hasDataFile(saved), "the default profile is not made");
        QVERIFY(trace->contains(
            QStringLiteral("Local WSJT bridge listening on 127.0.0.1:%1.").arg(bridgePort)));
        QCOMPARE(enteredHost(), QStringLiteral("receiver.example"));
    }

    void aProfileStandsInAlsoWhereThereIsADefaultOne()
    {
        testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("another.example")}});
        const QByteArray before = fileBytes(testHome().dataFile(saved));
        start(withProfile());
        QTRY_VERIFY(trace->contains(QStringLiteral("JT9 decoder ready")));
        QCOMPARE(enteredHost(), QStringLiteral("receiver.example"));
        QCOMPARE(fileBytes(testHome().dataFile(saved)), before);
    }

    void aDecoderThatIsFoundIsUsedAndNotSaved()
    {
        StartOptions options = withProfile();
        options.profile->profile.jt9Path.clear();
        start(options);
        window->decoderChooser().findJt9({{decoder.path()}, {}, {}});
        QVERIFY(trace->contains(QStringLiteral("JT9 decoder ready: ") + decoder.path()));
        QCOMPARE(qgetenv("PELQ_JT9_PATH"), QFile::encodeName(decoder.path()));
        QVERIFY(!hasDataFile(saved));
    }

    void applySavesInTheDefaultProfileAndNotInTheOpenedOne()
    {
        start(withProfile());
        const QByteArray opened = fileBytes(profileFile());
        inReceiverDialog(*window, [](ReceiverHands hands) {
            hands.enter(QStringLiteral("127.0.0.1"), freePort(), QStringLiteral("10.136"));
            hands.apply();
        });
        QCOMPARE(jsonFile(testHome().dataFile(saved)).value(QLatin1String("Host")).toString(),
                 QStringLiteral("127.0.0.1"));
        QCOMPARE(fileBytes(testHome().dataFile(savedFrequency)), QByteArray("10.136000"));
        QCOMPARE(fileBytes(profileFile()), opened);
    }

    void saveProfileSavesInTheOpenedOne()
    {
        start(withProfile());
        choose(*window, {QStringLiteral("File"), QStringLiteral("Save Profile")});
        QCOMPARE(jsonFile(profileFile()).value(QLatin1String("Host")).toString(),
                 QStringLiteral("receiver.example"));
        QVERIFY(!hasDataFile(saved));
    }

    void aFrequencyStandsInForTheSavedOneUntilAnotherIsSaved()
    {
        putFile(testHome().dataFile(savedFrequency), "14.074000");
        start(withFrequency(7.074));
        QCOMPARE(enteredFrequency(), QStringLiteral("7.074000"));
        QCOMPARE(enteredFrequency(), QStringLiteral("7.074000")); // opened a second time
        QCOMPARE(fileBytes(testHome().dataFile(savedFrequency)), QByteArray("14.074000"));

        inReceiverDialog(*window, [](ReceiverHands hands) {
            hands.enter(QStringLiteral("127.0.0.1"), freePort(), QStringLiteral("10.136"));
            hands.apply();
        });
        QCOMPARE(fileBytes(testHome().dataFile(savedFrequency)), QByteArray("10.136000"));
        putFile(testHome().dataFile(savedFrequency), "18.100000"); // another copy's
        QCOMPARE(enteredFrequency(), QStringLiteral("18.100000"));
    }

    void connectsOnceTheEventLoopRuns()
    {
        StartOptions options = withProfile();
        options.profile->profile.kiwiHost = QStringLiteral("  127.0.0.1 ");
        options.profile->profile.kiwiPort = freePort();
        options.frequencyMhz = 7.074;
        options.connects = true;
        const QStringList removed{
            QStringLiteral("127.0.0.1:%1").arg(options.profile->profile.kiwiPort)};
        saveSetting(QStringLiteral("receivers/removedKeys"), removed);
        start(options);
        const QString requested =
            QStringLiteral("Native Kiwi connection requested: 127.0.0.1:%1, 7.074000 MHz.")
                .arg(options.profile->profile.kiwiPort);
        QVERIFY(!trace->contains(requested));
        QTRY_VERIFY(trace->contains(requested));
        QVERIFY(trace->lines().indexOf(requested) >
                trace->lines().indexOf(QStringLiteral("JT9 decoder ready: ") + decoder.path()));
        QVERIFY(!hasDataFile(saved));
        QVERIFY(!hasDataFile(savedFrequency));
        QCOMPARE(stationSettings().value(QStringLiteral("receivers/removedKeys")).toStringList(),
                 removed);
    }

    void aValueThatCannotBeUsedIsLoggedAndNothingIsConnected_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<int>("port");
        QTest::addColumn<QString>("refusal");
        const QString host = QStringLiteral("127.0.0.1");
        QTest::newRow("host") << QStringLiteral(" ") << 0
                              << QStringLiteral("Receiver host is required.");
        QTest::newRow("port 0") << host << 0 << QStringLiteral("Port must be 1 through 65535.");
        QTest::newRow("port 70000")
            << host << 70000 << QStringLiteral("Port must be 1 through 65535.");
    }

    void aValueThatCannotBeUsedIsLoggedAndNothingIsConnected()
    {
        QFETCH(QString, host);
        QFETCH(int, port);
        QFETCH(QString, refusal);
        StartOptions options = withProfile();
        options.profile->profile.kiwiHost = host;
        options.profile->profile.kiwiPort = port;
        options.connects = true;
        start(options);
        QTRY_VERIFY(trace->lines().contains(refusal));
        QCOMPARE(window->kiwiStatusText(), QStringLiteral("Disconnected"));
        QVERIFY(!trace->contains(QStringLiteral("Native Kiwi connection requested")));
    }

    void withoutTheOptionNothingIsConnected()
    {
        start(withProfile());
        QTRY_VERIFY(trace->contains(QStringLiteral("JT9 decoder ready")));
        QCoreApplication::processEvents();
        QCOMPARE(window->kiwiStatusText(), QStringLiteral("Disconnected"));
        QVERIFY(!trace->contains(QStringLiteral("Native Kiwi connection requested")));
    }

private:
    QString profileFile() const { return testHome().path(QStringLiteral("shack.json")); }

    StartOptions withProfile() const
    {
        Profile profile;
        profile.kiwiHost = QStringLiteral("receiver.example");
        profile.jt9Path = decoder.path();
        profile.bridgePort = bridgePort;
        putFile(profileFile(), profileJson(profile));
        StartOptions options;
        options.profile = OpenedProfile{profileFile(), profile};
        return options;
    }

    StartOptions withFrequency(double mhz) const
    {
        StartOptions options = withProfile();
        options.frequencyMhz = mhz;
        return options;
    }

    void start(const StartOptions &options)
    {
        StationOptions made = testOptions(clock->reader());
        made.start = options;
        window = std::make_unique<MainWindow>(made);
        window->show();
    }

    // The host in the Kiwi Receiver dialog.
    QString enteredHost() const
    {
        QString text;
        inReceiverDialog(*window, [&](const ReceiverForm &form) { text = form.host->text(); });
        return text;
    }

    QString enteredFrequency() const
    {
        QString text;
        inReceiverDialog(*window, [&](const ReceiverForm &form) { text = form.mhz->text(); });
        return text;
    }

    const int bridgePort = freePort();
    ScriptedDecoder decoder{"exit 0"};
    std::unique_ptr<MadeUpClock> clock;
    std::unique_ptr<LogTrace> trace;
    std::unique_ptr<MainWindow> window;
};

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StartOptionsTest)
#include "startoptions_test.moc"
