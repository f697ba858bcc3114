#include "store/receiverinput.h"

#include <QtTest>

namespace outpost
{

class ReceiverInputTest : public QObject
{
    Q_OBJECT

private slots:
    void trimsWhatItTakes();
    void aSignBeforeThePortIsADecimalIntegerToo();
    void keepsEveryDigitOfTheFrequency();
    void takesTheEndsOfTheRanges();
    void theFirstFailingCheckRefuses_data();
    void theFirstFailingCheckRefuses();
};

void ReceiverInputTest::trimsWhatItTakes()
{
    const ReceiverInput input = readReceiverInput(
        QStringLiteral("\t Kiwi.Example "), QStringLiteral(" 8073 "), QStringLiteral(" 14.074\n"));
    QCOMPARE(input.refusal, QString());
    QCOMPARE(input.host, QStringLiteral("Kiwi.Example"));
    QCOMPARE(input.port, 8073);
    QCOMPARE(input.frequencyMhz, 14.074);
}

void ReceiverInputTest::aSignBeforeThePortIsADecimalIntegerToo()
{
    const ReceiverInput input = readReceiverInput(QStringLiteral("kiwi"), QStringLiteral("+8073"),
                                                  QStringLiteral("14.074"));
    QCOMPARE(input.refusal, QString());
    QCOMPARE(input.port, 8073);
}

void ReceiverInputTest::keepsEveryDigitOfTheFrequency()
{
    const ReceiverInput input = readReceiverInput(QStringLiteral("kiwi"), QStringLiteral("8073"),
                                                  QStringLiteral("7.0740000001"));
    QVERIFY(input.frequencyMhz > 7.074);
}

void ReceiverInputTest::takesTheEndsOfTheRanges()
{
    const QString host = QStringLiteral("kiwi");
    const ReceiverInput low = readReceiverInput(host, QStringLiteral("1"), QStringLiteral("0.001"));
    QCOMPARE(low.port, 1);
    QCOMPARE(low.frequencyMhz, 0.001);
    const ReceiverInput high =
        readReceiverInput(host, QStringLiteral("65535"), QStringLiteral("3000"));
    QCOMPARE(high.port, 65535);
    QCOMPARE(high.frequencyMhz, 3000.0);
}

void ReceiverInputTest::theFirstFailingCheckRefuses_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("frequency");
    QTest::addColumn<QString>("refusal");
    const QString kiwi = QStringLiteral("kiwi");
    const QString goodPort = QStringLiteral("8073");
    const QString goodMhz = QStringLiteral("14.074");
    const QString noHost = QStringLiteral("Receiver host is required.");
    const QString noPort = QStringLiteral("Port must be 1 through 65535.");
    const QString noMhz = QStringLiteral("Enter a valid frequency in MHz.");
    QTest::newRow("no host") << QString() << goodPort << goodMhz << noHost;
    QTest::newRow("only blanks, and a bad port")
        << QStringLiteral("   ") << QStringLiteral("0") << goodMhz << noHost;
    QTest::newRow("port 0") << kiwi << QStringLiteral("0") << goodMhz << noPort;
    QTest::newRow("port 65536") << kiwi << QStringLiteral("65536") << goodMhz << noPort;
    QTest::newRow("negative port") << kiwi << QStringLiteral("-1") << goodMhz << noPort;
    QTest::newRow("port with letters") << kiwi << QStringLiteral("80x3") << goodMhz << noPort;
    QTest::newRow("port in hexadecimal") << kiwi << QStringLiteral("0x50") << goodMhz << noPort;
    QTest::newRow("empty port, and a bad frequency") << kiwi << QString() << QString() << noPort;
    QTest::newRow("frequency 0") << kiwi << goodPort << QStringLiteral("0") << noMhz;
    QTest::newRow("frequency too high") << kiwi << goodPort << QStringLiteral("3000.1") << noMhz;
    QTest::newRow("frequency with letters") << kiwi << goodPort << QStringLiteral("20 m") << noMhz;
    QTest::newRow("frequency nan") << kiwi << goodPort << QStringLiteral("nan") << noMhz;
    QTest::newRow("empty frequency") << kiwi << goodPort << QString() << noMhz;
}

void ReceiverInputTest::theFirstFailingCheckRefuses()
{
    QFETCH(QString, host);
    QFETCH(QString, port);
    QFETCH(QString, frequency);
    QTEST(readReceiverInput(host, port, frequency).refusal, "refusal");
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ReceiverInputTest)
#include "receiverinput_test.moc"
