#include "daemon/bridgeinput.h"
#include "daemon/dialhistory.h"
#include "daemon/spots.h"

#include <QDateTime>
#include <QtTest>

namespace outpost
{

namespace
{
qint64 utcMs(int day, int hour, int minute, int second)
{
    return QDateTime(QDate(2026, 11, day), QTime(hour, minute, second), Qt::UTC)
        .toMSecsSinceEpoch();
}

BridgeDecode decode(const QString &message = QStringLiteral("CQ K1ABC FN42"))
{
    return {QStringLiteral("175230"), QStringLiteral("-12"), QStringLiteral("0.3"),
            QStringLiteral("1234"), message};
}

Spot heard(const QString &message, int audioHz, qint64 periodStartMs = 0)
{
    Spot spot;
    spot.message = message;
    spot.audioHz = audioHz;
    spot.periodStartMs = periodStartMs;
    return spot;
}
} // namespace

class BridgeInputTest : public QObject
{
    Q_OBJECT

private slots:
    void readsWhatTheBridgeWrites()
    {
        const auto read = parseBridgeLine(bridgeLine(decode()).trimmed());
        QVERIFY(read);
        QCOMPARE(read->time, decode().time);
        QCOMPARE(read->snr, decode().snr);
        QCOMPARE(read->dt, decode().dt);
        QCOMPARE(read->frequency, decode().frequency);
        QCOMPARE(read->message, decode().message);
    }

    void otherLinesAreNoDecodes_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("greeting") << QByteArray("PELQBRIDGE2|READY");
        QTest::newRow("no Base64") << QByteArray("PELQOUTPOST2|!!!");
        QTest::newRow("four fields") << "PELQOUTPOST2|" + QByteArray("a\tb\tc\td").toBase64();
        QTest::newRow("six fields") << "PELQOUTPOST2|" + QByteArray("a\tb\tc\td\te\tf").toBase64();
    }

    void otherLinesAreNoDecodes()
    {
        QFETCH(QByteArray, line);
        QVERIFY(!parseBridgeLine(line));
    }

    void theDateComesFromTheClock_data()
    {
        QTest::addColumn<QString>("time");
        QTest::addColumn<qint64>("nowMs");
        QTest::addColumn<qint64>("startMs");
        QTest::newRow("just now") << QStringLiteral("175230") << utcMs(21, 17, 52, 46)
                                  << utcMs(21, 17, 52, 30);
        QTest::newRow("before midnight, heard after it")
            << QStringLiteral("235945") << utcMs(22, 0, 0, 2) << utcMs(21, 23, 59, 45);
        QTest::newRow("midnight") << QStringLiteral("000000") << utcMs(22, 0, 0, 17)
                                  << utcMs(22, 0, 0, 0);
        QTest::newRow("after midnight, by a clock that is slow")
            << QStringLiteral("000000") << utcMs(21, 23, 59, 59) << utcMs(22, 0, 0, 0);
    }

    void theDateComesFromTheClock()
    {
        QFETCH(QString, time);
        QFETCH(qint64, nowMs);
        QFETCH(qint64, startMs);
        QCOMPARE(periodStartOf(time, nowMs).value_or(-1), startMs);
    }

    void whatIsNoTimeHasNoDate()
    {
        for (const char *text : {"", "17523", "1752300", "246060", "a75230", "-10000", "17 230"}) {
            QVERIFY2(!periodStartOf(QLatin1String(text), utcMs(21, 12, 0, 0)), text);
        }
    }

    void aDecodeBecomesASpot()
    {
        const auto spot = spotOf(decode(), QStringLiteral("window"), 1000, 14074000);
        QVERIFY(spot);
        QCOMPARE(spot->source, QStringLiteral("window"));
        QCOMPARE(spot->periodStartMs, qint64(1000));
        QCOMPARE(spot->dialHz, qint64(14074000));
        QCOMPARE(spot->snr, -12);
        QCOMPARE(spot->dt, 0.3);
        QCOMPARE(spot->audioHz, 1234);
        QCOMPARE(spot->message, QStringLiteral("CQ K1ABC FN42"));
        QCOMPARE(spot->callsign, QStringLiteral("K1ABC"));
        QCOMPARE(spot->locator, QStringLiteral("FN42"));
        QVERIFY(!spot->lowConfidence);
    }

    void aLoneQuestionMarkIsADoubt()
    {
        for (const char *message : {"K1ABC W9XYZ EN37 ? a1", "K1ABC W9XYZ EN37 ?"}) {
            QVERIFY(spotOf(decode(QLatin1String(message)), {}, 0, 0)->lowConfidence);
        }
        QVERIFY(!spotOf(decode(QStringLiteral("QRZ? DE K1ABC")), {}, 0, 0)->lowConfidence);
    }

    void whatIsNoNumberIsNoSpot()
    {
        BridgeDecode bad = decode();
        bad.snr = QStringLiteral("loud");
        QVERIFY(!spotOf(bad, {}, 0, 0));
        bad = decode();
        bad.dt = QStringLiteral("nan?");
        QVERIFY(!spotOf(bad, {}, 0, 0));
        bad = decode();
        bad.frequency = QStringLiteral("99999999999");
        QVERIFY(!spotOf(bad, {}, 0, 0));
        QVERIFY(!spotOf(decode(QString()), {}, 0, 0));
        bad = decode();
        bad.dt = QStringLiteral("nan");
        QVERIFY(!spotOf(bad, {}, 0, 0));
        for (const char *message : {"CQ K1ABC\nFN42", "CQ \033[2J", "CQ\tK1ABC"}) {
            QVERIFY2(!spotOf(decode(QLatin1String(message)), {}, 0, 0), message);
        }
    }

    void nearDoublesAreOne()
    {
        NearDoubles doubles;
        QVERIFY(doubles.isNew(heard(QStringLiteral("CQ A"), 1000)));
        QVERIFY(!doubles.isNew(heard(QStringLiteral("CQ A"), 1012)));
        QVERIFY(!doubles.isNew(heard(QStringLiteral("cq a"), 988)));
        QVERIFY(doubles.isNew(heard(QStringLiteral("CQ A"), 1013)));
        QVERIFY(doubles.isNew(heard(QStringLiteral("CQ B"), 1000)));
        QVERIFY(doubles.isNew(heard(QStringLiteral("CQ A"), 1000, 15000)));
        QVERIFY(!doubles.isNew(heard(QStringLiteral("CQ A"), 1000))); // late, from a slow worker
    }

    void aFloodOfMessagesIsBounded()
    {
        NearDoubles doubles;
        int taken = 0;
        for (int i = 0; i < 10000; ++i) {
            taken += doubles.isNew(heard(QString::number(i), 1000)) ? 1 : 0;
        }
        QCOMPARE(taken, 2000);
        QVERIFY(doubles.isNew(heard(QStringLiteral("CQ A"), 1000, 15000)));
    }

    void aFloodOfOneMessageIsBounded()
    {
        NearDoubles doubles;
        int taken = 0;
        for (int i = 0; i < 10000; ++i) {
            taken += doubles.isNew(heard(QStringLiteral("CQ A"), 13 * i)) ? 1 : 0;
        }
        QCOMPARE(taken, 2000);
    }

    void aFloodOfPeriodsIsBounded()
    {
        NearDoubles doubles;
        int taken = 0;
        for (int i = 0; i < 100; ++i) {
            taken += doubles.isNew(heard(QStringLiteral("CQ A"), 1000, i * 1000)) ? 1 : 0;
        }
        QCOMPARE(taken, 20);
        QVERIFY(doubles.isNew(heard(QStringLiteral("CQ A"), 1000, 3600000)));
        QVERIFY(doubles.isNew(heard(QStringLiteral("CQ A"), 1000, 0))); // the clock was set back
    }

    void theDialIsThatOfThePeriodsStart()
    {
        DialHistory dial;
        QCOMPARE(dial.dialHzAt(5), qint64(0));
        dial.set(14074000, 1000);
        dial.set(7074000, 20000);
        QCOMPARE(dial.dialHzAt(0), qint64(14074000));
        QCOMPARE(dial.dialHzAt(19999), qint64(14074000));
        QCOMPARE(dial.dialHzAt(20000), qint64(7074000));
        dial.set(3573000, 15000); // the clock was set back
        QCOMPARE(dial.dialHzAt(20000), qint64(3573000));
    }

    void theLinesOfAReceiverBecomeSpots()
    {
        const QVector<Ft8Decode> decodes = parseDecodeLines(
            {QStringLiteral("175230 -12  0.3 1234 ~  K1ABC W9XYZ EN37                    ? a1"),
             QStringLiteral("175230   5 -0.1  400 ~  CQ K1ABC FN42"), QStringLiteral("~ odd")});
        const PeriodSpots period = spotsOf(decodes, QStringLiteral("20 m"), 1000, 14074000);
        QCOMPARE(period.source, QStringLiteral("20 m"));
        QCOMPARE(period.periodStartMs, qint64(1000));
        QCOMPARE(period.dialHz, qint64(14074000));
        QCOMPARE(period.spots.size(), 2);
        const Spot &doubtful = period.spots.first();
        QCOMPARE(doubtful.message, QStringLiteral("K1ABC W9XYZ EN37                    ? a1"));
        QVERIFY(doubtful.lowConfidence);
        QCOMPARE(doubtful.callsign, QStringLiteral("W9XYZ"));
        QCOMPARE(doubtful.locator, QStringLiteral("EN37"));
        const Spot &sure = period.spots.last();
        QCOMPARE(sure.source, QStringLiteral("20 m"));
        QCOMPARE(sure.snr, 5);
        QCOMPARE(sure.dt, -0.1);
        QCOMPARE(sure.audioHz, 400);
        QCOMPARE(sure.dialHz, qint64(14074000));
        QCOMPARE(sure.periodStartMs, qint64(1000));
        QVERIFY(!sure.lowConfidence);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::BridgeInputTest)
#include "bridgeinput_test.moc"
