// The dialogs of the store without a station: what they ask for, report and show.

#include "store/receiverdialog.h"
#include "store/statuslogwindow.h"
#include "tests/fixture/home.h"
#include "tests/fixture/receiverform.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace outpost
{

namespace
{
const GoodReceiver first{QStringLiteral(" first "), 8073, 10.1, 3};
const GoodReceiver second{QStringLiteral("second"), 8074, 7.074, 1};
} // namespace

class StoreDialogsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        told.clear();
        removal = {};
    }

    void nothingIsToldByMakingAndClosing()
    {
        {
            ReceiverDialog dialog(values(), callbacks(), &window);
            dialog.show();
            receiverForm(&dialog).close->click();
            QVERIFY(!dialog.isVisible());
        }
        QCOMPARE(told, QStringList());
    }

    void whatIsEnteredIsApplied()
    {
        ReceiverDialog dialog(values(), callbacks(), &window);
        const ReceiverForm form = receiverForm(&dialog);
        form.host->setText(QStringLiteral(" Kiwi.Example "));
        form.port->setText(QStringLiteral("8075"));
        form.mhz->setText(QStringLiteral("7.0740000001"));
        form.apply->click();
        QCOMPARE(told, QStringList(QStringLiteral("apply Kiwi.Example 8075 7.0740000001")));
        QCOMPARE(form.status->text(), QStringLiteral("Disconnected"));
    }

    void whatCannotBeUsedIsToldToNobody()
    {
        ReceiverDialog dialog(values(), callbacks(), &window);
        const ReceiverForm form = receiverForm(&dialog);
        form.port->setText(QStringLiteral("0"));
        form.apply->click();
        QCOMPARE(told, QStringList());
        QCOMPARE(form.status->text(), QStringLiteral("Port must be 1 through 65535."));
    }

    void disconnectingIsTold()
    {
        ReceiverDialog dialog(values(), callbacks(), &window);
        receiverForm(&dialog).disconnectReceiver->click();
        QCOMPARE(told, QStringList(QStringLiteral("disconnect")));
    }

    void theStatusIsSetFromOutside()
    {
        ReceiverDialog dialog(values(), callbacks(), &window);
        dialog.setStatus(QStringLiteral("<b>Connecting"));
        const QLabel *status = receiverForm(&dialog).status;
        QCOMPARE(status->text(), QStringLiteral("<b>Connecting"));
        QCOMPARE(status->textFormat(), Qt::PlainText);
    }

    void aRemovalShowsWhatIsLeft_data()
    {
        QTest::addColumn<int>("outcome");
        QTest::addColumn<int>("items");
        QTest::addColumn<int>("chosen");
        QTest::newRow("removed") << int(ReceiverRemoval::Removed) << 2 << 0;
        QTest::newRow("absent") << int(ReceiverRemoval::WasAbsent) << 2 << 0;
        QTest::newRow("failed") << int(ReceiverRemoval::Failed) << 3 << 1;
    }

    void aRemovalShowsWhatIsLeft()
    {
        QFETCH(int, outcome);
        QFETCH(int, items);
        QFETCH(int, chosen);
        removal = {
            static_cast<ReceiverRemoval::Outcome>(outcome), QStringLiteral("done"), {second}};
        ReceiverDialog dialog(values(), callbacks(), &window);
        const ReceiverForm form = receiverForm(&dialog);
        QVERIFY(!form.remove->isEnabled());
        form.goodReceivers->setCurrentIndex(1);
        form.remove->click();
        QCOMPARE(told, QStringList(QStringLiteral("remove first 8073")));
        QCOMPARE(form.status->text(), QStringLiteral("done"));
        QCOMPARE(form.goodReceivers->count(), items);
        QCOMPARE(form.goodReceivers->currentIndex(), chosen);
        QCOMPARE(form.remove->isEnabled(), chosen > 0);
    }

    void theLogAsksForItsTextUntilItIsClosed()
    {
        int asked = 0;
        QPointer<StatusLogWindow> log = new StatusLogWindow(&window, [&asked] { ++asked; });
        log->refresh(QStringLiteral("one\ntwo"));
        QCOMPARE(asked, 0);
        QCOMPARE(log->findChild<QPlainTextEdit *>()->toPlainText(), QStringLiteral("one\ntwo"));
        auto *timer = log->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(!timer->isActive());
        log->present();
        QVERIFY(log->isVisible());
        QCOMPARE(timer->interval(), 5000);
        timer->setInterval(1);
        QTRY_VERIFY(asked > 1);
        log->close();
        QTRY_VERIFY(!log);
    }

    // When it is shown again, its timer continues.
    void presentingTheLogAgainLeavesItsTimerAlone()
    {
        StatusLogWindow log(&window, [] {});
        log.setAttribute(Qt::WA_DeleteOnClose, false);
        const auto *timer = log.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        log.present();
        QTRY_VERIFY(timer->remainingTime() < 4700);
        log.present();
        QVERIFY(timer->remainingTime() < 4700);
    }

private:
    static ReceiverDialogValues values()
    {
        return {
            QStringLiteral("kiwi"), 8073, 14.074, QStringLiteral("Disconnected"), {first, second}};
    }

    ReceiverDialogCallbacks callbacks()
    {
        return {[this](const ReceiverInput &input) {
                    told.append(QStringLiteral("apply %1 %2 %3")
                                    .arg(input.host, QString::number(input.port),
                                         QString::number(input.frequencyMhz, 'g', 11)));
                },
                [this] { told.append(QStringLiteral("disconnect")); },
                [this](const QString &host, int port) {
                    told.append(QStringLiteral("remove %1 %2").arg(host, QString::number(port)));
                    return removal;
                }};
    }

    QWidget window;
    QStringList told;
    ReceiverRemoval removal{};
};

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StoreDialogsTest)
#include "storedialogs_test.moc"
