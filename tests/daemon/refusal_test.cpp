#include "daemon/refusal.h"
#include "kiwi/receivernotices.h"

#include <QtTest>

Q_DECLARE_METATYPE(outpost::Refusal)

namespace outpost
{

class RefusalTest : public QObject
{
    Q_OBJECT

private slots:
    void noticesAreRead_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<Refusal>("cause");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *message, Refusal cause, const char *text) {
            QTest::newRow(message)
                << QByteArray("MSG ") + message << cause << QString::fromLatin1(text);
        };
        row("too_busy=8", Refusal::TooBusy, "all channels are taken");
        row("monitor", Refusal::AllTaken, "all channels are taken, and it offers to wait");
        row("badp=1", Refusal::Password, "it wants a password, or another one");
        row("badp=5", Refusal::OnePerAddress, "it allows one connection for each address");
        row("down=1", Refusal::Down, "it is down for now");
        row("redirect=http://127.0.0.1:9/?a=b", Refusal::Redirect,
            "it sends us to http://127.0.0.1:9/?a=b");
        row("ip_limit=60,127.0.0.1", Refusal::DailyLimit,
            "its daily limit for this address is used up");
        row("inactivity_timeout=30", Refusal::Inactivity,
            "it ends listeners that it takes for inactive");
        row("kiwi_kick=1,You%20were%20kicked!", Refusal::Kicked, "its owner ended the connection");
    }

    void noticesAreRead()
    {
        QFETCH(QByteArray, frame);
        const QStringList notices = receiverNotices(frame);
        QCOMPARE(notices.size(), 1);
        const Ending ending = endingOfNotice(notices.first());
        QTEST(ending.cause, "cause");
        QTEST(endingText(ending), "text");
    }

    void otherNoticesRefuseNothing()
    {
        QVERIFY(endingOfNotice(QStringLiteral("max_camp=4")).cause == Refusal::None);
        QCOMPARE(endingText({}), QString());
    }

    void errorsAreRead()
    {
        const Ending offline =
            endingOfError(QStringLiteral("Unhandled http status code: 404 (Not Found)."));
        QVERIFY(offline.cause == Refusal::Http);
        QCOMPARE(endingText(offline), QStringLiteral("its web server answered 404 (Not Found)"));
        const Ending closed = endingOfError(QStringLiteral("Connection refused"));
        QVERIFY(closed.cause == Refusal::NotReached);
        QCOMPARE(endingText(closed), QStringLiteral("it was not reached: Connection refused"));
        QVERIFY(endingOfError({}).cause == Refusal::NoSound);
    }

    void whatTheOtherSideSaysIsMadeSafe()
    {
        const Ending ending =
            endingOfError(QStringLiteral("Unhandled http status code: 404 (\033[2J%1).")
                              .arg(QString(500, QLatin1Char('x'))));
        QVERIFY(ending.cause == Refusal::Http);
        const QString text = endingText(ending);
        QVERIFY2(text.startsWith(QStringLiteral("its web server answered 404 (\\u001b[2Jx")),
                 qPrintable(text));
        QVERIFY(text.size() < 250);
    }

    void passwordsLimitsAndRatesAreHopeless()
    {
        QVector<Refusal> hopeless;
        for (int i = 0; i <= int(Refusal::WrongRate); ++i) {
            if (isHopeless(Refusal(i))) {
                hopeless.append(Refusal(i));
            }
        }
        QCOMPARE(hopeless,
                 QVector<Refusal>({Refusal::Password, Refusal::DailyLimit, Refusal::WrongRate}));
        QVERIFY(endingAdvice(Refusal::Password).contains(QStringLiteral("every hour")));
        QCOMPARE(endingAdvice(Refusal::TooBusy), QString());
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::RefusalTest)
#include "refusal_test.moc"
