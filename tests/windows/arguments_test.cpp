// How the command line reaches main(), and how the exit code returns.

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace outpost
{

class ArgumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void reachMainInTheEightBitEncoding()
    {
        const QTemporaryDir folder;
        const QString umlaut = QStringLiteral("J\u00fcrgen");
        const QString left = folder.filePath(umlaut);
        const QStringList arguments = {left, QStringLiteral("two words"), QString(),
                                       QStringLiteral("a\"b"), QStringLiteral("C:\\x y\\")};
        QProcess program;
        program.start(QStringLiteral(ENTRY_POINT), arguments);
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 7);

        QFile file(left);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArray expected;
        for (const QString &argument : arguments) {
            expected += argument.toLocal8Bit() + '\n';
        }
        QCOMPARE(file.readAll(), expected + "end");
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ArgumentsTest)
#include "arguments_test.moc"
