// A slow output behind one that never blocks.

#include "daemon/backgroundoutput.h"
#include "tests/fixture/logtrace.h"

#include <QElapsedTimer>
#include <QMutex>
#include <QSemaphore>
#include <QtTest>

namespace outpost
{

namespace
{
// What happened to a slow output, which may outlive the test's view of it.
struct Slow {
    void tell(const QString &what)
    {
        const QMutexLocker lock(&mutex);
        calls.append(what);
    }
    QStringList told()
    {
        const QMutexLocker lock(&mutex);
        return calls;
    }

    QSemaphore goOn; // a call takes one
    QMutex mutex;
    QStringList calls;
};

class SlowOutput : public Output
{
public:
    explicit SlowOutput(std::shared_ptr<Slow> slowToUse) : slow(std::move(slowToUse)) {}
    void showSource(const SourceState &source) override { tell(source.name); }
    void dropSource(const QString &name) override { tell(QStringLiteral("no ") + name); }
    void take(const PeriodSpots &period) override { tell(QString::number(period.periodStartMs)); }
    void close() override { tell(QStringLiteral("closed")); }

private:
    void tell(const QString &what)
    {
        slow->goOn.acquire();
        slow->tell(what);
    }

    const std::shared_ptr<Slow> slow;
};

PeriodSpots period(qint64 startMs)
{
    PeriodSpots spots;
    spots.periodStartMs = startMs;
    return spots;
}

QString name()
{
    return QStringLiteral("ALL.TXT");
}
} // namespace

class BackgroundOutputTest : public QObject
{
    Q_OBJECT

private slots:
    void callsArriveInTheirOrder()
    {
        const auto slow = std::make_shared<Slow>();
        slow->goOn.release(4);
        BackgroundOutput output(name(), std::make_unique<SlowOutput>(slow), 60000);
        output.showSource({QStringLiteral("A"), 0, false});
        output.take(period(1));
        output.dropSource(QStringLiteral("A"));
        output.close(); // waits
        QCOMPARE(slow->told(), QStringList({QStringLiteral("A"), QStringLiteral("1"),
                                            QStringLiteral("no A"), QStringLiteral("closed")}));
        output.take(period(2));
        output.close();
        QCOMPARE(slow->told().size(), 4);
    }

    void oneThatHangsHoldsNothingBack()
    {
        const LogTrace log;
        const auto slow = std::make_shared<Slow>();
        QElapsedTimer timer;
        timer.start();
        {
            BackgroundOutput output(name(), std::make_unique<SlowOutput>(slow), 50);
            for (int i = 0; i < BackgroundOutput::maxWaiting + 100; ++i) {
                output.take(period(i));
            }
            QCOMPARE(log.count(QStringLiteral("ALL.TXT hangs, and so much waits for it that "
                                              "decodes are dropped.")),
                     1);
            output.close();
            QCOMPARE(log.count(QStringLiteral("ALL.TXT hangs; what waits for it is lost.")), 1);
        }
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        slow->goOn.release(BackgroundOutput::maxWaiting + 200);
        QTRY_COMPARE(slow.use_count(), 1L); // the thread has ended
        QVERIFY(slow->told().size() <= 1);  // the call in which it hung
    }

    void itGoesOnAfterAFlood()
    {
        const auto slow = std::make_shared<Slow>();
        BackgroundOutput output(name(), std::make_unique<SlowOutput>(slow), 60000);
        const int flood = BackgroundOutput::maxWaiting + 100;
        for (int i = 0; i < flood; ++i) {
            output.take(period(i));
        }
        slow->goOn.release(2 * flood);
        QTRY_VERIFY(slow->told().size() >= BackgroundOutput::maxWaiting);
        output.take(period(-1));
        output.close();
        const QStringList told = slow->told();
        QVERIFY(told.size() < flood);
        QCOMPARE(told.mid(told.size() - 2),
                 QStringList({QStringLiteral("-1"), QStringLiteral("closed")}));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::BackgroundOutputTest)
#include "backgroundoutput_test.moc"
