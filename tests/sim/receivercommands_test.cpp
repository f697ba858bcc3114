#include "sim/receivercommands.h"

#include <QtTest>

namespace outpost
{

using namespace sim;

class ReceiverCommandsTest : public QObject
{
    Q_OBJECT

private:
    static QStringList enough()
    {
        return {QStringLiteral("SET auth t=kiwi p="),
                QStringLiteral("SET AR OK in=12000 out=12000"),
                QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=14074.000"),
                QStringLiteral("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50")};
    }

    static bool completeAfter(const QStringList &texts)
    {
        ReceiverCommands commands;
        for (const QString &text : texts) {
            commands.take(text);
        }
        return commands.complete();
    }

private slots:
    void completeWithEverythingInAnyOrder()
    {
        QVERIFY(completeAfter(enough()));
        QStringList backwards = enough();
        std::reverse(backwards.begin(), backwards.end());
        QVERIFY(completeAfter(backwards));
    }

    void eachPartIsNeeded_data()
    {
        QTest::addColumn<QString>("part");
        for (const char *part : {"SET auth ", "SET AR OK in=", "mod=usb", "low_cut=300",
                                 "high_cut=3000", "freq=14074.000", "agc=1", "hang=0",
                                 "thresh=-100", "slope=6", "decay=1000", "manGain=50"}) {
            QTest::newRow(part) << QString::fromLatin1(part);
        }
    }

    void eachPartIsNeeded()
    {
        QFETCH(QString, part);
        QStringList texts = enough();
        texts.replaceInStrings(part, QStringLiteral("SET x=1"));
        QVERIFY(texts != enough());
        QVERIFY(!completeAfter(texts));
    }

    void valuesMustBeProper_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("frequency is not a number")
            << QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=nonsense");
        QTest::newRow("no frequency")
            << QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=");
        QTest::newRow("no mode") << QStringLiteral("SET mod= low_cut=300 high_cut=3000 freq=7074");
        QTest::newRow("not a SET") << QStringLiteral("mod=usb low_cut=300 high_cut=3000 freq=7074");
    }

    void valuesMustBeProper()
    {
        QFETCH(QString, command);
        QStringList texts = enough();
        texts[2] = command;
        QVERIFY(!completeAfter(texts));
    }

    void onlyTheExactKeepaliveCounts()
    {
        QVERIFY(ReceiverCommands::isKeepalive(QStringLiteral("SET keepalive")));
        QVERIFY(!ReceiverCommands::isKeepalive(QStringLiteral("SET keepalive ")));
        QVERIFY(!ReceiverCommands::isKeepalive(QStringLiteral("set keepalive")));
        QVERIFY(!ReceiverCommands::isKeepalive(QStringLiteral("SET keepalive\n")));
    }

    void moreThanFourEarlyKeepalivesAreTooMany()
    {
        ReceiverCommands commands;
        for (int i = 0; i < 4; ++i) {
            commands.take(QStringLiteral("SET keepalive"));
        }
        QVERIFY(!commands.tooManyEarlyKeepalives());
        commands.take(QStringLiteral("SET keepalive"));
        QVERIFY(commands.tooManyEarlyKeepalives());
    }

    void keepalivesAfterTheCommandsAreNeverTooMany()
    {
        ReceiverCommands commands;
        for (const QString &text : enough()) {
            commands.take(text);
        }
        for (int i = 0; i < 100; ++i) {
            commands.take(QStringLiteral("SET keepalive"));
        }
        QVERIFY(!commands.tooManyEarlyKeepalives());
    }

    void compressionCanBeSwitchedOff()
    {
        ReceiverCommands commands;
        QVERIFY(!commands.uncompressed());
        commands.take(QStringLiteral("SET compression=0"));
        QVERIFY(commands.uncompressed());
        commands.take(QStringLiteral("SET compression=1"));
        QVERIFY(!commands.uncompressed());
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ReceiverCommandsTest)
#include "receivercommands_test.moc"
