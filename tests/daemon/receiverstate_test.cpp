#include "daemon/receiverstate.h"

#include <QtTest>

Q_DECLARE_METATYPE(outpost::ReceiverPhase)

namespace outpost
{

class ReceiverStateTest : public QObject
{
    Q_OBJECT

private slots:
    void thePhaseInWords_data()
    {
        constexpr qint64 untilMs = 1795046465999; // 00:01:05 UTC
        QTest::addColumn<ReceiverPhase>("phase");
        QTest::addColumn<qint64>("untilMs");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *text, ReceiverPhase phase, qint64 until,
                            const char *reason) {
            QTest::newRow(text) << phase << until << QString::fromLatin1(reason)
                                << QString::fromLatin1(text);
        };
        row("receiving", ReceiverPhase::Receiving, untilMs, "");
        row("connecting", ReceiverPhase::Connecting, untilMs, "it is down");
        row("waiting", ReceiverPhase::Waiting, -1, "");
        row("waiting until 00:01:05 UTC", ReceiverPhase::Waiting, untilMs, "");
        row("waiting until 00:01:05 UTC: it is down", ReceiverPhase::Waiting, untilMs,
            "it is down");
        row("resting until 00:01:05 UTC", ReceiverPhase::Resting, untilMs, "it is down");
        row("resting", ReceiverPhase::Resting, -1, "");
    }

    void thePhaseInWords()
    {
        ReceiverState state;
        QFETCH(ReceiverPhase, phase);
        state.phase = phase;
        QFETCH(qint64, untilMs);
        state.untilMs = untilMs;
        QFETCH(QString, reason);
        state.reason = reason;
        QTEST(receiverPhaseText(state), "text");
    }

    void theFiguresForTheLog()
    {
        ReceiverState state;
        QCOMPARE(receiverFiguresText(state), QString());
        state.passedOver = 1;
        QCOMPARE(receiverFiguresText(state),
                 QStringLiteral("0 decodes in the last period, 0 in the last hour, lag 0.0 s, 1 "
                                "periods passed over"));
        state.decodesLastPeriod = 28;
        state.decodesLastHour = 1200;
        state.lagMs = 2449;
        QCOMPARE(receiverFiguresText(state),
                 QStringLiteral("28 decodes in the last period, 1200 in the last hour, lag 2.4 s, "
                                "1 periods passed over"));
    }

    void whatOutputsSee()
    {
        ReceiverState state;
        state.name = QStringLiteral("20m");
        state.dialHz = 14074000;
        state.decoding = true;
        const SourceState source = sourceState(state);
        QCOMPARE(source.name, state.name);
        QCOMPARE(source.dialHz, 14074000);
        QVERIFY(source.decoding);
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::ReceiverStateTest)
#include "receiverstate_test.moc"
