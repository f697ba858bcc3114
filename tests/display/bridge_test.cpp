// What the bridge's clients receive.

#include "bridgeclient.h"
#include "decode/ft8decode.h"
#include "displaystation.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"

#include <QtNetwork>
#include <QtTest>

namespace outpost
{

class BridgeTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aClientIsGreetedWithEighteenBytesAlone();
    void aDecodeGoesOutByteForByte();
    void fieldsCarryTheDecodersOwnText_data();
    void fieldsCarryTheDecodersOwnText();
    void linesThatAreNoDecodeStayBehind();
    void thePeriodLabelIsTheTimeOfEveryLine();
    void sixCharactersAreATimeWhateverTheyAre();
    void aMalformedLabelGivesTheFirstPrintedTimeToAll_data();
    void aMalformedLabelGivesTheFirstPrintedTimeToAll();
    void nonAsciiTravelsAsUtf8();
    void theSameDecodeGoesOutOnce_data();
    void theSameDecodeGoesOutOnce();
    void aDifferentDecodeGoesOut_data();
    void aDifferentDecodeGoesOut();
    void afterNinetySecondsItGoesOutAgain();
    void theDecodesOfABatchAreSentAtOneTime();
    void aDuplicateDoesNotProlongTheNinetySeconds();
    void withoutClientsNothingIsKeptForLater();
    void whatReachedNobodyIsTriedAgain();
    void whatReachedOneClientIsNotTriedAgain();
    void aClientThatCameLaterMissesWhatWasSent();
    void everyClientHearsEveryDecode();
    void manyClients();
    void whatWasSentIsRememberedOverAStop();
    void theReceiverIsRecordedWithAllLines();
    void theReceiverIsRecordedBeforeAnyClientIsDropped();

private:
    std::unique_ptr<DisplayStation> station;
    std::unique_ptr<BridgeClient> client;

    void deliver(const QStringList &lines, const QString &label = QStringLiteral("10:15:30"))
    {
        (*station)->onDecodesDelivered(label, parseDecodeLines(lines));
    }
    // What the client has received since the greeting. Lines arrive in order, so all earlier ones
    // are there once this last one is.
    QByteArray heardSinceGreeting()
    {
        static int count = 0;
        const QString last = QStringLiteral("LAST %1").arg(++count);
        deliver({jt9Line(last)});
        const QByteArray lastLine = decodeLine({"101530", "-12", "0.3", "1234", last.toLatin1()});
        if (!QTest::qWaitFor([&] { return client->heard.endsWith(lastLine); })) {
            return "the last line did not arrive";
        }
        const QByteArray heard = client->heard;
        return heard.mid(BridgeClient::readyLine().size(),
                         heard.size() - BridgeClient::readyLine().size() - lastLine.size());
    }
};

namespace
{

// Makes a socket close: it takes no more data, but stays a client until the event loop runs.
void startClosing(QTcpSocket *atTheStation)
{
    atTheStation->write("x"); // closing waits until this is sent
    atTheStation->disconnectFromHost();
    QCOMPARE(atTheStation->state(), QAbstractSocket::ClosingState);
}

const QString example = QStringLiteral("101530 -12 0.3 1234 ~ CQ K1ABC FN42");
const QByteArray exampleSent = "PELQOUTPOST2|MTAxNTMwCS0xMgkwLjMJMTIzNAlDUSBLMUFCQyBGTjQy\n";

} // namespace

void BridgeTest::init()
{
    station = std::make_unique<DisplayStation>();
    client = std::make_unique<BridgeClient>(station->bridgePort);
    QVERIFY(client->waitForGreeting());
}

void BridgeTest::cleanup()
{
    client.reset();
    station.reset();
}

void BridgeTest::aClientIsGreetedWithEighteenBytesAlone()
{
    deliver({example});
    QTRY_COMPARE(client->heard.size(), 18 + exampleSent.size());
    QCOMPARE(client->heard, "PELQBRIDGE2|READY\n" + exampleSent);
}

void BridgeTest::aDecodeGoesOutByteForByte()
{
    deliver({example});
    QCOMPARE(heardSinceGreeting(), exampleSent);
}

void BridgeTest::fieldsCarryTheDecodersOwnText_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArrayList>("fields");

    QTest::newRow("blanks collapse")
        << QStringLiteral("\t101530  -12 0.3\t1234  ~  CQ  K1ABC \t FN42 \r\n")
        << QByteArrayList{"101530", "-12", "0.3", "1234", "CQ K1ABC FN42"};
    QTest::newRow("numbers as printed")
        << QStringLiteral("101530 +03 -0.0 0042 ~ cq ~ x")
        << QByteArrayList{"101530", "+03", "-0.0", "0042", "cq ~ x"};
    QTest::newRow("a long message is one line")
        << QStringLiteral("101530 3 1 42 ~ ") + QString(200, QLatin1Char('A'))
        << QByteArrayList{"101530", "3", "1", "42", QByteArray(200, 'A')};
}

void BridgeTest::fieldsCarryTheDecodersOwnText()
{
    QFETCH(QString, line);
    QFETCH(QByteArrayList, fields);
    deliver({line});
    QCOMPARE(heardSinceGreeting(), decodeLine(fields));
}

void BridgeTest::linesThatAreNoDecodeStayBehind()
{
    deliver({QStringLiteral("<DecodeFinished>   0  17        0"), QString(),
             QStringLiteral("101530 -12 0.3 1234 CQ K1ABC FN42"),
             QStringLiteral("101530 -12 0.3 1234 ~ "), QStringLiteral("101530 0.3 1234 ~ CQ"),
             QStringLiteral("10153 -12 0.3 1234 ~ CQ"), example});
    QCOMPARE(heardSinceGreeting(), exampleSent);
}

void BridgeTest::thePeriodLabelIsTheTimeOfEveryLine()
{
    deliver({QStringLiteral("000000 -1 0.1 500 ~ CQ A1A"),
             QStringLiteral("235959 -2 0.2 600 ~ CQ B1B")},
            QStringLiteral(" 10:15:45 "));
    QCOMPARE(heardSinceGreeting(), decodeLine({"101545", "-1", "0.1", "500", "CQ A1A"}) +
                                       decodeLine({"101545", "-2", "0.2", "600", "CQ B1B"}));
}

void BridgeTest::sixCharactersAreATimeWhateverTheyAre()
{
    deliver({example}, QStringLiteral("ab:cd:ef"));
    QCOMPARE(heardSinceGreeting(), decodeLine({"abcdef", "-12", "0.3", "1234", "CQ K1ABC FN42"}));
}

void BridgeTest::aMalformedLabelGivesTheFirstPrintedTimeToAll_data()
{
    QTest::addColumn<QString>("label");

    QTest::newRow("empty") << QString();
    QTest::newRow("too short") << QStringLiteral("10:15");
    QTest::newRow("too long") << QStringLiteral("10:15:30:00");
}

void BridgeTest::aMalformedLabelGivesTheFirstPrintedTimeToAll()
{
    QFETCH(QString, label);
    deliver({QStringLiteral("999999 no decode"), QStringLiteral("111115 -1 0.1 500 ~ CQ A1A"),
             QStringLiteral("222230 -2 0.2 600 ~ CQ B1B")},
            label);
    deliver({QStringLiteral("222230 -3 0.3 700 ~ CQ C1C")}, label);
    QCOMPARE(heardSinceGreeting(), decodeLine({"111115", "-1", "0.1", "500", "CQ A1A"}) +
                                       decodeLine({"111115", "-2", "0.2", "600", "CQ B1B"}) +
                                       decodeLine({"222230", "-3", "0.3", "700", "CQ C1C"}));
}

void BridgeTest::nonAsciiTravelsAsUtf8()
{
    deliver({jt9Line(QStringLiteral("GRÜẞE 日本"))});
    const char *utf8 = "GR\303\234\341\272\236E \346\227\245\346\234\254";
    QCOMPARE(heardSinceGreeting(), decodeLine({"101530", "-12", "0.3", "1234", utf8}));
}

void BridgeTest::theSameDecodeGoesOutOnce_data()
{
    QTest::addColumn<QString>("again");

    QTest::newRow("the same line") << example;
    QTest::newRow("other letter case") << QStringLiteral("101530 -12 0.3 1234 ~ cq k1abc Fn42");
    QTest::newRow("other SNR and DT") << QStringLiteral("101530 5 -1.1 1234 ~ CQ K1ABC FN42");
    QTest::newRow("other printed time") << QStringLiteral("101545 5 -1.1 1234 ~ CQ K1ABC FN42");
    QTest::newRow("other blanks") << QStringLiteral("101530 5 0.3 1234 ~ CQ  K1ABC\tFN42 ");
}

void BridgeTest::theSameDecodeGoesOutOnce()
{
    QFETCH(QString, again);
    deliver({example, again});
    deliver({again});
    station->nowMs += 90000;
    deliver({again});
    QCOMPARE(heardSinceGreeting(), exampleSent);
}

void BridgeTest::aDifferentDecodeGoesOut_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QByteArray>("sent");

    const QString label = QStringLiteral("10:15:30");
    QTest::newRow("other frequency")
        << QStringLiteral("101530 -12 0.3 1235 ~ CQ K1ABC FN42") << label
        << decodeLine({"101530", "-12", "0.3", "1235", "CQ K1ABC FN42"});
    QTest::newRow("other text of the frequency")
        << QStringLiteral("101530 -12 0.3 01234 ~ CQ K1ABC FN42") << label
        << decodeLine({"101530", "-12", "0.3", "01234", "CQ K1ABC FN42"});
    QTest::newRow("other message") << QStringLiteral("101530 -12 0.3 1234 ~ CQ K1ABC FN43") << label
                                   << decodeLine({"101530", "-12", "0.3", "1234", "CQ K1ABC FN43"});
    QTest::newRow("other period") << example << QStringLiteral("10:15:45")
                                  << decodeLine({"101545", "-12", "0.3", "1234", "CQ K1ABC FN42"});
}

void BridgeTest::aDifferentDecodeGoesOut()
{
    QFETCH(QString, line);
    QFETCH(QString, label);
    QFETCH(QByteArray, sent);
    deliver({example});
    deliver({line}, label);
    QCOMPARE(heardSinceGreeting(), exampleSent + sent);
}

void BridgeTest::afterNinetySecondsItGoesOutAgain()
{
    deliver({example});
    station->nowMs += 90000;
    deliver({example});
    station->nowMs += 1;
    deliver({example});
    deliver({example});
    QCOMPARE(heardSinceGreeting(), exampleSent + exampleSent);
}

void BridgeTest::theDecodesOfABatchAreSentAtOneTime()
{
    const QString another = QStringLiteral("101530 -1 0.1 500 ~ CQ A1A");
    const QByteArray anotherSent = decodeLine({"101530", "-1", "0.1", "500", "CQ A1A"});
    station->tickMs = 1000;
    deliver({example, another});
    station->tickMs = 0;
    station->nowMs += 80000;
    for (int i = 0; i < 40; ++i) { // both expire in the same moment
        deliver({another, example});
        station->nowMs += 500;
    }
    QCOMPARE(heardSinceGreeting(), exampleSent + anotherSent + anotherSent + exampleSent);
}

void BridgeTest::aDuplicateDoesNotProlongTheNinetySeconds()
{
    deliver({example});
    station->nowMs += 60000;
    deliver({example});
    station->nowMs += 30001;
    deliver({example});
    QCOMPARE(heardSinceGreeting(), exampleSent + exampleSent);
}

void BridgeTest::withoutClientsNothingIsKeptForLater()
{
    client->socket.close();
    QTRY_VERIFY(summaryLine(**station).contains(QStringLiteral("Bridge Disconnected")));
    deliver({example, jt9Line(QStringLiteral("CQ W1AW FN31"))});
    client = std::make_unique<BridgeClient>(station->bridgePort);
    QVERIFY(client->waitForGreeting());
    deliver({example}); // not remembered as sent
    QCOMPARE(heardSinceGreeting(), exampleSent);
}

void BridgeTest::whatReachedNobodyIsTriedAgain()
{
    auto *server = (*station)->findChild<QTcpServer *>();
    startClosing(server->findChild<QTcpSocket *>());
    deliver({example});
    QTRY_VERIFY(summaryLine(**station).contains(QStringLiteral("Bridge Disconnected")));
    QCOMPARE(client->heard.count("PELQOUTPOST2"), 0);
    client = std::make_unique<BridgeClient>(station->bridgePort);
    QVERIFY(client->waitForGreeting());
    deliver({example});
    QCOMPARE(heardSinceGreeting(), exampleSent);
}

void BridgeTest::whatReachedOneClientIsNotTriedAgain()
{
    const BridgeClient last(station->bridgePort);
    QVERIFY(last.waitForGreeting());
    auto *server = (*station)->findChild<QTcpServer *>();
    for (QTcpSocket *atTheStation : server->findChildren<QTcpSocket *>()) {
        if (atTheStation->peerPort() == last.socket.localPort()) {
            startClosing(atTheStation);
        }
    }
    deliver({example});
    deliver({example});
    QCOMPARE(heardSinceGreeting(), exampleSent);
    QTRY_COMPARE(last.heard, BridgeClient::readyLine() + "x");
}

void BridgeTest::aClientThatCameLaterMissesWhatWasSent()
{
    deliver({example});
    client = std::make_unique<BridgeClient>(station->bridgePort);
    QVERIFY(client->waitForGreeting());
    deliver({example});
    QCOMPARE(heardSinceGreeting(), QByteArray());
}

void BridgeTest::everyClientHearsEveryDecode()
{
    const BridgeClient second(station->bridgePort);
    QVERIFY(second.waitForGreeting());
    deliver({example, jt9Line(QStringLiteral("CQ W1AW FN31"))});
    const QByteArray sent =
        exampleSent + decodeLine({"101530", "-12", "0.3", "1234", "CQ W1AW FN31"});
    QTRY_COMPARE(second.heard, BridgeClient::readyLine() + sent);
    QCOMPARE(heardSinceGreeting(), sent);
}

void BridgeTest::manyClients()
{
    std::vector<std::unique_ptr<BridgeClient>> clients;
    for (int i = 0; i < 100; ++i) {
        clients.push_back(std::make_unique<BridgeClient>(station->bridgePort));
    }
    for (const auto &each : clients) {
        QVERIFY(each->waitForGreeting());
    }
    deliver({example});
    for (const auto &each : clients) {
        QTRY_COMPARE(each->heard, BridgeClient::readyLine() + exampleSent);
    }
    clients.erase(clients.begin(), clients.begin() + 50);
    deliver({jt9Line(QStringLiteral("CQ W1AW FN31"))});
    for (const auto &each : clients) {
        QTRY_COMPARE(each->heard.count('\n'), 3);
    }
}

void BridgeTest::whatWasSentIsRememberedOverAStop()
{
    deliver({example});
    choose(**station, {QStringLiteral("Settings"), QStringLiteral("Bridge"),
                       QStringLiteral("Stop Local WSJT Bridge")});
    choose(**station, {QStringLiteral("Settings"), QStringLiteral("Bridge"),
                       QStringLiteral("Start Local WSJT Bridge")});
    client = std::make_unique<BridgeClient>(station->bridgePort);
    QVERIFY(client->waitForGreeting());
    deliver({example});
    QCOMPARE(heardSinceGreeting(), QByteArray());
}

void BridgeTest::theReceiverIsRecordedWithAllLines()
{
    const QString file = listFile();
    deliver({});
    QVERIFY(!QFile::exists(file));
    deliver({QStringLiteral("no decode"), example, example});
    const QJsonArray receivers = QJsonDocument::fromJson(fileBytes(file)).array();
    QCOMPARE(receivers.size(), 1);
    QCOMPARE(receivers.first().toObject().value(QStringLiteral("LastDecodeCount")).toInt(), 3);
    deliver({example}, QStringLiteral("10:15:45"));
    QCOMPARE(QJsonDocument::fromJson(fileBytes(file)).array(), receivers);
}

void BridgeTest::theReceiverIsRecordedBeforeAnyClientIsDropped()
{
    const QString file = listFile();
    const QString noneRemains =
        QStringLiteral("WSJT bridge client disconnected; 0 client(s) remain.");
    client->socket.close();
    QTRY_VERIFY(summaryLine(**station).contains(QStringLiteral("Bridge Disconnected")));
    const LazyClient lazy(station->bridgePort);
    QTRY_VERIFY(summaryLine(**station).contains(QStringLiteral("Bridge Connected")));
    LogTrace trace;
    for (int i = 0; i < 400 && trace.count(noneRemains) == 0; ++i) {
        QFile::remove(file); // so that every batch records the receiver
        trace.clear();
        QStringList lines; // about 60 kB on the wire
        for (int audioHz = 0; audioHz < 20; ++audioHz) {
            lines.append(jt9Line(QString(2200, QLatin1Char('A')), 20 * i + audioHz));
        }
        deliver(lines);
    }
    QCOMPARE(
        trace.lines(),
        (QStringList{QStringLiteral("Good receiver recorded: receiver.test:8073"), noneRemains}));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::BridgeTest)
#include "bridge_test.moc"
