#include "store/profile.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace outpost
{

class ProfileTest : public QObject
{
    Q_OBJECT

private slots:
    void startsWithTheDefaults();
    void formsTheProxyHostFromTheSerial();
    void writesSixKeysSortedAndIndented();
    void writesTextAsUtf8();
    void readsBackWhatItWrote();
    void aMissingKeyKeepsItsField();
    void aWrongTypeKeepsItsField_data();
    void aWrongTypeKeepsItsField();
    void takesPortsAsTheyStand_data();
    void takesPortsAsTheyStand();
    void ignoresUnknownKeys();
    void refusesWhatIsNotAnObject_data();
    void refusesWhatIsNotAnObject();
};

namespace
{

Profile changedProfile()
{
    Profile profile;
    profile.serial = QStringLiteral("12345");
    profile.kiwiHost = QStringLiteral("Kiwi.Example");
    profile.kiwiPort = 8074;
    profile.useProxy = false;
    profile.jt9Path = QStringLiteral("C:\\WSJT\\wsjtx\\bin\\jt9.exe");
    profile.bridgePort = 27778;
    return profile;
}

void compareProfiles(const Profile &actual, const Profile &expected)
{
    QCOMPARE(actual.serial, expected.serial);
    QCOMPARE(actual.kiwiHost, expected.kiwiHost);
    QCOMPARE(actual.kiwiPort, expected.kiwiPort);
    QCOMPARE(actual.useProxy, expected.useProxy);
    QCOMPARE(actual.jt9Path, expected.jt9Path);
    QCOMPARE(actual.bridgePort, expected.bridgePort);
}

Profile parsed(const QByteArray &json, const Profile &current)
{
    const ProfileReading reading = parseProfile(json, current);
    if (!reading.profile) {
        QTest::qFail(qPrintable(reading.error), __FILE__, __LINE__);
    }
    return reading.profile.value_or(Profile());
}

} // namespace

void ProfileTest::startsWithTheDefaults()
{
    const Profile profile;
    QCOMPARE(profile.serial, QStringLiteral("22727"));
    QCOMPARE(profile.kiwiHost, QStringLiteral("22727.proxy.kiwisdr.com"));
    QCOMPARE(profile.kiwiPort, 8073);
    QCOMPARE(profile.useProxy, true);
    QCOMPARE(profile.jt9Path, QString());
    QCOMPARE(profile.bridgePort, 27777);
}

void ProfileTest::formsTheProxyHostFromTheSerial()
{
    const QString host = Profile::defaultKiwiHost(QStringLiteral("4711"));
    QVERIFY2(host.startsWith(QStringLiteral("4711.")), qPrintable(host));
    QVERIFY2(host.section(QLatin1Char('.'), 1).contains(QLatin1Char('.')), qPrintable(host));
}

void ProfileTest::writesSixKeysSortedAndIndented()
{
    QCOMPARE(profileJson(changedProfile()), QByteArray(R"({
    "BridgePort": 27778,
    "Host": "Kiwi.Example",
    "Jt9Path": "C:\\WSJT\\wsjtx\\bin\\jt9.exe",
    "Port": 8074,
    "Serial": "12345",
    "UseProxy": false
}
)"));
}

void ProfileTest::writesTextAsUtf8()
{
    Profile profile;
    profile.jt9Path = QStringLiteral("/home/Jürgen/jt9");
    QVERIFY(profileJson(profile).contains("/home/J\xc3\xbcrgen/jt9"));
}

void ProfileTest::readsBackWhatItWrote()
{
    compareProfiles(parsed(profileJson(changedProfile()), Profile()), changedProfile());
}

void ProfileTest::aMissingKeyKeepsItsField()
{
    Profile expected = changedProfile();
    expected.kiwiPort = 8075;
    compareProfiles(parsed(R"({"Port": 8075})", changedProfile()), expected);
    compareProfiles(parsed("{}", changedProfile()), changedProfile());
}

void ProfileTest::aWrongTypeKeepsItsField_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("Port as digits") << QByteArray(R"({"Port": "8074"})");
    QTest::newRow("Port with a fraction") << QByteArray(R"({"Port": 8074.5})");
    QTest::newRow("Port beyond 32 bits") << QByteArray(R"({"Port": 4294975369})");
    QTest::newRow("Serial as a number") << QByteArray(R"({"Serial": 22727})");
    QTest::newRow("Host as null") << QByteArray(R"({"Host": null})");
    QTest::newRow("UseProxy as a number") << QByteArray(R"({"UseProxy": 1})");
    QTest::newRow("UseProxy as text") << QByteArray(R"({"UseProxy": "true"})");
    QTest::newRow("Jt9Path as a list") << QByteArray(R"({"Jt9Path": []})");
    QTest::newRow("BridgePort as a flag") << QByteArray(R"({"BridgePort": true})");
}

void ProfileTest::aWrongTypeKeepsItsField()
{
    QFETCH(QByteArray, json);
    compareProfiles(parsed(json, changedProfile()), changedProfile());
}

void ProfileTest::takesPortsAsTheyStand_data()
{
    QTest::addColumn<int>("port");
    QTest::newRow("zero") << 0;
    QTest::newRow("too large for a port") << 70000;
    QTest::newRow("negative") << -1;
}

void ProfileTest::takesPortsAsTheyStand()
{
    QFETCH(int, port);
    const QByteArray number = QByteArray::number(port);
    const Profile profile =
        parsed("{\"Port\": " + number + ", \"BridgePort\": " + number + "}", Profile());
    QCOMPARE(profile.kiwiPort, port);
    QCOMPARE(profile.bridgePort, port);
}

void ProfileTest::ignoresUnknownKeys()
{
    const Profile profile = parsed(R"({"Frequency": 7.074, "port": 1, "Port": 8074})", Profile());
    QCOMPARE(profile.kiwiPort, 8074);
    QCOMPARE(QJsonDocument::fromJson(profileJson(profile)).object().size(), 6);
}

void ProfileTest::refusesWhatIsNotAnObject_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    const auto describe = [](QJsonParseError::ParseError code) {
        QJsonParseError error;
        error.error = code;
        return QStringLiteral("The profile is not valid JSON: ") + error.errorString();
    };
    QTest::newRow("an array") << QByteArray(R"([{"Port": 8074}])")
                              << describe(QJsonParseError::NoError);
    QTest::newRow("text") << QByteArray("port = 8074") << describe(QJsonParseError::IllegalValue);
    QTest::newRow("empty") << QByteArray() << describe(QJsonParseError::IllegalValue);
    QTest::newRow("cut short") << QByteArray(R"({"Host": "ki)")
                               << describe(QJsonParseError::UnterminatedString);
    QTest::newRow("something behind")
        << QByteArray(R"({"Port": 8074} x)") << describe(QJsonParseError::GarbageAtEnd);
}

void ProfileTest::refusesWhatIsNotAnObject()
{
    QFETCH(QByteArray, json);
    const ProfileReading reading = parseProfile(json, Profile());
    QVERIFY(!reading.profile);
    QTEST(reading.error, "error");
    QCOMPARE(reading.isNoObject, json.startsWith('['));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ProfileTest)
#include "profile_test.moc"
