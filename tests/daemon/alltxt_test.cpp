#include "daemon/alltxt.h"
#include "tests/decode/filesizelimit.h"
#include "tests/fixture/logtrace.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(outpost::Spot)

namespace outpost
{

namespace
{
const qint64 periodMs =
    QDateTime(QDate(2026, 11, 21), QTime(17, 52, 30), Qt::UTC).toMSecsSinceEpoch();

Spot spot(const QString &message, int snr = -12, double dt = 0.3, int audioHz = 1234,
          qint64 dialHz = 14074000)
{
    Spot spot;
    spot.periodStartMs = periodMs;
    spot.dialHz = dialHz;
    spot.snr = snr;
    spot.dt = dt;
    spot.audioHz = audioHz;
    spot.message = message;
    return spot;
}

PeriodSpots period(const QStringList &messages, qint64 startMs = periodMs)
{
    PeriodSpots period;
    period.periodStartMs = startMs;
    for (const QString &message : messages) {
        period.spots.append(spot(message));
    }
    return period;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}
} // namespace

class AllTxtTest : public QObject
{
    Q_OBJECT

private slots:
    void theColumnsAreThoseOfWsjtx_data()
    {
        QTest::addColumn<Spot>("decode");
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("usual") << spot(QStringLiteral("CQ K1ABC FN42"))
                               << QByteArray("261121_175230    14.074 Rx FT8    -12  0.3 1234 CQ "
                                             "K1ABC FN42\n");
        QTest::newRow("strong, late, low") << spot(QStringLiteral("CQ A"), 3, 1.2, 7)
                                           << QByteArray("261121_175230    14.074 Rx FT8      3  "
                                                         "1.2    7 CQ A\n");
        QTest::newRow("early") << spot(QStringLiteral("CQ A"), -24, -1.5, 3000, 144174000)
                               << QByteArray(
                                      "261121_175230   144.174 Rx FT8    -24 -1.5 3000 CQ A\n");
        QTest::newRow("160 m") << spot(QStringLiteral("CQ A"), -1, 0, 500, 1840000)
                               << QByteArray(
                                      "261121_175230     1.840 Rx FT8     -1  0.0  500 CQ A\n");
        QTest::newRow("a-priori mark")
            << spot(QStringLiteral("K1ABC W9XYZ EN37                    ? a1"))
            << QByteArray("261121_175230    14.074 Rx FT8    -12  0.3 1234 K1ABC W9XYZ EN37        "
                          "            ? a1\n");
    }

    void theColumnsAreThoseOfWsjtx()
    {
        QFETCH(Spot, decode);
        QFETCH(QByteArray, line);
        QCOMPARE(allTxtLine(decode), line);
    }

    void aMonthHasItsFile()
    {
        QCOMPARE(allTxtFileName(QStringLiteral("ALL.TXT"), periodMs, false),
                 QStringLiteral("ALL.TXT"));
        QCOMPARE(allTxtFileName(QStringLiteral("ALL.TXT"), periodMs, true),
                 QStringLiteral("2026-11-ALL.TXT"));
        // The test runs where it is already December.
        const qint64 lastPeriod =
            QDateTime(QDate(2026, 11, 30), QTime(23, 59, 45), Qt::UTC).toMSecsSinceEpoch();
        QCOMPARE(allTxtFileName(QStringLiteral("ALL.TXT"), lastPeriod, true),
                 QStringLiteral("2026-11-ALL.TXT"));
        QCOMPARE(allTxtFileName(QStringLiteral("ALL.TXT"), lastPeriod + 15000, true),
                 QStringLiteral("2026-12-ALL.TXT"));
    }

    void eachPeriodIsAppendedAtOnce()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("ALL.TXT"));
        AllTxtOutput output([&](qint64) { return QString(path); });
        output.take(period({QStringLiteral("CQ A"), QStringLiteral("CQ B")}));
        const QByteArray first =
            allTxtLine(spot(QStringLiteral("CQ A"))) + allTxtLine(spot(QStringLiteral("CQ B")));
        QCOMPARE(contentOf(path), first);
        output.take(period({QStringLiteral("CQ C")}));
        output.close();
        QCOMPARE(contentOf(path), first + allTxtLine(spot(QStringLiteral("CQ C"))));
    }

    void whatIsThereIsKept()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("ALL.TXT"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("old\nhalf a li");
        file.close();
        AllTxtOutput output([&](qint64) { return QString(path); });
        output.take(period({QStringLiteral("CQ A")}));
        QCOMPARE(contentOf(path), "old\nhalf a li\n" + allTxtLine(spot(QStringLiteral("CQ A"))));
    }

    void aFullDiskTearsNothingAndLosesNothing()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("ALL.TXT"));
        const LogTrace log;
        AllTxtOutput output([&](qint64) { return QString(path); });
        output.take(period({QStringLiteral("CQ A")}));
        const QByteArray first = contentOf(path);
        {
            const FileSizeLimit limit(static_cast<rlim_t>(first.size() + 20)); // half a line
            output.take(period({QStringLiteral("CQ B")}));
            QCOMPARE(contentOf(path), first);
            output.take(period({QStringLiteral("CQ C")}));
            QCOMPARE(contentOf(path), first);
            QCOMPARE(output.waitingLines(), 2);
        }
        output.take(period({QStringLiteral("CQ D")}));
        QCOMPARE(output.waitingLines(), 0);
        QCOMPARE(contentOf(path), first + allTxtLine(spot(QStringLiteral("CQ B"))) +
                                      allTxtLine(spot(QStringLiteral("CQ C"))) +
                                      allTxtLine(spot(QStringLiteral("CQ D"))));
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines.first().startsWith(
                     QStringLiteral("ALL.TXT cannot be written; its lines wait. ") + path),
                 qPrintable(lines.first()));
        QCOMPARE(lines.last(), QStringLiteral("ALL.TXT is written again."));
    }

    void whatWaitsIsBounded()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("missing/ALL.TXT"));
        const LogTrace log;
        AllTxtOutput output([&](qint64) { return QString(path); });
        QStringList messages;
        for (int i = 0; i < AllTxtOutput::maxWaiting; ++i) {
            messages.append(QString::number(i));
        }
        output.take(period(messages));
        output.take(period({QStringLiteral("the newest")}));
        QCOMPARE(output.waitingLines(), AllTxtOutput::maxWaiting);
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("missing")));
        output.close();
        const QByteArray content = contentOf(path);
        QVERIFY(content.startsWith(allTxtLine(spot(QStringLiteral("1")))));
        QVERIFY(content.endsWith(allTxtLine(spot(QStringLiteral("the newest")))));
        QCOMPARE(log.lines().last(),
                 QStringLiteral("ALL.TXT is written again; the oldest 1 lines were dropped."));
    }

    void aPeriodGoesIntoItsOwnMonthHoweverLate()
    {
        const QTemporaryDir folder;
        const QString later = folder.filePath(QStringLiteral("later"));
        AllTxtOutput output([&](qint64 startMs) {
            return (startMs == periodMs ? folder.filePath(QStringLiteral("first")) : later) +
                   QStringLiteral("/ALL.TXT");
        });
        output.take(period({QStringLiteral("CQ A")}));
        output.take(period({QStringLiteral("CQ B")}, periodMs + 15000));
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("first")));
        QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("later")));
        output.close();
        QCOMPARE(contentOf(folder.filePath(QStringLiteral("first/ALL.TXT"))),
                 allTxtLine(spot(QStringLiteral("CQ A"))));
        QCOMPARE(contentOf(later + QStringLiteral("/ALL.TXT")),
                 allTxtLine(spot(QStringLiteral("CQ B"))));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::AllTxtTest)
#include "alltxt_test.moc"
