// Lists that the station reads, extends and writes back while another program holds them.

#include "app/mainwindow.h"
#include "base/datapaths.h"
#include "base/lockedfile.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/windows/fileholder.h"

#include <QtTest>

namespace outpost
{

class LockedListsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        testHome().clear();
        testHome().writeProfile({{QStringLiteral("KiwiHost"), QStringLiteral("kiwi.example")},
                                 {QStringLiteral("BridgePort"), freePort()}});
    }

    void aListThatIsLetGoAfterItsReadingIsKept_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("failure");
        QTest::newRow("good receivers")
            << goodReceiversPath() << QByteArray(R"([{"Host": "other"}])")
            << QStringLiteral("GOOD RECEIVER COMMIT FAILED");
        QTest::newRow("status log") << statusLogPath() << QByteArray(R"({"Sessions": [{}]})")
                                    << QStringLiteral("Status log save failed: ");
    }

    // Waiting again for a file that could not be read would end in replacing it unread.
    void aListThatIsLetGoAfterItsReadingIsKept()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, content);
        QFETCH(QString, failure);
        putFile(path, content);
        MainWindow window;
        const LogTrace trace;
        {
            const FileHolder holder(path, lockedFileMs * 3 / 2, {QStringLiteral("exclusive")});
            QVERIFY(holder.holds);
            window.startStatusSession();
            if (path == goodReceiversPath()) {
                window.recordGoodReceiver(1);
            } else {
                window.finishStatusSession();
            }
        }
        QVERIFY(trace.contains(failure));
        QCOMPARE(fileBytes(path), content);
    }
};

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::LockedListsTest)
#include "lockedlists_test.moc"
