// The user logs off while a receiver session is open: Windows first asks the window, then tells it.

#include "tests/fixture/teststation.h"

#include <QApplication>
#include <QJsonArray>
#include <QTest>
#include <QTimer>
#include <qt_windows.h>

namespace outpost
{

namespace
{
int savedSessions()
{
    return jsonFile(logFile()).value(QLatin1String("Sessions")).toArray().size();
}
} // namespace

class LogOffTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        station = std::make_unique<TestStation>();
        station->window->startStatusSession();
    }
    void cleanup() { station.reset(); }

    void oneThatIsCalledOffChangesNothing()
    {
        QVERIFY(agrees());
        tell(false);
        QCoreApplication::processEvents();
        QVERIFY(station->window->isVisible());
        QCOMPARE(savedSessions(), 0);
        QCOMPARE(station->trace.lines(), QStringList());
    }

    void leavingTheEventLoopIsNoLogOff()
    {
        QTimer::singleShot(0, QCoreApplication::instance(), [] { QCoreApplication::quit(); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(savedSessions(), 0); // written when the window ends
        station->window.reset();
        QCOMPARE(savedSessions(), 1);
    }

    void theSessionIsWrittenWhenTheProgramHasBeenTold()
    {
        bool agreed = false;
        int savedWhenTold = 0; // from then on Windows may end the program
        QTimer::singleShot(0, this, [&] {
            agreed = agrees();
            tell(true);
            savedWhenTold = savedSessions();
        });
        QCOMPARE(QCoreApplication::exec(), 0); // unless the event loop ends normally
        QVERIFY(agreed);
        QCOMPARE(savedWhenTold, 1);
        station->window.reset();
        QCOMPARE(savedSessions(), 1);
        QCOMPARE(station->trace.lines(), QStringList(QStringLiteral("Local WSJT bridge stopped.")));
    }

private:
    HWND handle() const { return reinterpret_cast<HWND>(station->window->winId()); }
    bool agrees() const { return SendMessageW(handle(), WM_QUERYENDSESSION, 0, lParam) != 0; }
    void tell(bool ends) const { SendMessageW(handle(), WM_ENDSESSION, ends ? 1 : 0, lParam); }

    static constexpr LPARAM lParam = static_cast<LPARAM>(ENDSESSION_LOGOFF);
    std::unique_ptr<TestStation> station;
};

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "windows"); // only this platform gets the messages
    testHome();
    QApplication application(argc, argv);
    LogOffTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "logoff_test.moc"
