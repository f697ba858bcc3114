#include "daemon/attemptgate.h"

#include <QtTest>

namespace outpost
{

namespace
{
const QString host = QStringLiteral("kiwi.example");
}

class AttemptGateTest : public QObject
{
    Q_OBJECT

private slots:
    void oneAttemptAtATime()
    {
        AttemptGate gate;
        QVERIFY(gate.begin(host, 8073, 0));
        QVERIFY(!gate.begin(host, 8073, 60000));
        gate.end(host, 8073);
        QVERIFY(gate.begin(host, 8073, 60000));
    }

    void attemptsBeginASecondApart()
    {
        AttemptGate gate;
        QVERIFY(gate.begin(host, 8073, 5000));
        gate.end(host, 8073);
        QVERIFY(!gate.begin(host, 8073, 5999));
        QVERIFY(gate.begin(host, 8073, 6000));
    }

    void otherReceiversDoNotWait()
    {
        AttemptGate gate;
        QVERIFY(gate.begin(host, 8073, 0));
        QVERIFY(gate.begin(host, 8074, 0));
        QVERIFY(gate.begin(QStringLiteral("other.example"), 8073, 0));
        QVERIFY(!gate.begin(QStringLiteral("KIWI.example "), 8073, 60000)); // the same one
    }

    void whatNeverBeganMayEnd()
    {
        AttemptGate gate;
        gate.end(host, 8073);
        QVERIFY(gate.begin(host, 8073, 0));
    }

    void everyPathHasATimeOfItsOwn()
    {
        AttemptGate gate;
        QCOMPARE(gate.uniquePath(1795000000000), QStringLiteral("/kiwi/1795000000000/SND"));
        QCOMPARE(gate.uniquePath(1795000000000), QStringLiteral("/kiwi/1795000000001/SND"));
        QCOMPARE(gate.uniquePath(1794000000000), QStringLiteral("/kiwi/1795000000002/SND"));
        QCOMPARE(gate.uniquePath(1795000000900), QStringLiteral("/kiwi/1795000000900/SND"));
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::AttemptGateTest)
#include "attemptgate_test.moc"
