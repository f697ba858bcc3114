#include "kiwi/receivernotices.h"

#include <QTest>

namespace outpost
{

class ReceiverNoticesTest : public QObject
{
    Q_OBJECT

private slots:
    void whatARefusalSays_data();
    void whatARefusalSays();
    void aFrameOfMegabytesIsNotSearched();
    void theSampleRateIsRead_data();
    void theSampleRateIsRead();
    void eachNoticeOnceAMinute();
    void theClockMayBeSet_data();
    void theClockMayBeSet();
    void atMost20DifferentOnesAMinute();
};

void ReceiverNoticesTest::whatARefusalSays_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QStringList>("notices");
    const auto row = [](const char *name, const QByteArray &frame, const QStringList &notices) {
        QTest::newRow(name) << frame << notices;
    };
    for (const char *pair :
         {"too_busy=8", "monitor", "badp=1", "badp=5", "badp", "badp=00", "down=1",
          "redirect=http://kiwi.example.org:8073", "ip_limit=60,192.0.2.7", "kiwi_kick=1,bye",
          "inactivity_timeout=30", "monitor=1", "down="}) {
        row(pair, QByteArray("MSG ") + pair, {QString::fromLatin1(pair)});
    }
    row("password accepted", "MSG badp=0", {});
    row("password accepted, encoded", "MSG badp=%30", {});
    row("healthy", "MSG center_freq=15000000 bandwidth=30000000 adc_clk_nom=66666600", {});
    row("among others", "MSG rx_chans=8 too_busy=8 badp=0 monitor max_camp=4",
        {QStringLiteral("too_busy=8"), QStringLiteral("monitor")});
    row("several blanks", "MSG   down=1  ", {QStringLiteral("down=1")});
    row("twice", "MSG down=1 down=1", {QStringLiteral("down=1"), QStringLiteral("down=1")});
    row("value with an equals sign", "MSG redirect=http://x/?a=b",
        {QStringLiteral("redirect=http://x/?a=b")});
    row("name in a longer one", "MSG shutdown=1 down_until=7 monitors", {});
    row("name in a value", "MSG x=down=1", {});
    row("upper case", "MSG DOWN=1", {});
    row("percent-decoded", "MSG kiwi_kick=1,You%20were%20kicked!",
        {QStringLiteral("kiwi_kick=1,You were kicked!")});
    row("UTF-8", "MSG kiwi_kick=1,Gr%C3%BC%c3%9fe", {QStringLiteral("kiwi_kick=1,Grüße")});
    row("no UTF-8", "MSG kiwi_kick=%ff", {QStringLiteral("kiwi_kick=\ufffd")});
    row("no number after the percent sign", "MSG kiwi_kick=100%",
        {QStringLiteral("kiwi_kick=100%")});
    row("placeholder", "MSG kiwi_kick=%251", {QStringLiteral("kiwi_kick=%1")});
    row("encoded line end", "MSG kiwi_kick=a%0d%0a00:00:00%20down=1",
        {QStringLiteral("kiwi_kick=a\\u000d\\u000a00:00:00 down=1")});
    row("plain line end", "MSG kiwi_kick=a\nb", {QStringLiteral("kiwi_kick=a\\u000ab")});
    row("ends at a zero byte", QByteArray("MSG down=1\0x", 12), {QStringLiteral("down=1")});
    row("accepted, up to a zero byte", QByteArray("MSG badp=0\0", 11), {});
    row("180 characters", "MSG kiwi_kick=" + QByteArray("%C3%BC").repeated(180),
        {QStringLiteral("kiwi_kick=") + QString(180, QChar(0xfc))});
    row("181 characters", "MSG kiwi_kick=" + QByteArray("%C3%BC").repeated(181),
        {QStringLiteral("kiwi_kick=") + QString(180, QChar(0xfc)) + QStringLiteral("...")});
    row("180 control characters", "MSG down=" + QByteArray("%1b").repeated(180),
        {QStringLiteral("down=") + QStringLiteral("\\u001b").repeated(180)});
    row("empty", "", {});
    row("tag alone", "MSG", {});
    row("no blank after the tag", "MSGdown=1", {});
    row("sound", "SND down=1", {});
    row("lower case", "msg down=1", {});
    row("later in the frame", " MSG down=1", {});
}

void ReceiverNoticesTest::whatARefusalSays()
{
    QFETCH(QByteArray, frame);
    QTEST(receiverNotices(frame), "notices");
}

void ReceiverNoticesTest::aFrameOfMegabytesIsNotSearched()
{
    const QByteArray many = "MSG " + QByteArray("down ").repeated(4 * 1024 * 1024 / 5);
    const int found = receiverNotices(many).size();
    QVERIFY2(found < 1000, qPrintable(QString::number(found)));
    const QByteArray longOne = "MSG kiwi_kick=" + QByteArray(4 * 1024 * 1024, 'x');
    QCOMPARE(receiverNotices(longOne),
             QStringList{QStringLiteral("kiwi_kick=") + QString(180, QLatin1Char('x')) +
                         QStringLiteral("...")});
}

namespace
{
const qint64 noonMs = 1768565700000;
const QString busy = QStringLiteral("too_busy=8");
} // namespace

void ReceiverNoticesTest::theSampleRateIsRead_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<double>("rateHz"); // 0: none
    QTest::newRow("alone") << QByteArray("MSG sample_rate=12001.060000") << 12001.06;
    QTest::newRow("among others") << QByteArray("MSG a=1 sample_rate=20250 b") << 20250.0;
    QTest::newRow("another name") << QByteArray("MSG audio_sample_rate=12000 sample_rates=1")
                                  << 0.0;
    QTest::newRow("no number") << QByteArray("MSG sample_rate=fast") << 0.0;
    QTest::newRow("no message") << QByteArray("SND sample_rate=12000") << 0.0;
}

void ReceiverNoticesTest::theSampleRateIsRead()
{
    QFETCH(QByteArray, frame);
    QTEST(receiverSampleRate(frame).value_or(0), "rateHz");
}

void ReceiverNoticesTest::eachNoticeOnceAMinute()
{
    RecentNotices recent;
    QVERIFY(recent.tell(busy, noonMs));
    QVERIFY(!recent.tell(busy, noonMs));
    QVERIFY(recent.tell(QStringLiteral("too_busy=4"), noonMs + 30000));
    QVERIFY(!recent.tell(busy, noonMs + 59999));
    // A minute after it was logged, not after it last arrived.
    QVERIFY(recent.tell(busy, noonMs + 60000));
    QVERIFY(!recent.tell(QStringLiteral("too_busy=4"), noonMs + 89999));
    QVERIFY(recent.tell(QStringLiteral("too_busy=4"), noonMs + 90000));
    QVERIFY(!recent.tell(busy, noonMs + 119999));
    QVERIFY(recent.tell(busy, noonMs + 120000));
}

void ReceiverNoticesTest::theClockMayBeSet_data()
{
    QTest::addColumn<qint64>("stepMs");
    QTest::newRow("forward") << qint64(3600 * 1000);
    QTest::newRow("back") << qint64(-3600 * 1000);
    QTest::newRow("back by a little") << qint64(-1);
}

void ReceiverNoticesTest::theClockMayBeSet()
{
    QFETCH(qint64, stepMs);
    RecentNotices recent;
    QVERIFY(recent.tell(busy, noonMs));
    QVERIFY(recent.tell(busy, noonMs + stepMs));
    QVERIFY(!recent.tell(busy, noonMs + stepMs + 59999));
    QVERIFY(recent.tell(busy, noonMs + stepMs + 60000));
}

void ReceiverNoticesTest::atMost20DifferentOnesAMinute()
{
    RecentNotices recent;
    int told = 0;
    for (int i = 0; i < 5 * 600; ++i) { // ten per second
        told += recent.tell(QStringLiteral("too_busy=%1").arg(i), noonMs + 100 * i) ? 1 : 0;
    }
    QCOMPARE(told, 5 * 20);
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::ReceiverNoticesTest)
#include "receivernotices_test.moc"
