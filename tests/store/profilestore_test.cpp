// The profile and the frequency in use, and their files.

#include "base/datapaths.h"
#include "store/profilestore.h"
#include "tests/fixture/files.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace outpost
{

namespace
{

Profile profileAt(const QString &host)
{
    Profile profile;
    profile.kiwiHost = host;
    return profile;
}

} // namespace

class ProfileStoreTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        home = std::make_unique<QTemporaryDir>();
        store = std::make_unique<ProfileStore>(folder());
    }

    void theFirstStartMakesTheDefaultProfile()
    {
        store->loadStartupProfile();
        QCOMPARE(fileBytes(defaultProfilePath(folder())), profileJson(Profile()));
        QCOMPARE(store->profilePath(), defaultProfilePath(folder()));
        QVERIFY(!QFile::exists(frequencyFilePath(folder())));
    }

    void aStartReadsTheDefaultProfile()
    {
        put(defaultProfilePath(folder()), R"({"Port": 8074})");
        store->loadStartupProfile();
        QCOMPARE(store->profile().kiwiPort, 8074);
        QCOMPARE(fileBytes(defaultProfilePath(folder())), QByteArray(R"({"Port": 8074})"));
    }

    void aBrokenDefaultProfileIsIgnored()
    {
        put(defaultProfilePath(folder()), "{");
        store->loadStartupProfile();
        QCOMPARE(profileJson(store->profile()), profileJson(Profile()));
        QCOMPARE(fileBytes(defaultProfilePath(folder())), QByteArray("{"));
    }

    void anOpenedProfileIsUsed()
    {
        put(elsewhere(), R"({"Host": "kiwi"})");
        put(frequencyFilePath(folder()), " 7.074\n");
        QVERIFY(store->openProfile(elsewhere()).profile);
        QCOMPARE(store->profile().kiwiHost, QStringLiteral("kiwi"));
        QCOMPARE(store->profilePath(), elsewhere());
        QCOMPARE(store->frequencyMhz(), 7.074);
    }

    void aProfileThatCannotBeOpenedChangesNothing()
    {
        put(elsewhere(), "[]");
        put(frequencyFilePath(folder()), "7.074");
        const ProfileReading reading = store->openProfile(elsewhere());
        QVERIFY(!reading.profile);
        QVERIFY(reading.error.startsWith(QStringLiteral("The profile is not valid JSON: ")));
        QCOMPARE(profileJson(store->profile()), profileJson(Profile()));
        QCOMPARE(store->profilePath(), defaultProfilePath(folder()));
        QCOMPARE(store->frequencyMhz(), 14.074);
    }

    void aKeptProfileIsSavedThereWithTheFrequency()
    {
        store->setReceiver(QStringLiteral("kiwi"), 8074);
        QVERIFY(store->keepProfile(elsewhere()));
        QCOMPARE(fileBytes(elsewhere()), profileJson(store->profile()));
        QCOMPARE(store->profilePath(), elsewhere());
        QCOMPARE(fileBytes(frequencyFilePath(folder())), QByteArray("14.074000"));
    }

    void aProfileThatCannotBeKeptChangesNothing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("error");
        QTest::newRow("no folder") << QStringLiteral("file/profile.json")
                                   << QStringLiteral("Could not create the profile folder.");
        QTest::newRow("a folder") << QStringLiteral("place")
                                  << QStringLiteral("Filename refers to a directory");
    }

    void aProfileThatCannotBeKeptChangesNothing()
    {
        QFETCH(QString, name);
        put(home->filePath(QStringLiteral("file")), "");
        QVERIFY(QDir().mkpath(home->filePath(QStringLiteral("place"))));
        const SaveResult saved = store->keepProfile(home->filePath(name));
        QVERIFY(!saved);
        QTEST(saved.error, "error");
        QCOMPARE(store->profilePath(), defaultProfilePath(folder()));
        QVERIFY(!QFile::exists(frequencyFilePath(folder())));
    }

    // Never to the opened profile.
    void whatIsSavedQuietlyGoesToTheDefaultProfile()
    {
        put(elsewhere(), R"({"Host": "kiwi"})");
        store->openProfile(elsewhere());
        store->setJt9Path(QStringLiteral("/jt9"));
        store->setBridgePort(27778);
        store->saveDefaultProfileQuietly();
        QCOMPARE(fileBytes(elsewhere()), QByteArray(R"({"Host": "kiwi"})"));
        QCOMPARE(fileBytes(defaultProfilePath(folder())), profileJson(store->profile()));
        QCOMPARE(store->profile().jt9Path, QStringLiteral("/jt9"));
        QCOMPARE(store->profile().bridgePort, 27778);
    }

    void anotherProfileTakesThePlaceOfTheDefaultOne()
    {
        store->useProfile(elsewhere(), profileAt(QStringLiteral("kiwi")));
        QCOMPARE(store->profile().kiwiHost, QStringLiteral("kiwi"));
        QCOMPARE(store->profilePath(), elsewhere());
        QVERIFY(!QFile::exists(folder()));
    }

    void theFrequencyIsSavedAndRead()
    {
        store->setFrequency(10.1361234);
        store->saveFrequencyFile();
        QCOMPARE(fileBytes(frequencyFilePath(folder())), QByteArray("10.136123"));
        ProfileStore another(folder());
        another.loadFrequencyFile();
        QCOMPARE(another.frequencyMhz(), 10.136123);
    }

    void aFrequencyFileThatIsNoneKeepsTheFrequency_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("low") << QByteArray("0.0005");
        QTest::newRow("high") << QByteArray("3000.5");
        QTest::newRow("letters") << QByteArray("twenty");
        QTest::newRow("missing") << QByteArray();
    }

    void aFrequencyFileThatIsNoneKeepsTheFrequency()
    {
        QFETCH(QByteArray, content);
        if (!content.isNull()) {
            put(frequencyFilePath(folder()), content);
        }
        store->setFrequency(7.074);
        store->loadFrequencyFile();
        QCOMPARE(store->frequencyMhz(), 7.074);
    }

    void aGivenFrequencyStandsUntilOneIsSaved()
    {
        put(frequencyFilePath(folder()), "7.074");
        store->useFrequency(10.136);
        store->loadFrequencyFile();
        QCOMPARE(store->frequencyMhz(), 10.136);
        store->saveFrequencyFile();
        put(frequencyFilePath(folder()), "7.074");
        store->loadFrequencyFile();
        QCOMPARE(store->frequencyMhz(), 7.074);
    }

private:
    QString folder() const { return home->filePath(QStringLiteral("data")); }
    QString elsewhere() const { return home->filePath(QStringLiteral("mine/kiwi.json")); }

    static void put(const QString &path, const QByteArray &content)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }

    std::unique_ptr<QTemporaryDir> home;
    std::unique_ptr<ProfileStore> store;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ProfileStoreTest)
#include "profilestore_test.moc"
