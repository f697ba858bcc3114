// The configuration: TOML in, what is to run or one error out.

#include "daemon/daemonconfig.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>

namespace outpost
{

namespace
{
DaemonConfigOutcome read(const QByteArray &toml)
{
    return readDaemonConfig(toml, QStringLiteral("conf/outpostd.toml"));
}

// A table with the keys that it must have, and one more line.
QByteArray withLine(const QByteArray &table, const QByteArray &line)
{
    QByteArray begin;
    if (table == "receiver" || table == "span") {
        begin = "[[receiver]]\nname = \"20m\"\nhost = \"kiwi.example\"\n";
        if (!line.startsWith("mhz") && !line.startsWith("schedule")) {
            begin += "mhz = 14.074\n";
        }
    } else if (table == "bridge") {
        begin = "[[bridge]]\nname = \"window\"\n";
    } else if (table == "wsjtx") {
        begin = "[[wsjtx]]\n";
        begin += line.startsWith("targets") ? "" : "targets = [ \"127.0.0.1\" ]\n";
    } else if (table == "decoder") {
        begin = "[decoder]\n";
    } else if (table == "all_txt") {
        begin = "[all_txt]\n";
        begin += line.startsWith("folder") ? "" : "folder = \"/log\"\n";
    }
    return begin + line + '\n';
}

QString hz(const ReceiverConfig &receiver)
{
    QStringList spans;
    for (const ScheduleSpan &span : receiver.schedule.spans()) {
        spans.append(
            QStringLiteral("%1-%2 %3").arg(span.fromMinute).arg(span.toMinute).arg(span.dialHz));
    }
    return spans.join(QLatin1Char(' '));
}

QString examplePath()
{
    return QStringLiteral(OUTPOST_SOURCE_DIR "/packaging/linux/outpostd.toml");
}

// The configurations that the manual shows.
QStringList manualsConfigurations()
{
    QFile file(QStringLiteral(OUTPOST_SOURCE_DIR "/docs/many-receivers.md"));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    static const QRegularExpression block(QStringLiteral("```toml\n(.*?)```"),
                                          QRegularExpression::DotMatchesEverythingOption);
    QStringList found;
    for (auto it = block.globalMatch(QString::fromUtf8(file.readAll())); it.hasNext();) {
        found.append(it.next().captured(1));
    }
    return found;
}

// A # before prose is followed by a blank.
QByteArray exampleWithoutSigns()
{
    QFile file(examplePath());
    if (!file.open(QIODevice::ReadOnly)) {
        return "the example is missing";
    }
    QByteArray toml;
    for (const QByteArray &line : file.readAll().split('\n')) {
        const bool isProse = line.startsWith("# ") || line == "#";
        toml += (line.startsWith('#') && !isProse ? line.mid(1) : line) + '\n';
    }
    return toml;
}

// The value of a key, as a text.
QString valueOf(const DaemonConfig &config, const QByteArray &table, const QByteArray &key)
{
    const auto flag = [](bool value) { return QLatin1String(value ? "true" : "false"); };
    const ReceiverConfig receiver = config.receivers.value(0);
    const BridgeConfig bridge = config.bridges.value(0);
    const WsjtxConfig wsjtx = config.wsjtx.value(0);
    QString targets;
    for (const WsjtxTarget &target : wsjtx.targets) {
        targets += QStringLiteral("<%1|%2>").arg(target.host).arg(target.port);
    }
    const QMap<QByteArray, QString> values{
        {".station", config.station},
        {"decoder.jt9", config.decoder.jt9},
        {"decoder.passes", QString::number(config.decoder.passes)},
        {"decoder.at_once", QString::number(config.decoder.atOnce)},
        {"decoder.split", QString::number(config.decoder.split)},
        {"receiver.name", receiver.name},
        {"receiver.host", receiver.host},
        {"receiver.port", QString::number(receiver.port)},
        {"receiver.mhz", hz(receiver)},
        {"receiver.schedule", hz(receiver)},
        {"receiver.user", receiver.user},
        {"receiver.password_file", receiver.passwordFile},
        {"receiver.compression", flag(receiver.compression)},
        {"receiver.low_hz", QString::number(receiver.lowHz)},
        {"receiver.high_hz", QString::number(receiver.highHz)},
        {"bridge.name", bridge.name},
        {"bridge.port", QString::number(bridge.port)},
        {"bridge.mhz", QString::number(bridge.mhz)},
        {"bridge.frequency_file", bridge.frequencyFile},
        {"wsjtx.targets", targets},
        {"wsjtx.interface", wsjtx.interface},
        {"wsjtx.ttl", QString::number(wsjtx.ttl)},
        {"wsjtx.id", wsjtx.id},
        {"all_txt.folder", config.allTxt.folder},
        {"all_txt.split",
         QLatin1String(config.allTxt.split == AllTxtSplit::Monthly ? "monthly" : "never")},
    };
    return values.value(table + '.' + key, QStringLiteral("(no such key)"));
}
} // namespace

class DaemonConfigTest : public QObject
{
    Q_OBJECT

private slots:
    void anEmptyFileIsAllDefaults()
    {
        for (const char *toml : {"", "\n", "# nothing\r\n", "\xef\xbb\xbf# after a mark\n"}) {
            const DaemonConfigOutcome outcome = read(toml);
            QCOMPARE(outcome.error, QString());
            QCOMPARE(outcome.config.station, QStringLiteral("PELQ Kiwi Outpost"));
            QVERIFY(outcome.config.decoder == DecoderConfig());
            QVERIFY(outcome.config.allTxt == AllTxtConfig());
            QVERIFY(!outcome.config.hasSources());
            QVERIFY(outcome.config.wsjtx.isEmpty());
        }
    }

    void keysHaveDefaults_data()
    {
        QTest::addColumn<QString>("value");
        const auto row = [](const char *path, const char *value) {
            QTest::newRow(path) << QString::fromUtf8(value);
        };
        row(".station", "PELQ Kiwi Outpost");
        row("decoder.jt9", "");
        row("decoder.passes", "2");
        row("decoder.at_once", "0");
        row("decoder.split", "1");
        row("receiver.port", "8073");
        row("receiver.user", "");
        row("receiver.password_file", "");
        row("receiver.compression", "false");
        row("receiver.low_hz", "200");
        row("receiver.high_hz", "3000");
        row("bridge.port", "27777");
        row("bridge.mhz", "0");
        row("bridge.frequency_file", "");
        row("wsjtx.interface", "");
        row("wsjtx.ttl", "1");
        row("wsjtx.id", "PELQ Kiwi Outpost %1");
        row("all_txt.split", "never");
    }

    void keysHaveDefaults()
    {
        QFETCH(QString, value);
        const QList<QByteArray> path = QByteArray(QTest::currentDataTag()).split('.');
        const DaemonConfigOutcome outcome = read(withLine(path.first(), ""));
        QCOMPARE(outcome.error, QString());
        QCOMPARE(valueOf(outcome.config, path.first(), path.last()), value);
    }

    void goodValuesAreRead_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("value");
        const auto row = [](const char *table, const char *line, const char *value) {
            QTest::addRow("%s: %s", table, line)
                << QByteArray(table) << QByteArray(line) << QString::fromUtf8(value);
        };
        row("", "station = \"Hütte 2\"", "Hütte 2");
        row("decoder", "jt9 = \"/opt/jt9\"", "/opt/jt9");
        row("decoder", "jt9 = \"../bin/jt9\"", "bin/jt9");
        row("decoder", "passes = 1", "1");
        row("decoder", "passes = 3", "3");
        row("decoder", "at_once = 1", "1");
        row("decoder", "at_once = 256", "256");
        row("decoder", "split = 1", "1");
        row("decoder", "split = 4", "4");
        row("receiver", "port = 1", "1");
        row("receiver", "port = 65_535", "65535");
        row("receiver", "mhz = 7", "0-1440 7000000");
        row("receiver", "mhz = 0.001", "0-1440 1000");
        row("receiver", "mhz = 3000", "0-1440 3000000000");
        row("receiver", "mhz = 14.0740006", "0-1440 14074001");
        row("receiver", "schedule = [ { from = \"06:00\", to = \"18:30\", mhz = 14.074 } ]",
            "360-1110 14074000");
        row("receiver",
            "schedule = [\n  { from = \"18:00\", to = \"06:00\", mhz = 7.074 },\n"
            "  { from = \"06:00\", to = \"18:00\", mhz = 14.074 },\n]",
            "360-1080 14074000 1080-360 7074000");
        row("receiver", "schedule = [ { from = \"00:00\", to = \"24:00\", mhz = 10.136 } ]",
            "0-1440 10136000");
        row("receiver", "schedule = [ { from = \"22:00\", to = \"00:00\", mhz = 10.136 } ]",
            "1320-1440 10136000");
        row("receiver", "user = \"K1ABC, Vermont\"", "K1ABC, Vermont");
        row("receiver", "password_file = \"/etc/pw\"", "/etc/pw");
        row("receiver", "password_file = 'pw'", "conf/pw");
        row("receiver", "compression = true", "true");
        row("receiver", "low_hz = 0", "0");
        row("receiver", "low_hz = 2999", "2999");
        row("receiver", "high_hz = 5000", "5000");
        row("receiver", "high_hz = 201", "201");
        row("bridge", "port = 65535", "65535");
        row("bridge", "mhz = 14.074", "14.074");
        row("bridge", "frequency_file = \"mhz.txt\"", "conf/mhz.txt");
        row("wsjtx", "targets = [ \"127.0.0.1\", \"239.1.2.3:2238\", \"map.local:1\" ]",
            "<127.0.0.1|2237><239.1.2.3|2238><map.local|1>");
        row("wsjtx", "interface = \"eth0\"", "eth0");
        row("wsjtx", "ttl = 0", "0");
        row("wsjtx", "ttl = 255", "255");
        row("wsjtx", "id = \"shed-%1\"", "shed-%1");
        row("wsjtx", "id = \"shed\"", "shed");
        row("all_txt", "folder = \"/var/log/ft8/\"", "/var/log/ft8");
        row("all_txt", "folder = \".\"", "conf");
        row("all_txt", "split = \"never\"", "never");
        row("all_txt", "split = \"monthly\"", "monthly");
    }

    void goodValuesAreRead()
    {
        QFETCH(QByteArray, table);
        QFETCH(QByteArray, line);
        QFETCH(QString, value);
        const DaemonConfigOutcome outcome = read(withLine(table, line));
        QCOMPARE(outcome.error, QString());
        const QByteArray key = line.left(line.indexOf('=')).trimmed();
        QCOMPARE(valueOf(outcome.config, table, key), value);
    }

    void wrongValuesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *table, const char *line, const QString &error) {
            QTest::addRow("%s: %s", table, line) << QByteArray(table) << QByteArray(line) << error;
        };
        const auto must = [](const QString &be) { return QStringLiteral("; it must be ") + be; };
        const auto is = [](const char *what) {
            return QStringLiteral("this is %1").arg(QLatin1String(what));
        };
        const auto range = [](int min, int max) {
            return QStringLiteral("a whole number from %1 to %2").arg(min).arg(max);
        };
        const auto numbers = [&](const char *table, const char *key, int min, int max) {
            const auto keyRow = [&](const QString &value, const QString &wrong) {
                row(table, qPrintable(QStringLiteral("%1 = %2").arg(QLatin1String(key), value)),
                    wrong + must(range(min, max)));
            };
            keyRow(QString::number(min - 1), QStringLiteral("%1 is out of range").arg(min - 1));
            keyRow(QString::number(max + 1), QStringLiteral("%1 is out of range").arg(max + 1));
            keyRow(QStringLiteral("9223372036854775807"),
                   QStringLiteral("9223372036854775807 is out of range"));
            keyRow(QStringLiteral("1.0"), is("a number with a point"));
            keyRow(QStringLiteral("\"1\""), is("a text"));
            keyRow(QStringLiteral("true"), is("true or false"));
            keyRow(QStringLiteral("06:00:00"), is("a date or a time"));
            keyRow(QStringLiteral("2026-11-21"), is("a date or a time"));
            keyRow(QStringLiteral("[ 1 ]"), is("a list"));
            keyRow(QStringLiteral("{ a = 1 }"), is("a table"));
        };
        const auto texts = [&](const char *table, const char *key, const QString &right) {
            const auto keyRow = [&](const char *value, const QString &wrong) {
                row(table,
                    qPrintable(
                        QStringLiteral("%1 = %2").arg(QLatin1String(key), QLatin1String(value))),
                    wrong + must(right));
            };
            keyRow("1", is("a whole number"));
            keyRow("1.5", is("a number with a point"));
            keyRow("false", is("true or false"));
            keyRow("[]", is("a list"));
            keyRow("{}", is("a table"));
            keyRow("\"\"", QStringLiteral("the text is empty"));
            keyRow("\" \"", QStringLiteral("the text is empty"));
            keyRow("\"a\\u0000b\"", QStringLiteral("the text holds a control character"));
            keyRow("\"\"\"a\nb\"\"\"", QStringLiteral("the text holds a control character"));
        };
        const auto path = [&](const char *table, const char *key, const QString &right) {
            texts(table, key, right);
            row(table, qPrintable(QStringLiteral("%1 = \"~/a\"").arg(QLatin1String(key))),
                QStringLiteral("~ is not replaced") + must(QStringLiteral("the whole path")));
        };
        const QString mhz = QStringLiteral("a frequency from 0.001 to 3000 MHz, as in 14.074");
        const auto frequency = [&](const char *table) {
            row(table, "mhz = 0.0009", QStringLiteral("0.0009 is out of range") + must(mhz));
            row(table, "mhz = 3000.1", QStringLiteral("3000.1 is out of range") + must(mhz));
            row(table, "mhz = -7", QStringLiteral("-7 is out of range") + must(mhz));
            row(table, "mhz = nan", QStringLiteral("nan is out of range") + must(mhz));
            row(table, "mhz = inf", QStringLiteral("inf is out of range") + must(mhz));
            row(table, "mhz = \"14.074\"", is("a text") + must(mhz));
            row(table, "mhz = [ 14.074 ]", is("a list") + must(mhz));
        };
        const QString nameRule =
            QStringLiteral("1 to 40 letters, digits, blanks, \".\", \"_\" or \"-\", with a letter "
                           "or a digit at both ends, as in ");
        const auto names = [&](const char *table, const char *key, const QString &right) {
            for (const char *name : {"a/b", "..", " a", "a ", "-a", "a#", "a%1"}) {
                row(table,
                    qPrintable(
                        QStringLiteral("%1 = \"%2\"").arg(QLatin1String(key), QLatin1String(name))),
                    QStringLiteral("\"%1\" is no name").arg(QLatin1String(name)) + must(right));
            }
            const QString tooLong(41, QLatin1Char('a'));
            row(table, qPrintable(QStringLiteral("%1 = \"%2\"").arg(QLatin1String(key), tooLong)),
                QStringLiteral("\"%1%2\" is no name").arg(tooLong.left(39), QChar(0x2026)) +
                    must(right));
        };

        texts("", "station", nameRule + QStringLiteral("\"Shed\""));
        names("", "station", nameRule + QStringLiteral("\"Shed\""));
        path("decoder", "jt9", QStringLiteral("the path of jt9, as in \"/usr/bin/jt9\""));
        numbers("decoder", "passes", 1, 3);
        numbers("decoder", "at_once", 1, 256);
        numbers("decoder", "split", 1, 4);
        const QString split =
            must(QStringLiteral("1, the whole band in one run, or 4, four sub-bands"));
        row("decoder", "split = 2", QStringLiteral("2 is neither") + split);
        row("decoder", "split = 3", QStringLiteral("3 is neither") + split);

        numbers("receiver", "port", 1, 65535);
        frequency("receiver");
        texts("receiver", "user", QStringLiteral("a text, as in \"K1ABC\""));
        path("receiver", "password_file",
             QStringLiteral("the path of a file whose first line is the password"));
        for (const char *value : {"1", "\"true\""}) {
            row("receiver", qPrintable(QStringLiteral("compression = ") + QLatin1String(value)),
                is(*value == '1' ? "a whole number" : "a text") +
                    must(QStringLiteral("true or false")));
        }
        numbers("receiver", "low_hz", 0, 5000);
        numbers("receiver", "high_hz", 0, 5000);
        const QString band = must(QStringLiteral("a band whose low_hz is below its high_hz"));
        row("receiver", "low_hz = 3000",
            QStringLiteral("the band from 3000 to 3000 Hz is empty") + band);
        row("receiver", "high_hz = 200",
            QStringLiteral("the band from 200 to 200 Hz is empty") + band);
        row("receiver", "high_hz = 100",
            QStringLiteral("the band from 200 to 100 Hz is empty") + band);
        const QString spans = must(
            QStringLiteral("spans, as in [ { from = \"06:00\", to = \"18:00\", mhz = 14.074 } ]"));
        row("receiver", "schedule = 14.074", is("a number with a point") + spans);
        row("receiver", "schedule = {}", is("a table") + spans);
        row("receiver", "schedule = []", QStringLiteral("the list is empty") + spans);
        row("receiver", "schedule = [ 14.074 ]",
            QStringLiteral("in the list is a number with a point") + spans);

        numbers("bridge", "port", 1, 65535);
        frequency("bridge");
        path("bridge", "frequency_file",
             QStringLiteral("the path of a text file with the frequency in MHz"));

        const QString servers =
            must(QStringLiteral("a list of servers, as in targets = [ \"127.0.0.1:2237\" ]"));
        row("wsjtx", "targets = \"127.0.0.1\"", is("a text") + servers);
        row("wsjtx", "targets = []", QStringLiteral("the list is empty") + servers);
        row("wsjtx", "targets = [ \"127.0.0.1\", 2237 ]",
            QStringLiteral("in the list is a whole number") + servers);
        const QString server =
            must(QStringLiteral("HOST:PORT, by name or IPv4 address, as in \"127.0.0.1:2237\""));
        row("wsjtx", "targets = [ \"a:b\" ]", QStringLiteral("\"a:b\" is no server") + server);
        row("wsjtx", "targets = [ \"[::1]:2237\" ]",
            QStringLiteral(
                "\"[::1]:2237\" is an IPv6 address, where these programs do not listen") +
                server);
        row("wsjtx", "targets = [ \"\" ]", QStringLiteral("\"\" is no server") + server);
        row("wsjtx", "targets = [ \"a\\nb\" ]",
            QStringLiteral("\"a%1b\" is no server").arg(QChar(0xfffd)) + server);
        row("wsjtx", "targets = [ \"a\", \"a:2237\" ]",
            QStringLiteral("\"a:2237\" is named twice, so that it would get each decode twice") +
                server);
        texts("wsjtx", "interface",
              QStringLiteral("the name of a network interface, as in \"eth0\""));
        numbers("wsjtx", "ttl", 0, 255);
        const QString id = QStringLiteral("a text with %1 where the source's name is to stand");
        texts("wsjtx", "id", id);
        row("wsjtx", "id = \"%1 of %2\"",
            QStringLiteral("it holds a % that is not %1's") + must(id));
        row("wsjtx", "id = \"100 %\"", QStringLiteral("it holds a % that is not %1's") + must(id));

        path("all_txt", "folder", QStringLiteral("a folder, as in \"/var/log/ft8\""));
        const QString either = QStringLiteral("\"never\" or \"monthly\"");
        texts("all_txt", "split", either);
        row("all_txt", "split = \"daily\"", QStringLiteral("\"daily\" is neither") + must(either));
    }

    void wrongValuesAreRefused()
    {
        QFETCH(QByteArray, table);
        QFETCH(QByteArray, line);
        QFETCH(QString, error);
        const QByteArray toml = withLine(table, line);
        const int number = toml.left(toml.indexOf(line)).count('\n') + 1;
        const QString key = QString::fromLatin1(line.left(line.indexOf('=')).trimmed());
        const QString prefix = table.isEmpty() ? QString() : QString::fromLatin1(table + '.');
        QCOMPARE(read(toml).error, QStringLiteral("conf/outpostd.toml:%1: %2: %3")
                                       .arg(QString::number(number), prefix + key, error));
    }

    void filesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("toml");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *name, const QByteArray &toml, const QString &error) {
            QTest::newRow(name) << toml << QStringLiteral("conf/outpostd.toml:") + error;
        };
        const QString times = QStringLiteral("\"00:00\"");
        const auto span = [](const char *text) {
            return QByteArray("[[receiver]]\nname = \"a\"\nhost = \"a\"\nschedule = [ ") + text +
                   " ]\n";
        };
        const QString nameRule =
            QStringLiteral("1 to 40 letters, digits, blanks, \".\", \"_\" or \"-\", with a letter "
                           "or a digit at both ends, as in name = \"20m\"");
        const QString host =
            QStringLiteral("a name or an address without scheme and port, as in host = "
                           "\"kiwi.example\"");
        row("no name", "\n[[receiver]]\nhost = \"a\"\nmhz = 1\n",
            QStringLiteral("2: receiver.name: the key is missing; it must be ") + nameRule);
        row("no host", "[[receiver]]\nname = \"a\"\nmhz = 1\n",
            QStringLiteral("1: receiver.host: the key is missing; it must be ") + host);
        row("a link", "[[receiver]]\nname = \"a\"\nhost = \"http://a\"\nmhz = 1\n",
            QStringLiteral("3: receiver.host: \"http://a\" is no host; it must be ") + host);
        row("host and port", "[[receiver]]\nname = \"a\"\nhost = \"a:1\"\nmhz = 1\n",
            QStringLiteral("3: receiver.host: \"a:1\" is no host; it must be ") + host);
        row("host is a number", "[[receiver]]\nname = \"a\"\nhost = 1\nmhz = 1\n",
            QStringLiteral("3: receiver.host: this is a whole number; it must be ") + host);
        row("a name of blanks", "[[receiver]]\nname = \"/\"\nhost = \"a\"\nmhz = 1\n",
            QStringLiteral("2: receiver.name: \"/\" is no name; it must be ") + nameRule);
        row("no frequency", "[[receiver]]\nname = \"a\"\nhost = \"a\"\n",
            QStringLiteral("1: receiver.mhz: the key is missing; it must be a frequency, as in mhz "
                           "= 14.074, or a schedule in its place"));
        row("a misspelt key rather than a missing one",
            "[[receiver]]\nname = \"a\"\nhost = \"a\"\nmhzz = 7\n",
            QStringLiteral("4: receiver.mhzz: there is no such key; the nearest one is mhz"));
        row("frequency and schedule",
            span("{ from = \"01:00\", to = \"02:00\", mhz = 7 }") + "mhz = 7\n",
            QStringLiteral("4: receiver.schedule: mhz is given, too; it must be one of the two"));
        row("the same name twice",
            "[[receiver]]\nname = \"a\"\nhost = \"a\"\nmhz = 1\n"
            "[[bridge]]\nname = \"A\"\n",
            QStringLiteral("6: bridge.name: \"A\" is another's name; it must be a name that no "
                           "other receiver or bridge has"));
        row("a bridge without a name", "[[bridge]]\n",
            QStringLiteral("1: bridge.name: the key is missing; it must be ") + nameRule);
        row("one window twice", "[[bridge]]\nname = \"a\"\n[[bridge]]\nname = \"b\"\n",
            QStringLiteral("3: bridge.port: another bridge has port 27777; it must be the port of "
                           "another window"));
        row("frequency and file", "[[bridge]]\nname = \"a\"\nmhz = 7\nfrequency_file = \"f\"\n",
            QStringLiteral("4: bridge.frequency_file: mhz is given, too; it must be one of the "
                           "two"));
        row("no servers", "[[wsjtx]]\nttl = 2\n",
            QStringLiteral("1: wsjtx.targets: the key is missing; it must be a list of servers, as "
                           "in targets = [ \"127.0.0.1:2237\" ]"));
        row("a server of another output",
            "[[wsjtx]]\ntargets = [ \"a\" ]\n[[wsjtx]]\n"
            "targets = [\n\"b\",\n\"a\" ]\n",
            QStringLiteral("6: wsjtx.targets: \"a\" is named twice, so that it would get each "
                           "decode twice; it must be HOST:PORT, by name or IPv4 address, as in "
                           "\"127.0.0.1:2237\""));
        row("one id for two",
            "[[bridge]]\nname = \"a\"\n[[wsjtx]]\ntargets = [ \"a\" ]\nid = \"b\"\n"
            "[[receiver]]\nname = \"b\"\nhost = \"a\"\nmhz = 1\n",
            QStringLiteral("5: wsjtx.id: all sources would have the same; it must be a text with "
                           "%1 where the source's name is to stand"));
        row("no folder", "[all_txt]\n",
            QStringLiteral("1: all_txt.folder: the key is missing; it must be a folder, as in "
                           "\"/var/log/ft8\""));

        const QString from = QStringLiteral("a time, UTC, from \"00:00\" to \"23:59\"");
        const QString to = QStringLiteral("a time, UTC, from \"00:00\" to \"24:00\"");
        const QString schedule = QStringLiteral("4: receiver.schedule");
        row("span without from", span("{ to = \"02:00\", mhz = 7 }"),
            schedule + QStringLiteral(".from: the key is missing; it must be ") + from);
        row("span without to", span("{ from = \"02:00\", mhz = 7 }"),
            schedule + QStringLiteral(".to: the key is missing; it must be ") + to);
        row("span without mhz", span("{ from = \"02:00\", to = \"03:00\" }"),
            schedule + QStringLiteral(".mhz: the key is missing; it must be a frequency, as in mhz "
                                      "= 14.074"));
        row("span's frequency", span("{ from = \"02:00\", to = \"03:00\", mhz = 0 }"),
            schedule + QStringLiteral(".mhz: 0 is out of range; it must be a frequency from 0.001 "
                                      "to 3000 MHz, as in 14.074"));
        row("span with more", span("{ from = \"02:00\", to = \"03:00\", mzh = 0, mhz = 1 }"),
            schedule + QStringLiteral(".mzh: there is no such key; the nearest one is mhz"));
        row("time of TOML", span("{ from = 02:00:00, to = \"03:00\", mhz = 7 }"),
            schedule + QStringLiteral(".from: this is a date or a time; it must be ") + from);
        for (const char *time : {"24:01", "25:00", "12:60", "1:00", "01:0", "01.00", "aa:bb"}) {
            const QByteArray line = span("{ from = \"00:00\", to = \"TIME\", mhz = 7 }");
            row(time, QByteArray(line).replace("TIME", time),
                schedule + QStringLiteral(".to: \"%1\" is no time; it must be %2")
                               .arg(QLatin1String(time), to));
        }
        row("from the end of a day", span("{ from = \"24:00\", to = \"01:00\", mhz = 7 }"),
            schedule + QStringLiteral(".from: \"24:00\" is the end of a day; it must be ") + times);
        row("an empty span", span("{ from = \"01:00\", to = \"01:00\", mhz = 7 }"),
            schedule + QStringLiteral(".to: the span is empty; it must be another time than from; "
                                      "mhz without a schedule is all day"));
        row("overlap",
            span("{ from = \"20:00\", to = \"06:01\", mhz = 7 },\n"
                 "{ from = \"06:00\", to = \"07:00\", mhz = 7 }"),
            QStringLiteral("5: receiver.schedule: the span overlaps one before it; it must be a "
                           "span that begins when others have ended"));

        row("unknown key", "[[receiver]]\nname = \"a\"\nhost = \"a\"\nprot = 1\nmhz = 1\n",
            QStringLiteral("4: receiver.prot: there is no such key; the nearest one is port"));
        row("unknown password",
            "[[receiver]]\nname = \"a\"\nhost = \"a\"\nmhz = 1\n"
            "password = \"hunter2\"\n",
            QStringLiteral("5: receiver.password: there is no such key; the nearest one is "
                           "password_file"));
        row("unknown table", "\n[decoders]\npasses = 1\n",
            QStringLiteral("2: decoders: there is no such key; the nearest one is decoder"));
        row("unknown, odd", "\"\\n\" = 1\n",
            QStringLiteral("1: \"%1\": there is no such key; the nearest one is wsjtx")
                .arg(QChar(0xfffd)));
        row("single brackets", "[receiver]\nname = \"a\"\n",
            QStringLiteral("1: receiver: this is a table; it must be tables that begin with "
                           "[[receiver]]"));
        row("double brackets", "[[decoder]]\npasses = 1\n",
            QStringLiteral("1: decoder: this is a list; it must be a table, which begins with "
                           "[decoder]"));
        row("a table as a number", "wsjtx = 1\n",
            QStringLiteral("1: wsjtx: this is a whole number; it must be tables that begin with "
                           "[[wsjtx]]"));
        row("the first of many", "[decoder]\nsplit = 9\npasses = 9\n[all_txt]\nx = 1\n",
            QStringLiteral("2: decoder.split: 9 is out of range; it must be a whole number from 1 "
                           "to 4"));
        row("the first of many, the other way", "[[bridge]]\nname = 1\n[decoder]\npasses = 9\n",
            QStringLiteral("2: bridge.name: this is a whole number; it must be ") + nameRule);
    }

    void filesAreRefused()
    {
        QFETCH(QByteArray, toml);
        QFETCH(QString, error);
        const DaemonConfigOutcome outcome = read(toml);
        QCOMPARE(outcome.error, error);
        QVERIFY(!outcome.config.hasSources());
        QVERIFY(outcome.config.wsjtx.isEmpty());
    }

    void whatIsNotTomlIsRefusedWithoutQuotingIt_data()
    {
        QTest::addColumn<QByteArray>("toml");
        QTest::addColumn<QString>("begin");
        const auto row = [](const char *name, const QByteArray &toml, const char *begin) {
            QTest::newRow(name) << toml
                                << QStringLiteral("conf/outpostd.toml:") + QLatin1String(begin);
        };
        row("no quotes", "\npassword_file = hunter2\n", "2: password_file: this is not TOML, ");
        row("open quotes", "a = 1\nuser = \"hunter2\n", "2: user: this is not TOML, ");
        row("large number", "user = 77777777777777777777\n",
            "1: user: this is not TOML, the number is too large; right are");
        row("no value", "host = \n", "1: host: this is not TOML, ");
        row("no key", "= 1\n", "1: this is not TOML, ");
        row("key twice", "a = 1\na = 2\n", "2: a: this is not TOML, ");
        row("table twice", "[decoder]\n[decoder]\n", "2: this is not TOML, ");
        row("open table", "[decoder\n", "1: this is not TOML, ");
        row("a sign for a table's name", "[$]\n", "1: this is not TOML, ");
        row("letters for a key", "\xc3\xbc = 1\n", "1: this is not TOML, ");
        row("letters of Arabic for a key", "\xef\xb7\xbb = 1\n", "1: this is not TOML, ");
        row("a list that ends in mid-word", "user = [f\n", "1: user: this is not TOML, ");
        row("open list", "a = [ 1,\n", "");
        row("comma", "mhz = 14,074\n", "1: mhz: this is not TOML, ");
        row("leading zero", "port = 08073\n", "1: port: this is not TOML, ");
        const char *control = "2: the line holds a control character; it must hold none but tabs";
        row("NUL", QByteArray("a = 1\n\0\n", 8), control);
        row("control character", "a = 1\n[\x11]\n", control);
        row("delete", "a = 1\n# \x7f\n", control);
        row("return within a line", "a = 1\n# a\rb\r\n", control);
        row("no UTF-8", "a = 1\nb = \"\xff\"\n",
            "2: this is not UTF-8; the file must be saved as UTF-8");
        row("cut UTF-8", "a = 1\n# \xc3\nb = 1",
            "2: this is not UTF-8; the file must be saved as UTF-8");
        row("UTF-16", QByteArray("a\0=\0001\0\n\0\xff\xfe", 10), "");
        row("nested", "a = " + QByteArray(200, '[') + QByteArray(200, ']') + '\n',
            "1: a: this is not TOML, ");
        row("a long line", "\na = 1 #" + QByteArray(2000, ' ') + '\n',
            "2: the line is longer than 2000 bytes; it must be shorter, lists may go on in the "
            "next line");
    }

    void whatIsNotTomlIsRefusedWithoutQuotingIt()
    {
        QFETCH(QByteArray, toml);
        QFETCH(QString, begin);
        const QString error = read(toml).error;
        QVERIFY2(error.startsWith(begin) && !error.isEmpty(), qPrintable(error));
        QVERIFY2(!error.contains(QLatin1String("hunter2")) &&
                     !error.contains(QLatin1String("7777")) && !error.contains(QLatin1Char('\n')),
                 qPrintable(error));
    }

    void theSizeHasALimit()
    {
        const QByteArray line = QByteArray("#").leftJustified(1023, ' ') + '\n';
        const QByteArray largest = line.repeated(1024);
        QCOMPARE(read(largest).error, QString());
        QCOMPARE(read(largest + '\n').error,
                 QStringLiteral("conf/outpostd.toml: the file is larger than 1 MiB; it must be "
                                "smaller"));
    }

    // Each level costs stack where the document is taken apart and where it is destroyed.
    void theDeepestDocumentIsRefusedOrRead()
    {
        const QByteArray deep = QByteArray("a.").repeated(990) + 'a';
        QByteArray toml = '[' + deep + "]\n";
        for (int level = 0; level < 4; ++level) {
            toml += (level == 0 ? "" : "{ ") + deep + " = [\n";
        }
        toml += "1\n] }] }] }]\n";
        QCOMPARE(read(toml).error, QStringLiteral("conf/outpostd.toml:1: a: there is no such key; "
                                                  "the nearest one is all_txt"));
    }

    void tenThousandReceiversAreRead()
    {
        QByteArray toml;
        for (int i = 0; i < 10000; ++i) {
            toml += "[[receiver]]\nname = \"" + QByteArray::number(i) +
                    "\"\nhost = \"kiwi.example\"\nmhz = 14.074\n";
        }
        const DaemonConfigOutcome outcome = read(toml);
        QCOMPARE(outcome.error, QString());
        QCOMPARE(outcome.config.receivers.size(), 10000);
        QCOMPARE(outcome.config.receivers.last().name, QStringLiteral("9999"));
    }

    void sendersAreNamedAfterTheStation()
    {
        const QByteArray wsjtx = "[[wsjtx]]\ntargets = [ \"a\" ]\n";
        QCOMPARE(read("station = \"Shed\"\n" + wsjtx).config.wsjtx.first().id,
                 QStringLiteral("Shed %1"));
    }

    void pathsAreRelativeToTheFile()
    {
        const QByteArray toml = "[all_txt]\nfolder = \"log\"\n";
        const auto folder = [&toml](const char *file) {
            return readDaemonConfig(toml, QLatin1String(file)).config.allTxt.folder;
        };
        QCOMPARE(folder("/etc/outpostd.toml"), QStringLiteral("/etc/log"));
        QCOMPARE(folder("outpostd.toml"), QStringLiteral("log"));
        QCOMPARE(folder("../outpostd.toml"), QStringLiteral("../log"));
    }

    void filesAreRead()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(QStringLiteral("a.toml")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("station = \"Shed\"\nx = 1\n");
        file.close();
        QCOMPARE(readDaemonConfigFile(file.fileName()).error,
                 file.fileName() +
                     QStringLiteral(":2: x: there is no such key; the nearest one is wsjtx"));
        const QString missing = folder.filePath(QStringLiteral("none"));
        QCOMPARE(readDaemonConfigFile(missing).error,
                 missing + QStringLiteral(": No such file or directory"));
        QVERIFY(readDaemonConfigFile(folder.path())
                    .error.startsWith(folder.path() + QStringLiteral(": ")));
    }

    void aFileWithoutEndIsRefused()
    {
#ifdef Q_OS_UNIX
        QVERIFY(readDaemonConfigFile(QStringLiteral("/dev/zero"))
                    .error.startsWith(QStringLiteral("/dev/zero: the file is larger than 1 MiB")));
#endif
    }

    void whatDiffersIsNotEqual()
    {
        const auto receiver = [](const QByteArray &line) {
            return read(withLine("receiver", line)).config.receivers.first();
        };
        QVERIFY(receiver("") == receiver(""));
        for (const char *line : {"port = 1", "mhz = 7", "user = \"a\"", "password_file = \"a\"",
                                 "compression = true", "low_hz = 1", "high_hz = 2000"}) {
            QVERIFY2(!(receiver("") == receiver(line)), line);
        }
        const auto wsjtx = [](const QByteArray &line) {
            return read(withLine("wsjtx", line)).config.wsjtx.first();
        };
        QVERIFY(wsjtx("") == wsjtx(""));
        for (const char *line : {"targets = [ \"b\" ]", "targets = [ \"127.0.0.1:1\" ]",
                                 "interface = \"a\"", "ttl = 2", "id = \"a\""}) {
            QVERIFY2(!(wsjtx("") == wsjtx(line)), line);
        }
        const auto bridge = [](const QByteArray &line) {
            return read(withLine("bridge", line)).config.bridges.first();
        };
        QVERIFY(bridge("") == bridge(""));
        for (const char *line : {"port = 1", "mhz = 7", "frequency_file = \"a\""}) {
            QVERIFY2(!(bridge("") == bridge(line)), line);
        }
        const auto decoder = [](const QByteArray &line) {
            return read(withLine("decoder", line)).config.decoder;
        };
        for (const char *line : {"jt9 = \"a\"", "passes = 1", "at_once = 1", "split = 4"}) {
            QVERIFY2(!(decoder("") == decoder(line)), line);
        }
        const auto allTxt = [](const QByteArray &line) {
            return read(withLine("all_txt", line)).config.allTxt;
        };
        for (const char *line : {"folder = \"a\"", "split = \"monthly\""}) {
            QVERIFY2(!(allTxt("") == allTxt(line)), line);
        }
    }

    void whatWouldRunIsTold()
    {
        const DaemonConfigOutcome outcome = readDaemonConfig(
            "station = \"Shed\"\n"
            "[decoder]\njt9 = \"/opt/jt9\"\npasses = 1\nat_once = 3\nsplit = 4\n"
            "[[receiver]]\nname = \"20m\"\nhost = \"kiwi.example\"\nmhz = 14.074\n"
            "user = \"K1ABC\"\npassword_file = \"pw\"\n"
            "[[receiver]]\nname = \"night\"\nhost = \"::1\"\nport = 1\ncompression = true\n"
            "low_hz = 0\nhigh_hz = 5000\nschedule = [\n"
            "{ from = \"18:30\", to = \"06:05\", mhz = 7.074 },\n"
            "{ from = \"06:05\", to = \"18:00\", mhz = 14.074 } ]\n"
            "[[bridge]]\nname = \"window\"\n"
            "[[bridge]]\nname = \"w2\"\nport = 27778\nmhz = 7\n"
            "[[bridge]]\nname = \"w3\"\nport = 27779\nfrequency_file = \"f\"\n"
            "[[wsjtx]]\ntargets = [ \"127.0.0.1\", \"127.0.0.2:2238\" ]\n"
            "[[wsjtx]]\ntargets = [ \"224.0.0.1\" ]\ninterface = \"eth0\"\nttl = 3\nid = \"a %1\"\n"
            "[all_txt]\nfolder = \"log\"\nsplit = \"monthly\"\n",
            QStringLiteral("/etc/outpostd.toml"));
        QCOMPARE(outcome.error, QString());
        QCOMPARE(
            daemonConfigText(outcome.config),
            QStringLiteral(
                "Station \"Shed\"\n"
                "Decoder: /opt/jt9, 1 pass, 4 sub-bands, at most 3 at once\n"
                "Receiver \"20m\": kiwi.example:8073, 14.074000 MHz, 200 to 3000 Hz, "
                "uncompressed, as \"K1ABC\", password from /etc/pw\n"
                "Receiver \"night\": [::1]:1, 14.074000 MHz from 06:05 to 18:00, 7.074000 MHz "
                "from 18:30 to 06:05 UTC, 0 to 5000 Hz, compressed\n"
                "Bridge \"window\": port 27777 of this computer, frequency from the window's "
                "own file\n"
                "Bridge \"w2\": port 27778 of this computer, 7.000000 MHz\n"
                "Bridge \"w3\": port 27779 of this computer, frequency from /etc/f\n"
                "WSJT-X UDP: 127.0.0.1:2237, 127.0.0.2:2238, as \"Shed NAME\", multicast through "
                "the loopback interface with TTL 1\n"
                "WSJT-X UDP: 224.0.0.1:2237, as \"a NAME\", multicast through eth0 with TTL "
                "3\n"
                "ALL.TXT: /etc/log/YYYY-MM-ALL.TXT"));
    }

    void theExampleIsReadAsItStands()
    {
        const DaemonConfigOutcome outcome = readDaemonConfigFile(examplePath());
        QCOMPARE(outcome.error, QString());
        QVERIFY(!outcome.config.hasSources());
        QVERIFY(outcome.config.wsjtx.isEmpty());
        QVERIFY(outcome.config.allTxt == AllTxtConfig());
    }

    void theExampleIsReadWithItsCommentSignsTakenOff()
    {
        const QByteArray toml = exampleWithoutSigns();
        const DaemonConfigOutcome outcome =
            readDaemonConfig(toml, QStringLiteral("/etc/outpostd.toml"));
        QCOMPARE(outcome.error, QString());
        QCOMPARE(outcome.config.receivers.size(), 2);
        QCOMPARE(outcome.config.bridges.size(), 2);
        QCOMPARE(outcome.config.wsjtx.size(), 1);
        QVERIFY(!outcome.config.allTxt.folder.isEmpty());
    }

    // What is said to be a default is one, and no key is left out.
    void theExampleShowsEveryKeyAndItsDefault_data()
    {
        QTest::addColumn<QString>("value");
        for (const char *path : {".station", "decoder.passes", "decoder.split", "receiver.port",
                                 "receiver.compression", "receiver.low_hz", "receiver.high_hz",
                                 "bridge.port", "wsjtx.ttl", "wsjtx.id", "all_txt.split"}) {
            const QList<QByteArray> parts = QByteArray(path).split('.');
            QTest::newRow(path) << valueOf(read(withLine(parts.first(), "")).config, parts.first(),
                                           parts.last());
        }
    }

    void theExampleShowsEveryKeyAndItsDefault()
    {
        QFETCH(QString, value);
        const QList<QByteArray> path = QByteArray(QTest::currentDataTag()).split('.');
        const QByteArray toml = exampleWithoutSigns();
        QVERIFY(toml.contains('\n' + path.last() + " = "));
        QCOMPARE(valueOf(read(toml).config, path.first(), path.last()), value);
    }

    void theExampleShowsKeysWithoutADefault()
    {
        for (const char *key :
             {"jt9", "at_once", "name", "host", "mhz", "schedule", "user", "password_file",
              "frequency_file", "targets", "interface", "folder"}) {
            QVERIFY2(exampleWithoutSigns().contains(QByteArray("\n") + key + " = "), key);
        }
    }

    void theManualsConfigurationsAreRead()
    {
        const QStringList configurations = manualsConfigurations();
        QVERIFY(configurations.size() >= 3);
        for (const QString &toml : configurations) {
            QCOMPARE(read(toml.toUtf8()).error, QString());
        }
    }

    void theDefaultsAreTold()
    {
        QCOMPARE(daemonConfigText(DaemonConfig()),
                 QStringLiteral("Station \"PELQ Kiwi Outpost\"\n"
                                "Decoder: the jt9 that is installed, 2 passes, the whole band in "
                                "one run, one decoder for each core"));
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::DaemonConfigTest)
#include "daemonconfig_test.moc"
