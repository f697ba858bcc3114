#include "display/stationtexts.h"

#include <QtTest>

namespace outpost
{

namespace
{

const qint64 startMs = 1700000000000;

StatusSession runningSession()
{
    StatusSession session;
    session.active = true;
    session.host = QStringLiteral("Kiwi.Example.net");
    session.port = 8073;
    session.frequencyMhz = 14.074;
    session.startMs = startMs;
    session.decodes = 42;
    return session;
}

QString line(const QString &text, int number)
{
    return text.split(QLatin1Char('\n')).value(number - 1);
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(','));
}

} // namespace

class StationTextsTest : public QObject
{
    Q_OBJECT

private slots:
    void theStatusBarLine_data();
    void theStatusBarLine();
    void aRunningSessionFillsTheEightLines();
    void withoutSessionAndRows();
    void connectedTimeIsInWholeSeconds_data();
    void connectedTimeIsInWholeSeconds();
    void aHostThatLooksLikeAPlaceholderStaysAsItIs();
    void theLatestPeriodOfTheTable_data();
    void theLatestPeriodOfTheTable();
    void snrExtremesOfTheLatestPeriod_data();
    void snrExtremesOfTheLatestPeriod();
};

void StationTextsTest::theStatusBarLine_data()
{
    QTest::addColumn<bool>("verified");
    QTest::addColumn<int>("clients");
    QTest::addColumn<qint64>("decodes");
    QTest::addColumn<QString>("text");

    QTest::newRow("at rest, or listening without clients")
        << false << 0 << qint64(0)
        << QStringLiteral("Kiwi Disconnected | Bridge Disconnected | TDecodes 0");
    QTest::newRow("link verified")
        << true << 0 << qint64(7)
        << QStringLiteral("Kiwi Connected | Bridge Disconnected | TDecodes 7");
    QTest::newRow("clients attached")
        << false << 3 << qint64(5000000000)
        << QStringLiteral("Kiwi Disconnected | Bridge Connected | TDecodes 5000000000");
}

void StationTextsTest::theStatusBarLine()
{
    QFETCH(bool, verified);
    QFETCH(int, clients);
    QFETCH(qint64, decodes);
    QFETCH(QString, text);
    QCOMPARE(statusSummaryText(verified, clients, decodes), text);
}

void StationTextsTest::aRunningSessionFillsTheEightLines()
{
    const LatestPeriod latest{QStringLiteral("10:15:30"), 9, 3, -21};
    const QString text = stationDisplayText(runningSession(), startMs + 3725999, latest,
                                            QStringLiteral("Listening — 0 client(s)"));
    QCOMPARE(text, QStringLiteral("Receiver: Kiwi.Example.net:8073\n"
                                  "Frequency: 14.074000 MHz\n"
                                  "Connected time: 01:02:05\n"
                                  "Session decodes: 42\n"
                                  "Latest FT8 period: 10:15:30\n"
                                  "Latest-period decodes: 9\n"
                                  "Strongest / weakest SNR: 3 / -21 dB\n"
                                  "Local WSJT bridge: Listening — 0 client(s)"));
}

void StationTextsTest::withoutSessionAndRows()
{
    const QString text = stationDisplayText(StatusSession(), startMs, latestPeriod({}, {}),
                                            QStringLiteral("Stopped"));
    QCOMPARE(text, QStringLiteral("Receiver: Disconnected\n"
                                  "Frequency: --\n"
                                  "Connected time: --\n"
                                  "Session decodes: 0\n"
                                  "Latest FT8 period: --\n"
                                  "Latest-period decodes: 0\n"
                                  "Strongest / weakest SNR: -- / -- dB\n"
                                  "Local WSJT bridge: Stopped"));
}

void StationTextsTest::connectedTimeIsInWholeSeconds_data()
{
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<QString>("time");

    QTest::newRow("below one second") << qint64(999) << QStringLiteral("00:00:00");
    QTest::newRow("one second") << qint64(1000) << QStringLiteral("00:00:01");
    QTest::newRow("59 seconds") << qint64(59999) << QStringLiteral("00:00:59");
    QTest::newRow("a day and a second") << qint64(86401000) << QStringLiteral("1d 00:00:01");
    QTest::newRow("after the clock was set back") << qint64(-60000) << QStringLiteral("00:00:00");
}

void StationTextsTest::connectedTimeIsInWholeSeconds()
{
    QFETCH(qint64, elapsedMs);
    QFETCH(QString, time);
    const QString text =
        stationDisplayText(runningSession(), startMs + elapsedMs, LatestPeriod(), QString());
    QCOMPARE(line(text, 3), QStringLiteral("Connected time: ") + time);
}

void StationTextsTest::aHostThatLooksLikeAPlaceholderStaysAsItIs()
{
    StatusSession session = runningSession();
    session.host = QStringLiteral("%1%2");
    const QString text = stationDisplayText(session, startMs, LatestPeriod(), QString());
    QCOMPARE(line(text, 1), QStringLiteral("Receiver: %1%2:8073"));
}

void StationTextsTest::theLatestPeriodOfTheTable_data()
{
    QTest::addColumn<QStringList>("rowLabels");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("decodes");

    QTest::newRow("no rows") << QStringList() << QStringLiteral("--") << 0;
    QTest::newRow("one") << words("A") << QStringLiteral("A") << 1;
    QTest::newRow("the last row's") << words("A,A,B,B,B") << QStringLiteral("B") << 3;
    QTest::newRow("rows further up count too") << words("B,A,B ") << QStringLiteral("B") << 2;
    QTest::newRow("an empty label stays empty") << words("A, ") << QString() << 0;
}

void StationTextsTest::theLatestPeriodOfTheTable()
{
    QFETCH(QStringList, rowLabels);
    QFETCH(QString, label);
    QFETCH(int, decodes);
    QStringList snrs;
    for (int row = 0; row < rowLabels.size(); ++row) {
        snrs.append(QStringLiteral("-10"));
    }
    const LatestPeriod latest = latestPeriod(rowLabels, snrs);
    QCOMPARE(latest.label, label);
    QCOMPARE(latest.decodes, decodes);
    QCOMPARE(latest.strongestDb.has_value(), decodes > 0);
}

void StationTextsTest::snrExtremesOfTheLatestPeriod_data()
{
    QTest::addColumn<QStringList>("rowLabels");
    QTest::addColumn<QStringList>("snrs");
    QTest::addColumn<QString>("shown");

    QTest::newRow("one") << words("A") << words("-12") << QStringLiteral("-12 / -12");
    QTest::newRow("several") << words("A,A,A") << words("-12,3,-24") << QStringLiteral("3 / -24");
    QTest::newRow("all negative") << words("A,A") << words("-24,-3") << QStringLiteral("-3 / -24");
    QTest::newRow("all positive") << words("A,A") << words("5,12") << QStringLiteral("12 / 5");
    QTest::newRow("a plus and zeros go")
        << words("A,A") << words("+03, -05 ") << QStringLiteral("3 / -5");
    QTest::newRow("other periods do not count")
        << words("A,B,A") << words("-12,20,-10") << QStringLiteral("-10 / -12");
    QTest::newRow("what is no integer does not count")
        << words("A,A,A") << words("x,-7,1.5") << QStringLiteral("-7 / -7");
    QTest::newRow("no integer at all") << words("A,A") << words("x,") << QStringLiteral("-- / --");
}

void StationTextsTest::snrExtremesOfTheLatestPeriod()
{
    QFETCH(QStringList, rowLabels);
    QFETCH(QStringList, snrs);
    QFETCH(QString, shown);
    const LatestPeriod latest = latestPeriod(rowLabels, snrs);
    QCOMPARE(latest.decodes, rowLabels.count(rowLabels.last()));
    const QString text = stationDisplayText(StatusSession(), 0, latest, QString());
    QCOMPARE(line(text, 7), QStringLiteral("Strongest / weakest SNR: %1 dB").arg(shown));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::StationTextsTest)
#include "stationtexts_test.moc"
