// The dialogs on a screen of 400 by 300: that of the offscreen platform, scaled by two.

#include "app/stationfont.h"
#include "base/smallscreen.h"
#include "decode/ft8decode.h"
#include "tests/fixture/teststation.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTableWidget>
#include <QVBoxLayout>
#include <QtTest>
#include <algorithm>

namespace outpost
{

namespace
{

const bool twiceAsLarge = qputenv("QT_SCALE_FACTOR", "2"); // before the application object exists
const QStringList help{QStringLiteral("Help"), QStringLiteral("Help / About PELQ Kiwi Outpost")};
const QStringList highlight{QStringLiteral("Settings"), QStringLiteral("Highlight Calls...")};
const QStringList receiver{QStringLiteral("Settings"), QStringLiteral("Kiwi Receiver...")};

QStringList view(const char *name)
{
    return {QStringLiteral("Settings"), QStringLiteral("View"), QString::fromLatin1(name)};
}

QRect freeArea(const QWidget *window)
{
    return window->screen()->availableGeometry();
}

// Opens the dialog from the menu, calls `act` and closes the dialog, modal or not.
void inDialog(const TestStation &station, const QStringList &entry,
              const std::function<void(QDialog *)> &act)
{
    bool opened = false;
    const auto look = [&](QWidget *dialog) {
        opened = true;
        QTRY_VERIFY(dialog->isActiveWindow());
        act(qobject_cast<QDialog *>(dialog));
        dialog->close();
    };
    const bool modal = entry == help || entry == highlight || entry == receiver;
    if (modal) {
        whenDialogOpens(look);
    }
    choose(*station.window, entry);
    if (!modal) {
        look(openDialog(QStringLiteral("PELQ Kiwi Outpost ") + entry.last()));
    }
    QVERIFY(opened);
}

bool isWhollyInView(const QWidget *widget)
{
    bool inView = widget->isVisible();
    for (const QWidget *around = widget->parentWidget(); around != nullptr;
         around = around->isWindow() ? nullptr : around->parentWidget()) {
        inView &= around->rect().contains({widget->mapTo(around, QPoint()), widget->size()});
    }
    return inView;
}

// Why the dialog is not usable; empty if it is.
QString outOfReach(const QDialog *dialog)
{
    if (!freeArea(dialog).contains(dialog->frameGeometry())) {
        return QStringLiteral("the window leaves the screen");
    }
    const auto *box = dialog->findChild<QDialogButtonBox *>();
    for (const QAbstractButton *button : box->buttons()) {
        if (!isWhollyInView(button)) {
            return button->text();
        }
    }
    return {};
}

QWidget *framedLabel(const QDialog *dialog)
{
    for (QLabel *label : dialog->findChildren<QLabel *>()) {
        if (label->frameShape() == QFrame::StyledPanel) {
            return label;
        }
    }
    return nullptr;
}

template <class Widget>
bool containsAll(const QList<QWidget *> &all, const QList<Widget *> &some)
{
    return !some.isEmpty() && std::all_of(some.begin(), some.end(),
                                          [&](Widget *widget) { return all.contains(widget); });
}

QStringList rows(int count)
{
    QStringList lines;
    for (int i = 0; i < count; ++i) {
        lines.append(QStringLiteral("142315 -10  0.1  %1 ~  CQ K1ABC FN42").arg(500 + i));
    }
    return lines;
}
} // namespace

class SmallScreenTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyButtonIsInReach_data();
    void everyButtonIsInReach();
    void theDialogTakesTheFreeArea_data();
    void theDialogTakesTheFreeArea();
    void whatIsAboveTheButtonsScrolls();
    void aTextThatScrollsByItselfIsLeftToIt_data();
    void aTextThatScrollsByItselfIsLeftToIt();
    void theFirstFieldHasTheKeyboard();
    void whatFitsIsLeftAlone_data();
    void whatFitsIsLeftAlone();
    void aDialogThatGrowsStaysOnTheScreen();
    void aDialogThatGrowsGoesByItsOwnFrame();
    void aRefreshLeavesItsSizeToTheOperator();
    void theKeyboardStaysWhereItWasWhenADialogGrows();
};

void SmallScreenTest::initTestCase()
{
    QVERIFY(twiceAsLarge);
    setStationFont();
    QCOMPARE(QGuiApplication::primaryScreen()->size(), QSize(400, 300));
}

void SmallScreenTest::everyButtonIsInReach_data()
{
    QTest::addColumn<QStringList>("entry");
    QTest::newRow("Help") << help;
    QTest::newRow("Highlight Calls") << highlight;
    QTest::newRow("Kiwi Receiver") << receiver;
    QTest::newRow("Status Log") << view("Status Log");
    QTest::newRow("Station Display") << view("Station Display");
    QTest::newRow("Bridge Status") << view("Bridge Status");
}

void SmallScreenTest::everyButtonIsInReach()
{
    QFETCH(QStringList, entry);
    const TestStation station;
    station.window->appendDecodes(QStringLiteral("14:23:15"), parseDecodeLines(rows(25)));
    inDialog(station, entry, [](QDialog *dialog) { QCOMPARE(outOfReach(dialog), QString()); });
}

void SmallScreenTest::theDialogTakesTheFreeArea_data()
{
    QTest::addColumn<QStringList>("entry");
    QTest::newRow("Help") << help;
    QTest::newRow("Kiwi Receiver") << receiver;
    QTest::newRow("Status Log") << view("Status Log");
}

void SmallScreenTest::theDialogTakesTheFreeArea()
{
    QFETCH(QStringList, entry);
    const TestStation station;
    inDialog(station, entry,
             [](QDialog *dialog) { QCOMPARE(dialog->frameGeometry(), freeArea(dialog)); });
}

// With Tab, the focused control is always visible; the arrow keys scroll to the rest.
void SmallScreenTest::whatIsAboveTheButtonsScrolls()
{
    const TestStation station;
    inDialog(station, receiver, [](QDialog *dialog) {
        const QWidget *status = framedLabel(dialog);
        QVERIFY(status != nullptr && !isWhollyInView(status));
        QList<QWidget *> seen;
        while (!seen.contains(dialog->focusWidget())) {
            seen.append(dialog->focusWidget());
            QVERIFY(isWhollyInView(seen.last()));
            QTest::keyClick(seen.last(), Qt::Key_Tab);
        }
        QVERIFY(containsAll(seen, dialog->findChildren<QLineEdit *>()));
        QVERIFY(containsAll(seen, dialog->findChildren<QComboBox *>()));
        QVERIFY(containsAll(seen, dialog->findChild<QDialogButtonBox *>()->buttons()));

        auto *area = dialog->findChild<QScrollArea *>();
        QVERIFY(seen.contains(area));
        for (int i = 0; i < 40; ++i) {
            QTest::keyClick(area, Qt::Key_Right);
        }
        QVERIFY(isWhollyInView(status));
    });
}

void SmallScreenTest::aTextThatScrollsByItselfIsLeftToIt_data()
{
    QTest::addColumn<QStringList>("entry");
    QTest::newRow("Help") << help;
    QTest::newRow("Status Log") << view("Status Log");
}

void SmallScreenTest::aTextThatScrollsByItselfIsLeftToIt()
{
    QFETCH(QStringList, entry);
    const TestStation station;
    inDialog(station, entry, [](QDialog *dialog) {
        QVERIFY(!scrollsToFitScreen(*dialog));
        QVERIFY(isWhollyInView(dialog->findChild<QPlainTextEdit *>()));
    });
}

void SmallScreenTest::theFirstFieldHasTheKeyboard()
{
    const TestStation station;
    inDialog(station, receiver, [](QDialog *dialog) {
        const auto *host = qobject_cast<QLineEdit *>(dialog->focusWidget());
        QVERIFY(host != nullptr);
        QVERIFY(!host->text().isEmpty() && isWhollyInView(host));
    });
}

void SmallScreenTest::whatFitsIsLeftAlone_data()
{
    QTest::addColumn<QStringList>("entry");
    QTest::newRow("Station Display") << view("Station Display");
    QTest::newRow("Bridge Status") << view("Bridge Status");
}

void SmallScreenTest::whatFitsIsLeftAlone()
{
    QFETCH(QStringList, entry);
    const TestStation station;
    inDialog(station, entry, [](QDialog *dialog) {
        QVERIFY(!scrollsToFitScreen(*dialog));
        const QSize shown = dialog->size();
        dialog->adjustSize();
        QCOMPARE(dialog->size(), shown);
        QVERIFY(dialog->frameGeometry() != freeArea(dialog));
    });
}

void SmallScreenTest::aDialogThatGrowsStaysOnTheScreen()
{
    const TestStation station;
    inDialog(station, view("Station Display"), [&](QDialog *dialog) {
        dialog->move(freeArea(dialog).center());
        station.window->appendDecodes(QStringLiteral("14:23:15"), parseDecodeLines(rows(25)));
        QTRY_VERIFY(scrollsToFitScreen(*dialog));
        QTRY_COMPARE(outOfReach(dialog), QString());
        QCOMPARE(dialog->frameGeometry(), freeArea(dialog));
        auto *table = dialog->findChild<QTableWidget *>();
        QCOMPARE(table->rowCount(), 25);
        const QSize tableSize = table->size();
        station.window->appendDecodes(QStringLiteral("14:23:30"), parseDecodeLines(rows(1)));
        QCOMPARE(table->rowCount(), 26);
        QCOMPARE(table->size(), tableSize);
        QTest::mouseClick(dialog->findChild<QDialogButtonBox *>()->buttons().constFirst(),
                          Qt::LeftButton);
        QVERIFY(!dialog->isVisible());
    });
}

// Even if the dialog is on another screen than its parent.
void SmallScreenTest::aDialogThatGrowsGoesByItsOwnFrame()
{
    QWidget parent(nullptr, Qt::FramelessWindowHint);
    parent.show();
    QDialog dialog(&parent);
    auto *layout = new QVBoxLayout(&dialog);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *content = new QWidget(&dialog);
    layout->addWidget(content);
    layout->addWidget(new QDialogButtonBox(QDialogButtonBox::Close, &dialog));
    keepOnScreen(&dialog);
    dialog.show();
    QTRY_VERIFY(dialog.frameSize() != dialog.size());
    QVERIFY(parent.frameSize() == parent.size());
    const QSize free = freeArea(&dialog).size();
    content->setMinimumSize(free.width(), free.height() - dialog.minimumSizeHint().height());
    QTRY_COMPARE(dialog.frameGeometry(), freeArea(&dialog));
    QCOMPARE(outOfReach(&dialog), QString());
}

void SmallScreenTest::aRefreshLeavesItsSizeToTheOperator()
{
    const TestStation station;
    station.window->appendDecodes(QStringLiteral("14:23:15"), parseDecodeLines(rows(25)));
    inDialog(station, view("Station Display"), [&](QDialog *dialog) {
        QVERIFY(scrollsToFitScreen(*dialog));
        dialog->resize(250, 200);
        station.window->appendDecodes(QStringLiteral("14:23:30"), {});
        QCoreApplication::sendPostedEvents();
        QCOMPARE(dialog->size(), QSize(250, 200));
        QCOMPARE(outOfReach(dialog), QString());
    });
}

void SmallScreenTest::theKeyboardStaysWhereItWasWhenADialogGrows()
{
    const TestStation station;
    inDialog(station, view("Station Display"), [&](QDialog *dialog) {
        auto *table = dialog->findChild<QTableWidget *>();
        table->setFocus();
        station.window->appendDecodes(QStringLiteral("14:23:15"), parseDecodeLines(rows(25)));
        QTRY_VERIFY(scrollsToFitScreen(*dialog));
        QCOMPARE(dialog->focusWidget(), table);
    });
}

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::SmallScreenTest)
#include "smallscreen_test.moc"
