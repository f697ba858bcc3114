#include "base/duration.h"

#include <QtTest>

namespace outpost
{

class DurationTest : public QObject
{
    Q_OBJECT

private slots:
    void formatsWholeSeconds_data();
    void formatsWholeSeconds();
};

void DurationTest::formatsWholeSeconds_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *name, qint64 seconds, const char *text) {
        QTest::newRow(name) << seconds << QString::fromLatin1(text);
    };
    row("negative counts as none", -1, "00:00:00");
    row("none", 0, "00:00:00");
    row("just under a minute", 59, "00:00:59");
    row("a minute", 60, "00:01:00");
    row("an hour, two minutes, five seconds", 3725, "01:02:05");
    row("last second of the first day", 86399, "23:59:59");
    row("one day", 86400, "1d 00:00:00");
    row("one day and one second", 86401, "1d 00:00:01");
    row("one day, one hour, one minute, one second", 90061, "1d 01:01:01");
    row("days are not padded", 100 * 86400 + 45296, "100d 12:34:56");
    row("days beyond 32 bits of seconds", 100000LL * 86400 + 1, "100000d 00:00:01");
}

void DurationTest::formatsWholeSeconds()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, text);
    QCOMPARE(formatDuration(seconds), text);
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::DurationTest)
#include "duration_test.moc"
