#include "base/logline.h"

#include <QLocale>
#include <QTest>
#include <QTime>

namespace outpost
{

namespace
{
QtMsgType lastType;
QString lastCategory;
QString lastMessage;

void remember(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    lastType = type;
    lastCategory = QString::fromLatin1(context.category);
    lastMessage = message;
}
} // namespace

class LogLineTest : public QObject
{
    Q_OBJECT

private slots:
    void localTimeABlankAndTheText();
    void foreignTextKeepsToItsLine_data();
    void foreignTextKeepsToItsLine();
};

void LogLineTest::localTimeABlankAndTheText()
{
    const QtMessageHandler before = qInstallMessageHandler(remember);
    const QString earliest =
        QLocale::c().toString(QTime::currentTime(), QStringLiteral("HH:mm:ss"));
    logLine(QStringLiteral("say \"hello\" — 14.074000 MHz"));
    const QString latest = QLocale::c().toString(QTime::currentTime(), QStringLiteral("HH:mm:ss"));
    qInstallMessageHandler(before);

    QCOMPARE(lastType, QtInfoMsg);
    QCOMPARE(lastCategory, QStringLiteral("default"));
    const QString end = QStringLiteral(" say \"hello\" — 14.074000 MHz");
    QVERIFY2(lastMessage == earliest + end || lastMessage == latest + end, qPrintable(lastMessage));
}

void LogLineTest::foreignTextKeepsToItsLine_data()
{
    QTest::addColumn<QString>("foreign");
    QTest::addColumn<QString>("shown");
    const auto same = [](const char *name, const QString &text) {
        QTest::newRow(name) << text << text;
    };
    same("empty", {});
    same("printable", QStringLiteral("a \"b\" \\n <c> %1 — Grüße 漢字 \U0001f600"));
    same("no-break space", QStringLiteral("a\u00a0b"));
    QTest::newRow("line ends") << QStringLiteral("a\r\nb") << QStringLiteral("a\\u000d\\u000ab");
    QTest::newRow("tab") << QStringLiteral("a\tb") << QStringLiteral("a\\u0009b");
    QTest::newRow("zero") << QString(QChar(0)) << QStringLiteral("\\u0000");
    QTest::newRow("terminal sequence") << QStringLiteral("\x1b[2J") << QStringLiteral("\\u001b[2J");
    QTest::newRow("delete") << QStringLiteral("\x7f") << QStringLiteral("\\u007f");
    QTest::newRow("C1") << QString(QChar(0x9b)) << QStringLiteral("\\u009b");
    QTest::newRow("line separator") << QString(QChar(0x2028)) << QStringLiteral("\\u2028");
    QTest::newRow("paragraph separator") << QString(QChar(0x2029)) << QStringLiteral("\\u2029");
    QTest::newRow("reading direction") << QString(QChar(0x202e)) << QStringLiteral("\\u202e");
    QTest::newRow("tag beyond U+FFFF")
        << QStringLiteral("a\U000e0001b") << QStringLiteral("a\\ue0001b");
    QTest::newRow("music") << QStringLiteral("\U0001d173") << QStringLiteral("\\u1d173");
    QTest::newRow("half a character")
        << QChar(0xd83d) + QStringLiteral("a") << QStringLiteral("\ufffda");
}

void LogLineTest::foreignTextKeepsToItsLine()
{
    QFETCH(QString, foreign);
    QTEST(escapedControls(foreign), "shown");
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::LogLineTest)
#include "logline_test.moc"
