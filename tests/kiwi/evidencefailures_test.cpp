// Reports that the file system refuses, on mounts private to this process.

#include "tests/fixture/teststation.h"
#include "tests/kiwi/evidencename.h"
#include "tests/store/privatemounts.h"

#include <QtTest>
#include <sys/fsuid.h>

namespace outpost
{

namespace
{
bool privateMounts = false; // mounted before the tests start

// For its lifetime, this thread accesses files as an unprivileged user. If it may not change its
// user, it is unprivileged already.
class FilesAsNobody
{
public:
    FilesAsNobody() : before(setfsuid(65534)) {}
    ~FilesAsNobody() { setfsuid(static_cast<uid_t>(before)); }
    Q_DISABLE_COPY(FilesAsNobody)

private:
    const int before;
};

// A mounted file: renaming onto it fails, although writing to it works.
class MountedFile
{
public:
    explicit MountedFile(const QString &path) : target(QFile::encodeName(path))
    {
        putFile(path, "as it was");
        mounted = mount(target.constData(), target.constData(), nullptr, MS_BIND, nullptr) == 0;
    }
    ~MountedFile() { umount2(target.constData(), MNT_DETACH); }
    Q_DISABLE_COPY(MountedFile)

    bool isMounted() const { return mounted; }

private:
    const QByteArray target;
    bool mounted = false;
};

} // namespace

class EvidenceFailuresTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(privateMounts, privateMountsRefused); }
    void init()
    {
        qputenv("PELQ_KIWI_STAGE_CAPTURE_DIR",
                QFile::encodeName(testHome().path(QStringLiteral("stage"))));
    }

    void withoutTheVariableThePathBeginsWithASlash();
    void aReportThatCannotBeCommittedIsLogged();
};

void EvidenceFailuresTest::withoutTheVariableThePathBeginsWithASlash()
{
    const PuppetReceiver receiver;
    TestStation station;
    qunsetenv("PELQ_KIWI_STAGE_CAPTURE_DIR");
    // Only here may any user write.
    const QTemporaryDir open(QStringLiteral("/tmp/open"));
    QVERIFY(QFile::setPermissions(open.path(), QFile::Permissions(QFlag(0x7777))));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(open.path()));
    station.connectTo(receiver.port());
    QTRY_COMPARE(receiver.commands().size(), 7);
    {
        const FilesAsNobody asNobody; // keeps the root folder clean
        for (int i = 0; i < 20; ++i) {
            receiver.sendBinary("SND");
        }
        const QString refused =
            QStringLiteral("Could not write live SND evidence: Permission denied");
        QTRY_COMPARE(station.trace.count(refused), 2);
    }
    QVERIFY(QDir(open.path()).isEmpty(QDir::Files | QDir::Hidden));
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(summaryLine(*station.window).startsWith(QStringLiteral("Kiwi Connected")));
}

void EvidenceFailuresTest::aReportThatCannotBeCommittedIsLogged()
{
    const PuppetReceiver receiver;
    TestStation station;
    const QString path =
        testHome().path(QStringLiteral("stage")) + evidenceName(station.clock.now());
    const MountedFile file(path);
    QVERIFY(file.isMounted());
    station.connectTo(receiver.port());
    QTRY_COMPARE(receiver.commands().size(), 7);
    receiver.sendBinary("SND");
    QTRY_VERIFY(station.trace.contains(QStringLiteral("RX binary frame 1:")));
    QCOMPARE(
        station.trace.lines().filter(QStringLiteral("evidence")),
        QStringList{QStringLiteral("Could not commit live SND evidence: Device or resource busy")});
    QCOMPARE(fileBytes(path), QByteArray("as it was"));
    QVERIFY(summaryLine(*station.window).startsWith(QStringLiteral("Kiwi Connected")));
}

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    privateMounts = enterPrivateMounts();
    testHome();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCoreApplication::setOrganizationName(QStringLiteral("PELQ"));
    QCoreApplication::setApplicationName(QStringLiteral("KiwiOutpost"));
    EvidenceFailuresTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "evidencefailures_test.moc"
