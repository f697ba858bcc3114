// Hosts and ports as people write them.

#include "daemon/hostport.h"

#include <QTest>

namespace outpost
{

class HostPortTest : public QObject
{
    Q_OBJECT

private slots:
    void hostsAndPortsAreRead_data()
    {
        QTest::addColumn<QString>("read");
        const auto row = [](const char *text, const char *read) {
            QTest::newRow(text) << QString::fromLatin1(read);
        };
        row("kiwi.example", "kiwi.example:8073");
        row("kiwi.example:8074", "kiwi.example:8074");
        row("kiwi", "kiwi:8073");
        row("kiwi-20_m.local:1", "kiwi-20_m.local:1");
        row("1kiwi.2example:65535", "1kiwi.2example:65535");
        row("192.168.1.10", "192.168.1.10:8073");
        row("239.255.255.250:2237", "239.255.255.250:2237");
        row("[::1]", "[::1]:8073");
        row("[ff02::1]:2237", "[ff02::1]:2237");
        for (const char *wrong : {"",
                                  ":",
                                  ":2237",
                                  "kiwi:",
                                  "kiwi:0",
                                  "kiwi:65536",
                                  "kiwi:08073x",
                                  "kiwi:+1",
                                  "kiwi:-1",
                                  "kiwi: 1",
                                  "kiwi:1 ",
                                  "kiwi:123456",
                                  "http://kiwi.example",
                                  "kiwi.example/",
                                  "a b",
                                  "-kiwi",
                                  "kiwi-",
                                  "a.-b",
                                  ".kiwi",
                                  "kiwi.",
                                  "a..b",
                                  "::1",
                                  "::1:2237",
                                  "[::1",
                                  "::1]",
                                  "[::1]2237",
                                  "[::1]:",
                                  "[kiwi]",
                                  "[127.0.0.1]",
                                  "192.168.1",
                                  "192.168.1.256",
                                  "192.168.1.1.1",
                                  "kiwi.1",
                                  "8073",
                                  "user@kiwi",
                                  "kiwi\n",
                                  "kiwi:80\n"}) {
            QTest::newRow(qPrintable(QStringLiteral("<%1>").arg(QLatin1String(wrong))))
                << QString();
        }
    }

    void hostsAndPortsAreRead()
    {
        QFETCH(QString, read);
        QString text = QString::fromLatin1(QTest::currentDataTag());
        if (read.isEmpty()) {
            text = text.mid(1, text.size() - 2);
        }
        const auto parsed = parseHostPort(text, 8073);
        QCOMPARE(parsed ? hostPortText(parsed->host, parsed->port) : QString(), read);
    }

    void aHostHasNoPort()
    {
        QCOMPARE(*parseHost(QStringLiteral("kiwi.example")), QStringLiteral("kiwi.example"));
        QCOMPARE(*parseHost(QStringLiteral("::1")), QStringLiteral("::1"));
        QCOMPARE(*parseHost(QStringLiteral("[::1]")), QStringLiteral("::1"));
        QVERIFY(!parseHost(QStringLiteral("kiwi.example:8073")));
        QVERIFY(!parseHost(QString()));
    }

    void namesMayBeOfAnyLanguage()
    {
        QVERIFY(parseHost(QString::fromUtf8("empfänger.example")));
        QVERIFY(!parseHost(QString::fromUtf8("kiwi…example")));
    }

    void aNameOfDnsHasALimit()
    {
        QVERIFY(parseHost(QString(253, QLatin1Char('a'))));
        QVERIFY(!parseHost(QString(254, QLatin1Char('a'))));
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::HostPortTest)
#include "hostport_test.moc"
