#include "app/logline.h"

#include <QLocale>
#include <QTest>
#include <QTime>

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

QTEST_APPLESS_MAIN(LogLineTest)
#include "logline_test.moc"
