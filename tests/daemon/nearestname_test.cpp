// The known name nearest to a mistyped one.

#include "daemon/nearestname.h"

#include <QTest>

namespace outpost
{

class NearestNameTest : public QObject
{
    Q_OBJECT

private slots:
    void theNearestNameIsFound_data()
    {
        QTest::addColumn<QString>("nearest");
        const auto row = [](const char *name, const char *nearest) {
            QTest::newRow(name) << QString::fromLatin1(nearest);
        };
        row("prot", "port");
        row("Port", "port");
        row("HIGH-HZ", "high_hz");
        row("lowhz", "low_hz");
        row("low_khz", "low_hz");
        row("hosts", "host");
        row("ost", "host");
        row("password", "password_file");
        row("pasword_file", "password_file");
        row("frequency", "frequency_file");
        row("x", "host"); // all of its letters replaced, the first of the shortest
    }

    void theNearestNameIsFound()
    {
        QFETCH(QString, nearest);
        const QStringList known{QStringLiteral("host"),          QStringLiteral("port"),
                                QStringLiteral("low_hz"),        QStringLiteral("high_hz"),
                                QStringLiteral("password_file"), QStringLiteral("frequency_file")};
        QCOMPARE(nearestName(QString::fromLatin1(QTest::currentDataTag()), known), nearest);
    }

    void whereNoneIsKnownNoneIsNear()
    {
        QCOMPARE(nearestName(QStringLiteral("port"), {}), QString());
    }

    void anEmptyNameHasANearestOne()
    {
        QCOMPARE(nearestName(QString(), {QStringLiteral("host"), QStringLiteral("id")}),
                 QStringLiteral("id"));
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::NearestNameTest)
#include "nearestname_test.moc"
