#include "decode/ft8decode.h"
#include "displaystation.h"
#include "tests/fixture/operator.h"

#include <QtTest>
#include <QtWidgets>

namespace outpost
{

// Resizes the window as soon as it is created, before it is first filled.
class EarlyHand : public QObject
{
public:
    EarlyHand() { qApp->installEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *dialog = qobject_cast<QDialog *>(watched);
        if (event->type() == QEvent::WindowTitleChange && dialog) {
            dialog->resize(900, 900);
        }
        return false;
    }
};

class StationDisplaySizeTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theMessageColumnStaysWithinItsBounds_data();
    void theMessageColumnStaysWithinItsBounds();
    void rowsAreAsHighAsTheirText();
    void withoutRowsThereIsRoomForOne();
    void fewRowsAreAllInView();
    void tenRowsNeedNoScrollBar();
    void of25RowsTheLastTenAreInView();
    void openedOn25RowsItShowsTheLastTen();
    void theTableMayGrowDownwardsOnly();
    void theWindowIsAsWideAsItsTable();
    void theWindowIsAsWideAsALongReceiverName();
    void theFirstSizeFitsTheContents();
    void theOperatorsHeightIsKeptUntilTheWindowIsClosed();

private:
    std::unique_ptr<DisplayStation> station;
    QPointer<QDialog> dialog;
    QTableWidget *table = nullptr;

    void show()
    {
        choose(**station, {QStringLiteral("Settings"), QStringLiteral("View"),
                           QStringLiteral("Station Display")});
        dialog = openDialog(QStringLiteral("PELQ Kiwi Outpost Station Display"));
        table = dialog->findChild<QTableWidget *>();
    }
    void append(const QStringList &lines)
    {
        (*station)->appendDecodes(QStringLiteral("10:15:30"), parseDecodeLines(lines));
    }
    int heightWithoutRows() const
    {
        return table->horizontalHeader()->height() + 2 * table->frameWidth() + 2;
    }
    int heightOfRows(int count) const
    {
        int height = 0;
        for (int row = 0; row < count; ++row) {
            height += table->rowHeight(row);
        }
        return height;
    }
    int widthOfColumns() const
    {
        int width = 2 * table->frameWidth() + 2;
        for (int column = 0; column < 5; ++column) {
            width += table->columnWidth(column);
        }
        return width;
    }
    int widthOfScrollBar() const { return table->verticalScrollBar()->sizeHint().width(); }
    bool isAtTheBottom() const
    {
        const QScrollBar *bar = table->verticalScrollBar();
        return bar->isVisible() && bar->maximum() > 0 && bar->value() == bar->maximum();
    }
};

void StationDisplaySizeTest::init()
{
    station = std::make_unique<DisplayStation>();
    show();
}

void StationDisplaySizeTest::cleanup()
{
    station.reset();
}

void StationDisplaySizeTest::theMessageColumnStaysWithinItsBounds_data()
{
    QTest::addColumn<int>("textWidth");
    QTest::addColumn<int>("least");
    QTest::addColumn<int>("most");

    QTest::newRow("short") << 40 << 220 << 220;
    QTest::newRow("between") << 300 << 300 << 330;
    QTest::newRow("long") << 900 << 420 << 420;
}

void StationDisplaySizeTest::theMessageColumnStaysWithinItsBounds()
{
    QFETCH(int, textWidth);
    QFETCH(int, least);
    QFETCH(int, most);
    QString message;
    while (table->fontMetrics().horizontalAdvance(message) < textWidth) {
        message.append(QLatin1Char('I'));
    }
    append({jt9Line(message)});
    QVERIFY(table->columnWidth(4) >= least);
    QVERIFY(table->columnWidth(4) <= most);
    pressClear(**station);
    append({});
    QCOMPARE(table->columnWidth(4), 220);
}

void StationDisplaySizeTest::rowsAreAsHighAsTheirText()
{
    append(jt9Lines(3));
    const int height = heightOfRows(3);
    table->resizeRowsToContents();
    QCOMPARE(height, heightOfRows(3));
}

void StationDisplaySizeTest::withoutRowsThereIsRoomForOne()
{
    QTRY_COMPARE(table->minimumHeight(),
                 heightWithoutRows() + table->verticalHeader()->defaultSectionSize());
    QCOMPARE(table->width(), widthOfColumns());
}

void StationDisplaySizeTest::fewRowsAreAllInView()
{
    append(jt9Lines(3));
    QTest::qWait(0);
    QCOMPARE(table->minimumHeight(), heightWithoutRows() + heightOfRows(3));
    QCOMPARE(table->width(), widthOfColumns());
}

void StationDisplaySizeTest::tenRowsNeedNoScrollBar()
{
    append(jt9Lines(10));
    QTest::qWait(0);
    QCOMPARE(table->minimumHeight(), heightWithoutRows() + heightOfRows(10));
    QCOMPARE(table->width(), widthOfColumns());
    QTRY_VERIFY(!table->verticalScrollBar()->isVisible());
    append({jt9Line(QStringLiteral("CQ"))});
    QCOMPARE(table->minimumHeight(), heightWithoutRows() + heightOfRows(10));
    QCOMPARE(table->width(), widthOfColumns() + widthOfScrollBar());
}

void StationDisplaySizeTest::of25RowsTheLastTenAreInView()
{
    append(jt9Lines(25));
    QTRY_VERIFY(isAtTheBottom());
    QCOMPARE(table->minimumHeight(), heightWithoutRows() + heightOfRows(10));
    QCOMPARE(table->height(), table->minimumHeight());
    QCOMPARE(table->width(), widthOfColumns() + widthOfScrollBar());
    const QRect seen = table->viewport()->rect();
    QVERIFY(seen.contains(table->visualItemRect(table->item(24, 0)).center()));
    QVERIFY(seen.contains(table->visualItemRect(table->item(15, 0)).center()));
    QVERIFY(!seen.contains(table->visualItemRect(table->item(14, 0)).center()));
    table->scrollToTop();
    append({});
    QVERIFY(isAtTheBottom());
}

void StationDisplaySizeTest::openedOn25RowsItShowsTheLastTen()
{
    dialog->close();
    QTRY_VERIFY(!dialog);
    append(jt9Lines(25));
    show();
    QTRY_VERIFY(dialog->isActiveWindow());
    QCOMPARE(table->rowCount(), 25);
    QCOMPARE(table->minimumHeight(), heightWithoutRows() + heightOfRows(10));
    QCOMPARE(table->height(), table->minimumHeight());
    QCOMPARE(table->width(), widthOfColumns() + widthOfScrollBar());
    QCOMPARE(dialog->width(), table->width() + 16);
    QCOMPARE(dialog->size(), dialog->sizeHint());
    QVERIFY(isAtTheBottom());
    const QRect seen = table->viewport()->rect();
    QVERIFY(seen.contains(table->visualItemRect(table->item(24, 0)).center()));
    QVERIFY(seen.contains(table->visualItemRect(table->item(15, 0)).center()));
    QVERIFY(!seen.contains(table->visualItemRect(table->item(14, 0)).center()));
}

void StationDisplaySizeTest::theTableMayGrowDownwardsOnly()
{
    QCOMPARE(table->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
    QCOMPARE(table->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(table->maximumHeight(), 16777215);
    QCOMPARE(table->minimumWidth(), table->maximumWidth());
    QCOMPARE(table->verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    const int before = table->height();
    dialog->resize(dialog->width(), dialog->height() + 100);
    QTRY_COMPARE(table->height(), before + 100);
}

void StationDisplaySizeTest::theWindowIsAsWideAsItsTable()
{
    append({jt9Line(QStringLiteral("CQ K1ABC FN42 ").repeated(20))});
    QVERIFY(table->width() > dialog->findChild<QLabel *>()->sizeHint().width());
    QCOMPARE(dialog->width(), table->width() + 16);
    QCOMPARE(dialog->minimumWidth(), dialog->maximumWidth());
}

void StationDisplaySizeTest::theWindowIsAsWideAsALongReceiverName()
{
    QJsonObject profile = station->profile(station->bridgePort);
    profile.insert(QStringLiteral("Host"), QString(200, QLatin1Char('h')));
    testHome().writeProfile(profile);
    QVERIFY((*station)->profileStore().loadProfile(profileFile()).profile);
    (*station)->startStatusSession();
    append({});
    const int labelWidth = dialog->findChild<QLabel *>()->sizeHint().width();
    QVERIFY(labelWidth > table->width());
    QCOMPARE(dialog->width(), labelWidth + 16);
}

void StationDisplaySizeTest::theFirstSizeFitsTheContents()
{
    dialog->close();
    QTRY_VERIFY(!dialog);
    const EarlyHand hand;
    show();
    QTest::qWait(0);
    const QSize shown = dialog->size();
    dialog->adjustSize();
    QCOMPARE(shown, dialog->size());
}

void StationDisplaySizeTest::theOperatorsHeightIsKeptUntilTheWindowIsClosed()
{
    const int first = dialog->height();
    dialog->resize(dialog->width(), first + 300);
    append(jt9Lines(4));
    QTest::qWait(0);
    QCOMPARE(dialog->height(), first + 300);
    dialog->close();
    QTRY_VERIFY(!dialog);
    show();
    QTest::qWait(0);
    const int again = dialog->height();
    dialog->adjustSize();
    QCOMPARE(again, dialog->height());
    QVERIFY(again < first + 300);
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::StationDisplaySizeTest)
#include "stationdisplaysize_test.moc"
