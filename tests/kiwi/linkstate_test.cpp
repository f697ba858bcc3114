#include "kiwi/linkstate.h"

#include <QTest>

namespace outpost
{

class LinkStateTest : public QObject
{
    Q_OBJECT

private slots:
    void disconnectedAtRest();
    void connectingBeforeAnyEndpoint();
    void connectingNamesTheEndpoint();
    void connectedTellsWhatArrived();
};

void LinkStateTest::disconnectedAtRest()
{
    QCOMPARE(kiwiStatusText(LinkState(), 14.074), QStringLiteral("Disconnected"));
}

void LinkStateTest::connectingBeforeAnyEndpoint()
{
    LinkState link;
    link.phase = LinkPhase::ProbeQueued;
    QCOMPARE(kiwiStatusText(link, 14.074),
             QStringLiteral("Connecting — 14.074000 MHz\nEndpoint: --\nNo verified SND data yet."));
}

void LinkStateTest::connectingNamesTheEndpoint()
{
    LinkState link;
    link.phase = LinkPhase::Probing;
    link.currentEndpoint = QStringLiteral("/kiwi/1/SND");
    QCOMPARE(kiwiStatusText(link, 7.074),
             QStringLiteral("Connecting — 7.074000 MHz\nEndpoint: /kiwi/1/SND\n"
                            "No verified SND data yet."));
}

void LinkStateTest::connectedTellsWhatArrived()
{
    LinkState link;
    link.phase = LinkPhase::Connected;
    link.currentEndpoint = QStringLiteral("/kiwi/0/SND");
    link.sndFrames = 1234;
    link.rxBytes = 1048576 + 524288;
    link.otherBinaryFrames = 17;
    link.lastFrameSize = 1034;
    QCOMPARE(kiwiStatusText(link, 14.074),
             QStringLiteral("Connected — 14.074000 MHz\nEndpoint: /kiwi/0/SND\n"
                            "SND: 1234 frames   1.50 MB\nOther: 17   Last: 1034 bytes"));
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::LinkStateTest)
#include "linkstate_test.moc"
