#include "kiwi/kiwicommands.h"

#include <QTest>

namespace outpost
{

class KiwiCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void fourEndpointsInOrder();
    void urlTakesItsPartsAsTheyStand_data();
    void urlTakesItsPartsAsTheyStand();
    void sevenCommandsInOrder();
    void aSessionOfTheOperatorsOwn();
    void thePasswordStaysOutOfTheLog_data();
    void thePasswordStaysOutOfTheLog();
    void frequencyGoesOutInKilohertz_data();
    void frequencyGoesOutInKilohertz();
    void keepaliveIsDueEveryFiveSeconds_data();
    void keepaliveIsDueEveryFiveSeconds();
    void loggedTextIsCutAfter180Characters_data();
    void loggedTextIsCutAfter180Characters();
};

void KiwiCommandsTest::fourEndpointsInOrder()
{
    QCOMPARE(kiwiSndEndpoints(),
             (QStringList{QStringLiteral("/kiwi/0/SND"), QStringLiteral("/kiwi/1/SND"),
                          QStringLiteral("/kiwi/2/SND"), QStringLiteral("/kiwi/3/SND")}));
}

void KiwiCommandsTest::urlTakesItsPartsAsTheyStand_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("url");
    QTest::newRow("name") << QStringLiteral("kiwi.example.org")
                          << QStringLiteral("ws://kiwi.example.org:8073/kiwi/2/SND");
    QTest::newRow("upper case") << QStringLiteral("Kiwi.Example.ORG")
                                << QStringLiteral("ws://Kiwi.Example.ORG:8073/kiwi/2/SND");
    QTest::newRow("placeholder in the host")
        << QStringLiteral("%1") << QStringLiteral("ws://%1:8073/kiwi/2/SND");
}

void KiwiCommandsTest::urlTakesItsPartsAsTheyStand()
{
    QFETCH(QString, host);
    QTEST(kiwiUrl(host, 8073, QStringLiteral("/kiwi/2/SND")), "url");
}

void KiwiCommandsTest::sevenCommandsInOrder()
{
    QCOMPARE(kiwiCommands(14.074),
             (QStringList{
                 QStringLiteral("SET auth t=kiwi p="),
                 QStringLiteral("SET ident_user=PELQ_Kiwi_Outpost"),
                 QStringLiteral("SET keepalive"),
                 QStringLiteral("SET AR OK in=12000 out=12000"),
                 QStringLiteral("SET compression=1"),
                 QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=14074.000"),
                 QStringLiteral("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50"),
             }));
}

void KiwiCommandsTest::aSessionOfTheOperatorsOwn()
{
    KiwiSession session;
    session.password = QStringLiteral("a b%ä");
    session.user = QStringLiteral("HB9 XYZ");
    session.compression = false;
    session.lowHz = 200;
    session.highHz = 4900;
    const QString tune = QStringLiteral("SET mod=usb low_cut=200 high_cut=4900 freq=7074.000");
    QCOMPARE(kiwiSessionCommands(session, 7.074),
             (QStringList{
                 QStringLiteral("SET auth t=kiwi p=a%20b%25%C3%A4"),
                 QStringLiteral("SET ident_user=HB9%20XYZ"),
                 QStringLiteral("SET keepalive"),
                 QStringLiteral("SET AR OK in=12000 out=12000"),
                 QStringLiteral("SET compression=0"),
                 tune,
                 QStringLiteral("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50"),
             }));
    QCOMPARE(kiwiTuneCommand(session, 7.074), tune);
}

void KiwiCommandsTest::thePasswordStaysOutOfTheLog_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("masked");
    const QString masked = QStringLiteral("Kiwi WS sent: SET auth t=kiwi p=***");
    QTest::newRow("none") << QString() << QStringLiteral("Kiwi WS sent: SET auth t=kiwi p=")
                          << masked;
    QTest::newRow("short") << QStringLiteral("e")
                           << QStringLiteral("Kiwi WS sent: SET auth t=kiwi p=e") << masked;
    QTest::newRow("encoded") << QStringLiteral("hush hush")
                             << QStringLiteral("Kiwi WS sent: SET auth t=kiwi p=hush%20hush")
                             << masked;
    QTest::newRow("before other words")
        << QStringLiteral("hush") << QStringLiteral("Kiwi WS sent: SET auth t=kiwi p=hush ipl=1")
        << masked + QStringLiteral(" ipl=1");
    QTest::newRow("said by the receiver")
        << QStringLiteral("hush hush")
        << QStringLiteral("Receiver says: redirect=/?hush%20hush&hush hush")
        << QStringLiteral("Receiver says: redirect=/?***&***");
    QTest::newRow("short, in a word") << QStringLiteral("say") << QStringLiteral("Receiver says: x")
                                      << QStringLiteral("Receiver says: x");
}

void KiwiCommandsTest::thePasswordStaysOutOfTheLog()
{
    QFETCH(QString, password);
    QFETCH(QString, line);
    QTEST(withoutPassword(line, password), "masked");
}

void KiwiCommandsTest::frequencyGoesOutInKilohertz_data()
{
    QTest::addColumn<double>("frequencyMhz");
    QTest::addColumn<QString>("end");
    QTest::newRow("20 m") << 14.074 << QStringLiteral("freq=14074.000");
    QTest::newRow("one hertz") << 7.074001 << QStringLiteral("freq=7074.001");
    QTest::newRow("lowest") << 0.001 << QStringLiteral("freq=1.000");
    QTest::newRow("highest") << 3000.0 << QStringLiteral("freq=3000000.000");
}

void KiwiCommandsTest::frequencyGoesOutInKilohertz()
{
    QFETCH(double, frequencyMhz);
    QFETCH(QString, end);
    const QString command = kiwiCommands(frequencyMhz).at(5);
    QVERIFY2(command.endsWith(QLatin1Char(' ') + end), qPrintable(command));
}

void KiwiCommandsTest::keepaliveIsDueEveryFiveSeconds_data()
{
    QTest::addColumn<qint64>("lastMs");
    QTest::addColumn<qint64>("nowMs");
    QTest::addColumn<bool>("due");
    const qint64 noonMs = 1768565700000;
    QTest::newRow("none sent yet") << qint64(0) << noonMs << true;
    QTest::newRow("at once") << noonMs << noonMs << false;
    QTest::newRow("4999 ms") << noonMs << noonMs + 4999 << false;
    QTest::newRow("5000 ms") << noonMs << noonMs + 5000 << true;
    QTest::newRow("the clock was set back") << noonMs << noonMs - 1 << true;
}

void KiwiCommandsTest::keepaliveIsDueEveryFiveSeconds()
{
    QFETCH(qint64, lastMs);
    QFETCH(qint64, nowMs);
    QTEST(keepaliveIsDue(lastMs, nowMs), "due");
}

void KiwiCommandsTest::loggedTextIsCutAfter180Characters_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("shown");
    const QString letters180(180, QLatin1Char('x'));
    const QString umlauts180(180, QChar(0xfc)); // two bytes each in UTF-8
    QTest::newRow("0") << QString() << QString();
    QTest::newRow("180") << letters180 << letters180;
    QTest::newRow("181") << letters180 + QLatin1Char('x') << letters180 + QStringLiteral("...");
    QTest::newRow("5000") << QString(5000, QLatin1Char('x')) << letters180 + QStringLiteral("...");
    QTest::newRow("180 of two bytes") << umlauts180 << umlauts180;
    QTest::newRow("181 of two bytes")
        << umlauts180 + QLatin1Char('x') << umlauts180 + QStringLiteral("...");
}

void KiwiCommandsTest::loggedTextIsCutAfter180Characters()
{
    QFETCH(QString, message);
    QTEST(shortenedText(message), "shown");
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::KiwiCommandsTest)
#include "kiwicommands_test.moc"
