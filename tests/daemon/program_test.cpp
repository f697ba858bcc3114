// The built program: how it ends.

#include <QElapsedTimer>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <sys/stat.h>

namespace outpost
{

namespace
{
// The daemon with folders of its own.
class Program : public QProcess
{
public:
    Program(const QStringList &arguments, const QString &preloaded = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *variable :
             {"HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"}) {
            environment.insert(QLatin1String(variable), folder.path());
        }
        if (!preloaded.isEmpty()) {
            environment.insert(QStringLiteral("LD_PRELOAD"), preloaded);
            environment.insert(QStringLiteral("ASAN_OPTIONS"),
                               QStringLiteral("verify_asan_link_order=0"));
        }
        setProcessEnvironment(environment);
        setProcessChannelMode(QProcess::MergedChannels);
        start(QStringLiteral(OUTPOSTD), arguments);
    }
    ~Program() override
    {
        kill();
        waitForFinished();
    }

    bool says(const QByteArray &text)
    {
        return QTest::qWaitFor([&] { return (said += readAll()).contains(text); }, 30000);
    }
    void signal(int number) const { ::kill(static_cast<pid_t>(processId()), number); }
    bool ends(int withinMs)
    {
        return QTest::qWaitFor([this] { return state() == QProcess::NotRunning; }, withinMs);
    }

    QByteArray said;

private:
    QTemporaryDir folder;
};
} // namespace

class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void withoutAFileAHangUpEndsIt()
    {
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        Program program(
            {QStringLiteral("127.0.0.1:%1").arg(silent.serverPort()), QStringLiteral("14.074")});
        QVERIFY2(program.says("connecting, 14.074000 MHz"), program.said.constData());
        program.signal(SIGHUP);
        QVERIFY(program.ends(30000));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    void aNameThatIsStillLookedUpDoesNotDelayTheEnd()
    {
        Program program({QStringLiteral("kiwi.example"), QStringLiteral("14.074")},
                        QStringLiteral(SLOW_LOOKUP));
        QVERIFY2(program.says("probe trying: ws://kiwi.example"), program.said.constData());
        program.signal(SIGTERM);
        QVERIFY(program.ends(30000)); // it takes 4 s, but this machine may be busy
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    void aFileThatIsAPipeIsReadOnce()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("pipe"));
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        Program program({QStringLiteral("--config"), path});
        QFile pipe(path);
        QVERIFY(pipe.open(QIODevice::WriteOnly)); // once the program reads
        pipe.write("[[receiver]]\nname = \"20m\"\nhost = \"127.0.0.1\"\nport = 1\nmhz = 14.074\n");
        pipe.close();
        QVERIFY2(program.says("20m: connecting"), program.said.constData());
        program.signal(SIGHUP);
        QVERIFY2(program.says("pipe: It is a pipe or a device, not a file."),
                 program.said.constData());
        program.signal(SIGTERM);
        QVERIFY(program.ends(30000));
        QCOMPARE(program.exitCode(), 0);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ProgramTest)
#include "program_test.moc"
