// The good receivers and the removed ones, as the files and the settings hold them.

#include "base/datapaths.h"
#include "base/lockfile.h"
#include "store/goodreceiverstore.h"
#include "tests/fixture/files.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QLockFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace outpost
{

namespace
{

constexpr qint64 recordedMs = 1769882655250; // 2026-01-31T18:04:15.250Z

GoodReceiver receiver(const QString &host, int decodes = 3)
{
    return {host, 8073, 7.074, decodes};
}

} // namespace

class GoodReceiverStoreTest : public QObject
{
    Q_OBJECT

private slots:
    // For the settings lock on Windows.
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        settings = SettingsStore(folder->filePath(QStringLiteral("settings.ini")));
    }

    void aReceiverIsRecordedOnce()
    {
        const GoodReceiverStore store = newStore();
        store.recordGoodReceiver(receiver(QStringLiteral("Kiwi.Example")), recordedMs);
        store.recordGoodReceiver(receiver(QStringLiteral("kiwi.EXAMPLE"), 9), recordedMs + 1000);
        QCOMPARE(listed(store),
                 QStringList(QStringLiteral("Kiwi.Example:8073 — 7.074000 MHz — 3 decode(s)")));
        QVERIFY(listFile().contains("\"LastDecodeUtc\": \"2026-01-31T18:04:15Z\""));
    }

    void nothingIsRecordedWithoutDecodesOrHost()
    {
        const GoodReceiverStore store = newStore();
        store.recordGoodReceiver(receiver(QStringLiteral("kiwi"), 0), recordedMs);
        store.recordGoodReceiver(receiver(QString()), recordedMs);
        QVERIFY(!QFile::exists(listPath()));
    }

    void aRemovedReceiverStaysAwayUntilItIsApplied()
    {
        const QString host = QStringLiteral("Kiwi.Example");
        GoodReceiverStore store = newStore();
        store.recordGoodReceiver(receiver(host), recordedMs);
        const ReceiverRemoval removal = store.removeGoodReceiver(host, 8073);
        QCOMPARE(removal.outcome, ReceiverRemoval::Removed);
        QCOMPARE(removal.text, QStringLiteral("Removed saved receiver: Kiwi.Example:8073"));
        QCOMPARE(removed(), QStringList(QStringLiteral("kiwi.example:8073")));
        store.recordGoodReceiver(receiver(host), recordedMs);
        QCOMPARE(listed(store), QStringList());
        store.onReceiverApplied(host.toUpper(), 8073);
        QCOMPARE(removed(), QStringList());
        store.recordGoodReceiver(receiver(host), recordedMs);
        QCOMPARE(listed(store).size(), 1);
    }

    void aRemovalThatFailsForgetsNothing_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("text");
        QTest::newRow("no file") << QByteArray() << int(ReceiverRemoval::Failed)
                                 << QStringLiteral("Could not open the saved receiver list.");
        QTest::newRow("no list") << QByteArray("{}") << int(ReceiverRemoval::Failed)
                                 << QStringLiteral("The saved receiver list is not valid.");
        QTest::newRow("another") << QByteArray(R"([{"Host": "another"}])")
                                 << int(ReceiverRemoval::WasAbsent)
                                 << QStringLiteral("That receiver was already absent.");
    }

    void aRemovalThatFailsForgetsNothing()
    {
        QFETCH(QByteArray, list);
        if (!list.isNull()) {
            putList(list);
        }
        GoodReceiverStore store = newStore();
        const ReceiverRemoval removal = store.removeGoodReceiver(QStringLiteral("kiwi"), 8073);
        QTEST(int(removal.outcome), "outcome");
        QTEST(removal.text, "text");
        QCOMPARE(listFile(), list);
        QCOMPARE(removed(), QStringList());
    }

    // Another copy of the program has applied the receiver since.
    void aSavedRemovalIsNotSavedAgain()
    {
        putList(R"([{"Host": "kiwi"}, {"Host": "other"}])");
        GoodReceiverStore store = newStore();
        const ReceiverRemoval removal = store.removeGoodReceiver(QStringLiteral("kiwi"), 8073);
        QCOMPARE(removal.left.size(), 1);
        QCOMPARE(removal.left.first().host, QStringLiteral("other"));
        QVERIFY(settings.save(removedKeysSetting(), QStringList()));
        store.removeGoodReceiver(QStringLiteral("other"), 8073);
        QCOMPARE(removed(), QStringList(QStringLiteral("other:8073")));
    }

    void aRemovalThatIsNotSavedCountsAndIsSavedWithTheNext()
    {
        putList(R"([{"Host": "kiwi"}, {"Host": "other"}])");
        const QString place = folder->filePath(QStringLiteral("place"));
        settings = SettingsStore(place + QStringLiteral("/settings.ini"));
        GoodReceiverStore store = newStore();
        QVERIFY(QFile(place).open(QIODevice::WriteOnly)); // in the folder's place
        store.removeGoodReceiver(QStringLiteral("kiwi"), 8073);
        store.recordGoodReceiver(receiver(QStringLiteral("kiwi")), recordedMs);
        QCOMPARE(listed(store).size(), 1);
        QVERIFY(QFile::remove(place));
        store.removeGoodReceiver(QStringLiteral("other"), 8073);
        QCOMPARE(removed(),
                 QStringList({QStringLiteral("kiwi:8073"), QStringLiteral("other:8073")}));
    }

    void recordingWaitsForAnotherCopy()
    {
        const GoodReceiverStore store = newStore();
        QVERIFY(
            waits([&] { store.recordGoodReceiver(receiver(QStringLiteral("kiwi")), recordedMs); }));
        QCOMPARE(listed(store).size(), 1);
    }

    void removingWaitsForAnotherCopy()
    {
        putList(R"([{"Host": "kiwi"}])");
        GoodReceiverStore store = newStore();
        QVERIFY(waits([&] { store.removeGoodReceiver(QStringLiteral("kiwi"), 8073); }));
        QCOMPARE(listed(store), QStringList());
    }

private:
    GoodReceiverStore newStore() const { return {folder->path(), settings}; }
    QString listPath() const { return goodReceiversPath(folder->path()); }

    void putList(const QByteArray &list) const
    {
        QFile file(listPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(list), list.size());
    }

    QByteArray listFile() const { return fileBytes(listPath()); }

    static QStringList listed(const GoodReceiverStore &store)
    {
        QStringList texts;
        for (const GoodReceiver &found : store.receivers()) {
            texts.append(goodReceiverText(found));
        }
        return texts;
    }

    // Reads a copy of the file, which is not in Qt's cache.
    QStringList removed() const
    {
        const QTemporaryDir elsewhere;
        const QString copy = elsewhere.filePath(QStringLiteral("copy.ini"));
        QFile::copy(settings.fileName(), copy);
        return removedKeys(QSettings(copy, QSettings::IniFormat));
    }

    // Whether the change waits while another copy of the program holds the list without releasing
    // it.
    bool waits(const std::function<void()> &change) const
    {
        QLockFile stuck(listPath() + QStringLiteral(".lock"));
        if (!stuck.tryLock()) {
            return false;
        }
        QElapsedTimer timer;
        timer.start();
        change();
        return timer.elapsed() >= changeWaitMs;
    }

    std::unique_ptr<QTemporaryDir> folder;
    SettingsStore settings;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::GoodReceiverStoreTest)
#include "goodreceiverstore_test.moc"
