#include "bridgeclient.h"
#include "decode/ft8decode.h"
#include "displaystation.h"
#include "tabstops.h"
#include "tests/fixture/operator.h"

#include <QtTest>
#include <QtWidgets>

namespace outpost
{

using CloseAction = std::function<void(QDialog *)>;
} // namespace outpost

Q_DECLARE_METATYPE(outpost::CloseAction)

namespace outpost
{

static const QString title = QStringLiteral("PELQ Kiwi Outpost Station Display");
static const QStringList entry{QStringLiteral("Settings"), QStringLiteral("View"),
                               QStringLiteral("Station Display")};

class StationDisplayTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void itIsASmallWindowOfTheStation();
    void itsTableIsForReading();
    void theEntryShowsTheSameWindowAgain();
    void itClosesByKeyAndButton_data();
    void itClosesByKeyAndButton();
    void tabReachesTheTableAndTheCloseButton();
    void withoutASessionAndDecodes();
    void withASessionAndDecodes();
    void connectedTime_data();
    void connectedTime();
    void theSnrLineTakesWholeNumbersOnly_data();
    void theSnrLineTakesWholeNumbersOnly();
    void onlyTheLatestPeriodCounts();
    void aLastRowWithoutATimeLeavesThePeriodEmpty();
    void theBridgeLine();
    void itRefreshesEveryFiveSeconds();
    void itCopiesAllRowsAsTextOnly();
    void updatesAreSuspendedWhileItCopies();
    void aMissingCellIsCopiedAsEmptyText();
    void aClosedWindowIsLeftAlone();

private:
    std::unique_ptr<DisplayStation> station;
    QPointer<QDialog> dialog;

    void show()
    {
        choose(**station, entry);
        dialog = openDialog(title);
    }
    QStringList lines() const
    {
        return dialog->findChild<QLabel *>()->text().split(QLatin1Char('\n'));
    }
    QTableWidget *table() const { return dialog->findChild<QTableWidget *>(); }
};

void StationDisplayTest::init()
{
    station = std::make_unique<DisplayStation>(QStringList{QStringLiteral("W1AW")});
    show();
    QVERIFY(dialog);
    QTRY_VERIFY(dialog->isActiveWindow());
}

void StationDisplayTest::cleanup()
{
    station.reset();
    QVERIFY(!dialog);
}

void StationDisplayTest::itIsASmallWindowOfTheStation()
{
    QCOMPARE(dialog->parentWidget(), station->window.get());
    QVERIFY(!dialog->isModal());
    QVERIFY(dialog->testAttribute(Qt::WA_DeleteOnClose));
    QVERIFY(!dialog->isSizeGripEnabled());
    QCOMPARE(dialog->layout()->contentsMargins(), QMargins(8, 8, 8, 8));
    QCOMPARE(dialog->layout()->spacing(), 6);
    QCOMPARE(dialog->layout()->sizeConstraint(), QLayout::SetMinimumSize);
    QVERIFY(qobject_cast<QVBoxLayout *>(dialog->layout()));
    auto *label = qobject_cast<QLabel *>(dialog->layout()->itemAt(0)->widget());
    QVERIFY(label && label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    QCOMPARE(label->textFormat(), Qt::PlainText); // a host name may look like markup
    QVERIFY(qobject_cast<QTableWidget *>(dialog->layout()->itemAt(1)->widget()));
    auto *box = qobject_cast<QDialogButtonBox *>(dialog->layout()->itemAt(2)->widget());
    QVERIFY(box);
    QCOMPARE(box->standardButtons(), QDialogButtonBox::Close);
    QCOMPARE(dialog->layout()->count(), 3);
}

void StationDisplayTest::itsTableIsForReading()
{
    QStringList headers;
    for (int column = 0; column < table()->columnCount(); ++column) {
        headers.append(table()->horizontalHeaderItem(column)->text());
    }
    QCOMPARE(headers.join(QLatin1Char(',')), QStringLiteral("Time,SNR,DT,DF,Message"));
    QVERIFY(table()->verticalHeader()->isHidden());
    QVERIFY(!table()->horizontalHeader()->stretchLastSection());
    QVERIFY(!table()->wordWrap());
    QCOMPARE(table()->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(table()->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table()->selectionMode(), QAbstractItemView::SingleSelection);
}

void StationDisplayTest::theEntryShowsTheSameWindowAgain()
{
    station->nowMs += 1000;
    (*station)->startStatusSession();
    QCOMPARE(lines().at(0), QStringLiteral("Receiver: Disconnected"));
    (*station)->activateWindow();
    QTRY_VERIFY(!dialog->isActiveWindow());
    QVERIFY(bringsToFront(dialog, [this] { choose(**station, entry); }));
    QTRY_VERIFY(dialog->isActiveWindow());
    dialog->hide();
    choose(**station, entry);
    QCOMPARE(openDialog(title), dialog.data());
    QCOMPARE((*station)->findChildren<QDialog *>().size(), 1);
    QCOMPARE(lines().at(0), QStringLiteral("Receiver: receiver.test:8073"));
}

void StationDisplayTest::itClosesByKeyAndButton_data()
{
    QTest::addColumn<CloseAction>("close");

    const auto row = [](const char *name, const CloseAction &close) {
        QTest::newRow(name) << close;
    };
    row("Escape", [](QDialog *shown) { QTest::keyClick(shown, Qt::Key_Escape); });
    row("Enter", [](QDialog *shown) { QTest::keyClick(shown->focusWidget(), Qt::Key_Return); });
    row("Close", [](QDialog *shown) {
        auto *box = shown->findChild<QDialogButtonBox *>();
        QTest::mouseClick(box->button(QDialogButtonBox::Close), Qt::LeftButton);
    });
    row("the title bar", [](QDialog *shown) { shown->close(); });
}

void StationDisplayTest::itClosesByKeyAndButton()
{
    QFETCH(CloseAction, close);
    close(dialog);
    QTRY_VERIFY(!dialog);
    QVERIFY((*station)->findChildren<QDialog *>().isEmpty());
    show();
    QVERIFY(dialog);
}

void StationDisplayTest::tabReachesTheTableAndTheCloseButton()
{
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(3)));
    QStringList stops = tabStops(dialog);
    stops.sort();
    QCOMPARE(stops, (QStringList{QStringLiteral("Close"), QStringLiteral("Decodes")}));
}

void StationDisplayTest::withoutASessionAndDecodes()
{
    QCOMPARE(
        lines(),
        (QStringList{QStringLiteral("Receiver: Disconnected"), QStringLiteral("Frequency: --"),
                     QStringLiteral("Connected time: --"), QStringLiteral("Session decodes: 0"),
                     QStringLiteral("Latest FT8 period: --"),
                     QStringLiteral("Latest-period decodes: 0"),
                     QStringLiteral("Strongest / weakest SNR: -- / -- dB"),
                     QStringLiteral("Local WSJT bridge: Listening — 0 client(s)")}));
}

void StationDisplayTest::withASessionAndDecodes()
{
    (*station)->startStatusSession();
    station->nowMs += 3725000;
    (*station)->appendDecodes(
        QStringLiteral("10:15:30"),
        parseDecodeLines({jt9Line(QStringLiteral("CQ K1ABC"), 700, QStringLiteral("-21")),
                          jt9Line(QStringLiteral("CQ W1AW"), 800, QStringLiteral("+04")),
                          jt9Line(QStringLiteral("CQ K9ZZ"), 900, QStringLiteral("-3"))}));
    QCOMPARE(lines(), (QStringList{QStringLiteral("Receiver: receiver.test:8073"),
                                   QStringLiteral("Frequency: 14.074000 MHz"),
                                   QStringLiteral("Connected time: 01:02:05"),
                                   QStringLiteral("Session decodes: 3"),
                                   QStringLiteral("Latest FT8 period: 10:15:30"),
                                   QStringLiteral("Latest-period decodes: 3"),
                                   QStringLiteral("Strongest / weakest SNR: 4 / -21 dB"),
                                   QStringLiteral("Local WSJT bridge: Listening — 0 client(s)")}));
}

void StationDisplayTest::connectedTime_data()
{
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<QString>("text");

    const auto row = [](const char *text, qint64 elapsedMs) {
        QTest::newRow(text) << elapsedMs << QString::fromLatin1(text);
    };
    row("00:00:00", 999);
    row("00:00:01", 1000);
    row("00:00:59", 59999);
    row("23:59:59", 86399000);
    row("1d 00:00:01", 86401000);
    QTest::newRow("the clock was set back") << qint64(-7200000) << QStringLiteral("00:00:00");
}

void StationDisplayTest::connectedTime()
{
    QFETCH(qint64, elapsedMs);
    QFETCH(QString, text);
    (*station)->startStatusSession();
    station->nowMs += elapsedMs;
    choose(**station, entry);
    QCOMPARE(lines().at(2), QStringLiteral("Connected time: ") + text);
}

void StationDisplayTest::theSnrLineTakesWholeNumbersOnly_data()
{
    QTest::addColumn<QStringList>("snrs");
    QTest::addColumn<QString>("shown");

    const auto row = [](const char *name, const char *snrs, const char *shown) {
        QTest::newRow(name) << QString::fromLatin1(snrs).split(QLatin1Char(','))
                            << QString::fromLatin1(shown);
    };
    row("one", "-7", "-7 / -7");
    row("below zero", "-7,-24,-1", "-1 / -24");
    row("some are no integer", "-7,x,12.5,-9,0x7f", "-7 / -9");
    row("none is an integer", "x,-3.5", "-- / --");
}

void StationDisplayTest::theSnrLineTakesWholeNumbersOnly()
{
    QFETCH(QStringList, snrs);
    QFETCH(QString, shown);
    QStringList batch;
    for (const QString &snr : snrs) {
        batch.append(jt9Line(QStringLiteral("CQ"), 500 + batch.size(), snr));
    }
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(batch));
    QCOMPARE(lines().at(5), QStringLiteral("Latest-period decodes: %1").arg(snrs.size()));
    QCOMPARE(lines().at(6), QStringLiteral("Strongest / weakest SNR: %1 dB").arg(shown));
}

void StationDisplayTest::onlyTheLatestPeriodCounts()
{
    const auto one = [](const char *snr) {
        return QStringList{jt9Line(QStringLiteral("CQ"), 500, QString::fromLatin1(snr))};
    };
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(one("20")));
    (*station)->appendDecodes(QStringLiteral("10:15:45"), parseDecodeLines(one("-5")));
    (*station)->appendDecodes(QStringLiteral(" 10:15:45 "), parseDecodeLines(one("-6")));
    QCOMPARE(lines().at(4), QStringLiteral("Latest FT8 period: 10:15:45"));
    QCOMPARE(lines().at(5), QStringLiteral("Latest-period decodes: 2"));
    QCOMPARE(lines().at(6), QStringLiteral("Strongest / weakest SNR: -5 / -6 dB"));
}

void StationDisplayTest::aLastRowWithoutATimeLeavesThePeriodEmpty()
{
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(2)));
    decodeTableOf(**station)->item(1, 0)->setText(QStringLiteral(" "));
    choose(**station, entry);
    QCOMPARE(lines().at(4), QStringLiteral("Latest FT8 period: "));
    QCOMPARE(lines().at(5), QStringLiteral("Latest-period decodes: 0"));
    QCOMPARE(lines().at(6), QStringLiteral("Strongest / weakest SNR: -- / -- dB"));
}

void StationDisplayTest::theBridgeLine()
{
    const BridgeClient first(station->bridgePort);
    const BridgeClient second(station->bridgePort);
    QVERIFY(first.waitForGreeting() && second.waitForGreeting());
    choose(**station, entry);
    QCOMPARE(lines().at(7), QStringLiteral("Local WSJT bridge: Listening — 2 client(s)"));
    choose(**station, {QStringLiteral("Settings"), QStringLiteral("Bridge"),
                       QStringLiteral("Stop Local WSJT Bridge")});
    choose(**station, entry);
    QCOMPARE(lines().at(7), QStringLiteral("Local WSJT bridge: Stopped"));
}

void StationDisplayTest::itRefreshesEveryFiveSeconds()
{
    auto *timer = dialog->findChild<QTimer *>({}, Qt::FindDirectChildrenOnly);
    QVERIFY(timer && timer->isActive() && !timer->isSingleShot());
    QCOMPARE(timer->interval(), 5000);
    (*station)->startStatusSession();
    timer->setInterval(1);
    QTRY_COMPARE(lines().at(2), QStringLiteral("Connected time: 00:00:00"));
    station->nowMs += 5000;
    QTRY_COMPARE(lines().at(2), QStringLiteral("Connected time: 00:00:05"));
}

void StationDisplayTest::itCopiesAllRowsAsTextOnly()
{
    for (const char *label : {"10:15:15", "10:15:30", "10:15:45"}) {
        (*station)->appendDecodes(QString::fromLatin1(label),
                                  parseDecodeLines({jt9Line(QStringLiteral("CQ W1AW")),
                                                    jt9Line(QStringLiteral("CQ K1ABC"))}));
    }
    const QTableWidget *original = decodeTableOf(**station);
    QVERIFY(original->item(0, 0)->data(Qt::BackgroundRole).isValid());
    QCOMPARE(table()->rowCount(), 6);
    QCOMPARE(allRows(*table()), allRows(*original));
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 5; ++column) {
            const QTableWidgetItem *item = table()->item(row, column);
            QCOMPARE(item->flags(), QTableWidgetItem().flags() & ~Qt::ItemIsEditable);
            QVERIFY(!item->data(Qt::BackgroundRole).isValid());
            QVERIFY(!item->data(Qt::ForegroundRole).isValid());
        }
    }
    QVERIFY(table()->updatesEnabled());
    pressClear(**station);
    choose(**station, entry);
    QCOMPARE(table()->rowCount(), 0);
}

void StationDisplayTest::updatesAreSuspendedWhileItCopies()
{
    QList<bool> updates;
    const auto note = [&] { updates.append(table()->updatesEnabled()); };
    connect(table()->model(), &QAbstractItemModel::rowsInserted, table(), note);
    connect(table()->model(), &QAbstractItemModel::dataChanged, table(), note);
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(2)));
    QVERIFY(!updates.isEmpty());
    QVERIFY(!updates.contains(true));
    QVERIFY(table()->updatesEnabled());
}

void StationDisplayTest::aMissingCellIsCopiedAsEmptyText()
{
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(2)));
    delete decodeTableOf(**station)->takeItem(0, 2);
    choose(**station, entry);
    QVERIFY(table()->item(0, 2));
    QCOMPARE(table()->item(0, 2)->text(), QString());
    QCOMPARE(table()->rowCount(), 2);
}

void StationDisplayTest::aClosedWindowIsLeftAlone()
{
    dialog->close();
    QTRY_VERIFY(!dialog);
    (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(jt9Lines(2)));
    QVERIFY(!openDialog(title));
    show();
    QCOMPARE(table()->rowCount(), 2);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StationDisplayTest)
#include "stationdisplay_test.moc"
