#include "sim/behaviour.h"
#include "tests/fixture/text.h"

#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QWebSocket>
#include <QtTest>

namespace outpost
{

// The program itself: options, exit codes, output.
class ProgramTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    static void run(QProcess *program, const QStringList &arguments)
    {
        program->start(text(KIWI_SIM), arguments);
        QVERIFY(program->waitForFinished());
        QCOMPARE(program->exitStatus(), QProcess::NormalExit);
    }

    void runWithoutGenerator(QProcess *program, const QStringList &arguments) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(text("PATH"), m_folder.path());
        program->setProcessEnvironment(environment);
        run(program, arguments + QStringList{text("--cache"), m_folder.path()});
    }

private slots:
    void helpListsEveryBehaviour()
    {
        QProcess program;
        run(&program, {text("--help")});
        QCOMPARE(program.exitCode(), 0);
        const QString help = QString::fromLocal8Bit(program.readAllStandardOutput());
        QVERIFY(help.contains(sim::behaviourHelp()));
        QVERIFY2(!help.contains(text("\n\n\n")), "two blank lines in a row");
        for (const char *option : {"--host", "--port", "--speed", "--rate", "--raw", "--endpoint",
                                   "--log", "--lead", "--cache"}) {
            QVERIFY2(help.contains(text(option)), option);
        }
    }

    void wrongUse_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *name, const QStringList &arguments, const char *error) {
            QTest::newRow(name) << arguments << text("kiwi-sim: ") + text(error);
        };
        row("behaviour", {text("--endpoint"), text("0=nonsense")},
            "unknown behaviour \"nonsense\"");
        row("endpoint", {text("--endpoint"), text("9=stream")},
            "endpoint \"9\" is neither 0, 1, 2, 3 nor all");
        row("port", {text("--port"), text("65536")},
            "--port: \"65536\" is not a port from 0 to 65535");
        row("lead", {text("--lead"), text("-1")},
            "--lead: \"-1\" is not a whole number from 0 to 100000");
        row("rate of 0", {text("--rate"), text("0")}, "the rate must be 1000..100000 Hz");
        row("speed of 0", {text("--speed"), text("0")}, "the speed must be 1..1000");
        row("speed that is no number", {text("--speed"), text("nan")}, "the speed must be 1..1000");
        row("host", {text("--host"), text("foo")}, "\"foo\" is not an IP address to listen on");
        row("speed", {text("--speed"), text("fast")}, "--speed: \"fast\" is not a number");
        row("option", {text("--nonsense")}, "Unknown option 'nonsense'.");
    }

    void wrongUse()
    {
        QFETCH(QStringList, arguments);
        QProcess program;
        run(&program, arguments);
        QCOMPARE(program.exitCode(), 2);
        QTEST(QString::fromLocal8Bit(program.readAllStandardError()).trimmed(), "error");
    }

    void badWavIsReported()
    {
        QProcess program;
        run(&program, {text("--port"), text("0"), text("/nowhere/a.wav")});
        QCOMPARE(program.exitCode(), 1);
        QVERIFY(program.readAllStandardError().startsWith("kiwi-sim: /nowhere/a.wav: "));
    }

    void missingGeneratorIsReported()
    {
        QProcess program;
        runWithoutGenerator(&program, {text("--port"), text("0")});
        QCOMPARE(program.exitCode(), 1);
        QVERIFY(program.readAllStandardError().contains("kiwi-sim: ft8sim, which makes"));
    }

    void aTakenPortIsToldBeforeTheBandIsMade_data()
    {
        QTest::addColumn<QString>("behaviour");
        for (const char *behaviour : {"stream", "refuse"}) {
            QTest::newRow(behaviour) << text(behaviour);
        }
    }

    // Without the generator, making the band would fail.
    void aTakenPortIsToldBeforeTheBandIsMade()
    {
        QFETCH(QString, behaviour);
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::LocalHost));
        const QString port = QString::number(other.serverPort());
        QProcess program;
        runWithoutGenerator(&program,
                            {text("--port"), port, text("--endpoint"), text("all=") + behaviour});
        QCOMPARE(program.exitCode(), 1);
        QCOMPARE(program.readAllStandardError(),
                 "kiwi-sim: port " + port.toLatin1() + ": The bound address is already in use\n");
        QCOMPARE(program.readAllStandardOutput(), QByteArray());
    }

    void saysOnWhichPortItListensAndKeepsALog()
    {
        QProcess program;
        const QString log = m_folder.filePath(text("log"));
        program.start(text(KIWI_SIM),
                      {text("--port"), text("0"), text("--endpoint"), text("all=open-silent"),
                       text("--log"), log, text("--cache"), text(BAND_CACHE)});
        QTRY_VERIFY_WITH_TIMEOUT(program.canReadLine(), 120000); // makes the band the first time
        const QByteArray line = program.readLine();
        const QByteArray begin = "listening on 127.0.0.1 port ";
        QVERIFY(line.startsWith(begin));
        const int port = line.mid(begin.size()).trimmed().toInt();
        QVERIFY(port > 0);
        QWebSocket socket;
        socket.open(QUrl(QStringLiteral("ws://127.0.0.1:%1/kiwi/3/SND").arg(port)));
        QTRY_COMPARE(socket.state(), QAbstractSocket::ConnectedState);
        socket.sendTextMessage(text("SET keepalive"));
        const auto logged = [&log] {
            QFile file(log);
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        QTRY_VERIFY(logged().contains(" client 1 /kiwi/3/SND command SET keepalive\n"));
        QVERIFY(logged().contains(" client 1 - connect "));
        program.terminate();
        QVERIFY(program.waitForFinished());
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ProgramTest)
#include "program_test.moc"
