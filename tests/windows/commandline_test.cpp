// How the station answers its command line: it is a program without a console.

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <qt_windows.h>

namespace outpost
{

namespace
{
struct Answer {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

Answer answerTo(const QStringList &arguments)
{
    QProcess program;
    program.start(QStringLiteral(PROGRAM), arguments);
    if (!program.waitForFinished()) {
        return {};
    }
    return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
}

HWND box()
{
    return FindWindowW(L"#32770", L"PELQ Kiwi Outpost");
}
} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void answersGoThroughThePipeOfWhoeverStartedIt()
    {
        const Answer version = answerTo({QStringLiteral("--version")});
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.output, QByteArray("kiwi-outpost v1.03\n"));
        QCOMPARE(version.errors, QByteArray());

        const Answer help = answerTo({QStringLiteral("--help")});
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.output.startsWith("Usage: kiwi-outpost [options]\n"));
        QCOMPARE(help.errors, QByteArray());
    }

    void anUnknownOptionIsTold()
    {
        const Answer answer = answerTo({QStringLiteral("--nonsense")});
        QCOMPARE(answer.exitCode, 2);
        QCOMPARE(answer.output, QByteArray());
        QCOMPARE(answer.errors, QByteArray("kiwi-outpost: Unknown option 'nonsense'.\n"));
    }

    // Since Windows 10 1903 the manifest makes UTF-8 the code page, which can represent every name.
    void aProfileIsFoundUnderItsName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("of the code page") << QStringLiteral("J\u00fcrgen.json");
        QTest::newRow("of no code page") << QStringLiteral("\u65e5\u672c \u03b1.json");
    }

    void aProfileIsFoundUnderItsName()
    {
        QFETCH(QString, name);
        const QTemporaryDir folder;
        const QString path = folder.filePath(name);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[]");
        file.close();
        const Answer answer = answerTo({QStringLiteral("--profile"), path});
        QCOMPARE(answer.exitCode, 2);
        QVERIFY2(answer.errors.endsWith(": The profile is not a JSON object.\n"),
                 answer.errors.constData());
    }

    void whereNobodyListensABoxShowsIt()
    {
        QProcess program;
        program.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments *start) {
            start->flags |= DETACHED_PROCESS;
            start->inheritHandles = FALSE;
            start->startupInfo->dwFlags &= ~static_cast<DWORD>(STARTF_USESTDHANDLES);
        });
        program.start(QStringLiteral(PROGRAM), {QStringLiteral("--nonsense")});
        QTRY_VERIFY_WITH_TIMEOUT(box() != nullptr, 20000);
        QCOMPARE(program.state(), QProcess::Running);
        PostMessageW(box(), WM_CLOSE, 0, 0);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitCode(), 2);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::CommandLineTest)
#include "commandline_test.moc"
