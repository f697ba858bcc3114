// The daemon's command line: arguments in, options or an ending out.

#include "base/buildconfig.h"
#include "daemon/daemonoptions.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>

namespace outpost
{

namespace
{
QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// A bridge, a receiver or nothing, as the file's name says.
DaemonConfigOutcome configNamedLikeItsFile(const QString &path)
{
    DaemonConfig config;
    if (path == QLatin1String("bad.toml")) {
        return {{}, QStringLiteral("bad.toml:1: x: there is no such key; the nearest one is y")};
    }
    if (path != QLatin1String("empty.toml")) {
        ReceiverConfig receiver;
        receiver.name = path;
        config.receivers.append(receiver);
    }
    return {config, QString()};
}

DaemonCommandLine read(const QStringList &arguments)
{
    return readDaemonCommandLine(QStringList{QStringLiteral("/usr/bin/kiwi-outpostd")} + arguments,
                                 configNamedLikeItsFile);
}

DaemonCommandLine read(const char *line)
{
    return read(words(line));
}
} // namespace

class DaemonOptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void oneReceiverIsRead()
    {
        const DaemonCommandLine line = read("kiwi.example 14.074");
        QVERIFY(!line.ending);
        const DaemonOptions &options = line.options;
        QCOMPARE(options.config.receivers.size(), 1);
        const ReceiverConfig &receiver = options.config.receivers.first();
        QCOMPARE(receiver.name, QStringLiteral("kiwi.example 14.074"));
        QCOMPARE(receiver.host, QStringLiteral("kiwi.example"));
        QCOMPARE(receiver.port, 8073);
        QVERIFY(receiver.schedule == Schedule(14074000));
        QVERIFY(options.config.bridges.isEmpty());
        QVERIFY(options.config.wsjtx.isEmpty());
        QVERIFY(options.config.allTxt == AllTxtConfig());
        QVERIFY(options.textFormat == TextFormat::Table);
        QVERIFY(!options.showsStatus);
        QCOMPARE(options.configFile, QString());
    }

    void itsOutputsAreRead()
    {
        const DaemonOptions options = read("--json [::1]:8074 --wsjtx a --wsjtx=b:1 --wsjtx a:2237 "
                                           "7 -all-txt log/my.txt")
                                          .options;
        QCOMPARE(options.config.receivers.first().host, QStringLiteral("::1"));
        QCOMPARE(options.config.receivers.first().port, 8074);
        QCOMPARE(options.config.receivers.first().name, QStringLiteral("1 7"));
        QVERIFY(options.textFormat == TextFormat::JsonLines);
        QCOMPARE(options.config.wsjtx.size(), 1);
        const QVector<WsjtxTarget> targets{{QStringLiteral("a"), 2237}, {QStringLiteral("b"), 1}};
        QVERIFY(options.config.wsjtx.first().targets == targets);
        QCOMPARE(options.config.allTxt.folder, QDir::current().filePath(QStringLiteral("log")));
        QCOMPARE(options.config.allTxt.fileName, QStringLiteral("my.txt"));
        QVERIFY(options.config.allTxt.split == AllTxtSplit::Never);
    }

    void aBridgeIsRead_data()
    {
        QTest::addColumn<int>("port");
        QTest::newRow("--bridge --wsjtx 127.0.0.1:2237") << 27777;
        QTest::newRow("--bridge 27778 --wsjtx 127.0.0.1:2237") << 27778;
        QTest::newRow("--wsjtx 127.0.0.1:2237 -bridge=1") << 1;
        QTest::newRow("--bridge=65535 --wsjtx 127.0.0.1:2237") << 65535;
    }

    void aBridgeIsRead()
    {
        QFETCH(int, port);
        const DaemonCommandLine line = read(QTest::currentDataTag());
        QVERIFY(!line.ending);
        const DaemonConfig &config = line.options.config;
        QVERIFY(config.receivers.isEmpty());
        QCOMPARE(config.bridges.size(), 1);
        QCOMPARE(config.bridges.first().name, QStringLiteral("window"));
        QCOMPARE(config.bridges.first().port, port);
        QCOMPARE(config.bridges.first().mhz, 0.0);
        QCOMPARE(config.bridges.first().frequencyFile, QString());
        QCOMPARE(config.wsjtx.first().targets.first().host, QStringLiteral("127.0.0.1"));
        QVERIFY(line.options.textFormat == TextFormat::Table);
    }

    void aBridgeMayHaveAFileOfItsOwn()
    {
        QCOMPARE(
            read("--bridge --frequency-file mhz.txt").options.config.bridges.first().frequencyFile,
            QDir::current().filePath(QStringLiteral("mhz.txt")));
    }

    void aFileIsRead()
    {
        const DaemonCommandLine line = read("--config a.toml");
        QVERIFY(!line.ending);
        QCOMPARE(line.options.config.receivers.first().name, QStringLiteral("a.toml"));
        QCOMPARE(line.options.configFile, QDir::current().filePath(QStringLiteral("a.toml")));
        QVERIFY(line.options.textFormat == TextFormat::None);
        QVERIFY(read("--config a.toml --json").options.textFormat == TextFormat::JsonLines);
    }

    void theStatusIsAskedFor()
    {
        const DaemonCommandLine line = read("--status");
        QVERIFY(!line.ending);
        QVERIFY(line.options.showsStatus);
    }

    void whatWouldRunIsTold()
    {
        const DaemonCommandLine file = read("--config a.toml --check");
        QCOMPARE(file.ending->exitCode, 0);
        QCOMPARE(file.ending->text,
                 daemonConfigText(configNamedLikeItsFile(QStringLiteral("a.toml")).config));
        const DaemonCommandLine line = read("--check kiwi.example 14.074");
        QCOMPARE(line.ending->exitCode, 0);
        QVERIFY(line.ending->text.contains(QStringLiteral(
            "\nReceiver \"kiwi.example 14.074\": kiwi.example:8073, 14.074000 MHz")));
    }

    void whatCannotBeUsedIsRefused_data()
    {
        QTest::addColumn<QString>("sentence");
        const auto row = [](const char *arguments, const char *sentence) {
            QTest::newRow(arguments) << QString::fromUtf8(sentence);
        };
        const char *none =
            "No receiver is configured; name one, as in 'kiwi-outpostd HOST MHZ', or "
            "see --help.";
        row("", none);
        row("--json", none);
        row("--check", none);
        row("--wsjtx a", none);
        row("--config empty.toml", none);
        row("--config empty.toml --check", none);
        row("--config bad.toml", "bad.toml:1: x: there is no such key; the nearest one is y");
        row("--config bad.toml --check",
            "bad.toml:1: x: there is no such key; the nearest one is y");
        row("--config", "Missing value after '--config'.");
        row("--config=", "Missing value after '--config'.");
        row("--wsjtx= a 7", "Missing value after '--wsjtx'.");
        row("--all-txt= a 7", "Missing value after '--all-txt'.");
        row("--bridge --frequency-file=", "Missing value after '--frequency-file'.");
        row("--nonsense", "Unknown option 'nonsense'.");
        row("--json=yes a 7", "Unexpected value after '--json'.");
        row("a", "Missing frequency after 'a'.");
        row("a 7 7", "Unexpected argument '7'.");
        row("a 14,074", "\"14,074\" is not a frequency from 0.001 to 3000 MHz.");
        row("a 0", "\"0\" is not a frequency from 0.001 to 3000 MHz.");
        row("a nan", "\"nan\" is not a frequency from 0.001 to 3000 MHz.");
        row("http://a 7", "\"http://a\" is not HOST or HOST:PORT.");
        row("a:0 7", "\"a:0\" is not HOST or HOST:PORT.");
        row("::1 7", "\"::1\" is not HOST or HOST:PORT.");
        row("a 7 --wsjtx a:b", "\"a:b\" is not HOST or HOST:PORT, by name or IPv4 address.");
        row("a 7 --wsjtx [::1]", "\"[::1]\" is not HOST or HOST:PORT, by name or IPv4 address.");
        row("a 7 --all-txt .", "\".\" is a folder; '--all-txt' takes a file.");
        row("a 7 --all-txt none/", "\"none/\" is a folder; '--all-txt' takes a file.");
        row("a 7 --frequency-file f", "'--frequency-file' goes with '--bridge'.");
        row("--bridge 0", "\"0\" is not a port from 1 to 65535.");
        row("--bridge=65536", "\"65536\" is not a port from 1 to 65535.");
        row("--bridge=", "\"\" is not a port from 1 to 65535.");
        row("--bridge 1 2", "Unexpected argument '2'.");
        row("--bridge a 7", "\"a\" is not a port from 1 to 65535.");
        row("--config a.toml a 7", "'--config' and 'a' exclude each other.");
        row("--config a.toml --bridge", "'--config' and '--bridge' exclude each other.");
        row("--config a.toml --frequency-file f",
            "'--config' and '--frequency-file' exclude each other.");
        row("--config a.toml --wsjtx a", "'--config' and '--wsjtx' exclude each other.");
        row("--config a.toml --all-txt a", "'--config' and '--all-txt' exclude each other.");
        row("--status a 7", "'--status' and 'a' exclude each other.");
        row("--status --config a.toml", "'--status' and '--config' exclude each other.");
        row("--status --bridge", "'--status' and '--bridge' exclude each other.");
        row("--status --json", "'--status' and '--json' exclude each other.");
        row("--status --check", "'--status' and '--check' exclude each other.");
    }

    void whatCannotBeUsedIsRefused()
    {
        QFETCH(QString, sentence);
        const DaemonCommandLine line = read(QTest::currentDataTag());
        QVERIFY(line.ending);
        QCOMPARE(line.ending->exitCode, 2);
        QCOMPARE(line.ending->text, QStringLiteral("kiwi-outpostd: ") + sentence);
        QVERIFY(!line.options.config.hasSources());
    }

    void helpNamesEveryOption()
    {
        for (const char *option : {"--help", "-help", "-h"}) {
            const DaemonCommandLine line = read(option);
            QCOMPARE(line.ending->exitCode, 0);
            const QString help = line.ending->text;
            QVERIFY2(help.startsWith(QStringLiteral("Usage: kiwi-outpostd [options] [HOST[:PORT] "
                                                    "MHZ | --bridge [PORT] | --config FILE]\n")),
                     qPrintable(help));
            QStringList named;
            const QRegularExpression pattern(QStringLiteral("^ .*?(--[a-z-]+)"),
                                             QRegularExpression::MultilineOption);
            for (auto found = pattern.globalMatch(help); found.hasNext();) {
                named.append(found.next().captured(1));
            }
            named.removeDuplicates();
            QCOMPARE(named, words("--config --bridge --frequency-file --wsjtx --all-txt --json "
                                  "--check --status --help --version"));
        }
    }

    void theVersionIsTold()
    {
        QCOMPARE(read("--version").ending->text, QStringLiteral("kiwi-outpostd " OUTPOST_VERSION));
        QCOMPARE(read("--version").ending->exitCode, 0);
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::DaemonOptionsTest)
#include "daemonoptions_test.moc"
