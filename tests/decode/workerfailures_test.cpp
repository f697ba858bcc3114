#include "decode/workerfailures.h"

#include <QtTest>

namespace outpost
{

namespace
{
const QString period = QStringLiteral("14:23:15");
const QString later = QStringLiteral("14:23:30");
const Jt9Failure none;
const Jt9Failure exitCode1 = {Jt9Cause::ExitCode, QStringLiteral("1")};
const Jt9Failure exitCode2 = {Jt9Cause::ExitCode, QStringLiteral("2")};
const Jt9Failure killed = {Jt9Cause::Killed, QStringLiteral("1")};
} // namespace

} // namespace outpost

Q_DECLARE_METATYPE(outpost::Jt9Cause)

namespace outpost
{

class WorkerFailuresTest : public QObject
{
    Q_OBJECT

private slots:
    void writesExitCodesAsTheSystemDoes()
    {
        QCOMPARE(exitCodeText(0), QStringLiteral("0"));
        QCOMPARE(exitCodeText(255), QStringLiteral("255"));
        QCOMPARE(exitCodeText(-1073741819), QStringLiteral("0xC0000005"));
        QCOMPARE(exitCodeText(-1), QStringLiteral("0xFFFFFFFF"));
    }

    void wordsEveryCause_data()
    {
        QTest::addColumn<Jt9Cause>("cause");
        QTest::addColumn<QString>("detail");
        QTest::addColumn<QString>("text");
        const auto row = [](Jt9Cause cause, const char *detail, const char *text) {
            QTest::newRow(text) << cause << QString::fromLatin1(detail)
                                << QString::fromLatin1(text);
        };
        row(Jt9Cause::None, "", "");
        row(Jt9Cause::NoDecoder, "", "no decodes, no decoder is chosen");
        row(Jt9Cause::NoDecoder, "/a/jt9", "no decodes, /a/jt9 cannot be run");
        row(Jt9Cause::NotStarted, "Odd%1", "no decodes, jt9 did not start: Odd%1");
        row(Jt9Cause::Overran, "45", "no decodes, jt9 took longer than 45 s");
        row(Jt9Cause::Killed, "11", "no decodes, jt9 was killed by signal 11");
        row(Jt9Cause::ExitCode, "3", "no decodes, jt9 ended with exit code 3");
        row(Jt9Cause::OldFolderLeft, "", "no decodes, an old scratch folder could not be removed");
        row(Jt9Cause::FolderLeft, "", "its scratch folder could not be removed");
        row(Jt9Cause::FolderMissing, "", "no decodes, the scratch folder could not be made");
        row(Jt9Cause::WavNotWritten, "Disk full",
            "no decodes, the WAV file was not written: Disk full");
        row(Jt9Cause::TooManyLines, "500", "jt9 printed too many lines; the first 500 were kept");
        row(Jt9Cause::PassedOver, "", "no decodes, the decoder is too slow");
    }

    void wordsEveryCause()
    {
        QFETCH(Jt9Cause, cause);
        QFETCH(QString, detail);
        QFETCH(QString, text);
        QCOMPARE(failureText({cause, detail}), text);
    }

    void namesThePeriodTheWorkerAndItsBand()
    {
        WorkerFailures failures;
        QCOMPARE(failures.report(period, 1, decodeBand(1), killed),
                 QStringLiteral("Period 14:23:15, worker 2 (725-1550 Hz): no decodes, jt9 was "
                                "killed by signal 1"));
    }

    void withoutAFailureThereIsNothingToSay()
    {
        WorkerFailures failures;
        QCOMPARE(failures.report(period, 0, decodeBand(0), none), QString());
        QCOMPARE(failures.report(later, 0, decodeBand(0), none), QString());
    }

    void saysAFailureOnceUntilItEnds()
    {
        WorkerFailures failures;
        QVERIFY(!failures.report(period, 0, decodeBand(0), exitCode1).isEmpty());
        QCOMPARE(failures.report(later, 0, decodeBand(0), exitCode1), QString());
        QCOMPARE(failures.report(later, 0, decodeBand(0), exitCode1), QString());
        QCOMPARE(failures.report(later, 0, decodeBand(0), none),
                 QStringLiteral("Period 14:23:30, worker 1 (0-825 Hz): decoding again"));
        QCOMPARE(failures.report(later, 0, decodeBand(0), none), QString());
        QVERIFY(!failures.report(later, 0, decodeBand(0), exitCode1).isEmpty());
    }

    void saysAChangeOfCauseOrDetail()
    {
        WorkerFailures failures;
        for (const Jt9Failure &failure : {exitCode1, exitCode2, killed, exitCode1}) {
            const QString said = failures.report(period, 0, decodeBand(0), failure);
            QVERIFY(said.endsWith(failureText(failure)));
        }
    }

    void keepsTheWorkersApart()
    {
        WorkerFailures failures;
        for (int worker = 0; worker < 4; ++worker) {
            QVERIFY(!failures.report(period, worker, decodeBand(worker), exitCode1).isEmpty());
        }
        QVERIFY(!failures.report(later, 3, decodeBand(3), none).isEmpty());
        for (int worker = 0; worker < 3; ++worker) {
            QCOMPARE(failures.report(later, worker, decodeBand(worker), exitCode1), QString());
        }
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::WorkerFailuresTest)
#include "workerfailures_test.moc"
