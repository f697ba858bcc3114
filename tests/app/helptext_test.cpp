#include "app/helptext.h"

#include <QStringList>
#include <QTest>

namespace outpost
{

class HelpTextTest : public QObject
{
    Q_OBJECT

private slots:
    void headingNamesAndIntroducesTheProgram();
    void sameVersionInTheAboutSection();
    void sectionsInOrderEachFollowedByABlankLine();
    void sectionsAreSeparatedByOneBlankLine();
    void fixedLines_data();
    void fixedLines();
    void sixNumberedSteps();
    void theSecondStepTellsWhatToEnter();
    void sectionsBetweenTheStepsAndAbout();
    void aboutHasFiveLines();
};

namespace
{
QStringList lines()
{
    return helpText().split(QLatin1Char('\n'));
}
} // namespace

void HelpTextTest::headingNamesAndIntroducesTheProgram()
{
    QCOMPARE(helpHeading(),
             QStringLiteral("<h2>PELQ Kiwi Outpost v1.03</h2>"
                            "<p>PELQ Kiwi Outpost is a native desktop application that uses a "
                            "KiwiSDR web receiver elsewhere on the network as an FT8 receive "
                            "source and can deliver decodes through the local WSJT bridge.</p>"));
}

void HelpTextTest::sameVersionInTheAboutSection()
{
    const int about = lines().indexOf(QStringLiteral("ABOUT"));
    QCOMPARE(lines().at(about + 2), QStringLiteral("PELQ Kiwi Outpost v1.03"));
}

void HelpTextTest::sectionsInOrderEachFollowedByABlankLine()
{
    QStringList titles;
    const QStringList all = lines();
    for (int i = 0; i + 1 < all.size(); ++i) {
        if (!all.at(i).isEmpty() && all.at(i) == all.at(i).toUpper() && all.at(i + 1).isEmpty()) {
            titles.append(all.at(i));
        }
    }
    QCOMPARE(titles,
             (QStringList{QStringLiteral("GETTING STARTED"), QStringLiteral("DECODE DISPLAY"),
                          QStringLiteral("LOCAL WSJT BRIDGE"),
                          QStringLiteral("IMPORTANT OPERATING NOTES"),
                          QStringLiteral("TROUBLESHOOTING"), QStringLiteral("ABOUT")}));
}

void HelpTextTest::sectionsAreSeparatedByOneBlankLine()
{
    QVERIFY(!helpText().contains(QStringLiteral("\n\n\n")));
    QVERIFY(!helpText().contains(QLatin1Char('\r')));
}

void HelpTextTest::fixedLines_data()
{
    QTest::addColumn<QString>("line");
    const QStringList fixed = {
        QStringLiteral("1. Open Settings > Kiwi Receiver..."),
        QStringLiteral("3. Select the desired FT8 band and frequency."),
        QStringLiteral("4. Under Settings > Decoder, select the decode depth. Two decode passes "
                       "is recommended."),
        QStringLiteral("5. If necessary, use Select Installed jt9.exe... and choose jt9.exe from "
                       "an installed WSJT-X application or installed WSJT-X fork."),
        QStringLiteral("6. Allow one complete 15-second FT8 period for decodes to begin "
                       "appearing."),
    };
    for (const QString &line : fixed) {
        QTest::newRow(qPrintable(line.left(40))) << line;
    }
}

void HelpTextTest::fixedLines()
{
    QFETCH(QString, line);
    QCOMPARE(lines().count(line), 1);
}

void HelpTextTest::sixNumberedSteps()
{
    const int first = lines().indexOf(QStringLiteral("GETTING STARTED")) + 2;
    for (int step = 1; step <= 6; ++step) {
        QVERIFY(lines().at(first + step - 1).startsWith(QStringLiteral("%1. ").arg(step)));
    }
}

// In the order in which a person follows them.
void HelpTextTest::theSecondStepTellsWhatToEnter()
{
    const QString step = lines().at(lines().indexOf(QStringLiteral("GETTING STARTED")) + 3);
    int from = 0;
    for (const char *part : {"2. ", "serial number, host and port",
                             "enable the proxy option when using a proxy address of the receiver "
                             "network",
                             "Apply or OK"}) {
        const int at = step.indexOf(QString::fromLatin1(part), from);
        QVERIFY2(at >= from, part);
        from = at + 1;
    }
}

void HelpTextTest::sectionsBetweenTheStepsAndAbout()
{
    const QString expected = QStringLiteral(
        "DECODE DISPLAY\n"
        "\n"
        "Each decoded FT8 message is displayed with its UTC time, signal strength, timing "
        "offset, audio frequency and decoded message. The lower status line shows the Kiwi "
        "connection, bridge status and total decodes.\n"
        "\n"
        "LOCAL WSJT BRIDGE\n"
        "\n"
        "Use Settings > Bridge > Start Local WSJT Bridge to enable local decode delivery. The "
        "bridge listens on 127.0.0.1:27777. Use Bridge Status to check the listener and "
        "attached clients.\n"
        "\n"
        "IMPORTANT OPERATING NOTES\n"
        "\n"
        "- PELQ Kiwi Outpost is receive-only. It does not control a transmitter.\n"
        "- Kiwi audio capture remains continuous while FT8 decoding is running.\n"
        "- jt9.exe is an external decoder supplied by a separately installed WSJT-X "
        "application. It is not included with PELQ Kiwi Outpost.\n"
        "- Keep the computer clock synchronized for correct FT8 timing.\n"
        "\n"
        "TROUBLESHOOTING\n"
        "\n"
        "No Kiwi connection:\n"
        "Verify the serial number, host, port, proxy selection and internet connection.\n"
        "\n"
        "No FT8 decodes:\n"
        "Verify the selected band and frequency, confirm that an installed jt9.exe is selected, "
        "check for band activity and wait through a complete 15-second FT8 period.\n"
        "\n"
        "Bridge not working:\n"
        "Open Bridge Status and confirm that the listener is active on 127.0.0.1:27777.\n"
        "\n");
    const int first = helpText().indexOf(QLatin1String("DECODE DISPLAY"));
    QCOMPARE(helpText().mid(first, helpText().indexOf(QLatin1String("ABOUT")) - first), expected);
}

void HelpTextTest::aboutHasFiveLines()
{
    const QStringList all = lines();
    const QStringList about = all.mid(all.indexOf(QStringLiteral("ABOUT")) + 2);
    QCOMPARE(about.size(), 5);
    QVERIFY(about.at(1).contains(QStringLiteral(QT_VERSION_STR)));
    QCOMPARE(about.filter(QStringLiteral("runtime")).size(), 1);
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::HelpTextTest)
#include "helptext_test.moc"
