#include "bridgeclient.h"
#include "decode/ft8decode.h"
#include "displaystation.h"
#include "tabstops.h"
#include "tests/fixture/operator.h"

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

namespace outpost
{

namespace
{

const QString title = QStringLiteral("PELQ Kiwi Outpost Bridge Status");

} // namespace

class BridgeStatusTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void itIsASmallWindowOfTheStation();
    void theEntryShowsTheSameWindowAgain();
    void itClosesByEscapeEnterAndButton();
    void tabReachesTheCloseButton();
    void aFreshBridgeListensAndHasSentNothing();
    void itShowsClientsAndTheLastOutput();
    void theLastOutputSurvivesAStop();
    void aStoppedBridgeShowsNoError();
    void aFailedStartIsShownUntilAGoodOne();
    void aFailureBeforeTheMenuWasUsedIsNotShown();
    void theMenuRefreshesAtOnceAndTheTimerEverySecond();
    void itsSizeFollowsItsText();
    void theAttachmentBoxOfAListeningBridge();
    void theAttachmentBoxOfAStoppedBridge();

private:
    std::unique_ptr<DisplayStation> station;
    QPointer<QDialog> dialog;

    void chooseBridge(const char *entry)
    {
        choose(**station,
               {QStringLiteral("Settings"), QStringLiteral("Bridge"), QString::fromLatin1(entry)});
    }
    void show()
    {
        choose(**station, {QStringLiteral("Settings"), QStringLiteral("View"),
                           QStringLiteral("Bridge Status")});
        dialog = openDialog(title);
    }
    QString text() const { return dialog->findChild<QLabel *>()->text(); }
    QTimer *timer() const { return dialog->findChild<QTimer *>({}, Qt::FindDirectChildrenOnly); }
    QString listening(int clients) const
    {
        return QStringLiteral("Bridge: Listening on 127.0.0.1:%1 — %2 client(s)\n")
            .arg(station->bridgePort)
            .arg(clients);
    }
};

void BridgeStatusTest::init()
{
    station = std::make_unique<DisplayStation>();
    show();
    QTRY_VERIFY(dialog && dialog->isActiveWindow());
}

void BridgeStatusTest::cleanup()
{
    station.reset();
    QVERIFY(!dialog);
}

void BridgeStatusTest::itIsASmallWindowOfTheStation()
{
    QCOMPARE(dialog->parentWidget(), station->window.get());
    QVERIFY(!dialog->isModal());
    QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
    QVERIFY(!dialog->isSizeGripEnabled());
    const QLayout *layout = dialog->layout();
    QVERIFY(qobject_cast<const QVBoxLayout *>(layout));
    QCOMPARE(layout->contentsMargins(), QMargins(8, 8, 8, 8));
    QCOMPARE(layout->spacing(), 6);
    QCOMPARE(layout->sizeConstraint(), QLayout::SetFixedSize);
    auto *label = qobject_cast<QLabel *>(layout->itemAt(0)->widget());
    QVERIFY(label && label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    QCOMPARE(label->textFormat(), Qt::PlainText);
    auto *box = qobject_cast<QDialogButtonBox *>(layout->itemAt(1)->widget());
    QVERIFY(box);
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Close);
    QCOMPARE(layout->count(), 2);
}

void BridgeStatusTest::theEntryShowsTheSameWindowAgain()
{
    (*station)->findChild<QTcpServer *>()->close(); // without notifying the window
    QCOMPARE(text(), listening(0) + QStringLiteral("Last output: None"));
    (*station)->activateWindow();
    QTRY_VERIFY(!dialog->isActiveWindow());
    QVERIFY(bringsToFront(dialog, [this] { show(); }));
    QTRY_VERIFY(dialog->isActiveWindow());
    dialog->hide();
    show();
    QCOMPARE((*station)->findChildren<QDialog *>(), QList<QDialog *>{dialog.data()});
    QCOMPARE(text(), QStringLiteral("Bridge: Stopped\nLast error: None"));
}

void BridgeStatusTest::itClosesByEscapeEnterAndButton()
{
    QTest::keyClick(dialog, Qt::Key_Escape);
    QTRY_VERIFY(!dialog);
    choose(**station,
           {QStringLiteral("Settings"), QStringLiteral("Bridge"),
            QStringLiteral("Stop Local WSJT Bridge")}); // must not touch the closed window
    show();
    QTRY_VERIFY(dialog->focusWidget());
    QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    QTRY_VERIFY(!dialog);
    show();
    auto *box = dialog->findChild<QDialogButtonBox *>();
    QTest::mouseClick(box->button(QDialogButtonBox::Close), Qt::LeftButton);
    QTRY_VERIFY(!dialog);
    QVERIFY((*station)->findChildren<QDialog *>().isEmpty());
    chooseBridge("Stop Local WSJT Bridge");
    QVERIFY(!openDialog(title));
}

void BridgeStatusTest::tabReachesTheCloseButton()
{
    QCOMPARE(tabStops(dialog), QStringList{QStringLiteral("Close")});
}

void BridgeStatusTest::aFreshBridgeListensAndHasSentNothing()
{
    QCOMPARE(text(), listening(0) + QStringLiteral("Last output: None"));
}

// The count is that of the batch, including decodes that were not sent.
void BridgeStatusTest::itShowsClientsAndTheLastOutput()
{
    const QStringList batch{jt9Line(QStringLiteral("CQ K1ABC")),
                            jt9Line(QStringLiteral("CQ K1ABC")), QStringLiteral("no decode")};
    (*station)->onDecodesDelivered(QStringLiteral("10:15:30"), parseDecodeLines(batch));
    show();
    QCOMPARE(text(), listening(0) + QStringLiteral("Last output: None"));

    const BridgeClient first(station->bridgePort);
    const BridgeClient second(station->bridgePort);
    QVERIFY(first.waitForGreeting() && second.waitForGreeting());
    (*station)->onDecodesDelivered(QStringLiteral("10:15:30"), parseDecodeLines(batch));
    const QString sentThree = QStringLiteral("Last output: 10:15:44 UTC — 3 FT8 decodes sent");
    show();
    QCOMPARE(text(), listening(2) + sentThree);

    station->nowMs += 15000;
    (*station)->onDecodesDelivered(QStringLiteral("10:15:45"), {});
    show();
    QCOMPARE(text(), listening(2) + sentThree);
    (*station)->onDecodesDelivered(QStringLiteral("10:15:45"),
                                   parseDecodeLines({QStringLiteral("no decode")}));
    show();
    QCOMPARE(text(),
             listening(2) + QStringLiteral("Last output: 10:15:59 UTC — 1 FT8 decodes sent"));
}

void BridgeStatusTest::theLastOutputSurvivesAStop()
{
    const BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
    (*station)->onDecodesDelivered(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(2)));
    chooseBridge("Stop Local WSJT Bridge");
    QCOMPARE(text(), QStringLiteral("Bridge: Stopped\nLast error: None"));
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(text(),
             listening(0) + QStringLiteral("Last output: 10:15:44 UTC — 2 FT8 decodes sent"));
}

void BridgeStatusTest::aStoppedBridgeShowsNoError()
{
    chooseBridge("Stop Local WSJT Bridge");
    QCOMPARE(text(), QStringLiteral("Bridge: Stopped\nLast error: None"));
}

void BridgeStatusTest::aFailedStartIsShownUntilAGoodOne()
{
    chooseBridge("Stop Local WSJT Bridge");
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost, static_cast<quint16>(station->bridgePort)));
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(text(), QStringLiteral("Bridge: Stopped\nLast error: Bridge failed to start"));
    other.close();
    chooseBridge("Start Local WSJT Bridge");
    QCOMPARE(text(), listening(0) + QStringLiteral("Last output: None"));
    chooseBridge("Stop Local WSJT Bridge");
    QCOMPARE(text(), QStringLiteral("Bridge: Stopped\nLast error: None"));
}

void BridgeStatusTest::aFailureBeforeTheMenuWasUsedIsNotShown()
{
    MainWindow second(testOptions(station->clock())); // the same profile, so the port is taken
    choose(second,
           {QStringLiteral("Settings"), QStringLiteral("View"), QStringLiteral("Bridge Status")});
    const auto *shown = second.findChild<QDialog *>()->findChild<QLabel *>();
    QCOMPARE(shown->text(), QStringLiteral("Bridge: Stopped\nLast error: None"));
}

void BridgeStatusTest::theMenuRefreshesAtOnceAndTheTimerEverySecond()
{
    QVERIFY(timer() && timer()->isActive() && !timer()->isSingleShot());
    QCOMPARE(timer()->interval(), 1000);
    const BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
    timer()->setInterval(1);
    QTRY_COMPARE(text(), listening(1) + QStringLiteral("Last output: None"));
}

void BridgeStatusTest::itsSizeFollowsItsText()
{
    const QSize wide = dialog->size();
    QCOMPARE(wide, dialog->sizeHint());
    chooseBridge("Stop Local WSJT Bridge");
    QTRY_VERIFY(dialog->width() < wide.width());
    QCOMPARE(dialog->size(), dialog->sizeHint());
    dialog->resize(900, 900);
    QCOMPARE(dialog->size(), dialog->sizeHint());
}

struct AttachmentBox {
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QMessageBox::StandardButtons buttons;
    Qt::TextFormat format = Qt::AutoText;
    QWidget *parent = nullptr;
};

namespace
{

AttachmentBox attachmentBox(const MainWindow &window)
{
    AttachmentBox seen;
    whenDialogOpens([&seen](QWidget *dialog) {
        if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
            seen = {box->windowTitle(),     box->text(),       box->icon(),
                    box->standardButtons(), box->textFormat(), box->parentWidget()};
        }
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    choose(window, {QStringLiteral("Settings"), QStringLiteral("Bridge"),
                    QStringLiteral("Test WSJT Attachment")});
    return seen;
}

} // namespace

void BridgeStatusTest::theAttachmentBoxOfAListeningBridge()
{
    const BridgeClient client(station->bridgePort);
    QVERIFY(client.waitForGreeting());
    const AttachmentBox box = attachmentBox(**station);
    QCOMPARE(box.title, QStringLiteral("WSJT Bridge Status"));
    QCOMPARE(box.text, QStringLiteral("Listening on 127.0.0.1:%1\nConnected WSJT clients: 1\n"
                                      "Ready handshake: PELQBRIDGE2|READY")
                           .arg(station->bridgePort));
    QCOMPARE(box.icon, QMessageBox::Information);
    QCOMPARE(box.buttons, QMessageBox::Ok);
    QCOMPARE(box.format, Qt::PlainText);
    QCOMPARE(box.parent, station->window.get());
}

void BridgeStatusTest::theAttachmentBoxOfAStoppedBridge()
{
    chooseBridge("Stop Local WSJT Bridge");
    const AttachmentBox box = attachmentBox(**station);
    QCOMPARE(box.title, QStringLiteral("WSJT Bridge Status"));
    QCOMPARE(box.text, QStringLiteral("The local WSJT bridge is stopped."));
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::BridgeStatusTest)
#include "bridgestatus_test.moc"
