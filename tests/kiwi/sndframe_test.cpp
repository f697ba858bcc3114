#include "kiwi/sndframe.h"

#include <QTest>

namespace outpost
{

class SndFrameTest : public QObject
{
    Q_OBJECT

private slots:
    void tellsSoundFromOtherFrames_data();
    void tellsSoundFromOtherFrames();
    void compressionIsOneBitOfTheFlags_data();
    void compressionIsOneBitOfTheFlags();
    void theFirstTenAndEveryFiftiethAreLogged();
    void headForTheLog_data();
    void headForTheLog();
};

void SndFrameTest::tellsSoundFromOtherFrames_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<bool>("sound");
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("two bytes") << QByteArray("SN") << false;
    QTest::newRow("three bytes") << QByteArray("SND") << true;
    QTest::newRow("whole header") << QByteArray("SND\x15\0\0\0\0\0\0", 10) << true;
    QTest::newRow("message") << QByteArray("MSG badp=0") << false;
    QTest::newRow("lower case") << QByteArray("snd\x15") << false;
    QTest::newRow("later in the frame") << QByteArray("W/F SND") << false;
}

void SndFrameTest::tellsSoundFromOtherFrames()
{
    QFETCH(QByteArray, frame);
    QTEST(isSndFrame(frame), "sound");
}

void SndFrameTest::compressionIsOneBitOfTheFlags_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<bool>("adpcm");
    QTest::newRow("no flags byte") << QByteArray("SND") << false;
    QTest::newRow("set alone") << QByteArray("SND\x10") << true;
    QTest::newRow("first frame's test bits") << QByteArray("SND\x15") << true;
    QTest::newRow("clear") << QByteArray("SND\x80") << false;
    QTest::newRow("all but it") << QByteArray("SND\xef") << false;
    QTest::newRow("all") << QByteArray("SND\xff") << true;
}

void SndFrameTest::compressionIsOneBitOfTheFlags()
{
    QFETCH(QByteArray, frame);
    QTEST(isAdpcmFrame(frame), "adpcm");
}

void SndFrameTest::theFirstTenAndEveryFiftiethAreLogged()
{
    QList<quint64> logged;
    for (quint64 number = 1; number <= 150; ++number) {
        if (frameIsLogged(number)) {
            logged.append(number);
        }
    }
    QCOMPARE(logged, (QList<quint64>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 50, 100, 150}));
}

void SndFrameTest::headForTheLog_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("head");
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("short") << QByteArray("MSG") << QStringLiteral("MSG");
    QTest::newRow("eight bytes of more") << QByteArray("MSG badp=0") << QStringLiteral("MSG badp");
    QTest::newRow("ends at a zero byte")
        << QByteArray("SND\x15\0abc", 8) << QStringLiteral("SND\x15");
    QTest::newRow("Latin-1") << QByteArray("SND\xe9") << QStringLiteral("SNDé");
    QTest::newRow("HTML") << QByteArray("<b>&\"x") << QStringLiteral("&lt;b&gt;&amp;&quot;x");
}

void SndFrameTest::headForTheLog()
{
    QFETCH(QByteArray, frame);
    QTEST(frameHead(frame), "head");
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::SndFrameTest)
#include "sndframe_test.moc"
