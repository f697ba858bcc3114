#include "decode/jt9runner.h"
#include "decode/slotwav.h"
#include "tests/decode/childprocess.h"
#include "tests/decode/publisheddecoder.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>
#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
// Targets of this program's signals, as in kill(): negative for a group.
QVector<pid_t> signalled;
} // namespace

extern "C" int kill(pid_t pid, int signal) noexcept
{
    signalled.append(pid);
    return static_cast<int>(::syscall(SYS_kill, pid, signal));
}

namespace outpost
{

namespace
{
bool groupWasSignalled()
{
    return std::any_of(signalled.begin(), signalled.end(), [](pid_t pid) { return pid < 0; });
}

const QString decodeLine = QStringLiteral("142315 -5 0.1 1000 ~  CQ K1ABC FN42");
const QString wav = QStringLiteral("/some folder/pelq_ft8_slot.wav");

#ifdef __SANITIZE_ADDRESS__
constexpr int maxGrowthKb = 400000; // the sanitizer keeps freed memory on purpose
#else
constexpr int maxGrowthKb = 30000;
#endif

// A memory value of this process in kB, by its name in /proc/self/status.
int memoryKb(const QByteArray &name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    status.open(QIODevice::ReadOnly);
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name + ':')) {
            return line.mid(name.size() + 1).trimmed().split(' ').first().toInt();
        }
    }
    return -1;
}

QStringList linesInChunks(const QByteArray &text, int chunkBytes)
{
    Jt9Output output;
    for (int at = 0; at < text.size(); at += chunkBytes) {
        output.add(text.mid(at, chunkBytes));
    }
    return output.finish();
}

// For its lifetime, sets an environment variable, or unsets it (null value).
class Variable
{
public:
    Variable(const char *variable, const QByteArray &value)
        : name(variable), before(qgetenv(variable))
    {
        value.isNull() ? qunsetenv(name) : qputenv(name, value);
    }
    ~Variable() { before.isNull() ? qunsetenv(name) : qputenv(name, before); }
    Q_DISABLE_COPY(Variable)

private:
    const char *name;
    const QByteArray before;
};

// For its lifetime, executing the file blocks on a lease, which the system breaks only after 45 s.
class HeldProgram
{
public:
    explicit HeldProgram(const QString &path)
        : file(::open(path.toLocal8Bit().constData(), O_RDONLY | O_CLOEXEC))
    {
        // The holder of the lease gets a signal when someone waits; here one without effect.
        if (::fcntl(file, F_SETSIG, SIGURG) != 0 || ::fcntl(file, F_SETLEASE, F_WRLCK) != 0) {
            qFatal("cannot hold the program");
        }
    }
    ~HeldProgram() { ::close(file); }
    Q_DISABLE_COPY(HeldProgram)

private:
    const int file;
};

// Collects Qt's warnings for its lifetime.
class Warnings
{
public:
    Warnings() : before(qInstallMessageHandler(collect)) { seen.clear(); }
    ~Warnings() { qInstallMessageHandler(before); }
    Q_DISABLE_COPY(Warnings)

    static QStringList all() { return seen; }

private:
    static void collect(QtMsgType, const QMessageLogContext &, const QString &text)
    {
        seen.append(text);
    }

    inline static QStringList seen;
    const QtMessageHandler before;
};
} // namespace

} // namespace outpost

Q_DECLARE_METATYPE(outpost::Jt9Cause)

namespace outpost
{

class Jt9RunnerTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { work = std::make_unique<QTemporaryDir>(); }

    void picksDecodeLinesOutOfTheOutput_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QStringList>("lines");
        const QString a = QStringLiteral("a ~ 1");
        const QString b = QStringLiteral("b ~ 2");
        QTest::newRow("nothing") << QByteArray() << QStringList();
        QTest::newRow("banner and summary")
            << QByteArray("banner\na ~ 1\n<DecodeFinished> 0 1 0\n") << QStringList{a};
        QTest::newRow("LF, CRLF, CR, runs")
            << QByteArray("a ~ 1\nb ~ 2\r\na ~ 1\rb ~ 2\n\r\n\na ~ 1\n")
            << QStringList{a, b, a, b, a};
        QTest::newRow("blanks around") << QByteArray(" \t a ~ 1 \t\n") << QStringList{a};
        QTest::newRow("no end of the last line") << QByteArray("a ~ 1\nb ~ 2") << QStringList{a, b};
        QTest::newRow("nothing after a NUL byte")
            << QByteArray("a ~ 1\nb ~ 2\0 c\na ~ 1\n", 19) << QStringList{a, b};
        QTest::newRow("invalid UTF-8")
            << QByteArray("a ~ 1\n\xff ~ x\n") << QStringList{a, QStringLiteral("\uFFFD ~ x")};
        QTest::newRow("byte order marks before lines")
            << QByteArray("\357\273\277a ~ 1\n\357\273\277b ~ 2\n") << QStringList{a, b};
        QTest::newRow("UTF-8") << QByteArray("\xc3\xa9 ~ x\n")
                               << QStringList{QStringLiteral("\u00e9 ~ x")};
    }

    void picksDecodeLinesOutOfTheOutput()
    {
        QFETCH(QByteArray, output);
        QFETCH(QStringList, lines);
        QCOMPARE(linesInChunks(output, qMax(1, output.size())), lines);
        QCOMPARE(linesInChunks(output, 1), lines);
    }

    void keepsTheFirst500Lines_data()
    {
        QTest::addColumn<int>("printed");
        QTest::addColumn<int>("kept");
        QTest::addColumn<bool>("hasDropped");
        QTest::newRow("499") << 499 << 499 << false;
        QTest::newRow("500") << 500 << 500 << false;
        QTest::newRow("501") << 501 << 500 << true;
        QTest::newRow("20,000") << 20000 << 500 << true;
    }

    void keepsTheFirst500Lines()
    {
        QFETCH(int, printed);
        QFETCH(int, kept);
        QFETCH(bool, hasDropped);
        QByteArray text;
        for (int i = 1; i <= printed; ++i) {
            text += "banner\n~ " + QByteArray::number(i) + '\n';
        }
        Jt9Output output;
        output.add(text + "banner\n");
        const QStringList lines = output.finish();
        QCOMPARE(lines.size(), kept);
        QCOMPARE(lines.first(), QStringLiteral("~ 1"));
        QCOMPARE(lines.last(), QStringLiteral("~ %1").arg(kept));
        QCOMPARE(output.hasDroppedLines(), hasDropped);
    }

    void aLineBeyond512BytesIsNoDecode_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<bool>("isDecode");
        QTest::newRow("512") << 512 << true;
        QTest::newRow("513") << 513 << false;
        QTest::newRow("5 MB") << 5000000 << false;
    }

    void aLineBeyond512BytesIsNoDecode()
    {
        QFETCH(int, bytes);
        QFETCH(bool, isDecode);
        const QByteArray line = '~' + QByteArray(bytes - 2, ' ') + 'x';
        QStringList expected = {QStringLiteral("~ before"), QString::fromLatin1(line),
                                QStringLiteral("~ after")};
        if (!isDecode) {
            expected.removeAt(1);
        }
        for (const char *end : {"\n", "\r\n", "\r"}) {
            const QByteArray output = QByteArray("~ before") + end + line + end + "~ after" + end;
            QCOMPARE(linesInChunks(output, output.size()), expected);
            QCOMPARE(linesInChunks(output, 100), expected);
            QCOMPARE(linesInChunks(output, 1), expected);
        }
        QCOMPARE(linesInChunks(line, 100), isDecode ? expected.mid(1, 1) : QStringList());
    }

    void manyOtherLinesDoNotHideADecode()
    {
        Jt9Output output;
        for (int i = 0; i < 100; ++i) {
            output.add(QByteArray("banner\n").repeated(10000));
        }
        output.add(decodeLine.toLatin1() + '\n');
        QCOMPARE(output.finish(), QStringList(decodeLine));
    }

    void waitsFiveAndFortyFiveAndFiveSeconds()
    {
        QCOMPARE(Jt9Limits().startMs, 5000);
        QCOMPARE(Jt9Limits().finishMs, 45000);
        QCOMPARE(Jt9Limits().killMs, 5000);
    }

    void returnsTheDecodeLines()
    {
        const PublishedDecoder decoder(
            QStringLiteral("echo banner; echo '  %1  '; echo '<DecodeFinished>'").arg(decodeLine));
        QCOMPARE(run(), QStringList(decodeLine));
    }

    void readsItsPathFromTheEnvironmentAtEachRun()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '~ one'"));
        QCOMPARE(run(), QStringList(QStringLiteral("~ one")));
        const PublishedDecoder other(QStringLiteral("echo '~ two'"));
        QCOMPARE(run(), QStringList(QStringLiteral("~ two")));
        qputenv("PELQ_JT9_PATH", decoder.bin(QStringLiteral("../bin//jt9")).toLocal8Bit());
        QCOMPARE(run(), QStringList(QStringLiteral("~ one")));
        qputenv("PELQ_JT9_PATH", decoder.bin(QStringLiteral("nowhere/../jt9")).toLocal8Bit());
        QCOMPARE(run(), QStringList(QStringLiteral("~ one"))); // the path is cleaned as a text
        qunsetenv("PELQ_JT9_PATH");
        QCOMPARE(run(), QStringList());
        qputenv("PELQ_JT9_PATH", decoder.bin(QStringLiteral("missing")).toLocal8Bit());
        QCOMPARE(run(), QStringList());
    }

    void aRelativePathIsThatBelowTheProgramsCurrentFolder()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '~ x'; echo \"$PATH\" > $here/path"));
        const QString before = QDir::currentPath();
        const auto restore = qScopeGuard([&] { QDir::setCurrent(before); });
        QVERIFY(QDir::setCurrent(decoder.bin(QStringLiteral(".."))));
        qputenv("PELQ_JT9_PATH", "bin/jt9");
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        const QByteArray bin = QDir(QStringLiteral("bin")).canonicalPath().toLocal8Bit();
        QVERIFY(decoder.readLeft(QStringLiteral("path")).startsWith(bin + ':'));
    }

    void readsItsPathInTheLocalEncoding()
    {
        const auto restore = qScopeGuard(
            [codec = QTextCodec::codecForLocale()] { QTextCodec::setCodecForLocale(codec); });
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
        const PublishedDecoder decoder(QStringLiteral("echo '~ x'"));
        const QString folder = decoder.bin(QStringLiteral("../J\u00fcrgen"));
        QVERIFY(QDir().rename(decoder.bin(QString()), folder));
        qputenv("PELQ_JT9_PATH", (folder + QStringLiteral("/jt9")).toLatin1());
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
    }

    void passesItsArgumentsInOrder()
    {
        const PublishedDecoder decoder(
            QStringLiteral("for a in \"$@\"; do echo \"$a\"; done > $here/args"));
        QCOMPARE(run(), QStringList());
        QCOMPARE(decoder.readLeft(QStringLiteral("args")),
                 QByteArray("--ft8\n-d\n2\n-L\n725\n-H\n1550\n/some folder/pelq_ft8_slot.wav\n"));
    }

    void givesTheDecoderAHomeInTheWorkersFolder_data()
    {
        QTest::addColumn<QByteArray>("pathBefore");
        QTest::newRow("PATH set") << QByteArray("/usr/bin:/bin");
        QTest::newRow("PATH unset") << QByteArray();
    }

    void givesTheDecoderAHomeInTheWorkersFolder()
    {
        QFETCH(QByteArray, pathBefore);
        const PublishedDecoder decoder(
            QStringLiteral("/usr/bin/env > $here/env; /bin/pwd > $here/pwd"));
        const Variable path("PATH", pathBefore);
        const Variable kept("OUTPOST_KEPT", "kept");
        QCOMPARE(run(), QStringList());

        const QByteArray folder = work->path().toLocal8Bit();
        const QList<QByteArray> environment = decoder.readLeft(QStringLiteral("env")).split('\n');
        QVERIFY(environment.contains("HOME=" + folder));
        QVERIFY(environment.contains("LOCALAPPDATA=" + folder));
        QVERIFY(environment.contains("APPDATA=" + folder));
        QVERIFY(environment.contains("OUTPOST_KEPT=kept"));
        const QByteArray jt9Folder = QFileInfo(decoder.path()).absolutePath().toLocal8Bit();
        QVERIFY(environment.contains("PATH=" + jt9Folder + ':' + pathBefore));
        QCOMPARE(decoder.readLeft(QStringLiteral("pwd")), folder + '\n');
    }

    void aWindowsDecoderNeedsAQtLibraryBesideIt_data()
    {
        QTest::addColumn<QString>("library");
        QTest::addColumn<bool>("runs");
        QTest::newRow("Qt 5") << QStringLiteral("Qt5Core.dll") << true;
        QTest::newRow("Qt 6 only") << QStringLiteral("Qt6Core.dll") << true;
        QTest::newRow("none") << QStringLiteral("unrelated.dll") << false;
    }

    void aWindowsDecoderNeedsAQtLibraryBesideIt()
    {
        QFETCH(QString, library);
        QFETCH(bool, runs);
        const PublishedDecoder decoder;
        const QString windowsForm = decoder.bin(QStringLiteral("jt9.exe"));
        decoder.writeProgram(windowsForm, "touch $here/ran; echo '~'");
        decoder.writeProgram(decoder.bin(library), {});
        qputenv("PELQ_JT9_PATH", windowsForm.toLocal8Bit());
        QCOMPARE(run(), runs ? QStringList(QStringLiteral("~")) : QStringList());
        QCOMPARE(decoder.allLeft().contains(QStringLiteral("ran")), runs);
    }

    void aCopiedNativeDecoderIsNotRun()
    {
        const PublishedDecoder decoder(QStringLiteral("touch $here/ran; echo '~'"));
        QVERIFY(QFile::remove(decoder.bin(QStringLiteral("wsjtx"))));
        QCOMPARE(run(), QStringList());
        QVERIFY(decoder.allLeft().isEmpty());
    }

    void failuresGiveNoLinesAndTheirCause_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<Jt9Cause>("cause");
        QTest::addColumn<QString>("detail");
        const auto row = [](const char *name, const char *script, Jt9Cause cause,
                            const char *detail) {
            QTest::newRow(name) << QString::fromLatin1(script) << cause
                                << QString::fromLatin1(detail);
        };
        row("exit code 1", "echo '~ x'; exit 1", Jt9Cause::ExitCode, "1");
        row("exit code 3", "echo '~ x'; exit 3", Jt9Cause::ExitCode, "3");
        row("crash", "echo '~ x'; kill -SEGV $$", Jt9Cause::Killed, "11");
        row("killed", "echo '~ x'; kill -KILL $$", Jt9Cause::Killed, "9");
        row("a flood, then exit code 1", "yes '~ x' | head -1000; exit 1", Jt9Cause::ExitCode, "1");
        row("overrun", "echo '~ x'; exec sleep 1000", Jt9Cause::Overran, "1.5");
    }

    void failuresGiveNoLinesAndTheirCause()
    {
        QFETCH(QString, script);
        QFETCH(Jt9Cause, cause);
        QFETCH(QString, detail);
        const PublishedDecoder decoder(script);
        const bool overruns = cause == Jt9Cause::Overran;
        const Jt9Result result = runWith({5000, overruns ? 1500 : 45000, 60000});
        QCOMPARE(result.lines, QStringList());
        QCOMPARE(result.failure.cause, cause);
        QCOMPARE(result.failure.detail, detail);
    }

    void withoutAFailureThereIsNoCause_data()
    {
        QTest::addColumn<QString>("script");
        QTest::newRow("decodes") << QStringLiteral("echo '~ x'");
        QTest::newRow("nothing printed") << QStringLiteral("exit 0");
    }

    void withoutAFailureThereIsNoCause()
    {
        QFETCH(QString, script);
        const PublishedDecoder decoder(script);
        QCOMPARE(runWith({}).failure, Jt9Failure());
    }

    void linesBeyondTheFirst500AreTheCauseOfALoss()
    {
        const PublishedDecoder decoder(QStringLiteral("yes '~ x' | head -501"));
        const Jt9Result result = runWith({});
        QCOMPARE(result.lines.size(), 500);
        QCOMPARE(result.failure, (Jt9Failure{Jt9Cause::TooManyLines, QStringLiteral("500")}));
    }

    void withoutADecoderItsPathIsTheDetail()
    {
        const PublishedDecoder decoder;
        QVERIFY(QFile::remove(decoder.bin(QStringLiteral("wsjtx"))));
        QCOMPARE(runWith({}).failure, (Jt9Failure{Jt9Cause::NoDecoder, decoder.path()}));
        QVERIFY(QFile::remove(decoder.path()));
        QCOMPARE(runWith({}).failure, (Jt9Failure{Jt9Cause::NoDecoder, decoder.path()}));
        qunsetenv("PELQ_JT9_PATH");
        QCOMPARE(runWith({}).failure, (Jt9Failure{Jt9Cause::NoDecoder, {}}));
    }

    void aDecoderThatCannotStartGivesNothing()
    {
        const PublishedDecoder decoder;
        const QString broken = decoder.bin(QStringLiteral("jt9.exe"));
        decoder.writeProgram(decoder.bin(QStringLiteral("Qt5Core.dll")), {});
        decoder.writeProgram(broken, "echo '~'");
        QVERIFY(QFile::setPermissions(broken, QFile::ReadOwner));
        qputenv("PELQ_JT9_PATH", broken.toLocal8Bit());
        const Jt9Result result = runWith({});
        QCOMPARE(result.lines, QStringList());
        QCOMPARE(result.failure.cause, Jt9Cause::NotStarted);
        QVERIFY(!result.failure.detail.isEmpty());
    }

    void aDecoderThatIsLongInStartingIsGivenUp()
    {
        const PublishedDecoder decoder(QStringLiteral("touch $here/ran; echo '~ x'"));
        const HeldProgram held(decoder.path());
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(run({300, 60000, 5000}), QStringList());
        QVERIFY(timer.elapsed() >= 300);
        QVERIFY(timer.elapsed() < 20000);
        QVERIFY(decoder.allLeft().isEmpty());
    }

    void aDecoderThatHangsIsKilledWithItsChildren()
    {
        const PublishedDecoder decoder(
            QStringLiteral("sleep 1000 & echo $! > $here/child; echo $$ > $here/self\n"
                           "echo '~ x'; wait"));
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(run({5000, 500, 60000}), QStringList());
        QVERIFY(timer.elapsed() >= 500);
        QVERIFY(timer.elapsed() < 60000);
        QVERIFY(!decoder.readLeft(QStringLiteral("child")).isEmpty());
        QTRY_VERIFY(!isAlive(decoder.readLeft(QStringLiteral("child"))));
        QTRY_VERIFY(!isAlive(decoder.readLeft(QStringLiteral("self"))));
    }

    void theEndOfAKilledDecoderIsWaitedFor()
    {
        const PublishedDecoder decoder(QStringLiteral("exec sleep 1000"));
        const Warnings warnings; // such as that of a process destroyed while running
        QCOMPARE(run({5000, 300, 60000}), QStringList());
        QCOMPARE(warnings.all(), QStringList());
    }

    void aDecoderDeafToPoliteSignalsIsKilled()
    {
        const PublishedDecoder decoder(QStringLiteral("trap '' TERM INT HUP; echo $$ > $here/self\n"
                                                      "while :; do sleep 1000; done"));
        QCOMPARE(run({5000, 300, 5000}), QStringList());
        QTRY_VERIFY(!isAlive(decoder.readLeft(QStringLiteral("self"))));
    }

    void aChildThatOutlivesTheDecoderIsKilled()
    {
        const PublishedDecoder decoder(
            QStringLiteral("sleep 1000 & echo $! > $here/child; echo '~ x'"));
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        QVERIFY(timer.elapsed() < Jt9Limits().finishMs);
        QVERIFY(!decoder.readLeft(QStringLiteral("child")).isEmpty());
        QTRY_VERIFY(!isAlive(decoder.readLeft(QStringLiteral("child"))));
    }

    void aChildThatLeavesTheGroupIsKilledToo()
    {
        const PublishedDecoder decoder(leavingChild(QString()));
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        const QByteArray child = decoder.readLeft(QStringLiteral("child"));
        QVERIFY(!child.isEmpty());
        QTRY_VERIFY(!isAlive(child));
    }

    // By then, another process may have its id.
    void aGroupThatHasEndedIsNotSignalled()
    {
        const PublishedDecoder decoder(QStringLiteral("echo '~ x'"));
        signalled.clear();
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        QVERIFY(!groupWasSignalled());
        decoder.setScript("sleep 1000 & echo '~ x'");
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        QVERIFY(groupWasSignalled());
    }

    // Only its group identifies it.
    void aChildWithoutAnEnvironmentIsKilledToo()
    {
        const PublishedDecoder decoder(
            QStringLiteral("mkfifo $here/never $here/up\n"
                           "env -i /bin/sh -c \"echo \\$\\$ > $here/child; "
                           "echo > $here/up; read x < $here/never\" &\n"
                           "read up < $here/up; echo '~ x'"));
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        const QByteArray child = decoder.readLeft(QStringLiteral("child"));
        QVERIFY(!child.isEmpty());
        QTRY_VERIFY(!isAlive(child));
    }

    void aChildThatLeavesTheGroupAndItsOutputIsKilledToo()
    {
        const PublishedDecoder decoder(
            leavingChild(QStringLiteral("< /dev/null > /dev/null 2>&1")));
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        const QByteArray child = decoder.readLeft(QStringLiteral("child"));
        QVERIFY(!child.isEmpty());
        QTRY_VERIFY(!isAlive(child));
    }

    // In a shared folder, the environment does not identify the run.
    void inASharedFolderOnlyTheGroupIsKilled()
    {
        const PublishedDecoder decoder(
            QStringLiteral("sleep 1000 & echo $! > $here/inGroup\n") +
            leavingChild(QStringLiteral("< /dev/null > /dev/null 2>&1")));
        QCOMPARE(run({}, false), QStringList(QStringLiteral("~ x")));
        QTRY_VERIFY(!isAlive(decoder.readLeft(QStringLiteral("inGroup"))));
        const QByteArray child = decoder.readLeft(QStringLiteral("child"));
        QVERIFY(isAlive(child));
        const OpenedPipe never(decoder.left(QStringLiteral("never")));
        QTRY_VERIFY(!isAlive(child));
    }

    void otherProcessesLive_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("finishMs");
        QTest::addColumn<bool>("folderIsOwn");
        QTest::addColumn<QString>("folderSuffix");
        const QString ends = QStringLiteral("echo '~ x'");
        const QString hangs = QStringLiteral("exec sleep 1000");
        QTest::newRow("of another run, when this one hangs")
            << hangs << 300 << true << QStringLiteral("2");
        QTest::newRow("of another copy that has the same folder, when this run hangs")
            << hangs << 300 << false << QString();
        QTest::newRow("and are not even looked at when it ends by itself")
            << ends << 45000 << true << QString();
    }

    // The other process has an environment similar to that of the run.
    void otherProcessesLive()
    {
        QFETCH(QString, script);
        QFETCH(int, finishMs);
        QFETCH(bool, folderIsOwn);
        QFETCH(QString, folderSuffix);
        QProcess other;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LOCALAPPDATA"), work->path() + folderSuffix);
        environment.insert(QStringLiteral("HOME"), work->path());
        other.setProcessEnvironment(environment);
        other.start(QStringLiteral("cat"), QStringList());
        QVERIFY(other.waitForStarted());
        const PublishedDecoder decoder(script);
        run({5000, finishMs, 5000}, folderIsOwn);
        other.closeWriteChannel();
        QVERIFY(other.waitForFinished());
        QCOMPARE(other.exitStatus(), QProcess::NormalExit);
    }

    void aDecoderThatClosesItsOutputIsWaitedFor()
    {
        const PublishedDecoder decoder(
            QStringLiteral("echo '~ x'; exec >&-; sleep 0.3; touch $here/end"));
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
        QCOMPARE(decoder.allLeft(), QStringList(QStringLiteral("end")));
    }

    void standardInputIsEmptyAndStandardErrorIsNotRead()
    {
        const PublishedDecoder decoder(QStringLiteral(
            "cat; head -c 20000000 /dev/zero | tr '\\0' '~' >&2; echo '~ err' >&2; echo '~ x'"));
        QCOMPARE(run(), QStringList(QStringLiteral("~ x")));
    }

    void floodsDoNotFillTheMemory_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("finishMs");
        QTest::addColumn<int>("minLines");
        const QString head = QStringLiteral("yes '%1' | head -c 100000000; echo; echo '~ last'");
        QTest::newRow("100 MB of other lines")
            << head.arg(QString(60, QLatin1Char('b'))) << 45000 << 1;
        QTest::newRow("100 MB of decodes") << head.arg(decodeLine) << 45000 << 500;
        QTest::newRow("one line without end")
            << QStringLiteral("echo '~ x'; head -c 100000000 /dev/zero | tr '\\0' '~'") << 45000
            << 1;
        QTest::newRow("for ever") << QStringLiteral("exec yes '%1'").arg(decodeLine) << 1000 << 0;
    }

    void floodsDoNotFillTheMemory()
    {
        QFETCH(QString, script);
        QFETCH(int, finishMs);
        QFETCH(int, minLines);
        const PublishedDecoder decoder(script);
        QFile peak(QStringLiteral("/proc/self/clear_refs"));
        QVERIFY(peak.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QCOMPARE(peak.write("5"), qint64(1)); // resets the peak to the current size
        const int before = memoryKb("VmRSS");
        const QStringList lines = run({5000, finishMs, 5000});
        QVERIFY(lines.size() >= minLines);
        QVERIFY(memoryKb("VmHWM") - before < maxGrowthKb);
    }

    void theInstalledDecoderFindsASignal()
    {
        const QString jt9 = QStringLiteral("/usr/bin/jt9");
        const QString simulator = QStringLiteral("/usr/bin/ft8sim");
        QVERIFY2(QFile::exists(jt9) && QFile::exists(simulator), "install the package wsjtx");
        QProcess sim;
        sim.setWorkingDirectory(work->path());
        sim.start(simulator,
                  QStringLiteral("CQ K1ABC FN42|1234|0.0|0.1|1.0|1|-5").split(QLatin1Char('|')));
        QVERIFY(sim.waitForFinished());
        const QString signal = work->filePath(QStringLiteral("000000_000001.wav"));
        QVERIFY(QFile::exists(signal));

        qputenv("PELQ_JT9_PATH", jt9.toLocal8Bit());
        const QStringList lines = runJt9(signal, work->path(), {725, 1550}, 2).lines;
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().contains(QStringLiteral(" 1234 ~  CQ K1ABC FN42")),
                 qPrintable(lines.first()));
        QCOMPARE(runJt9(signal, work->path(), {2175, 3000}, 2).lines, QStringList());
        qunsetenv("PELQ_JT9_PATH");
    }

private:
    Jt9Result runWith(const Jt9Limits &limits, bool folderIsOwn = true) const
    {
        return runJt9(wav, work->path(), {725, 1550}, 2, limits, folderIsOwn);
    }

    // A decoder whose child leaves its process group and outlives it. The child prints its id and
    // waits for a line in the pipe "never".
    static QString leavingChild(const QString &redirections)
    {
        return QStringLiteral("mkfifo $here/never $here/up\n"
                              "setsid sh -c \"echo \\$\\$ > $here/child; echo > $here/up; "
                              "read x < $here/never\" %1 &\n"
                              "read up < $here/up; echo '~ x'")
            .arg(redirections);
    }

    QStringList run(const Jt9Limits &limits = {}, bool folderIsOwn = true) const
    {
        return runWith(limits, folderIsOwn).lines;
    }

    std::unique_ptr<QTemporaryDir> work;
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::Jt9RunnerTest)
#include "jt9runner_test.moc"
