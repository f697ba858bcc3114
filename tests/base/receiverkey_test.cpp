#include "base/receiverkey.h"

#include <QFile>
#include <QJsonObject>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

class ReceiverKeyTest : public QObject
{
    Q_OBJECT

private slots:
    void keyIsTheLowerCaseHostAndThePort_data();
    void keyIsTheLowerCaseHostAndThePort();
    void entryMatchesByHostAndPort_data();
    void entryMatchesByHostAndPort();
    void findsAKeyInAnyCase();
    void addsAKeyOnce();
    void takesOutEveryEqualKey();
    void changesRemoveAndApplyAgain();
    void absentKeysReadAsNone();
    void storedKeysAreReadBackFromDisk_data();
    void storedKeysAreReadBackFromDisk();
    void aHandEditedListIsRead();

private:
    QSettings iniFile(const QString &name) const
    {
        return QSettings(folder.filePath(name), QSettings::IniFormat);
    }

    QTemporaryDir folder;
};

namespace
{

QStringList list(const char *keys)
{
    return QString::fromUtf8(keys).split(QLatin1Char('|'), Qt::SkipEmptyParts);
}

} // namespace

void ReceiverKeyTest::keyIsTheLowerCaseHostAndThePort_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("key");
    QTest::newRow("plain") << QStringLiteral("kiwi.example") << 8073
                           << QStringLiteral("kiwi.example:8073");
    QTest::newRow("capitals and blanks")
        << QStringLiteral(" Kiwi.EXAMPLE\t") << 1 << QStringLiteral("kiwi.example:1");
    QTest::newRow("a host like a placeholder")
        << QStringLiteral("%2%1") << 8073 << QStringLiteral("%2%1:8073");
}

void ReceiverKeyTest::keyIsTheLowerCaseHostAndThePort()
{
    QFETCH(QString, host);
    QFETCH(int, port);
    QTEST(receiverKey(host, port), "key");
}

void ReceiverKeyTest::entryMatchesByHostAndPort_data()
{
    QTest::addColumn<QJsonObject>("entry");
    QTest::addColumn<int>("fallback");
    QTest::addColumn<bool>("matches");
    const QString host = QStringLiteral("Host");
    const QString port = QStringLiteral("Port");
    const QString kiwi = QStringLiteral("KIWI");
    QTest::newRow("same in another case") << QJsonObject{{host, kiwi}, {port, 8073}} << 0 << true;
    QTest::newRow("another port") << QJsonObject{{host, kiwi}, {port, 8074}} << 8073 << false;
    QTest::newRow("another host") << QJsonObject{{host, QStringLiteral("kiwi2")}, {port, 8073}}
                                  << 8073 << false;
    QTest::newRow("blanks in the entry count")
        << QJsonObject{{host, QStringLiteral(" kiwi ")}, {port, 8073}} << 8073 << false;
    QTest::newRow("no port, fallback fits") << QJsonObject{{host, kiwi}} << 8073 << true;
    QTest::newRow("no port, fallback differs") << QJsonObject{{host, kiwi}} << 0 << false;
    QTest::newRow("port as text takes the fallback")
        << QJsonObject{{host, kiwi}, {port, QStringLiteral("1")}} << 8073 << true;
    QTest::newRow("no host") << QJsonObject{{port, 8073}} << 8073 << false;
}

void ReceiverKeyTest::entryMatchesByHostAndPort()
{
    QFETCH(QJsonObject, entry);
    QFETCH(int, fallback);
    QTEST(isReceiver(entry, QStringLiteral("kiwi"), 8073, fallback), "matches");
}

void ReceiverKeyTest::findsAKeyInAnyCase()
{
    QVERIFY(containsKey(list("a:1|B:2"), QStringLiteral("b:2")));
    QVERIFY(containsKey(list("a:1|b:2"), QStringLiteral("B:2")));
    QVERIFY(!containsKey(list("a:1|b:22"), QStringLiteral("b:2")));
    QVERIFY(!containsKey({}, QStringLiteral("b:2")));
}

void ReceiverKeyTest::addsAKeyOnce()
{
    QCOMPARE(withKey({}, QStringLiteral("a:1")), list("a:1"));
    QCOMPARE(withKey(list("b:2"), QStringLiteral("a:1")), list("b:2|a:1"));
    QCOMPARE(withKey(list("A:1|b:2"), QStringLiteral("a:1")), list("A:1|b:2"));
}

void ReceiverKeyTest::takesOutEveryEqualKey()
{
    QCOMPARE(withoutKey(list("a:1|b:2|A:1|c:3|a:1"), QStringLiteral("a:1")), list("b:2|c:3"));
    QCOMPARE(withoutKey(list("A:1"), QStringLiteral("a:1")), QStringList());
    QCOMPARE(withoutKey(list("a:11|aa:1"), QStringLiteral("a:1")), list("a:11|aa:1"));
}

void ReceiverKeyTest::changesRemoveAndApplyAgain()
{
    const RemovedKeyChanges changes = {{QStringLiteral("a:1"), false},
                                       {QStringLiteral("d:4"), true}};
    QCOMPARE(withChanges(list("A:1|b:2"), changes), list("b:2|d:4"));
    QCOMPARE(withChanges(list("b:2|D:4"), changes), list("b:2|D:4"));
    QCOMPARE(withChanges(list("b:2"), {}), list("b:2"));
}

void ReceiverKeyTest::absentKeysReadAsNone()
{
    QCOMPARE(removedKeys(iniFile(QStringLiteral("absent.ini"))), QStringList());
}

void ReceiverKeyTest::storedKeysAreReadBackFromDisk_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("none") << QStringList();
    QTest::newRow("one") << list("a:1");
    QTest::newRow("two") << list("a:1|b:2");
    QTest::newRow("one with a comma") << list("a,b:1");
    QTest::newRow("one with other signs") << list("@a;b=\"c\" \\%1:1");
    QTest::newRow("one beyond ASCII") << list("kiwi.\u00f6sterreich:8073");
}

// Reads a copy of the file, which is not in this process's cache.
void ReceiverKeyTest::storedKeysAreReadBackFromDisk()
{
    QFETCH(QStringList, keys);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    QSettings stored = iniFile(tag);
    stored.setValue(removedKeysSetting(), keys);
    stored.sync();
    const QString copy = tag + QStringLiteral(".copy");
    QVERIFY(QFile::copy(stored.fileName(), folder.filePath(copy)));
    const QSettings read = iniFile(copy);
    QVERIFY(read.contains(QStringLiteral("receivers/removedKeys")));
    QCOMPARE(removedKeys(read), keys);
}

void ReceiverKeyTest::aHandEditedListIsRead()
{
    const QString name = QStringLiteral("edited.ini");
    QFile file(folder.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[receivers]\nremovedKeys=a:1, b:2\n");
    file.close();
    QCOMPARE(removedKeys(iniFile(name)), list("a:1|b:2"));
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ReceiverKeyTest)
#include "receiverkey_test.moc"
