// What the operator is told when the disk is full or read-only, on mounts private to this process.

#include "app/mainwindow.h"
#include "base/receiverkey.h"
#include "base/settings.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/receiverform.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/store/privatemounts.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace outpost
{

namespace
{

// Mounted before main(), and so before any thread starts.
const bool privateMounts = enterPrivateMounts();

QString settingsFile()
{
    return stationSettings().fileName();
}

// For its lifetime, mounts a small disk on a file's folder.
class SmallDisk
{
public:
    explicit SmallDisk(const QString &file)
        : folder(QFileInfo(file).path()), disk((QDir().mkpath(folder), folder), "size=256k")
    {
    }
    ~SmallDisk() { QDir(folder).removeRecursively(); }
    Q_DISABLE_COPY(SmallDisk)

    bool isMounted() const { return disk.isMounted(); }
    bool makeReadOnly() { return disk.makeReadOnly(); }
    // Fills the disk except for this number of pages.
    bool fillUp(int freePages = 0)
    {
        QFile filler(folder + QStringLiteral("/filler"));
        if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            return false;
        }
        const QByteArray page(4096, 'f');
        while (filler.write(page) == page.size()) {
        }
        return filler.error() == QFileDevice::ResourceError &&
               filler.resize(filler.size() - freePages * page.size());
    }
    bool makeRoom() { return QFile::remove(folder + QStringLiteral("/filler")); }

private:
    const QString folder;
    MemoryMount disk;
};

// Spoils the disk with `spoil`, then removes the only receiver. Returns the text of the label.
QString removeReceiver(const MainWindow &window, const std::function<bool()> &spoil)
{
    QString answer;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(1);
        QVERIFY(spoil());
        QTest::mouseClick(form.remove, Qt::LeftButton);
        answer = form.status->text();
        QCOMPARE(form.goodReceivers->currentIndex(), 1);
        QVERIFY(form.remove->isEnabled());
    });
    return answer;
}

} // namespace

class UnwritableFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void aFullDiskKeepsTheSavedProfile();
    void aReadOnlyDiskRefusesTheProfile();
    void applyIsSilentAboutAFullDisk();
    void aFullDiskKeepsTheGoodReceivers();
    void aReadOnlyDiskRecordsNoReceiver();
    void removingFailsOnAFullDisk();
    void removingFailsOnAReadOnlyDisk();
    void aFullDiskKeepsTheStatusLog();
    void aRemovalThatCannotBeSavedCountsAllTheSame_data();
    void aRemovalThatCannotBeSavedCountsAllTheSame();
    void aReceiverAppliedAfterAFailedRemovalIsRecordedAgain();
    void applyingAReceiverKeepsTheSettings_data();
    void applyingAReceiverKeepsTheSettings();

private:
    void writeProfile() const;

    const ScriptedDecoder decoder{"exit 0"};
};

void UnwritableFilesTest::initTestCase()
{
    QVERIFY2(privateMounts, privateMountsRefused);
}

void UnwritableFilesTest::init()
{
    testHome().clear();
}

void UnwritableFilesTest::writeProfile() const
{
    testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("kiwi")},
                             {QStringLiteral("Jt9Path"), decoder.path()},
                             {QStringLiteral("BridgePort"), freePort()}});
}

void UnwritableFilesTest::aFullDiskKeepsTheSavedProfile()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    const QByteArray before = fileBytes(profileFile());
    const MainWindow window;
    QVERIFY(disk.fillUp());
    const LogTrace trace;
    const SeenBox box = answerBox([&] {
        choose(window, {QStringLiteral("File"), QStringLiteral("Save Profile")});
    });
    QCOMPARE(box.title, QStringLiteral("Profile Save Failed"));
    QCOMPARE(box.text, QStringLiteral("No space left on device"));
    QVERIFY(!trace.contains(QStringLiteral("Profile saved")));
    QCOMPARE(fileBytes(profileFile()), before);
}

void UnwritableFilesTest::aReadOnlyDiskRefusesTheProfile()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    const MainWindow window;
    QVERIFY(disk.makeReadOnly());
    const SeenBox box = answerBox([&] {
        choose(window, {QStringLiteral("File"), QStringLiteral("Save Profile")});
    });
    QCOMPARE(box.title, QStringLiteral("Profile Save Failed"));
    QCOMPARE(box.text, QStringLiteral("Existing file %1 is not writable").arg(profileFile()));
}

// The applied values are used; both files stay unchanged.
void UnwritableFilesTest::applyIsSilentAboutAFullDisk()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    putFile(frequencyFile(), "7.074000");
    const QByteArray before = fileBytes(profileFile());
    const MainWindow window;
    QVERIFY(disk.fillUp());
    const LogTrace trace;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(QStringLiteral("127.0.0.1"));
        form.port->setText(QStringLiteral("1"));
        form.mhz->setText(QStringLiteral("3.573"));
        QTest::mouseClick(form.apply, Qt::LeftButton);
        QCOMPARE(QApplication::activeModalWidget(), form.dialog);
    });
    QVERIFY(trace.contains(QStringLiteral("requested: 127.0.0.1:1, 3.573000 MHz.")));
    QCOMPARE(fileBytes(profileFile()), before);
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("7.074000"));
}

void UnwritableFilesTest::aFullDiskKeepsTheGoodReceivers()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    putFile(listFile(), "[]");
    MainWindow window;
    QVERIFY(disk.fillUp());
    const LogTrace trace;
    window.recordGoodReceiver(3);
    QCOMPARE(trace.lines(), QStringList(QStringLiteral("GOOD RECEIVER COMMIT FAILED")));
    QCOMPARE(fileBytes(listFile()), QByteArray("[]"));
    QCOMPARE(QApplication::activeModalWidget(), nullptr);
}

void UnwritableFilesTest::aReadOnlyDiskRecordsNoReceiver()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    MainWindow window;
    QVERIFY(disk.makeReadOnly());
    const LogTrace trace;
    window.recordGoodReceiver(3);
    QCOMPARE(trace.lines(),
             QStringList(QStringLiteral("GOOD RECEIVER SAVE FAILED: Read-only file system")));
}

void UnwritableFilesTest::removingFailsOnAFullDisk()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    const QByteArray list = "[{\"Host\": \"kiwi\"}, {\"Host\": \"other\"}]";
    putFile(listFile(), list);
    const MainWindow window;
    const LogTrace trace;
    QCOMPARE(removeReceiver(window, [&] { return disk.fillUp(); }),
             QStringLiteral("Could not save the updated receiver list."));
    QCOMPARE(fileBytes(listFile()), list);
    QCOMPARE(settingOnDisk(QStringLiteral("receivers/removedKeys")),
             QStringList(QStringLiteral("absent")));
    QVERIFY(!trace.contains(QStringLiteral("Saved receiver removed")));
}

void UnwritableFilesTest::removingFailsOnAReadOnlyDisk()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    putFile(listFile(), "[{\"Host\": \"kiwi\"}]");
    const MainWindow window;
    QCOMPARE(removeReceiver(window, [&] { return disk.makeReadOnly(); }),
             QStringLiteral("Could not update the saved receiver list."));
    QCOMPARE(settingOnDisk(QStringLiteral("receivers/removedKeys")),
             QStringList(QStringLiteral("absent")));
}

void UnwritableFilesTest::aFullDiskKeepsTheStatusLog()
{
    SmallDisk disk(profileFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    putFile(logFile(), "{\"Sessions\": [{\"Host\": \"earlier\"}]}");
    const QByteArray before = fileBytes(logFile());
    MainWindow window;
    QVERIFY(disk.fillUp());
    const LogTrace trace;
    window.startStatusSession();
    window.finishStatusSession();
    QCOMPARE(trace.lines(),
             QStringList(QStringLiteral("Status log save failed: No space left on device")));
    QCOMPARE(fileBytes(logFile()), before);
}

namespace
{

const QString removedSetting = QStringLiteral("receivers/removedKeys");
const QString callsSetting = QStringLiteral("highlight/calls");
const QStringList keptCalls = {QStringLiteral("K1ABC"), QStringLiteral("LU8XGZ")};

void addSettingsFaults()
{
    QTest::addColumn<int>("freePages"); // -1: read-only
    QTest::newRow("full") << 0;
    QTest::newRow("room for a lock") << 1;
    QTest::newRow("room for a lock and a draft") << 2;
    QTest::newRow("read-only") << -1;
}

bool spoil(SmallDisk &disk, int freePages)
{
    return freePages < 0 ? disk.makeReadOnly() : disk.fillUp(freePages);
}

QStringList settingsFailure()
{
    return {QStringLiteral("Settings save failed: %1").arg(settingsFile())};
}

void apply(const MainWindow &window, const QString &host)
{
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(host);
        form.port->setText(QStringLiteral("1"));
        QTest::mouseClick(form.apply, Qt::LeftButton);
    });
}

} // namespace

void UnwritableFilesTest::aRemovalThatCannotBeSavedCountsAllTheSame_data()
{
    addSettingsFaults();
}

// It applies until the program ends, and is saved with the next successful change.
void UnwritableFilesTest::aRemovalThatCannotBeSavedCountsAllTheSame()
{
    QFETCH(int, freePages);
    SmallDisk disk(settingsFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    putFile(listFile(), "[{\"Host\": \"kiwi\"}]");
    QVERIFY(saveSetting(callsSetting, keptCalls));
    const QByteArray before = fileBytes(settingsFile());
    MainWindow window;
    const LogTrace trace;
    QVERIFY(spoil(disk, freePages));
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(1);
        QTest::mouseClick(form.remove, Qt::LeftButton);
        QCOMPARE(form.status->text(), QStringLiteral("Removed saved receiver: kiwi:8073"));
    });
    QCOMPARE(trace.lines().filter(QStringLiteral("ave")),
             settingsFailure() << QStringLiteral("Saved receiver removed: kiwi:8073"));
    QCOMPARE(fileBytes(settingsFile()), before);
    QCOMPARE(settingOnDisk(callsSetting), keptCalls);
    window.recordGoodReceiver(3);
    QCOMPARE(fileBytes(listFile()).simplified(), QByteArray("[ ]"));

    if (freePages < 0) {
        return; // it stays read-only
    }
    QVERIFY(disk.makeRoom());
    apply(window, QStringLiteral("other"));
    QCOMPARE(settingOnDisk(removedSetting), QStringList(QStringLiteral("kiwi:8073")));
    QCOMPARE(settingOnDisk(callsSetting), keptCalls);
}

// A change that could not be saved no longer applies after a later one was saved.
void UnwritableFilesTest::aReceiverAppliedAfterAFailedRemovalIsRecordedAgain()
{
    SmallDisk disk(settingsFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    putFile(listFile(), R"([{"Host": "127.0.0.1", "Port": 1}])");
    MainWindow window;
    QVERIFY(disk.fillUp());
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(1);
        QTest::mouseClick(form.remove, Qt::LeftButton);
        QCOMPARE(form.status->text(), QStringLiteral("Removed saved receiver: 127.0.0.1:1"));
    });
    QVERIFY(disk.makeRoom());
    apply(window, QStringLiteral("127.0.0.1"));
    QVERIFY(!settingOnDisk(removedSetting).contains(QStringLiteral("127.0.0.1:1")));
    window.recordGoodReceiver(3);
    QVERIFY(fileBytes(listFile()).contains("127.0.0.1"));
}

void UnwritableFilesTest::applyingAReceiverKeepsTheSettings_data()
{
    addSettingsFaults();
}

// The applied values are used, and the receiver is recorded again.
void UnwritableFilesTest::applyingAReceiverKeepsTheSettings()
{
    QFETCH(int, freePages);
    SmallDisk disk(settingsFile());
    QVERIFY(disk.isMounted());
    writeProfile();
    QVERIFY(saveSetting(callsSetting, keptCalls));
    QVERIFY(saveSetting(removedSetting, QStringLiteral("127.0.0.1:1")));
    const QByteArray before = fileBytes(settingsFile());
    MainWindow window;
    const LogTrace trace;
    QVERIFY(spoil(disk, freePages));
    apply(window, QStringLiteral("127.0.0.1"));
    QCOMPARE(trace.lines().filter(QStringLiteral("Settings")), settingsFailure());
    QVERIFY(trace.contains(QStringLiteral("requested: 127.0.0.1:1, 14.074000 MHz.")));
    QCOMPARE(fileBytes(settingsFile()), before);
    QCOMPARE(settingOnDisk(callsSetting), keptCalls);
    window.recordGoodReceiver(3);
    QVERIFY(fileBytes(listFile()).contains("127.0.0.1"));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::UnwritableFilesTest)
#include "unwritablefiles_test.moc"
