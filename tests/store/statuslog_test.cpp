#include "base/datafile.h"
#include "store/statuslog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

namespace outpost
{

class StatusLogTest : public QObject
{
    Q_OBJECT

private slots:
    void secondsAreWholeAndNeverNegative_data();
    void secondsAreWholeAndNeverNegative();
    void aFirstSessionMakesAWholeLog();
    void aSessionBelowOneSecondStillCounts();
    void hostsInAnyCaseShareOneEntry();
    void anotherPortIsAnotherReceiver();
    void totalsAddUp();
    void oldTotalsAreTruncated_data();
    void oldTotalsAreTruncated();
    void unknownKeysStay();
    void arraysOfTheWrongTypeStartAfresh();
    void entriesThatAreNoObjectsStay();
    void keepsEverySession();
    void onlyAnObjectIsALog_data();
    void onlyAnObjectIsALog();
    void historyOfAFileThatIsNoLog_data();
    void historyOfAFileThatIsNoLog();
    void historyListsTotalsAndSessions();
    void historyReadsMissingNumbersAsZero();
    void historyOfALogWithoutSessions();
    void historyListsTheNewestTwentyFirst();
    void viewWithoutASession();
    void viewOfARunningSession_data();
    void viewOfARunningSession();
};

namespace
{

const qint64 startMs = 1769882655999; // 2026-01-31 18:04:15.999 UTC
const qint64 secondMs = 1000;

StatusSession session(const QString &host = QStringLiteral("Kiwi"), int port = 8073,
                      qint64 decodes = 5)
{
    return {true, host, port, 14.074, startMs, decodes};
}

QJsonObject json(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

QJsonArray receiversOf(const QJsonObject &log)
{
    return log.value(QStringLiteral("Receivers")).toArray();
}

QJsonArray sessionsOf(const QJsonObject &log)
{
    return log.value(QStringLiteral("Sessions")).toArray();
}

QStringList historyLines(const QJsonObject &log)
{
    return statusHistoryText(QJsonDocument(log).toJson()).split(QLatin1Char('\n'));
}

} // namespace

void StatusLogTest::secondsAreWholeAndNeverNegative_data()
{
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("none") << qint64(0) << qint64(0);
    QTest::newRow("below one second") << qint64(999) << qint64(0);
    QTest::newRow("one second") << qint64(1000) << qint64(1);
    QTest::newRow("truncated") << qint64(59999) << qint64(59);
    QTest::newRow("the clock was set back") << qint64(-5000) << qint64(0);
    QTest::newRow("a hundred days") << qint64(8640000000) << qint64(8640000);
}

void StatusLogTest::secondsAreWholeAndNeverNegative()
{
    QFETCH(qint64, elapsedMs);
    QTEST(wholeSeconds(startMs, startMs + elapsedMs), "seconds");
}

void StatusLogTest::aFirstSessionMakesAWholeLog()
{
    const QJsonObject log = withFinishedSession({}, session(), startMs + 90 * secondMs);
    QCOMPARE(QJsonDocument(log).toJson(), QByteArray(R"({
    "FormatVersion": 1,
    "Receivers": [
        {
            "Host": "Kiwi",
            "LastConnectedUtc": "2026-01-31T18:05:45Z",
            "LastFrequencyMhz": 14.074,
            "Port": 8073,
            "Sessions": 1,
            "TotalDecodes": 5,
            "TotalSeconds": 90
        }
    ],
    "Sessions": [
        {
            "Decodes": 5,
            "DurationSeconds": 90,
            "EndUtc": "2026-01-31T18:05:45Z",
            "FrequencyMhz": 14.074,
            "Host": "Kiwi",
            "Port": 8073,
            "StartUtc": "2026-01-31T18:04:15Z"
        }
    ]
}
)"));
}

void StatusLogTest::aSessionBelowOneSecondStillCounts()
{
    const QJsonObject log = withFinishedSession({}, session(), startMs + 999);
    QCOMPARE(sessionsOf(log).at(0).toObject().value(QStringLiteral("DurationSeconds")).toInt(-1),
             0);
    QCOMPARE(receiversOf(log).at(0).toObject().value(QStringLiteral("Sessions")).toInt(), 1);
    QCOMPARE(receiversOf(log).at(0).toObject().value(QStringLiteral("TotalSeconds")).toInt(-1), 0);
}

void StatusLogTest::hostsInAnyCaseShareOneEntry()
{
    QJsonObject log = withFinishedSession({}, session(QStringLiteral("KIWI")), startMs);
    log = withFinishedSession(log, session(QStringLiteral("other")), startMs);
    log = withFinishedSession(log, session(QStringLiteral("Kiwi")), startMs);
    QCOMPARE(receiversOf(log).size(), 2);
    const QJsonObject entry = receiversOf(log).at(0).toObject();
    QCOMPARE(entry.value(QStringLiteral("Host")).toString(), QStringLiteral("Kiwi"));
    QCOMPARE(entry.value(QStringLiteral("Sessions")).toInt(), 2);
    // A logged session keeps the host as it was typed then.
    QCOMPARE(sessionsOf(log).at(0).toObject().value(QStringLiteral("Host")).toString(),
             QStringLiteral("KIWI"));
}

void StatusLogTest::anotherPortIsAnotherReceiver()
{
    const QJsonObject old = json(R"({"Receivers": [{"Host": "Kiwi"}]})");
    QJsonObject log = withFinishedSession(old, session(QStringLiteral("Kiwi"), 8073), startMs);
    log = withFinishedSession(log, session(QStringLiteral("Kiwi"), 8074), startMs);
    // An entry without a port counts as port 0, not as the usual port.
    QCOMPARE(receiversOf(log).size(), 3);
    QCOMPARE(receiversOf(log).at(2).toObject().value(QStringLiteral("Port")).toInt(), 8074);
}

void StatusLogTest::totalsAddUp()
{
    QJsonObject log = withFinishedSession({}, session(), startMs + 90 * secondMs);
    StatusSession second = session(QStringLiteral("Kiwi"), 8073, 40);
    second.frequencyMhz = 7.074;
    log = withFinishedSession(log, second, startMs + 10 * secondMs);
    const QJsonObject entry = receiversOf(log).at(0).toObject();
    QCOMPARE(entry.value(QStringLiteral("Sessions")).toInt(), 2);
    QCOMPARE(entry.value(QStringLiteral("TotalSeconds")).toInt(), 100);
    QCOMPARE(entry.value(QStringLiteral("TotalDecodes")).toInt(), 45);
    QCOMPARE(entry.value(QStringLiteral("LastFrequencyMhz")).toDouble(), 7.074);
    QCOMPARE(entry.value(QStringLiteral("LastConnectedUtc")).toString(),
             QStringLiteral("2026-01-31T18:04:25Z"));
}

void StatusLogTest::oldTotalsAreTruncated_data()
{
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<double>("total");
    QTest::newRow("with a fraction") << QByteArray("12.9") << 22.0;
    QTest::newRow("negative with a fraction") << QByteArray("-12.9") << -2.0;
    QTest::newRow("beyond 32 bits") << QByteArray("5000000000") << 5000000010.0;
    QTest::newRow("text") << QByteArray("\"12\"") << 10.0;
    QTest::newRow("beyond counting") << QByteArray("1e300") << 9007199254741002.0;
}

void StatusLogTest::oldTotalsAreTruncated()
{
    QFETCH(QByteArray, old);
    QFETCH(double, total);
    const QJsonObject log =
        json(R"({"Receivers": [{"Host": "Kiwi", "Port": 8073, "TotalSeconds": )" + old +
             R"(, "TotalDecodes": )" + old + "}]}");
    const StatusSession ten = session(QStringLiteral("Kiwi"), 8073, 10);
    const QJsonObject entry =
        receiversOf(withFinishedSession(log, ten, startMs + 10 * secondMs)).at(0).toObject();
    QCOMPARE(entry.value(QStringLiteral("TotalSeconds")).toDouble(), total);
    QCOMPARE(entry.value(QStringLiteral("TotalDecodes")).toDouble(), total);
    QCOMPARE(entry.value(QStringLiteral("Sessions")).toInt(), 1);
}

void StatusLogTest::unknownKeysStay()
{
    const QJsonObject old = json(R"({"Owner": "me", "FormatVersion": 7,
        "Receivers": [{"Host": "Kiwi", "Port": 8073, "Note": [1]}],
        "Sessions": [{"Host": "Kiwi", "Note": 2}]})");
    const QJsonObject log = withFinishedSession(old, session(), startMs);
    QCOMPARE(log.value(QStringLiteral("Owner")).toString(), QStringLiteral("me"));
    QCOMPARE(log.value(QStringLiteral("FormatVersion")).toInt(), 1);
    QCOMPARE(receiversOf(log).at(0).toObject().value(QStringLiteral("Note")).toArray().size(), 1);
    QCOMPARE(sessionsOf(log).at(0), sessionsOf(old).at(0));
}

void StatusLogTest::arraysOfTheWrongTypeStartAfresh()
{
    const QJsonObject old = json(R"({"Receivers": {"Host": "Kiwi"}, "Sessions": "none"})");
    const QJsonObject log = withFinishedSession(old, session(), startMs);
    QCOMPARE(receiversOf(log).size(), 1);
    QCOMPARE(sessionsOf(log).size(), 1);
}

void StatusLogTest::entriesThatAreNoObjectsStay()
{
    const QJsonObject old = json(R"({"Receivers": ["Kiwi", 5], "Sessions": [null]})");
    const QJsonObject log = withFinishedSession(old, session(), startMs);
    QCOMPARE(receiversOf(log).size(), 3);
    QCOMPARE(receiversOf(log).at(0).toString(), QStringLiteral("Kiwi"));
    QCOMPARE(sessionsOf(log).size(), 2);
    QVERIFY(sessionsOf(log).at(0).isNull());
}

void StatusLogTest::keepsEverySession()
{
    QJsonObject log;
    for (int count = 0; count < 25; ++count) {
        log = withFinishedSession(log, session(QStringLiteral("Kiwi"), 8073, count), startMs);
    }
    QCOMPARE(sessionsOf(log).size(), 25);
    for (int index = 0; index < 25; ++index) {
        QCOMPARE(sessionsOf(log).at(index).toObject().value(QStringLiteral("Decodes")).toInt(-1),
                 index);
    }
}

void StatusLogTest::onlyAnObjectIsALog_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<bool>("isLog");
    QTest::newRow("an object") << QByteArray("{}") << true;
    QTest::newRow("an array") << QByteArray("[{}]") << false;
    QTest::newRow("cut short") << QByteArray("{\"Sessions\": [") << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void StatusLogTest::onlyAnObjectIsALog()
{
    QFETCH(QByteArray, file);
    QTEST(parseJsonObject(file).has_value(), "isLog");
}

void StatusLogTest::historyOfAFileThatIsNoLog_data()
{
    QTest::addColumn<bool>("opens");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("line");
    const QString invalid = QStringLiteral("Status data file is not valid JSON.");
    QTest::newRow("no file") << false << QByteArray()
                             << QStringLiteral("No completed receiver sessions yet.");
    QTest::newRow("empty") << true << QByteArray() << invalid;
    QTest::newRow("an array") << true << QByteArray("[]") << invalid;
    QTest::newRow("text") << true << QByteArray("log") << invalid;
}

void StatusLogTest::historyOfAFileThatIsNoLog()
{
    QFETCH(bool, opens);
    QFETCH(QByteArray, file);
    QFETCH(QString, line);
    QCOMPARE(statusHistoryText(opens ? std::optional<QByteArray>(file) : std::nullopt),
             QStringLiteral("RECEIVER TOTALS\n") + line);
}

void StatusLogTest::historyListsTotalsAndSessions()
{
    QJsonObject log = withFinishedSession({}, session(), startMs + 3725 * secondMs);
    log = withFinishedSession(log, session(QStringLiteral("%6"), 1, 0), startMs + 90061 * secondMs);
    const QStringList expected{
        QStringLiteral("RECEIVER TOTALS"),
        QStringLiteral("Kiwi:8073 | Sessions: 1 | Time: 01:02:05 | Decodes: 5 | "
                       "Last UTC: 2026-01-31T19:06:20Z"),
        QStringLiteral("%6:1 | Sessions: 1 | Time: 1d 01:01:01 | Decodes: 0 | "
                       "Last UTC: 2026-02-01T19:05:16Z"),
        QString(),
        QStringLiteral("RECENT COMPLETED SESSIONS"),
        QStringLiteral("2026-01-31T18:04:15Z | %6:1 | 14.074000 MHz | 1d 01:01:01 | 0 decodes"),
        QStringLiteral("2026-01-31T18:04:15Z | Kiwi:8073 | 14.074000 MHz | 01:02:05 | 5 decodes")};
    QCOMPARE(historyLines(log), expected);
}

void StatusLogTest::historyReadsMissingNumbersAsZero()
{
    const QStringList expected{
        QStringLiteral("RECEIVER TOTALS"),
        QStringLiteral(":0 | Sessions: 0 | Time: 00:00:00 | Decodes: 0 | Last UTC: "),
        QStringLiteral("a:0 | Sessions: 0 | Time: 00:00:12 | Decodes: 5000000000 | Last UTC: x"),
        QString(),
        QStringLiteral("RECENT COMPLETED SESSIONS"),
        QStringLiteral("x | :0 | 0.000000 MHz | 00:00:12 | 3 decodes"),
        QStringLiteral(" | :0 | 0.000000 MHz | 00:00:00 | 0 decodes")};
    QCOMPARE(historyLines(json(R"({"Receivers": [{}, {"Host": "a", "TotalSeconds": 12.9,
        "TotalDecodes": 5000000000.5, "LastConnectedUtc": "x"}],
        "Sessions": [{}, {"StartUtc": "x", "DurationSeconds": 12.9, "Decodes": 3.5}]})")),
             expected);
}

void StatusLogTest::historyOfALogWithoutSessions()
{
    const QStringList expected{QStringLiteral("RECEIVER TOTALS"),
                               QStringLiteral("No completed receiver sessions yet."), QString(),
                               QStringLiteral("RECENT COMPLETED SESSIONS"),
                               QStringLiteral("No completed sessions.")};
    QCOMPARE(historyLines({}), expected);
    QCOMPARE(historyLines(json(R"({"Receivers": [], "Sessions": []})")), expected);
    QCOMPARE(historyLines(json(R"({"Receivers": 5, "Sessions": {"a": 1}})")), expected);
}

void StatusLogTest::historyListsTheNewestTwentyFirst()
{
    QJsonObject log;
    for (int count = 0; count < 25; ++count) {
        log = withFinishedSession(log, session(QStringLiteral("Kiwi"), 8073, count), startMs);
    }
    const QStringList lines = historyLines(log);
    QCOMPARE(lines.size(), 4 + 20);
    for (int row = 0; row < 20; ++row) {
        QVERIFY2(lines.at(4 + row).endsWith(QStringLiteral(" | %1 decodes").arg(24 - row)),
                 qPrintable(lines.at(4 + row)));
    }
}

void StatusLogTest::viewWithoutASession()
{
    QCOMPARE(statusLogText({}, startMs, QStringLiteral("C:\\data\\log.json"),
                           QStringLiteral("HISTORY\nof two lines")),
             QStringLiteral("PELQ KIWI OUTPOST STATUS LOG\n"
                            "Data file: C:\\data\\log.json\n"
                            "\n"
                            "CURRENT CONNECTION\n"
                            "Disconnected\n"
                            "\n"
                            "HISTORY\n"
                            "of two lines"));
}

void StatusLogTest::viewOfARunningSession_data()
{
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<QString>("elapsed");
    QTest::newRow("just started") << qint64(999) << QStringLiteral("00:00:00");
    QTest::newRow("an hour") << qint64(3725999) << QStringLiteral("01:02:05");
    QTest::newRow("more than a day") << qint64(90061000) << QStringLiteral("1d 01:01:01");
}

void StatusLogTest::viewOfARunningSession()
{
    QFETCH(qint64, elapsedMs);
    QFETCH(QString, elapsed);
    QCOMPARE(statusLogText(session(QStringLiteral("%2")), startMs + elapsedMs,
                           QStringLiteral("/data/log.json"), QStringLiteral("HISTORY")),
             QStringLiteral("PELQ KIWI OUTPOST STATUS LOG\n"
                            "Data file: /data/log.json\n"
                            "\n"
                            "CURRENT CONNECTION\n"
                            "Receiver: %2:8073\n"
                            "Frequency: 14.074000 MHz\n"
                            "Connected since UTC: 2026-01-31T18:04:15Z\n"
                            "Elapsed: ") +
                 elapsed +
                 QStringLiteral("\n"
                                "Session decodes: 5\n"
                                "\n"
                                "HISTORY"));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::StatusLogTest)
#include "statuslog_test.moc"
