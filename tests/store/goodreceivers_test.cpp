#include "base/datafile.h"
#include "store/goodreceivers.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace outpost
{

class GoodReceiversTest : public QObject
{
    Q_OBJECT

private slots:
    void recordsAnEntryAtTheEnd();
    void writesTheDocumentedKeys();
    void keepsWhatItDoesNotKnow();
    void findsAReceiver_data();
    void findsAReceiver();
    void readsEntriesInFileOrder();
    void missingValuesHaveTheirDefaults();
    void leavesOutWhatIsNoReceiver_data();
    void leavesOutWhatIsNoReceiver();
    void showsTheHostAsStored();
    void showsReceiverFrequencyAndDecodes_data();
    void showsReceiverFrequencyAndDecodes();
    void removesEveryMatchingEntry();
    void removesNothingElse();
    void removingAnAbsentReceiverChangesNothing();
    void onlyAnArrayIsAList_data();
    void onlyAnArrayIsAList();
};

namespace
{

const qint64 recordedMs = 1769882655999; // 2026-01-31 18:04:15.999 UTC

QJsonArray json(const char *text)
{
    return QJsonDocument::fromJson(QByteArray(text)).array();
}

GoodReceiver receiver(const QString &host, int port = 8073)
{
    return {host, port, 14.074, 7};
}

} // namespace

void GoodReceiversTest::recordsAnEntryAtTheEnd()
{
    const QJsonArray one = withReceiver({}, receiver(QStringLiteral("first")), recordedMs);
    QCOMPARE(one.size(), 1);
    const QJsonArray two = withReceiver(one, receiver(QStringLiteral("second")), recordedMs);
    QCOMPARE(two.size(), 2);
    QCOMPARE(two.at(0), one.at(0));
    QCOMPARE(two.at(1).toObject().value(QStringLiteral("Host")).toString(),
             QStringLiteral("second"));
}

void GoodReceiversTest::writesTheDocumentedKeys()
{
    const QJsonArray list = withReceiver({}, receiver(QStringLiteral("Kiwi.Example")), recordedMs);
    QCOMPARE(QJsonDocument(list).toJson(), QByteArray(R"([
    {
        "FrequencyMhz": 14.074,
        "Host": "Kiwi.Example",
        "LastDecodeCount": 7,
        "LastDecodeUtc": "2026-01-31T18:04:15Z",
        "Port": 8073
    }
]
)"));
}

void GoodReceiversTest::keepsWhatItDoesNotKnow()
{
    const QJsonArray list = json(R"([{"Host": "a", "Note": "mine"}, "text", 5, null])");
    const QJsonArray longer = withReceiver(list, receiver(QStringLiteral("b")), recordedMs);
    for (int index = 0; index < list.size(); ++index) {
        QCOMPARE(longer.at(index), list.at(index));
    }
}

void GoodReceiversTest::findsAReceiver_data()
{
    QTest::addColumn<QJsonArray>("list");
    QTest::addColumn<bool>("found");
    QTest::newRow("recorded in capitals") << json(R"([{"Host": "KIWI", "Port": 8073}])") << true;
    QTest::newRow("not the first") << json(R"([5, {"Host": "a"}, {"Host": "kiwi"}])") << true;
    QTest::newRow("port missing counts as 8073") << json(R"([{"Host": "kiwi"}])") << true;
    QTest::newRow("another port") << json(R"([{"Host": "kiwi", "Port": 8074}])") << false;
    QTest::newRow("another host") << json(R"([{"Host": "kiwi2", "Port": 8073}])") << false;
    QTest::newRow("only text") << json(R"(["kiwi", "kiwi:8073"])") << false;
    QTest::newRow("empty list") << QJsonArray() << false;
}

void GoodReceiversTest::findsAReceiver()
{
    QFETCH(QJsonArray, list);
    QTEST(containsReceiver(list, QStringLiteral("kiwi"), 8073), "found");
}

void GoodReceiversTest::readsEntriesInFileOrder()
{
    const auto read = readGoodReceivers(
        json(R"([{"Host": "z", "Port": 1, "FrequencyMhz": 7.074, "LastDecodeCount": 3},
                 {"Host": "a", "Port": 2, "FrequencyMhz": 10.1, "LastDecodeCount": 0}])"));
    QCOMPARE(read.size(), 2);
    QCOMPARE(read.at(0).host, QStringLiteral("z"));
    QCOMPARE(read.at(0).port, 1);
    QCOMPARE(read.at(0).frequencyMhz, 7.074);
    QCOMPARE(read.at(0).lastDecodeCount, 3);
    QCOMPARE(read.at(1).host, QStringLiteral("a"));
    QCOMPARE(read.at(1).port, 2);
}

void GoodReceiversTest::missingValuesHaveTheirDefaults()
{
    const auto read = readGoodReceivers(json(
        R"([{"Host": "a"}, {"Host": "b", "Port": "x", "FrequencyMhz": [], "LastDecodeCount": {}}])"));
    QCOMPARE(read.size(), 2);
    for (const GoodReceiver &entry : read) {
        QCOMPARE(entry.port, 8073);
        QCOMPARE(entry.frequencyMhz, 14.074);
        QCOMPARE(entry.lastDecodeCount, 0);
    }
}

void GoodReceiversTest::leavesOutWhatIsNoReceiver_data()
{
    QTest::addColumn<QJsonArray>("list");
    QTest::newRow("text") << json(R"(["kiwi"])");
    QTest::newRow("null") << json("[null]");
    QTest::newRow("a list in the list") << json(R"([[{"Host": "kiwi"}]])");
    QTest::newRow("no host") << json(R"([{"Port": 8073}])");
    QTest::newRow("blank host") << json(R"([{"Host": " \t"}])");
    QTest::newRow("host is a number") << json(R"([{"Host": 5}])");
}

void GoodReceiversTest::leavesOutWhatIsNoReceiver()
{
    QFETCH(QJsonArray, list);
    QCOMPARE(list.size(), 1);
    QCOMPARE(readGoodReceivers(list).size(), 0);
}

void GoodReceiversTest::showsTheHostAsStored()
{
    const auto read = readGoodReceivers(json(R"([{"Host": " Kiwi "}])"));
    QCOMPARE(read.size(), 1);
    QCOMPARE(read.at(0).host, QStringLiteral(" Kiwi "));
}

void GoodReceiversTest::showsReceiverFrequencyAndDecodes_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<double>("mhz");
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << QStringLiteral("Kiwi") << 10.1
                           << QStringLiteral("Kiwi:8074 \u2014 10.100000 MHz \u2014 7 decode(s)");
    QTest::newRow("a host like a placeholder")
        << QStringLiteral("%3") << 14.074
        << QStringLiteral("%3:8074 \u2014 14.074000 MHz \u2014 7 decode(s)");
}

void GoodReceiversTest::showsReceiverFrequencyAndDecodes()
{
    QFETCH(QString, host);
    QFETCH(double, mhz);
    QTEST(goodReceiverText({host, 8074, mhz, 7}), "text");
}

void GoodReceiversTest::removesEveryMatchingEntry()
{
    const QJsonArray list = json(R"([{"Host": "kiwi", "Port": 8073}, {"Host": "a"},
                                     {"Host": "KIWI"}])");
    QCOMPARE(withoutReceiver(list, QStringLiteral("Kiwi"), 8073), json(R"([{"Host": "a"}])"));
}

void GoodReceiversTest::removesNothingElse()
{
    const QJsonArray list = json(R"(["kiwi", {"Host": "kiwi", "Port": 8074, "Note": 1}, null,
                                     {"Host": "kiwi"}, 5, {"Port": 8073}])");
    QCOMPARE(withoutReceiver(list, QStringLiteral("kiwi"), 8073),
             json(R"(["kiwi", {"Host": "kiwi", "Port": 8074, "Note": 1}, null, 5,
                      {"Port": 8073}])"));
}

void GoodReceiversTest::removingAnAbsentReceiverChangesNothing()
{
    const QJsonArray list = json(R"([{"Host": "a"}, 5])");
    QCOMPARE(withoutReceiver(list, QStringLiteral("kiwi"), 8073), list);
    QCOMPARE(withoutReceiver({}, QStringLiteral("kiwi"), 8073), QJsonArray());
    // An element that is text has no host, not even an empty one.
    QCOMPARE(withoutReceiver(json("[5]"), QString(), 8073), json("[5]"));
}

void GoodReceiversTest::onlyAnArrayIsAList_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("isList");
    QTest::newRow("entries") << QByteArray(R"([{"Host": "a"}])") << true;
    QTest::newRow("no entries") << QByteArray("[]") << true;
    QTest::newRow("an object") << QByteArray(R"({"Host": "a"})") << false;
    QTest::newRow("cut short") << QByteArray(R"([{"Host": "a"})") << false;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("text") << QByteArray("kiwi:8073") << false;
}

void GoodReceiversTest::onlyAnArrayIsAList()
{
    QFETCH(QByteArray, file);
    QTEST(parseJsonArray(file).has_value(), "isList");
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::GoodReceiversTest)
#include "goodreceivers_test.moc"
