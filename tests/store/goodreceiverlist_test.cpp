// The list of good receivers: recorded while decodes arrive; shown and edited in the Kiwi Receiver
// dialog.

#include "app/mainwindow.h"
#include "base/receiverkey.h"
#include "base/settings.h"
#include "decode/ft8decode.h"
#include "sim/kiwisim.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/receiverform.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/fixture/testoptions.h"
#include "tests/store/storedlists.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QLocalServer>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

namespace outpost
{

namespace
{

constexpr qint64 madeUpMs = 1769882655250; // 2026-01-31T18:04:15.250Z

QJsonObject entry(const QString &host, int port)
{
    return {{QStringLiteral("Host"), host},
            {QStringLiteral("Port"), port},
            {QStringLiteral("FrequencyMhz"), 7.074},
            {QStringLiteral("LastDecodeCount"), 3},
            {QStringLiteral("LastDecodeUtc"), QStringLiteral("2026-01-01T00:00:00Z")}};
}

QStringList decodeLines(int count)
{
    QStringList lines;
    for (int i = 0; i < count; ++i) {
        lines += QStringLiteral("000000 -10  0.1 %1 ~  CQ K%2ABC FN42").arg(1000 + i).arg(i);
    }
    return lines;
}

QStringList comboTexts(const QComboBox *combo)
{
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i) {
        texts += combo->itemText(i);
    }
    return texts;
}

// Selects the item and clicks Remove Selected. Returns the text of the label.
QString removeItem(const ReceiverForm &form, int index)
{
    form.goodReceivers->setCurrentIndex(index);
    QTest::mouseClick(form.remove, Qt::LeftButton);
    return form.status->text();
}

QString removeOnly(const MainWindow &window, int index)
{
    QString answer;
    inReceiverDialog(window, [&](const ReceiverForm &form) { answer = removeItem(form, index); });
    return answer;
}

void applyReceiver(const MainWindow &window, const QString &host, int port)
{
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(host);
        form.port->setText(QString::number(port));
        QTest::mouseClick(form.apply, Qt::LeftButton);
    });
    choose(window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
}

} // namespace

class GoodReceiverListTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

#ifdef OUTPOST_STREAMS
    void theFirstWorkerThatDecodesRecordsTheReceiver();
#endif
    void aBatchOfAWorkerRecords();
    void theFrequencyInUseIsRecorded();
    void theTableRecordsWithAllItsRows();
    void noDecodesRecordNothing();
    void laterDecodesLeaveTheFileAsItIs();
    void aHostInAnotherCaseIsTheSameReceiver();
    void anotherPortIsAnotherReceiver();
    void anEntryWithoutPortIsTheUsualPort();
    void aBlankHostIsNotRecorded();
    void aDamagedFileIsReplaced_data();
    void aDamagedFileIsReplaced();
#ifndef Q_OS_WIN // sockets are not files there
    void aFileThatCannotBeReadIsReplaced();
#endif
    void manyReceiversAreKeptAndListed();
    void aFailedRecordingIsOnlyLogged();
    void theFolderIsNotMade();

    void theComboListsTheEntriesInOrder();
    void aFileThatIsNoListShowsThePlaceholderOnly_data();
    void aFileThatIsNoListShowsThePlaceholderOnly();

    void removingTellsSoAndForgets();
    void aRemovedReceiverStaysAway();
    void aReceiverAppliedAgainIsRecordedAgain();
    void aRemovedKeyInAnyCaseCounts();
    void removingTakesEveryEntryOfTheReceiver();
    void removingTakesAnEntryWithoutPort();
    void removingKeepsWhatIsNoEntry();
    void removingAddsAKeyOnce();
    void aSavedRemovalIsNotSavedAgain();
    void removingFailsWithoutTheFile();
    void removingFailsOnADamagedFile_data();
    void removingFailsOnADamagedFile();
    void removingWhatIsGoneSaysSo_data();
    void removingWhatIsGoneSaysSo();
    void aHostWithBlanksIsShownAsStored();
    void aHostWithBlanksCannotBeRemoved();

private:
    void writeProfile(const QString &host, int port = 8073) const;

    const ScriptedDecoder decoder{"exit 0"};
};

void GoodReceiverListTest::init()
{
    testHome().clear();
    writeProfile(QStringLiteral("Kiwi.Example"));
}

void GoodReceiverListTest::writeProfile(const QString &host, int port) const
{
    testHome().writeProfile({{QStringLiteral("Host"), host},
                             {QStringLiteral("Port"), port},
                             {QStringLiteral("Jt9Path"), decoder.path()},
                             {QStringLiteral("BridgePort"), freePort()}});
}

#ifdef OUTPOST_STREAMS
// One worker finds two messages; the others find one each, after the receiver was recorded.
void GoodReceiverListTest::theFirstWorkerThatDecodesRecordsTheReceiver()
{
    const QString later = testHome().path(QStringLiteral("later"));
    const ScriptedDecoder slowElsewhere("if [ $5 = 0 ]; then\n"
                                        "  echo '000000 -10  0.1  500 ~  CQ K1ABC FN42'\n"
                                        "  echo '000000 -11  0.1  600 ~  CQ K2ABC FN42'\n"
                                        "else\n"
                                        "  until [ -e " +
                                        QFile::encodeName(later) +
                                        " ]; do sleep 0.02; done\n"
                                        "  echo \"000000 -12  0.1 $5 ~  CQ K3ABC FN42\"\n"
                                        "fi");
    // The station's clock runs twenty times as fast as real time.
    QElapsedTimer ours;
    ours.start();
    const auto fastClock = [&ours] { return madeUpMs + 20 * ours.elapsed(); };
    SimConfig config;
    config.nowMs = fastClock;
    config.firstSoundDelayMs = 0;
    KiwiSim receiver;
    QString error;
    QVERIFY2(receiver.listen(config, &error), qPrintable(error));
    testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("127.0.0.1")},
                             {QStringLiteral("Port"), receiver.port()},
                             {QStringLiteral("Jt9Path"), slowElsewhere.path()},
                             {QStringLiteral("BridgePort"), freePort()}});
    const LogTrace trace;
    MainWindow window(testOptions(fastClock));
    window.connectKiwi();

    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(listFile()), 20000);
    QCOMPARE(decodeTableOf(window)->rowCount(), 0);
    QCOMPARE(savedList().size(), 1);
    const QJsonObject recorded = savedList().at(0).toObject();
    QCOMPARE(recorded.value(QLatin1String("LastDecodeCount")).toInt(), 2);
    const QByteArray first = fileBytes(listFile());
    putFile(later, "");
    QTRY_VERIFY_WITH_TIMEOUT(decodeTableOf(window)->rowCount() >= 5, 20000);
    QCOMPARE(fileBytes(listFile()), first);
    QCOMPARE(
        trace.count(QStringLiteral("Good receiver recorded: 127.0.0.1:%1").arg(receiver.port())),
        1);
}
#endif

void GoodReceiverListTest::aBatchOfAWorkerRecords()
{
    const LogTrace trace;
    MainWindow window(testOptions([] { return madeUpMs; }));
    window.onDecodesDelivered(QStringLiteral("18:04:00"), parseDecodeLines(decodeLines(4)));
    QCOMPARE(fileBytes(listFile()), QByteArray("[\n"
                                               "    {\n"
                                               "        \"FrequencyMhz\": 14.074,\n"
                                               "        \"Host\": \"Kiwi.Example\",\n"
                                               "        \"LastDecodeCount\": 4,\n"
                                               "        \"LastDecodeUtc\": "
                                               "\"2026-01-31T18:04:15Z\",\n"
                                               "        \"Port\": 8073\n"
                                               "    }\n"
                                               "]\n"));
    QCOMPARE(trace.lines().last(), QStringLiteral("Good receiver recorded: Kiwi.Example:8073"));
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void GoodReceiverListTest::theFrequencyInUseIsRecorded()
{
    putFile(frequencyFile(), "7.0740005");
    MainWindow().recordGoodReceiver(3);
    QCOMPARE(savedList().at(0).toObject().value(QLatin1String("FrequencyMhz")).toDouble(),
             7.0740005);
}

// With the rows of all three periods shown, not only those of the latest.
void GoodReceiverListTest::theTableRecordsWithAllItsRows()
{
    MainWindow window;
    window.appendDecodes(QStringLiteral("18:04:00"), parseDecodeLines(decodeLines(1)));
    window.appendDecodes(QStringLiteral("18:04:15"), parseDecodeLines(decodeLines(2)));
    window.appendDecodes(QStringLiteral("18:04:30"), parseDecodeLines(decodeLines(3)));
    QVERIFY(QFile::remove(listFile()));
    window.appendDecodes(QStringLiteral("18:04:45"), parseDecodeLines(decodeLines(4)));
    QCOMPARE(savedList().at(0).toObject().value(QLatin1String("LastDecodeCount")).toInt(), 9);
}

void GoodReceiverListTest::noDecodesRecordNothing()
{
    const LogTrace trace;
    MainWindow window;
    window.onDecodesDelivered(QStringLiteral("18:04:00"), {});
    window.appendDecodes(QStringLiteral("18:04:00"), {});
    window.recordGoodReceiver(-1);
    QVERIFY(!QFile::exists(listFile()));
    QVERIFY(!trace.contains(QStringLiteral("ood receiver")));
}

void GoodReceiverListTest::laterDecodesLeaveTheFileAsItIs()
{
    MainWindow window;
    window.recordGoodReceiver(3);
    // Formatted differently from the program's output, so that a rewrite would show.
    const QByteArray first = fileBytes(listFile()).replace("    ", "\t");
    putFile(listFile(), first);
    putFile(frequencyFile(), "7.074");
    window.profileStore().loadFrequencyFile();
    const LogTrace trace;
    window.onDecodesDelivered(QStringLiteral("18:04:15"), parseDecodeLines(decodeLines(9)));
    window.appendDecodes(QStringLiteral("18:04:15"), parseDecodeLines(decodeLines(9)));
    QCOMPARE(fileBytes(listFile()), first);
    QCOMPARE(trace.lines(), QStringList());
}

void GoodReceiverListTest::aHostInAnotherCaseIsTheSameReceiver()
{
    writeProfile(QStringLiteral("KIWI.EXAMPLE"));
    MainWindow().recordGoodReceiver(3);
    const QByteArray first = fileBytes(listFile());
    writeProfile(QStringLiteral(" kiwi.example "));
    MainWindow().recordGoodReceiver(5);
    QCOMPARE(fileBytes(listFile()), first);
    QVERIFY(first.contains("\"KIWI.EXAMPLE\""));
}

void GoodReceiverListTest::anotherPortIsAnotherReceiver()
{
    MainWindow().recordGoodReceiver(3);
    writeProfile(QStringLiteral("Kiwi.Example"), 8074);
    MainWindow().recordGoodReceiver(5);
    QCOMPARE(savedList().size(), 2);
    QCOMPARE(savedList().at(1).toObject().value(QLatin1String("Port")).toInt(), 8074);
}

void GoodReceiverListTest::anEntryWithoutPortIsTheUsualPort()
{
    saveList({QJsonObject{{QStringLiteral("Host"), QStringLiteral("kiwi.example")}}});
    const QByteArray before = fileBytes(listFile());
    MainWindow().recordGoodReceiver(3);
    QCOMPARE(fileBytes(listFile()), before);
}

void GoodReceiverListTest::aBlankHostIsNotRecorded()
{
    writeProfile(QStringLiteral("  "));
    MainWindow().recordGoodReceiver(3);
    QVERIFY(!QFile::exists(listFile()));
}

void GoodReceiverListTest::aDamagedFileIsReplaced_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("an object") << QByteArray("{\"Host\": \"Kiwi.Example\"}");
    QTest::newRow("not JSON") << QByteArray("receivers");
    QTest::newRow("cut short") << QByteArray("[{\"Host\": \"Kiwi.Exam");
    QTest::newRow("empty") << QByteArray();
}

void GoodReceiverListTest::aDamagedFileIsReplaced()
{
    QFETCH(QByteArray, content);
    putFile(listFile(), content);
    MainWindow window;
    QCOMPARE(fileBytes(listFile()), content);
    window.recordGoodReceiver(3);
    QCOMPARE(savedList().size(), 1);
    QCOMPARE(savedList().at(0).toObject().value(QLatin1String("Host")).toString(),
             QStringLiteral("Kiwi.Example"));
}

#ifndef Q_OS_WIN
// A socket is in the folder like a file. It cannot be read, but a file can replace it.
void GoodReceiverListTest::aFileThatCannotBeReadIsReplaced()
{
    MainWindow window;
    QLocalServer server;
    const QString socket = testHome().path(QStringLiteral("socket"));
    QVERIFY(server.listen(socket));
    QVERIFY(QFile::rename(socket, listFile()));
    QVERIFY(QFile::exists(listFile()) && !QFile(listFile()).open(QIODevice::ReadOnly));
    const LogTrace trace;
    window.recordGoodReceiver(3);
    QCOMPARE(trace.lines(),
             QStringList(QStringLiteral("Good receiver recorded: Kiwi.Example:8073")));
    QCOMPARE(savedList().size(), 1);
}
#endif

void GoodReceiverListTest::manyReceiversAreKeptAndListed()
{
    constexpr int many = 300;
    QJsonArray list;
    for (int i = 0; i < many; ++i) {
        list.append(entry(QStringLiteral("kiwi%1.example").arg(i), 8073));
    }
    saveList(list);
    MainWindow window;
    window.recordGoodReceiver(3);
    QCOMPARE(savedList().size(), many + 1);
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(form.goodReceivers->count(), 1 + many + 1);
        QCOMPARE(removeItem(form, many + 1),
                 QStringLiteral("Removed saved receiver: Kiwi.Example:8073"));
    });
    QCOMPARE(savedList(), list);
}

void GoodReceiverListTest::aFailedRecordingIsOnlyLogged()
{
    QVERIFY(QDir().mkpath(listFile()));
    MainWindow window;
    const LogTrace trace;
    window.onDecodesDelivered(QStringLiteral("18:04:00"), parseDecodeLines(decodeLines(1)));
    QCOMPARE(trace.lines(), QStringList(QStringLiteral("GOOD RECEIVER SAVE FAILED: Filename "
                                                       "refers to a directory")));
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void GoodReceiverListTest::theFolderIsNotMade()
{
    MainWindow window;
    const QString folder = QFileInfo(listFile()).path();
    QVERIFY(QDir(folder).removeRecursively());
    const LogTrace trace;
    window.recordGoodReceiver(3);
    QVERIFY(trace.contains(QStringLiteral("GOOD RECEIVER SAVE FAILED: ")));
    QVERIFY(!QDir(folder).exists());
}

void GoodReceiverListTest::theComboListsTheEntriesInOrder()
{
    QJsonObject lean{{QStringLiteral("Host"), QStringLiteral("lean.example")}};
    saveList({entry(QStringLiteral("Zulu.example"), 8075), QStringLiteral("text"), QJsonObject(),
              QJsonObject{{QStringLiteral("Host"), QStringLiteral(" ")}}, lean,
              entry(QStringLiteral("alfa.example"), 1)});
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(comboTexts(form.goodReceivers),
                 QStringList() << QStringLiteral("Select a saved good receiver")
                               << QStringLiteral("Zulu.example:8075 — 7.074000 MHz — 3 decode(s)")
                               << QStringLiteral("lean.example:8073 — 14.074000 MHz — 0 decode(s)")
                               << QStringLiteral("alfa.example:1 — 7.074000 MHz — 3 decode(s)"));
        QCOMPARE(form.goodReceivers->currentIndex(), 0);
        QVERIFY(!form.goodReceivers->itemData(0).isValid());
        const QVariantMap data = form.goodReceivers->itemData(1).toMap();
        QCOMPARE(data, QVariantMap({{QStringLiteral("Host"), QStringLiteral("Zulu.example")},
                                    {QStringLiteral("Port"), 8075},
                                    {QStringLiteral("FrequencyMhz"), 7.074}}));
    });
}

void GoodReceiverListTest::aFileThatIsNoListShowsThePlaceholderOnly_data()
{
    aDamagedFileIsReplaced_data();
}

void GoodReceiverListTest::aFileThatIsNoListShowsThePlaceholderOnly()
{
    QFETCH(QByteArray, content);
    putFile(listFile(), content);
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(comboTexts(form.goodReceivers),
                 QStringList(QStringLiteral("Select a saved good receiver")));
        QVERIFY(!form.remove->isEnabled());
        QTest::mouseClick(form.remove, Qt::LeftButton);
        QCOMPARE(form.status->text(), QStringLiteral("Disconnected"));
    });
    QCOMPARE(fileBytes(listFile()), content);
}

void GoodReceiverListTest::removingTellsSoAndForgets()
{
    saveList({entry(QStringLiteral("first"), 1), entry(QStringLiteral("Kiwi.Example"), 8073),
              entry(QStringLiteral("last"), 2)});
    const MainWindow window;
    const LogTrace trace;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(removeItem(form, 2), QStringLiteral("Removed saved receiver: Kiwi.Example:8073"));
        QCOMPARE(form.goodReceivers->count(), 3);
        QVERIFY(form.goodReceivers->itemText(2).startsWith(QStringLiteral("last:2 ")));
        QCOMPARE(form.goodReceivers->currentIndex(), 0);
        QVERIFY(!form.remove->isEnabled());
        QCOMPARE(form.host->text(), QStringLiteral("Kiwi.Example")); // the edits are unchanged
    });
    QCOMPARE(fileBytes(listFile()), QJsonDocument(QJsonArray{entry(QStringLiteral("first"), 1),
                                                             entry(QStringLiteral("last"), 2)})
                                        .toJson());
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("kiwi.example:8073")));
    QCOMPARE(trace.count(QStringLiteral("Saved receiver removed: Kiwi.Example:8073")), 1);
}

void GoodReceiverListTest::aRemovedReceiverStaysAway()
{
    MainWindow window;
    window.recordGoodReceiver(3);
    removeOnly(window, 1);
    window.onDecodesDelivered(QStringLiteral("18:04:00"), parseDecodeLines(decodeLines(2)));
    window.appendDecodes(QStringLiteral("18:04:00"), parseDecodeLines(decodeLines(2)));
    QCOMPARE(fileBytes(listFile()), QByteArray("[\n]\n"));
    MainWindow().recordGoodReceiver(3); // nor after a restart
    QCOMPARE(savedList().size(), 0);
}

void GoodReceiverListTest::aReceiverAppliedAgainIsRecordedAgain()
{
    writeProfile(QStringLiteral("localhost"), 1);
    MainWindow window;
    window.recordGoodReceiver(3);
    removeOnly(window, 1);
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("localhost:1")));
    applyReceiver(window, QStringLiteral("LOCALHOST"), 1);
    QCOMPARE(removedOnDisk(), QStringList());
    QCOMPARE(savedList().size(), 0);
    window.onDecodesDelivered(QStringLiteral("18:04:00"), parseDecodeLines(decodeLines(2)));
    QCOMPARE(savedList().size(), 1);
    QCOMPARE(savedList().at(0).toObject().value(QLatin1String("Host")).toString(),
             QStringLiteral("LOCALHOST"));
}

void GoodReceiverListTest::aRemovedKeyInAnyCaseCounts()
{
    removeBefore({QStringLiteral("KIWI.example:8073")});
    MainWindow().recordGoodReceiver(3);
    QVERIFY(!QFile::exists(listFile()));
}

void GoodReceiverListTest::removingTakesEveryEntryOfTheReceiver()
{
    saveList({entry(QStringLiteral("kiwi"), 8073), entry(QStringLiteral("kiwi"), 8074),
              entry(QStringLiteral("KIWI"), 8073)});
    const MainWindow window;
    QCOMPARE(removeOnly(window, 3), QStringLiteral("Removed saved receiver: KIWI:8073"));
    QCOMPARE(savedList(), QJsonArray({entry(QStringLiteral("kiwi"), 8074)}));
}

void GoodReceiverListTest::removingTakesAnEntryWithoutPort()
{
    saveList({QJsonObject{{QStringLiteral("Host"), QStringLiteral("kiwi")}}});
    const MainWindow window;
    QCOMPARE(removeOnly(window, 1), QStringLiteral("Removed saved receiver: kiwi:8073"));
    QCOMPARE(savedList().size(), 0);
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("kiwi:8073")));
}

void GoodReceiverListTest::removingKeepsWhatIsNoEntry()
{
    QJsonObject other = entry(QStringLiteral("other"), 1);
    other.insert(QStringLiteral("Note"), QStringLiteral("mine"));
    saveList({QStringLiteral("text"), entry(QStringLiteral("kiwi"), 8073), 7, other,
              QJsonArray{QStringLiteral("kiwi")}});
    const MainWindow window;
    removeOnly(window, 1);
    QCOMPARE(savedList(),
             QJsonArray({QStringLiteral("text"), 7, other, QJsonArray{QStringLiteral("kiwi")}}));
}

void GoodReceiverListTest::removingAddsAKeyOnce()
{
    const QStringList before{QStringLiteral("KIWI:8073"), QStringLiteral("other:1")};
    removeBefore(before);
    saveList({entry(QStringLiteral("kiwi"), 8073)});
    const MainWindow window;
    removeOnly(window, 1);
    QCOMPARE(removedOnDisk(), before);
}

// Another copy has applied the receiver since.
void GoodReceiverListTest::aSavedRemovalIsNotSavedAgain()
{
    saveList({entry(QStringLiteral("kiwi"), 8073), entry(QStringLiteral("other"), 1)});
    const MainWindow window;
    removeOnly(window, 1);
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("kiwi:8073")));
    removeBefore({});
    removeOnly(window, 1);
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("other:1")));
}

void GoodReceiverListTest::removingFailsWithoutTheFile()
{
    saveList({entry(QStringLiteral("kiwi"), 8073)});
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QVERIFY(QFile::remove(listFile()));
        QCOMPARE(removeItem(form, 1), QStringLiteral("Could not open the saved receiver list."));
        QCOMPARE(form.goodReceivers->currentIndex(), 1);
    });
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("absent")));
}

void GoodReceiverListTest::removingFailsOnADamagedFile_data()
{
    aDamagedFileIsReplaced_data();
}

void GoodReceiverListTest::removingFailsOnADamagedFile()
{
    QFETCH(QByteArray, content);
    saveList({entry(QStringLiteral("kiwi"), 8073)});
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        putFile(listFile(), content);
        QCOMPARE(removeItem(form, 1), QStringLiteral("The saved receiver list is not valid."));
    });
    QCOMPARE(fileBytes(listFile()), content);
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("absent")));
}

void GoodReceiverListTest::removingWhatIsGoneSaysSo_data()
{
    QTest::addColumn<QJsonArray>("left");
    QTest::newRow("nothing") << QJsonArray();
    QTest::newRow("another") << QJsonArray{entry(QStringLiteral("another"), 1)};
    QTest::newRow("another port") << QJsonArray{entry(QStringLiteral("kiwi"), 1)};
}

// Another window may have removed it.
void GoodReceiverListTest::removingWhatIsGoneSaysSo()
{
    QFETCH(QJsonArray, left);
    saveList({entry(QStringLiteral("kiwi"), 8073), entry(QStringLiteral("more"), 8073)});
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        saveList(left);
        QCOMPARE(removeItem(form, 1), QStringLiteral("That receiver was already absent."));
        QCOMPARE(form.goodReceivers->count(), 1 + left.size());
        QCOMPARE(form.goodReceivers->currentIndex(), 0);
        QVERIFY(!form.remove->isEnabled());
    });
    QCOMPARE(savedList(), left);
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("absent")));
}

void GoodReceiverListTest::aHostWithBlanksIsShownAsStored()
{
    saveList({entry(QStringLiteral("  kiwi "), 8073)});
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(1);
        QCOMPARE(form.goodReceivers->currentText(),
                 QStringLiteral("  kiwi :8073 — 7.074000 MHz — 3 decode(s)"));
        QCOMPARE(form.host->text(), QStringLiteral("  kiwi "));
    });
}

// The item's host is trimmed, the file's is not.
void GoodReceiverListTest::aHostWithBlanksCannotBeRemoved()
{
    saveList({entry(QStringLiteral("  kiwi "), 8073)});
    const QByteArray before = fileBytes(listFile());
    const MainWindow window;
    QCOMPARE(removeOnly(window, 1), QStringLiteral("That receiver was already absent."));
    QCOMPARE(fileBytes(listFile()), before);
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("absent")));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::GoodReceiverListTest)
#include "goodreceiverlist_test.moc"
