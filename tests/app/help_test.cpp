#include "app/helptext.h"
#include "decode/ft8decode.h"
#include "tests/fixture/teststation.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QWindow>
#include <QtTest>

namespace outpost
{

class HelpTest : public QObject
{
    Q_OBJECT

private slots:
    void oneDialogWithHeadingTextAndOk();
    void theMainWindowTakesNoInputMeanwhile();
    void okAccepts();
    void escapeAndReturnCloseIt_data();
    void escapeAndReturnCloseIt();
    void theWindowsCloseButtonCloses();
};

namespace
{
// Opens the dialog from the menu; `act` must close it. Returns when it is closed.
void inHelp(const TestStation &station, const std::function<void(QDialog *)> &act)
{
    bool opened = false;
    whenDialogOpens([&](QWidget *widget) {
        opened = true;
        act(qobject_cast<QDialog *>(widget));
        widget->close();
    });
    choose(*station.window,
           {QStringLiteral("Help"), QStringLiteral("Help / About PELQ Kiwi Outpost")});
    QVERIFY(opened);
    QVERIFY2(station.window->findChildren<QDialog *>().isEmpty(), "it is still there");
}
} // namespace

void HelpTest::oneDialogWithHeadingTextAndOk()
{
    const TestStation station;
    inHelp(station, [&](QDialog *dialog) {
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Help / About PELQ Kiwi Outpost"));
        QCOMPARE(dialog->size(), QSize(660, 560));
        QCOMPARE(dialog->parentWidget(), station.window.get());
        const auto *layout = qobject_cast<QVBoxLayout *>(dialog->layout());
        QVERIFY(layout != nullptr);
        QCOMPARE(layout->count(), 3);

        const auto *heading = qobject_cast<QLabel *>(layout->itemAt(0)->widget());
        QVERIFY(heading != nullptr);
        QCOMPARE(heading->text(), helpHeading());
        QCOMPARE(heading->textFormat(), Qt::RichText);
        QVERIFY(heading->wordWrap());

        const auto *text = qobject_cast<QPlainTextEdit *>(layout->itemAt(1)->widget());
        QVERIFY(text != nullptr);
        QCOMPARE(text->toPlainText(), helpText());
        QVERIFY(text->isReadOnly());
        QCOMPARE(text->lineWrapMode(), QPlainTextEdit::WidgetWidth);
        QCOMPARE(layout->stretch(0), 0);
        QCOMPARE(layout->stretch(1), 1);
        QCOMPARE(layout->stretch(2), 0);

        const auto *buttons = qobject_cast<QDialogButtonBox *>(layout->itemAt(2)->widget());
        QVERIFY(buttons != nullptr);
        QCOMPARE(buttons->buttons(),
                 QList<QAbstractButton *>{buttons->button(QDialogButtonBox::Ok)});
    });
}

void HelpTest::theMainWindowTakesNoInputMeanwhile()
{
    const TestStation station;
    station.window->appendDecodes(
        QStringLiteral("14:23:15"),
        parseDecodeLines({QStringLiteral("142315 -10  0.1  500 ~  CQ W1ABC FN42")}));
    QWidget *clear = station.window->findChild<QPushButton *>();
    const QPoint button = clear->mapTo(station.window.get(), clear->rect().center());
    const auto clickClear = [&] {
        QTest::mouseClick(station.window->windowHandle(), Qt::LeftButton, {}, button);
    };
    inHelp(station, [&](QDialog *dialog) {
        QVERIFY(dialog->isModal());
        clickClear();
        QCOMPARE(decodeTableOf(*station.window)->rowCount(), 1);
    });
    clickClear();
    QCOMPARE(decodeTableOf(*station.window)->rowCount(), 0);
}

void HelpTest::okAccepts()
{
    const TestStation station;
    inHelp(station, [](QDialog *dialog) {
        const auto *buttons = dialog->findChild<QDialogButtonBox *>();
        QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
        QVERIFY(!dialog->isVisible());
        QCOMPARE(dialog->result(), static_cast<int>(QDialog::Accepted));
    });
}

void HelpTest::escapeAndReturnCloseIt_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("result");
    QTest::newRow("Escape") << Qt::Key_Escape << static_cast<int>(QDialog::Rejected);
    QTest::newRow("Return") << Qt::Key_Return << static_cast<int>(QDialog::Accepted);
    QTest::newRow("Enter") << Qt::Key_Enter << static_cast<int>(QDialog::Accepted);
}

// Regardless of the focus, which is on the text.
void HelpTest::escapeAndReturnCloseIt()
{
    QFETCH(Qt::Key, key);
    const TestStation station;
    inHelp(station, [&](QDialog *dialog) {
        QTRY_VERIFY(dialog->focusWidget() != nullptr);
        QTest::keyClick(dialog->focusWidget(), key);
        QVERIFY(!dialog->isVisible());
        QTEST(dialog->result(), "result");
    });
}

void HelpTest::theWindowsCloseButtonCloses()
{
    const TestStation station;
    inHelp(station, [](QDialog *dialog) {
        dialog->windowHandle()->close();
        QVERIFY(!dialog->isVisible());
        QCOMPARE(dialog->result(), static_cast<int>(QDialog::Rejected));
    });
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::HelpTest)
#include "help_test.moc"
