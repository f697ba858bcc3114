#include "base/settings.h"

#include <QTemporaryDir>
#include <QTest>

namespace outpost
{

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void storedDepth_data();
    void storedDepth();
    void openedByTheirOwnNames();
};

void SettingsTest::storedDepth_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<int>("depth");
    QTest::newRow("absent") << QVariant() << 2;
    QTest::newRow("0") << QVariant(0) << 2;
    QTest::newRow("1") << QVariant(1) << 1;
    QTest::newRow("2") << QVariant(2) << 2;
    QTest::newRow("3") << QVariant(3) << 3;
    QTest::newRow("4") << QVariant(4) << 2;
    QTest::newRow("-1") << QVariant(-1) << 2;
    for (const char *large : {"4294967297", "4294967298", "-4294967294", "18446744073709551617"}) {
        QTest::newRow(large) << QVariant(QString::fromLatin1(large)) << 2;
    }
    QTest::newRow("a large number") << QVariant(Q_INT64_C(4294967297)) << 2;
    QTest::newRow("not a number") << QVariant(QStringLiteral("deep")) << 2;
    QTest::newRow("a number as text") << QVariant(QStringLiteral("3")) << 3;
}

void SettingsTest::storedDepth()
{
    QFETCH(QVariant, stored);
    const QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    if (stored.isValid()) {
        settings.setValue(QStringLiteral("decoder/depth"), stored);
    }
    QTEST(storedDecodeDepth(settings), "depth");
}

void SettingsTest::openedByTheirOwnNames()
{
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
    const QSettings settings = stationSettings();
    QCOMPARE(settings.organizationName(), QStringLiteral("PELQ"));
    QCOMPARE(settings.applicationName(), QStringLiteral("PELQ Kiwi Outpost"));
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::SettingsTest)
#include "settings_test.moc"
