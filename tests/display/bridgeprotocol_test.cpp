#include "decode/ft8decode.h"
#include "display/bridgeprotocol.h"

#include <QtTest>

namespace outpost
{

namespace
{

// The five fields that a client reads from a bridge line.
QStringList clientFields(const QByteArray &line)
{
    const QByteArray tag = "PELQOUTPOST2|";
    if (!line.startsWith(tag) || !line.endsWith('\n')) {
        return {};
    }
    const QByteArray base64 = line.mid(tag.size(), line.size() - tag.size() - 1);
    return QString::fromUtf8(QByteArray::fromBase64(base64)).split(QLatin1Char('\t'));
}

const QString exampleLine = QStringLiteral("101530 -12 0.3 1234 ~ CQ K1ABC FN42");

QVector<BridgeDecode> sent(const QString &periodLabel, const QStringList &lines)
{
    return bridgeDecodes(periodLabel, parseDecodeLines(lines));
}

QVector<BridgeDecode> sentAt101530(const QString &line)
{
    return sent(QStringLiteral("10:15:30"), {line});
}

QStringList times(const QVector<BridgeDecode> &decodes)
{
    QStringList texts;
    for (const BridgeDecode &decode : decodes) {
        texts.append(decode.time);
    }
    return texts;
}

BridgeDecode exampleDecode()
{
    return sentAt101530(exampleLine).value(0);
}

} // namespace

class BridgeProtocolTest : public QObject
{
    Q_OBJECT

private slots:
    void theReadyLineIsEighteenBytes();
    void theExampleGoesOutByteForByte();
    void preparesThePeriodTime_data();
    void preparesThePeriodTime();
    void fieldsCarryTheDecodersOwnText_data();
    void fieldsCarryTheDecodersOwnText();
    void linesThatAreNoDecodeAreDropped_data();
    void linesThatAreNoDecodeAreDropped();
    void thePeriodLabelBeatsThePrintedTime();
    void aMalformedLabelTakesTheFirstPrintedTimeAndKeepsIt_data();
    void aMalformedLabelTakesTheFirstPrintedTimeAndKeepsIt();
    void aLineThatIsNoDecodeDoesNotSetTheTime();
    void nonAsciiTravelsAsUtf8();
    void base64IsTheStandardAlphabetWithPadding();
    void theKeyIsTimeFrequencyAndMessageInUpperCase();
    void theKeyIgnoresSnrAndDt();
    void aKeyIsRememberedForNinetySeconds_data();
    void aKeyIsRememberedForNinetySeconds();
    void rememberingAgainRenewsTheTime();
    void pruningKeepsTheYoungOnes();
};

void BridgeProtocolTest::theReadyLineIsEighteenBytes()
{
    QCOMPARE(bridgeReadyLine(), QByteArray("PELQBRIDGE2|READY\n"));
    QCOMPARE(bridgeReadyLine().size(), 18);
}

void BridgeProtocolTest::theExampleGoesOutByteForByte()
{
    const BridgeDecode decode = exampleDecode();
    QCOMPARE(bridgePayload(decode), QByteArray("101530\t-12\t0.3\t1234\tCQ K1ABC FN42"));
    QCOMPARE(bridgePayload(decode).size(), 33);
    QCOMPARE(bridgeLine(decode),
             QByteArray("PELQOUTPOST2|MTAxNTMwCS0xMgkwLjMJMTIzNAlDUSBLMUFCQyBGTjQy\n"));
}

void BridgeProtocolTest::preparesThePeriodTime_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("time");

    QTest::newRow("label") << QStringLiteral("10:15:30") << QStringLiteral("101530");
    QTest::newRow("blanks around") << QStringLiteral(" 10:15:30\t") << QStringLiteral("101530");
    QTest::newRow("no colons") << QStringLiteral("101530") << QStringLiteral("101530");
    QTest::newRow("malformed") << QStringLiteral("10:15") << QStringLiteral("1015");
    QTest::newRow("empty") << QString() << QString();
}

void BridgeProtocolTest::preparesThePeriodTime()
{
    QFETCH(QString, label);
    QFETCH(QString, time);
    QCOMPARE(bridgePeriodTime(label), time);
}

void BridgeProtocolTest::fieldsCarryTheDecodersOwnText_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("fields");

    const auto row = [](const char *name, const char *line, const char *fields) {
        QTest::newRow(name) << QString::fromLatin1(line)
                            << QString::fromLatin1(fields).split(QLatin1Char('|'));
    };
    row("plain", "101530 -12 0.3 1234 ~ CQ K1ABC FN42", "101530|-12|0.3|1234|CQ K1ABC FN42");
    row("an explicit plus stays", "101530 +3 +0.3 1234 ~ CQ", "101530|+3|+0.3|1234|CQ");
    row("leading zeros stay", "101530 -02 00.30 0042 ~ CQ", "101530|-02|00.30|0042|CQ");
    row("a DT without decimals", "101530 3 -1 1234 ~ CQ", "101530|3|-1|1234|CQ");
    row("blanks collapse", "  101530\t-12  0.3 1234  ~   CQ  K1ABC \t FN42 \r\n",
        "101530|-12|0.3|1234|CQ K1ABC FN42");
    row("blanks beyond ASCII go from the ends",
        "\xA0"
        "101530 -12 0.3 1234 ~ CQ\xA0",
        "101530|-12|0.3|1234|CQ");
    row("a mark in the message stays", "101530 -12 0.3 1234 ~ A ~ B", "101530|-12|0.3|1234|A ~ B");
    row("letter case stays", "101530 -12 0.3 1234 ~ cq k1abc", "101530|-12|0.3|1234|cq k1abc");
}

void BridgeProtocolTest::fieldsCarryTheDecodersOwnText()
{
    QFETCH(QString, line);
    QFETCH(QStringList, fields);
    const QVector<BridgeDecode> decodes = sentAt101530(line);
    QCOMPARE(decodes.size(), 1);
    QCOMPARE(clientFields(bridgeLine(decodes.first())), fields);
}

void BridgeProtocolTest::linesThatAreNoDecodeAreDropped_data()
{
    QTest::addColumn<QString>("line");

    QTest::newRow("empty") << QString();
    QTest::newRow("summary") << QStringLiteral("<DecodeFinished>   0  17        0");
    QTest::newRow("no separator") << QStringLiteral("101530 -12 0.3 1234 CQ K1ABC FN42");
    QTest::newRow("no message") << QStringLiteral("101530 -12 0.3 1234 ~ ");
    QTest::newRow("no SNR") << QStringLiteral("101530 0.3 1234 ~ CQ K1ABC FN42");
    QTest::newRow("five-digit time") << QStringLiteral("10153 -12 0.3 1234 ~ CQ K1ABC FN42");
    QTest::newRow("fractional frequency") << QStringLiteral("101530 -12 0.3 1.5 ~ CQ K1ABC");
    QTest::newRow("text before the time") << QStringLiteral("x 101530 -12 0.3 1234 ~ CQ K1ABC");
}

void BridgeProtocolTest::linesThatAreNoDecodeAreDropped()
{
    QFETCH(QString, line);
    QVERIFY(sentAt101530(line).isEmpty());
}

void BridgeProtocolTest::thePeriodLabelBeatsThePrintedTime()
{
    for (const char *printed : {"000000", "101545", "235959"}) {
        const QString line = QLatin1String(printed) + QStringLiteral(" -12 0.3 1234 ~ CQ");
        QCOMPARE(times(sentAt101530(line)), QStringList(QStringLiteral("101530")));
    }
    const QString sixCharacters = QStringLiteral("ab:cd:ef"); // any six are accepted
    QCOMPARE(times(sent(sixCharacters, {exampleLine})), QStringList(QStringLiteral("abcdef")));
}

void BridgeProtocolTest::aMalformedLabelTakesTheFirstPrintedTimeAndKeepsIt_data()
{
    QTest::addColumn<QString>("label");

    QTest::newRow("empty") << QString();
    QTest::newRow("too short") << QStringLiteral("10:15");
    QTest::newRow("too long") << QStringLiteral("10:15:30:00");
}

void BridgeProtocolTest::aMalformedLabelTakesTheFirstPrintedTimeAndKeepsIt()
{
    QFETCH(QString, label);
    const QString first = QStringLiteral("111115 -12 0.3 1234 ~ CQ");
    const QString second = QStringLiteral("222230 -12 0.3 1240 ~ CQ");
    QCOMPARE(times(sent(label, {first, second})),
             QStringList({QStringLiteral("111115"), QStringLiteral("111115")}));
}

void BridgeProtocolTest::aLineThatIsNoDecodeDoesNotSetTheTime()
{
    const QStringList lines = {QStringLiteral("111115 no decode"), exampleLine};
    QCOMPARE(times(sent(QString(), lines)), QStringList(QStringLiteral("101530")));
}

void BridgeProtocolTest::nonAsciiTravelsAsUtf8()
{
    const BridgeDecode decode =
        sentAt101530(QStringLiteral("101530 -12 0.3 1234 ~ GRÜẞE 日本")).value(0);
    QVERIFY(bridgePayload(decode).endsWith("\tGR\xC3\x9C\xE1\xBA\x9E"
                                           "E \xE6\x97\xA5\xE6\x9C\xAC"));
    QCOMPARE(clientFields(bridgeLine(decode)).last(), QStringLiteral("GRÜẞE 日本"));
}

void BridgeProtocolTest::base64IsTheStandardAlphabetWithPadding()
{
    BridgeDecode decode = exampleDecode();
    decode.message = QStringLiteral("~~>>??");
    QCOMPARE(bridgeLine(decode), QByteArray("PELQOUTPOST2|MTAxNTMwCS0xMgkwLjMJMTIzNAl+fj4+Pz8=\n"));
    decode.message = QStringLiteral("~~???");
    QCOMPARE(bridgeLine(decode), QByteArray("PELQOUTPOST2|MTAxNTMwCS0xMgkwLjMJMTIzNAl+fj8/Pw==\n"));
    decode.message.fill(QLatin1Char('A'), 100);
    QCOMPARE(bridgeLine(decode).count('\n'), 1);
}

void BridgeProtocolTest::theKeyIsTimeFrequencyAndMessageInUpperCase()
{
    BridgeDecode decode = exampleDecode();
    QCOMPARE(bridgeDecodeKey(decode), QStringLiteral("101530|1234|CQ K1ABC FN42"));
    decode.message = QStringLiteral("cq k1abc fn42");
    QCOMPARE(bridgeDecodeKey(decode), QStringLiteral("101530|1234|CQ K1ABC FN42"));
    decode.frequency = QStringLiteral("0042"); // a text, not a number
    QCOMPARE(bridgeDecodeKey(decode), QStringLiteral("101530|0042|CQ K1ABC FN42"));
}

void BridgeProtocolTest::theKeyIgnoresSnrAndDt()
{
    BridgeDecode decode = exampleDecode();
    decode.snr = QStringLiteral("7");
    decode.dt = QStringLiteral("-1.1");
    QCOMPARE(bridgeDecodeKey(decode), bridgeDecodeKey(exampleDecode()));
}

void BridgeProtocolTest::aKeyIsRememberedForNinetySeconds_data()
{
    QTest::addColumn<qint64>("ageMs");
    QTest::addColumn<bool>("known");

    QTest::newRow("at once") << qint64(0) << true;
    QTest::newRow("90 s old") << qint64(90000) << true;
    QTest::newRow("older than 90 s") << qint64(90001) << false;
    QTest::newRow("after the clock was set back") << qint64(-5000) << true;
}

void BridgeProtocolTest::aKeyIsRememberedForNinetySeconds()
{
    QFETCH(qint64, ageMs);
    QFETCH(bool, known);
    const qint64 sentMs = 1700000000000;
    RecentDecodeKeys recent;
    recent.remember(QStringLiteral("KEY"), sentMs);
    recent.prune(sentMs + ageMs);
    QCOMPARE(recent.contains(QStringLiteral("KEY")), known);
    QVERIFY(!recent.contains(QStringLiteral("OTHER")));
}

void BridgeProtocolTest::rememberingAgainRenewsTheTime()
{
    RecentDecodeKeys recent;
    recent.remember(QStringLiteral("KEY"), 1000);
    recent.remember(QStringLiteral("KEY"), 50000);
    recent.prune(1000 + RecentDecodeKeys::keepMs + 1);
    QVERIFY(recent.contains(QStringLiteral("KEY")));
}

void BridgeProtocolTest::pruningKeepsTheYoungOnes()
{
    RecentDecodeKeys recent;
    for (int i = 0; i < 100; ++i) {
        recent.remember(QString::number(i), i);
    }
    recent.prune(RecentDecodeKeys::keepMs + 50);
    for (int i = 0; i < 100; ++i) {
        QCOMPARE(recent.contains(QString::number(i)), i >= 50);
    }
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::BridgeProtocolTest)
#include "bridgeprotocol_test.moc"
