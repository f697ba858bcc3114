// The password is the first line of a file.

#include "daemon/passwordfile.h"
#include "daemon/plainfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <chrono>
#include <future>
#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace outpost
{

class PasswordFileTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir folder;

    QString fileWith(const QByteArray &content)
    {
        QFile file(folder.filePath(QStringLiteral("password")));
        [&] { QVERIFY(file.open(QIODevice::WriteOnly)); }();
        file.write(content);
        return file.fileName();
    }

private slots:
    void theFirstLineIsThePassword_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("password");
        const auto row = [](const char *name, const QByteArray &content, const char *password) {
            QTest::newRow(name) << content << QString::fromUtf8(password);
        };
        row("one line", "hunter2\n", "hunter2");
        row("no end of line", "hunter2", "hunter2");
        row("Windows' end of line", "hunter2\r\nmore\r\n", "hunter2");
        row("more lines", "hunter2\nsecond\n", "hunter2");
        row("blanks are part of it", " hunter 2 \n", " hunter 2 ");
        row("UTF-8", "h\xc3\xbcnter\n", "hünter");
        row("byte order mark", "\xef\xbb\xbfhunter2\n", "hunter2");
        row("the longest", QByteArray(999, 'a') + '\n', QByteArray(999, 'a').constData());
    }

    void theFirstLineIsThePassword()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, password);
        const PasswordOutcome outcome = readPassword(fileWith(content));
        QCOMPARE(outcome.error, QString());
        QCOMPARE(outcome.password, password);
    }

    void whatIsNoPasswordIsRefusedWithoutQuotingIt_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("why");
        const auto row = [](const char *name, const QByteArray &content, const char *why) {
            QTest::newRow(name) << content << QString::fromUtf8(why);
        };
        const char *empty = "The first line is empty; it must be the password.";
        row("empty file", "", empty);
        row("empty line", "\nhunter2\n", empty);
        row("byte order mark alone", "\xef\xbb\xbf\n", empty);
        row("no UTF-8", "hunter\xff\n", "The first line is not UTF-8.");
        row("cut UTF-8", "hunter\xc3", "The first line is not UTF-8.");
        row("tab", "hunter\t2\n", "The first line holds a control character.");
        row("NUL", QByteArray("hunter\0002\n", 9), "The first line holds a control character.");
        row("too long", QByteArray(1001, 'a'), "The first line is longer than 1000 bytes.");
    }

    void whatIsNoPasswordIsRefusedWithoutQuotingIt()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, why);
        const QString path = fileWith(content);
        const PasswordOutcome outcome = readPassword(path);
        QCOMPARE(outcome.password, QString());
        QCOMPARE(outcome.error, path + QStringLiteral(": ") + why);
    }

#ifdef Q_OS_UNIX
    void aPipeIsNotWaitedFor()
    {
        const QString path = folder.filePath(QStringLiteral("pipe"));
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        auto read = std::async(std::launch::async, [&] { return readPassword(path); });
        const auto isRead = [&] {
            return read.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        };
        const bool waits = !QTest::qWaitFor(isRead, 5000);
        if (waits) { // lets the thread end
            QFile writer(path);
            QVERIFY(writer.open(QIODevice::WriteOnly));
        }
        QVERIFY(!waits);
        QCOMPARE(read.get().error,
                 path + QStringLiteral(": It is a pipe or a device, not a file."));
        QCOMPARE(whyNotPlain(QStringLiteral("/dev/null")),
                 QStringLiteral("It is a pipe or a device, not a file."));
    }
#endif

    void aFileThatCannotBeReadIsNamed()
    {
        const QString path = folder.filePath(QStringLiteral("none"));
        QCOMPARE(readPassword(path).error, path + QStringLiteral(": No such file or directory"));
        QVERIFY(readPassword(folder.path()).error.startsWith(folder.path() + QStringLiteral(": ")));
    }
};

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::PasswordFileTest)
#include "passwordfile_test.moc"
