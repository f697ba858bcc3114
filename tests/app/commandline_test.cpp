// The station's command line: arguments in, options or an ending out.

#include "app/commandline.h"
#include "app/helptext.h"
#include "base/buildconfig.h"

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

ProfileReading noProfile(const QString & /*path*/)
{
    return {std::nullopt, QStringLiteral("No such file or directory")};
}

// The contents are the file's name.
ProfileReading profileOfText(const QString &path)
{
    return parseProfile(path.toUtf8(), Profile());
}

ProfileReading profileNamedLikeItsFile(const QString &path)
{
    Profile profile;
    profile.kiwiHost = path;
    return {profile, QString()};
}

CommandLine read(const QStringList &arguments, const ReadProfile &readProfile = noProfile)
{
    return readCommandLine(QStringList{QStringLiteral("/usr/bin/kiwi-outpost")} + arguments,
                           readProfile);
}
} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void withoutOptionsNothingIsAskedFor()
    {
        const CommandLine line = read({});
        QVERIFY(!line.ending);
        QVERIFY(!line.options.profile);
        QVERIFY(!line.options.frequencyMhz);
        QVERIFY(!line.options.connects);
    }

    void optionsAreRead()
    {
        const CommandLine line =
            read(words("--connect --profile a.json --mhz 7.0740000001"), profileNamedLikeItsFile);
        QVERIFY(!line.ending);
        QCOMPARE(line.options.profile->path, QDir::current().filePath(QStringLiteral("a.json")));
        QCOMPARE(line.options.profile->profile.kiwiHost, QStringLiteral("a.json"));
        QCOMPARE(*line.options.frequencyMhz, 7.0740000001);
        QVERIFY(line.options.connects);
    }

    void valuesMayFollowAnEqualsSign()
    {
        const CommandLine line =
            read(words("-profile=a.json --mhz=7.074"), profileNamedLikeItsFile);
        QVERIFY(!line.ending);
        QCOMPARE(line.options.profile->path, QDir::current().filePath(QStringLiteral("a.json")));
        QCOMPARE(*line.options.frequencyMhz, 7.074);
    }

    void frequenciesUpToBothEndsAreTaken()
    {
        QCOMPARE(*read(words("--mhz 0.001")).options.frequencyMhz, 0.001);
        QCOMPARE(*read(words("--mhz 3000")).options.frequencyMhz, 3000.0);
    }

    void whatCannotBeUsedIsRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("sentence");
        const auto row = [](const char *arguments, const char *sentence) {
            QTest::newRow(arguments) << words(arguments) << QString::fromUtf8(sentence);
        };
        row("--nonsense", "Unknown option 'nonsense'.");
        row("-nonsense", "Unknown option 'nonsense'.");
        row("--connect=yes", "Unexpected value after '--connect'.");
        row("--profile", "Missing value after '--profile'.");
        row("--profile=", "Missing value after '--profile'.");
        row("--profile a.json", "a.json: No such file or directory");
        row("--mhz 14,074", "\"14,074\" is not a frequency from 0.001 to 3000 MHz.");
        row("--mhz 0.0009", "\"0.0009\" is not a frequency from 0.001 to 3000 MHz.");
        row("--mhz 3000.1", "\"3000.1\" is not a frequency from 0.001 to 3000 MHz.");
        row("--mhz nan", "\"nan\" is not a frequency from 0.001 to 3000 MHz.");
        row("--mhz=", "\"\" is not a frequency from 0.001 to 3000 MHz.");
        row("a.json --connect", "Unexpected argument 'a.json'.");
        row("-", "Unexpected argument '-'.");
        row("-- --connect", "Unexpected argument '--connect'.");
        row("--platform=offscreen", "Unknown option 'platform'."); // Qt does not accept it either
    }

    void whatCannotBeUsedIsRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, sentence);
        const CommandLine line = read(arguments);
        QVERIFY(line.ending);
        QCOMPARE(line.ending->exitCode, 2);
        QCOMPARE(line.ending->text, QStringLiteral("kiwi-outpost: ") + sentence);
    }

    void aProfileThatIsNoObjectIsRefused_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("why");
        QTest::newRow("array") << QStringLiteral("[]")
                               << QStringLiteral("The profile is not a JSON object.");
        QTest::newRow("cut short")
            << QStringLiteral("{")
            << QStringLiteral("The profile is not valid JSON: unterminated object");
    }

    void aProfileThatIsNoObjectIsRefused()
    {
        QFETCH(QString, json);
        QFETCH(QString, why);
        const CommandLine line = read({QStringLiteral("--profile"), json}, profileOfText);
        QCOMPARE(line.ending->exitCode, 2);
        QCOMPARE(line.ending->text, QStringLiteral("kiwi-outpost: %1: %2").arg(json, why));
    }

    void anEmptyArgumentIsRefused()
    {
        QCOMPARE(read({QString()}).ending->text,
                 QStringLiteral("kiwi-outpost: Unexpected argument ''."));
    }

    void helpNamesEveryOption()
    {
        for (const char *option : {"--help", "-help", "-h"}) {
            const CommandLine line = read(words(option));
            QCOMPARE(line.ending->exitCode, 0);
            const QString help = line.ending->text;
            QVERIFY(help.startsWith(QStringLiteral("Usage: kiwi-outpost [options]\n")));
            QStringList named;
            const QRegularExpression pattern(QStringLiteral("--[a-z-]+"));
            for (auto found = pattern.globalMatch(help); found.hasNext();) {
                named.append(found.next().captured());
            }
            QCOMPARE(named, words("--profile --mhz --connect --help --version"));
        }
    }

    void theVersionIsThatOfTheHelpWindow()
    {
        for (const char *option : {"--version", "-version", "-v"}) {
            const CommandLine line = read(words(option));
            QCOMPARE(line.ending->exitCode, 0);
            QCOMPARE(line.ending->text, QStringLiteral("kiwi-outpost " OUTPOST_VERSION));
            QVERIFY(helpHeading().contains(
                QStringLiteral("<h2>PELQ Kiwi Outpost " OUTPOST_VERSION "</h2>")));
        }
    }

    void theOptionsOfQtPass_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<bool>("hasValue");
        for (const char *name :
             {"reverse", "widgetcount", "qdebug", "qdevel", "nograb", "dograb", "testability",
              "style=fusion", "stylesheet=a.qss", "qmljsdebugger=port:1"}) {
            QTest::newRow(name) << QString::fromLatin1(name) << false;
        }
        for (const char *name :
             {"platform", "platformpluginpath", "platformtheme", "plugin", "qwindowgeometry",
              "qwindowicon", "qwindowtitle", "session", "style", "stylesheet", "display",
              "geometry", "icon", "name", "title", "visual", "qmljsdebugger"}) {
            QTest::newRow(name) << QString::fromLatin1(name) << true;
        }
    }

    void theOptionsOfQtPass()
    {
        QFETCH(QString, option);
        QFETCH(bool, hasValue);
        for (const QString &hyphens : {QStringLiteral("-"), QStringLiteral("--")}) {
            QStringList arguments{QStringLiteral("--connect"), hyphens + option};
            if (hasValue) {
                arguments.append(QStringLiteral("--nonsense"));
            }
            arguments.append({QStringLiteral("--mhz"), QStringLiteral("7.074")});
            const CommandLine line = read(arguments);
            QVERIFY2(!line.ending, qPrintable(line.ending ? line.ending->text : QString()));
            QVERIFY(line.options.connects);
            QCOMPARE(*line.options.frequencyMhz, 7.074);
        }
    }

    // Qt ignores it, and so does the station.
    void anOptionOfQtWithoutItsValuePasses() { QVERIFY(!read(words("-platform")).ending); }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::CommandLineTest)
#include "commandline_test.moc"
