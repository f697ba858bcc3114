#include "daemon/backgroundwriter.h"
#include "daemon/textoutput.h"
#include "tests/fixture/logtrace.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSemaphore>
#include <QtTest>

namespace outpost
{

namespace
{
const qint64 periodMs =
    QDateTime(QDate(2026, 11, 21), QTime(17, 52, 30), Qt::UTC).toMSecsSinceEpoch();

Spot spot()
{
    Spot spot;
    spot.source = QStringLiteral("20 m");
    spot.periodStartMs = periodMs;
    spot.dialHz = 14074000;
    spot.snr = -12;
    spot.dt = 0.3;
    spot.audioHz = 985;
    spot.message = QStringLiteral("CQ YV6BXN FK60");
    spot.callsign = QStringLiteral("YV6BXN");
    spot.locator = QStringLiteral("FK60");
    return spot;
}

QJsonObject jsonOf(const Spot &spot)
{
    const QByteArray line = jsonLine(spot);
    return line.count('\n') == 1 && line.endsWith('\n') ? QJsonDocument::fromJson(line).object()
                                                        : QJsonObject();
}
} // namespace

class TextOutputTest : public QObject
{
    Q_OBJECT

private slots:
    void aRowOfTheTable()
    {
        QCOMPARE(tableLine(spot()),
                 QByteArray("2026-11-21 17:52:30  20 m                    14.074   -12   "
                            "0.3   985  CQ YV6BXN FK60\n"));
    }

    void aJsonLineHasWhatIsKnown()
    {
        const QJsonObject expected = QJsonDocument::fromJson(
                                         R"({"mode":"FT8","timestamp":1795283550000,"freq":14074985,
            "msg":"CQ YV6BXN FK60","callsign":"YV6BXN","locator":"FK60","receiver":"20 m",
            "dial":14074000,"audio":985,"snr":-12,"dt":0.3})")
                                         .object();
        QCOMPARE(expected.size(), 11);
        QCOMPARE(jsonOf(spot()), expected);
    }

    void aJsonLineLeavesOutWhatIsNotKnown()
    {
        Spot unknown = spot();
        unknown.callsign.clear();
        unknown.locator.clear();
        unknown.lowConfidence = true;
        const QJsonObject json = jsonOf(unknown);
        QVERIFY(!json.contains(QStringLiteral("callsign")));
        QVERIFY(!json.contains(QStringLiteral("locator")));
        QCOMPARE(json.value(QStringLiteral("low_confidence")).toBool(), true);
    }

    void theTableHasOneHead()
    {
        QByteArray written;
        TextOutput output(TextFormat::Table, [&](const QByteArray &lines) {
            written += lines;
            return true;
        });
        output.take({QStringLiteral("20 m"), periodMs, 14074000, {spot(), spot()}});
        output.take({QStringLiteral("20 m"), periodMs, 14074000, {spot()}});
        QCOMPARE(written, tableHead() + tableLine(spot()) + tableLine(spot()) + tableLine(spot()));
        QCOMPARE(tableHead().indexOf("Message"), tableLine(spot()).indexOf("CQ"));
    }

    void jsonHasNoHead()
    {
        QByteArray written;
        TextOutput output(TextFormat::JsonLines, [&](const QByteArray &text) {
            written += text;
            return true;
        });
        output.take({QStringLiteral("20 m"), periodMs, 14074000, {spot()}});
        QCOMPARE(written, jsonLine(spot()));
    }

    void droppedLinesAreToldOfOnce()
    {
        bool isRead = false;
        const LogTrace log;
        TextOutput output(TextFormat::JsonLines, [&](const QByteArray &) { return isRead; });
        const PeriodSpots period{QStringLiteral("20 m"), periodMs, 14074000, {spot()}};
        output.take(period);
        output.take(period);
        isRead = true;
        output.take(period);
        output.take(period);
        QCOMPARE(
            log.lines(),
            (QStringList{QStringLiteral("Standard output is not read; decodes are dropped there."),
                         QStringLiteral("Standard output is read again.")}));
    }

    void theWriterKeepsTheOrder()
    {
        QByteArray written;
        BackgroundWriter writer([&](const QByteArray &piece) {
            written += piece;
            return true;
        });
        QByteArray expected;
        for (int i = 0; i < 1000; ++i) {
            const QByteArray piece = QByteArray::number(i) + '\n';
            QVERIFY(writer.write(piece));
            expected += piece;
        }
        QVERIFY(writer.flush(60000));
        QCOMPARE(written, expected);
    }

    void aReaderThatHasStoppedHoldsNothingBack()
    {
        auto gate = std::make_shared<QSemaphore>(); // outlives the thread that waits at it
        {
            BackgroundWriter writer([gate](const QByteArray &) {
                gate->acquire();
                return true;
            });
            const QByteArray piece(BackgroundWriter::maxWaitingBytes / 4, 'x');
            int taken = 0;
            while (writer.write(piece)) {
                ++taken;
            }
            QVERIFY(taken >= 4 && taken <= 5); // one may be on its way
            QVERIFY(!writer.flush(1));
        }
        gate->release();
    }

    void afterAFailureNothingMoreIsTaken()
    {
        BackgroundWriter writer([](const QByteArray &) { return false; });
        QVERIFY(writer.write("x"));
        QVERIFY(writer.flush(60000));
        QVERIFY(!writer.write("y"));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::TextOutputTest)
#include "textoutput_test.moc"
