#include "app/termination.h"

#include <QCoreApplication>
#include <QTest>
#include <QTimer>

#include <csignal>

class TerminationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aRequestToEndLeavesTheEventLoop();
    void aSecondRequestWouldEndAtOnce();
    void whatIsIgnoredStaysIgnored();
};

namespace
{
void (*actionOf(int number))(int)
{
    struct sigaction action = {};
    ::sigaction(number, nullptr, &action);
    return action.sa_handler;
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

void TerminationTest::aSecondRequestWouldEndAtOnce()
{
    ::signal(SIGTERM, SIG_DFL); // whatever ran before
    quitOnTermination();
    QTimer::singleShot(0, this, [] { ::raise(SIGTERM); });
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(actionOf(SIGTERM) == SIG_DFL);
}

void TerminationTest::whatIsIgnoredStaysIgnored()
{
    QVERIFY(actionOf(SIGHUP) == SIG_IGN);
}

QTEST_GUILESS_MAIN(TerminationTest)
#include "termination_test.moc"
