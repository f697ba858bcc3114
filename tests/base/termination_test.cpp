#include "base/termination.h"
#include "tests/fixture/anotherprocess.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace outpost
{

class TerminationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aRequestToEndLeavesTheEventLoop();
    void requestsThatComeTogetherAreOne();
    void aSecondRequestOfAnyKindEndsOneThatIsStuck_data();
    void aSecondRequestOfAnyKindEndsOneThatIsStuck();
    void aReaderThatIsGoneEndsNothing();
    void whatIsIgnoredStaysIgnored();
    void aHangUpMayAskForSomethingElse();
};

namespace
{
void (*actionOf(int number))(int)
{
    struct sigaction action = {};
    ::sigaction(number, nullptr, &action);
    return action.sa_handler;
}

// Prints how many hang-up signals have come, until it is asked to end.
int countHangUps()
{
    ::signal(SIGHUP, SIG_IGN); // as under nohup
    int count = 0;
    quitOnTermination([&] {
        ::printf("%d\n", ++count);
        ::fflush(stdout);
    });
    ::puts("ready");
    ::fflush(stdout);
    return QCoreApplication::exec();
}

// A station that never returns to its event loop, and prints when it was asked to end.
int stayStuck()
{
    ::signal(SIGTERM, SIG_DFL); // also when the tests run in the background
    ::signal(SIGINT, SIG_DFL);
    quitOnTermination();
    sigset_t all;
    sigset_t none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &all, nullptr); // until it waits for them
    for (const char *line = "stuck";; line = "asked") {
        ::puts(line);
        ::fflush(stdout);
        ::sigsuspend(&none);
    }
}
} // namespace

// As under nohup.
void TerminationTest::initTestCase()
{
    ::signal(SIGHUP, SIG_IGN);
    quitOnTermination();
    QVERIFY(actionOf(SIGTERM) != SIG_DFL);
    QVERIFY(actionOf(SIGINT) != SIG_DFL);
}

void TerminationTest::aRequestToEndLeavesTheEventLoop()
{
    bool timedOut = false;
    QTimer::singleShot(10000, this, [&] {
        timedOut = true;
        QCoreApplication::exit(1);
    });
    QTimer::singleShot(0, this, [] { ::raise(SIGTERM); });
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(!timedOut);
}

void TerminationTest::requestsThatComeTogetherAreOne()
{
    quitOnTermination();
    QTimer::singleShot(0, this, [] {
        ::raise(SIGTERM);
        ::raise(SIGINT);
        ::raise(SIGTERM);
    });
    QCOMPARE(QCoreApplication::exec(), 0);
}

void TerminationTest::aSecondRequestOfAnyKindEndsOneThatIsStuck_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::newRow("terminate, interrupt") << SIGTERM << SIGINT;
    QTest::newRow("interrupt, terminate") << SIGINT << SIGTERM;
    QTest::newRow("terminate twice") << SIGTERM << SIGTERM;
}

void TerminationTest::aSecondRequestOfAnyKindEndsOneThatIsStuck()
{
    QFETCH(int, first);
    QFETCH(int, second);
    AnotherProcess station({QStringLiteral("--stuck")});
    QCOMPARE(station.nextLine(), QByteArray("stuck\n"));
    const auto id = static_cast<pid_t>(station.processId());
    ::kill(id, SIGHUP); // ignored since its start
    ::kill(id, first);
    QCOMPARE(station.nextLine(), QByteArray("asked\n"));
    ::kill(id, SIGHUP);
    QVERIFY(!station.waitForFinished(200)); // longer than signals that count as one request
    ::kill(id, second);
    QVERIFY(station.waitForFinished());
    QCOMPARE(station.exitStatus(), QProcess::CrashExit);
    QCOMPARE(station.exitCode(), second);
}

void TerminationTest::aReaderThatIsGoneEndsNothing()
{
    int ends[2];
    QCOMPARE(::pipe(ends), 0);
    ::close(ends[0]);
    ::signal(SIGPIPE, SIG_DFL); // whatever ran before
    ignoreBrokenPipes();
    QCOMPARE(::write(ends[1], "a line\n", 7), ssize_t{-1});
    QCOMPARE(errno, EPIPE);
    ::close(ends[1]);
}

void TerminationTest::aHangUpMayAskForSomethingElse()
{
    AnotherProcess daemon({QStringLiteral("--hang-ups")});
    QCOMPARE(daemon.nextLine(), QByteArray("ready\n"));
    const auto id = static_cast<pid_t>(daemon.processId());
    for (const char *count : {"1\n", "2\n"}) {
        ::kill(id, SIGHUP);
        QCOMPARE(daemon.nextLine(), QByteArray(count));
    }
    ::kill(id, SIGTERM);
    QVERIFY(daemon.waitForFinished());
    QCOMPARE(daemon.exitStatus(), QProcess::NormalExit);
    QCOMPARE(daemon.exitCode(), 0);
}

void TerminationTest::whatIsIgnoredStaysIgnored()
{
    QVERIFY(actionOf(SIGHUP) == SIG_IGN);
}

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(QStringLiteral("--stuck"))) {
        return stayStuck();
    }
    if (QCoreApplication::arguments().contains(QStringLiteral("--hang-ups"))) {
        return countHangUps();
    }
    TerminationTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "termination_test.moc"
