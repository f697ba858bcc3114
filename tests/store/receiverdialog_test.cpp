// The Kiwi Receiver dialog as an operator uses it.

#include "app/mainwindow.h"
#include "base/receiverkey.h"
#include "base/settings.h"
#include "sim/kiwisim.h"
#include "tests/fixture/buttonorder.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/receiverform.h"
#include "tests/fixture/scripteddecoder.h"
#include "tests/store/storedlists.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <algorithm>

namespace outpost
{

} // namespace outpost

Q_DECLARE_METATYPE(QDialogButtonBox::ButtonLayout)

namespace outpost
{

namespace
{

QJsonObject goodReceiver(const QString &host, int port, double mhz)
{
    return {{QStringLiteral("Host"), host},
            {QStringLiteral("Port"), port},
            {QStringLiteral("FrequencyMhz"), mhz},
            {QStringLiteral("LastDecodeCount"), 3}};
}

void clickApply(const ReceiverForm &form)
{
    QTest::mouseClick(form.apply, Qt::LeftButton);
}

QStringList editTexts(const ReceiverForm &form)
{
    return QStringList() << form.host->text() << form.port->text() << form.mhz->text();
}

// "row,column,rows,columns" of a widget in the dialog's grid.
QString cellOf(const ReceiverForm &form, QWidget *widget)
{
    const auto *grid = qobject_cast<QGridLayout *>(form.dialog->layout());
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
    grid->getItemPosition(grid->indexOf(widget), &row, &column, &rows, &columns);
    return QStringLiteral("%1,%2,%3,%4").arg(row).arg(column).arg(rows).arg(columns);
}

// From left to right.
QList<QWidget *> shownButtons(const ReceiverForm &form)
{
    QList<QWidget *> buttons{form.apply, form.disconnectReceiver, form.close};
    std::sort(buttons.begin(), buttons.end(),
              [](const QWidget *one, const QWidget *other) { return one->x() < other->x(); });
    return buttons;
}

// The controls that the key reaches, from the focused one until it has the focus again.
QList<QWidget *> focusRound(const QDialog *dialog, Qt::Key key)
{
    QList<QWidget *> round;
    QWidget *at = dialog->focusWidget();
    while (!round.contains(at)) {
        round.append(at);
        QTest::keyClick(at, key);
        at = dialog->focusWidget();
    }
    return at == round.first() ? round : QList<QWidget *>();
}

QLabel *labelOf(const ReceiverForm &form, const QWidget *field)
{
    for (QLabel *label : form.dialog->findChildren<QLabel *>()) {
        if (label->buddy() == field) {
            return label;
        }
    }
    return nullptr;
}

} // namespace

class ReceiverDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void isModalAndOfItsSize();
    void everyFieldHasItsCellAndItsLabel();
    void tabRunsThroughEveryControlAndBack_data();
    void tabRunsThroughEveryControlAndBack();
    void tabPassesByWhatIsDisabled();
    void statusLabelHasItsLook();
    void buttonsHaveTheirRoles();

    void bandsAreThePresetsAndCustom();
    void opensOnTheFrequencyLastSaved_data();
    void opensOnTheFrequencyLastSaved();
    void aBandSetsTheFrequency();
    void customFrequencyLeavesTheEdit();

    void aGoodReceiverFillsTheEdits_data();
    void aGoodReceiverFillsTheEdits();
    void anEntryWithoutPortFillsInTheUsualOne();
    void thePlaceholderDisablesRemoveAndLeavesTheEdits();
    void choosingAppliesNothing();

    void applyRefusesBadInput_data();
    void applyRefusesBadInput();
#ifdef OUTPOST_STREAMS
    void applyStoresSavesAndConnects();
#endif
    void applyTakesBlanksAroundTheEntries();
    void applyForgetsTheRemovedKeyInAnyCase();
    void applyLeavesOtherRemovedKeys();
    void aFrequencyWithinHalfAHertzReopensOnItsBand();
    void closingRevertsNothing_data();
    void closingRevertsNothing();

#ifdef OUTPOST_STREAMS
    void startsWithTheStateOfTheLink();
    void showsLinkNewsWhileOpen();
    void linkNewsReplacesARefusal();
    void disconnectTellsSoAndStaysOpen();
    void linkNewsAfterClosingGoesNowhere();
#endif

private:
    void startSim(sim::Fault fault = sim::Fault::Stream);
    void connectToSim(const ReceiverForm &form) const;

    const ScriptedDecoder decoder{"exit 0"};
    std::unique_ptr<KiwiSim> receiver;
};

void ReceiverDialogTest::init()
{
    receiver.reset();
    testHome().clear();
    testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("start.example")},
                             {QStringLiteral("Port"), 8081},
                             {QStringLiteral("Jt9Path"), decoder.path()},
                             {QStringLiteral("BridgePort"), freePort()}});
}

void ReceiverDialogTest::startSim(sim::Fault fault)
{
    SimConfig config;
    config.firstSoundDelayMs = 0;
    config.endpoints.fallback.fault = fault;
    receiver = std::make_unique<KiwiSim>();
    QString error;
    QVERIFY2(receiver->listen(config, &error), qPrintable(error));
}

void ReceiverDialogTest::connectToSim(const ReceiverForm &form) const
{
    form.host->setText(QStringLiteral("127.0.0.1"));
    form.port->setText(QString::number(receiver->port()));
    clickApply(form);
}

void ReceiverDialogTest::isModalAndOfItsSize()
{
    MainWindow window;
    window.show();
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        QVERIFY(form.dialog->isModal());
        QCOMPARE(form.dialog->parentWidget(), &window);
        QCOMPARE(form.dialog->windowTitle(), QStringLiteral("Kiwi Receiver"));
        QCOMPARE(form.dialog->size(), QSize(760, 315));
        QCOMPARE(form.dialog->minimumSize(), QSize(700, 295));
    });
    QCOMPARE(openDialog(QStringLiteral("Kiwi Receiver")), nullptr);
    QVERIFY(window.findChildren<QDialog *>().isEmpty());
}

void ReceiverDialogTest::everyFieldHasItsCellAndItsLabel()
{
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        struct Field {
            QWidget *widget;
            const char *cell;
            const char *label;
            const char *labelCell;
        };
        const QList<Field> fields{{form.host, "0,1,1,1", "Receiver:", "0,0,1,1"},
                                  {form.port, "0,3,1,1", "Port:", "0,2,1,1"},
                                  {form.band, "1,1,1,1", "Band:", "1,0,1,1"},
                                  {form.mhz, "1,3,1,1", "MHz:", "1,2,1,1"},
                                  {form.goodReceivers, "2,1,1,3", "Good receivers:", "2,0,1,1"}};
        for (const Field &field : fields) {
            QLabel *label = labelOf(form, field.widget);
            QVERIFY2(label != nullptr, field.label);
            QCOMPARE(label->text(), QString::fromLatin1(field.label));
            QCOMPARE(cellOf(form, label), QString::fromLatin1(field.labelCell));
            QCOMPARE(cellOf(form, field.widget), QString::fromLatin1(field.cell));
        }
        QCOMPARE(cellOf(form, form.status), QStringLiteral("0,4,2,1"));
        QCOMPARE(cellOf(form, form.remove), QStringLiteral("2,4,1,1"));
        QCOMPARE(form.remove->text(), QStringLiteral("Remove Selected"));
        QVERIFY(!form.remove->isEnabled());

        const auto *grid = qobject_cast<QGridLayout *>(form.dialog->layout());
        auto *hint = qobject_cast<QLabel *>(grid->itemAtPosition(3, 0)->widget());
        QCOMPARE(cellOf(form, hint), QStringLiteral("3,0,1,5"));
        QVERIFY(hint->wordWrap());
        QCOMPARE(hint->text(),
                 QStringLiteral("Choose a preset or type any frequency. Connected is shown only "
                                "after real Kiwi SND audio data arrives."));
        QCOMPARE(cellOf(form, form.close->parentWidget()), QStringLiteral("4,0,1,5"));
    });
}

// The platform determines the order of the buttons.
void ReceiverDialogTest::tabRunsThroughEveryControlAndBack_data()
{
    QTest::addColumn<QDialogButtonBox::ButtonLayout>("buttonLayout");
    QTest::newRow("Windows") << QDialogButtonBox::WinLayout;
    QTest::newRow("KDE") << QDialogButtonBox::KdeLayout;
    QTest::newRow("GNOME") << QDialogButtonBox::GnomeLayout;
}

void ReceiverDialogTest::tabRunsThroughEveryControlAndBack()
{
    QFETCH(QDialogButtonBox::ButtonLayout, buttonLayout);
    const ButtonOrder order(buttonLayout);
    saveList({goodReceiver(QStringLiteral("kiwi"), 8073, 7.074)});
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(1); // enables Remove Selected
        QVERIFY(QTest::qWaitForWindowActive(form.dialog));
        const QList<QWidget *> round =
            QList<QWidget *>{form.host, form.port,          form.band,
                             form.mhz,  form.goodReceivers, form.remove} +
            shownButtons(form);
        QCOMPARE(form.dialog->focusWidget(), form.host);
        QCOMPARE(focusRound(form.dialog, Qt::Key_Tab), round);
        QList<QWidget *> back{round.first()};
        std::reverse_copy(round.begin() + 1, round.end(), std::back_inserter(back));
        QCOMPARE(focusRound(form.dialog, Qt::Key_Backtab), back);
    });
}

void ReceiverDialogTest::tabPassesByWhatIsDisabled()
{
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QVERIFY(QTest::qWaitForWindowActive(form.dialog));
        const QList<QWidget *> round = focusRound(form.dialog, Qt::Key_Tab);
        QVERIFY(!round.contains(form.remove));
        QVERIFY(round.contains(form.close));
    });
}

void ReceiverDialogTest::statusLabelHasItsLook()
{
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QVERIFY(form.status->wordWrap());
        QCOMPARE(form.status->minimumWidth(), 270);
        QCOMPARE(form.status->minimumHeight(), 68);
        QCOMPARE(form.status->frameShape(), QFrame::StyledPanel);
        QCOMPARE(form.status->margin(), 7);
        QCOMPARE(form.status->textFormat(), Qt::PlainText);
    });
}

void ReceiverDialogTest::buttonsHaveTheirRoles()
{
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        const auto *box = form.dialog->findChild<QDialogButtonBox *>();
        QCOMPARE(box->buttons().size(), 3);
        QCOMPARE(box->buttonRole(form.apply), QDialogButtonBox::AcceptRole);
        QCOMPARE(box->buttonRole(form.disconnectReceiver), QDialogButtonBox::ActionRole);
        QCOMPARE(box->standardButtons(), QDialogButtonBox::Close);
    });
}

void ReceiverDialogTest::bandsAreThePresetsAndCustom()
{
    const QList<QPair<QString, double>> presets{{QStringLiteral("160 m FT8 — 1.840000"), 1.840},
                                                {QStringLiteral("80 m FT8 — 3.573000"), 3.573},
                                                {QStringLiteral("60 m FT8 — 5.357000"), 5.357},
                                                {QStringLiteral("40 m FT8 — 7.074000"), 7.074},
                                                {QStringLiteral("30 m FT8 — 10.136000"), 10.136},
                                                {QStringLiteral("20 m FT8 — 14.074000"), 14.074},
                                                {QStringLiteral("17 m FT8 — 18.100000"), 18.100},
                                                {QStringLiteral("15 m FT8 — 21.074000"), 21.074},
                                                {QStringLiteral("12 m FT8 — 24.915000"), 24.915},
                                                {QStringLiteral("10 m FT8 — 28.074000"), 28.074},
                                                {QStringLiteral("6 m FT8 — 50.313000"), 50.313},
                                                {QStringLiteral("2 m FT8 — 144.174000"), 144.174}};
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        QCOMPARE(form.band->count(), presets.size() + 1);
        for (int i = 0; i < presets.size(); ++i) {
            QCOMPARE(form.band->itemText(i), presets.at(i).first);
            QCOMPARE(form.band->itemData(i), QVariant(presets.at(i).second));
        }
        QCOMPARE(form.band->itemText(presets.size()), QStringLiteral("Custom frequency"));
        QVERIFY(!form.band->itemData(presets.size()).isValid());
    });
}

void ReceiverDialogTest::opensOnTheFrequencyLastSaved_data()
{
    QTest::addColumn<QByteArray>("saved");
    QTest::addColumn<QString>("band");
    QTest::addColumn<QString>("mhz");
    QTest::newRow("20 m") << QByteArray("14.074000") << QStringLiteral("20 m FT8 — 14.074000")
                          << QStringLiteral("14.074000");
    QTest::newRow("half a kilohertz off")
        << QByteArray("14.0745") << QStringLiteral("Custom frequency")
        << QStringLiteral("14.074500");
    QTest::newRow("a tenth of a hertz off")
        << QByteArray("7.0740001") << QStringLiteral("40 m FT8 — 7.074000")
        << QStringLiteral("7.074000");
    QTest::newRow("first") << QByteArray("1.84") << QStringLiteral("160 m FT8 — 1.840000")
                           << QStringLiteral("1.840000");
    QTest::newRow("last") << QByteArray("144.174") << QStringLiteral("2 m FT8 — 144.174000")
                          << QStringLiteral("144.174000");
}

// Another copy of the program may have saved it meanwhile.
void ReceiverDialogTest::opensOnTheFrequencyLastSaved()
{
    QFETCH(QByteArray, saved);
    const MainWindow window;
    putFile(frequencyFile(), saved);
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QTEST(form.band->currentText(), "band");
        QCOMPARE(form.host->text(), QStringLiteral("start.example"));
        QCOMPARE(form.port->text(), QStringLiteral("8081"));
        QTEST(form.mhz->text(), "mhz");
    });
}

void ReceiverDialogTest::aBandSetsTheFrequency()
{
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        for (int i = 11; i >= 0; --i) {
            form.band->setCurrentIndex(i);
            const QString shown = form.band->itemText(i).section(QStringLiteral(" — "), 1);
            QCOMPARE(form.mhz->text(), shown);
        }
        QTest::keyClick(form.band, Qt::Key_Down);
        QCOMPARE(form.mhz->text(), QStringLiteral("3.573000"));
    });
}

void ReceiverDialogTest::customFrequencyLeavesTheEdit()
{
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.mhz->setText(QStringLiteral("typed"));
        form.band->setCurrentIndex(12);
        QCOMPARE(form.mhz->text(), QStringLiteral("typed"));
    });
}

void ReceiverDialogTest::aGoodReceiverFillsTheEdits_data()
{
    QTest::addColumn<double>("mhz");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("band");
    QTest::newRow("no band") << 10.1 << QStringLiteral("10.100000")
                             << QStringLiteral("Custom frequency");
    QTest::newRow("band of another")
        << 7.074 << QStringLiteral("7.074000") << QStringLiteral("40 m FT8 — 7.074000");
    QTest::newRow("the band shown already")
        << 14.074 << QStringLiteral("14.074000") << QStringLiteral("20 m FT8 — 14.074000");
    QTest::newRow("close to a band")
        << 50.3130004 << QStringLiteral("50.313000") << QStringLiteral("6 m FT8 — 50.313000");
}

void ReceiverDialogTest::aGoodReceiverFillsTheEdits()
{
    QFETCH(double, mhz);
    QFETCH(QString, shown);
    saveList({goodReceiver(QStringLiteral("other"), 1, 21.074),
              goodReceiver(QStringLiteral("Kiwi.Example"), 8075, mhz)});
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(2);
        QCOMPARE(editTexts(form), QStringList() << QStringLiteral("Kiwi.Example")
                                                << QStringLiteral("8075") << shown);
        QTEST(form.band->currentText(), "band");
        QVERIFY(form.remove->isEnabled());
    });
}

void ReceiverDialogTest::anEntryWithoutPortFillsInTheUsualOne()
{
    saveList({QJsonObject{{QStringLiteral("Host"), QStringLiteral("kiwi")}}});
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(1);
        QCOMPARE(editTexts(form), QStringList() << QStringLiteral("kiwi") << QStringLiteral("8073")
                                                << QStringLiteral("14.074000"));
    });
}

void ReceiverDialogTest::thePlaceholderDisablesRemoveAndLeavesTheEdits()
{
    saveList({goodReceiver(QStringLiteral("kiwi"), 8075, 10.1)});
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.goodReceivers->setCurrentIndex(1);
        form.goodReceivers->setCurrentIndex(0);
        QVERIFY(!form.remove->isEnabled());
        QCOMPARE(editTexts(form), QStringList() << QStringLiteral("kiwi") << QStringLiteral("8075")
                                                << QStringLiteral("10.100000"));
    });
}

void ReceiverDialogTest::choosingAppliesNothing()
{
    saveList({goodReceiver(QStringLiteral("kiwi"), 8075, 10.1)});
    const MainWindow window;
    const QByteArray profile = fileBytes(profileFile());
    const LogTrace trace;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.band->setCurrentIndex(3);
        form.goodReceivers->setCurrentIndex(1);
    });
    QCOMPARE(fileBytes(profileFile()), profile);
    QVERIFY(!QFile::exists(frequencyFile()));
    QVERIFY(!trace.contains(QStringLiteral("connection requested")));
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(editTexts(form), QStringList()
                                      << QStringLiteral("start.example") << QStringLiteral("8081")
                                      << QStringLiteral("14.074000"));
    });
}

void ReceiverDialogTest::applyRefusesBadInput_data()
{
    const QString hostMissing = QStringLiteral("Receiver host is required.");
    const QString badPort = QStringLiteral("Port must be 1 through 65535.");
    const QString badMhz = QStringLiteral("Enter a valid frequency in MHz.");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("mhz");
    QTest::addColumn<QString>("refusal");
    const auto row = [](const char *name, const char *host, const char *port, const char *mhz,
                        const QString &refusal) {
        QTest::newRow(name) << QString::fromLatin1(host) << QString::fromLatin1(port)
                            << QString::fromLatin1(mhz) << refusal;
    };
    row("no host", "", "8073", "7.074", hostMissing);
    row("host of blanks, bad port too", " \t ", "0", "none", hostMissing);
    row("port 0", "kiwi", "0", "7.074", badPort);
    row("port 65536", "kiwi", "65536", "7.074", badPort);
    row("port with letters", "kiwi", "80a", "7.074", badPort);
    row("no port", "kiwi", "", "7.074", badPort);
    row("bad port, bad frequency too", "kiwi", "-1", "none", badPort);
    row("no frequency", "kiwi", "8073", "", badMhz);
    row("frequency in letters", "kiwi", "8073", "forty", badMhz);
    row("frequency too low", "kiwi", "8073", "0.0009", badMhz);
    row("frequency too high", "kiwi", "8073", "3000.000001", badMhz);
}

void ReceiverDialogTest::applyRefusesBadInput()
{
    QFETCH(QString, host);
    QFETCH(QString, port);
    QFETCH(QString, mhz);
    const QStringList removed{QStringLiteral("kiwi:8073"), QStringLiteral("other:1")};
    removeBefore(removed);
    const MainWindow window;
    const QByteArray profile = fileBytes(profileFile());
    const LogTrace trace;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(host);
        form.port->setText(port);
        form.mhz->setText(mhz);
        clickApply(form);
        QTEST(form.status->text(), "refusal");
        QCOMPARE(QApplication::activeModalWidget(), form.dialog);
        QCOMPARE(editTexts(form), QStringList() << host << port << mhz);
    });
    QCOMPARE(fileBytes(profileFile()), profile);
    QVERIFY(!QFile::exists(frequencyFile()));
    QCOMPARE(removedOnDisk(), removed);
    QVERIFY(!trace.contains(QStringLiteral("connection requested")));
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(editTexts(form), QStringList()
                                      << QStringLiteral("start.example") << QStringLiteral("8081")
                                      << QStringLiteral("14.074000"));
    });
}

#ifdef OUTPOST_STREAMS
void ReceiverDialogTest::applyStoresSavesAndConnects()
{
    startSim();
    const MainWindow window;
    const LogTrace trace;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.mhz->setText(QStringLiteral("7.074"));
        connectToSim(form);
        QVERIFY(form.dialog->isVisible());
        QCOMPARE(form.status->text(), QStringLiteral("Connecting — 7.074000 MHz"));
        const QString request =
            QStringLiteral("Native Kiwi connection requested: 127.0.0.1:%1, 7.074000 MHz.");
        QCOMPARE(trace.lines().last(), request.arg(receiver->port()));

        const QJsonObject saved = jsonFile(profileFile());
        QCOMPARE(saved.value(QLatin1String("Host")).toString(), QStringLiteral("127.0.0.1"));
        QCOMPARE(saved.value(QLatin1String("Port")).toInt(), int(receiver->port()));
        QCOMPARE(saved.size(), 6);
        QCOMPARE(fileBytes(frequencyFile()), QByteArray("7.074000"));
        QTRY_VERIFY(receiver->commands().contains(
            QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=7074.000")));
    });
}
#endif

void ReceiverDialogTest::applyTakesBlanksAroundTheEntries()
{
    const MainWindow window;
    const LogTrace trace;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(QStringLiteral("  127.0.0.1 "));
        form.port->setText(QStringLiteral(" 8073 "));
        form.mhz->setText(QStringLiteral("\t3000 "));
        clickApply(form);
        QVERIFY(trace.contains(QStringLiteral("requested: 127.0.0.1:8073, 3000.000000 MHz.")));
    });
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(editTexts(form), QStringList()
                                      << QStringLiteral("127.0.0.1") << QStringLiteral("8073")
                                      << QStringLiteral("3000.000000"));
    });
}

void ReceiverDialogTest::applyForgetsTheRemovedKeyInAnyCase()
{
    removeBefore({QStringLiteral("localhost:1"), QStringLiteral("other:1"),
                  QStringLiteral("LOCALHOST:1"), QStringLiteral("LocalHost:1")});
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.host->setText(QStringLiteral(" LocalHOST "));
        form.port->setText(QStringLiteral("1"));
        clickApply(form);
    });
    QCOMPARE(removedOnDisk(), QStringList(QStringLiteral("other:1")));
    const QJsonObject saved = jsonFile(profileFile());
    QCOMPARE(saved.value(QLatin1String("Host")).toString(), QStringLiteral("LocalHOST"));
}

void ReceiverDialogTest::applyLeavesOtherRemovedKeys()
{
    const QStringList others{QStringLiteral("localhost:10"), QStringLiteral("xlocalhost:1")};
    removeBefore(others);
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.host->setText(QStringLiteral("localhost"));
        form.port->setText(QStringLiteral("1"));
        clickApply(form);
    });
    QCOMPARE(removedOnDisk(), others);
}

void ReceiverDialogTest::aFrequencyWithinHalfAHertzReopensOnItsBand()
{
    const MainWindow window;
    inReceiverDialog(window, [](const ReceiverForm &form) {
        form.host->setText(QStringLiteral("127.0.0.1"));
        form.mhz->setText(QStringLiteral("7.0740000001"));
        clickApply(form);
        QCOMPARE(form.mhz->text(), QStringLiteral("7.0740000001"));
    });
    QVERIFY(QFile::remove(frequencyFile())); // it has six decimals only
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(form.band->currentText(), QStringLiteral("40 m FT8 — 7.074000"));
        QCOMPARE(form.mhz->text(), QStringLiteral("7.074000"));
    });
}

void ReceiverDialogTest::closingRevertsNothing_data()
{
    QTest::addColumn<bool>("byEscape");
    QTest::newRow("Close") << false;
    QTest::newRow("Escape") << true;
}

// Applied values stay, later input is discarded.
void ReceiverDialogTest::closingRevertsNothing()
{
    QFETCH(bool, byEscape);
    const MainWindow window;
    LogTrace trace;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        form.host->setText(QStringLiteral("127.0.0.1"));
        form.port->setText(QStringLiteral("1"));
        form.mhz->setText(QStringLiteral("3.573"));
        clickApply(form);
        form.host->setText(QStringLiteral("typed.example"));
        form.mhz->setText(QStringLiteral("21.074"));
        trace.clear();
        if (byEscape) {
            QTest::keyClick(form.dialog, Qt::Key_Escape);
            QVERIFY(!form.dialog->isVisible());
        }
    });
    QVERIFY(!trace.contains(QStringLiteral("disconnected")));
    QCOMPARE(fileBytes(frequencyFile()), QByteArray("3.573000"));
    QVERIFY(!fileBytes(profileFile()).contains("typed"));
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QCOMPARE(editTexts(form), QStringList()
                                      << QStringLiteral("127.0.0.1") << QStringLiteral("1")
                                      << QStringLiteral("3.573000"));
    });
}

#ifdef OUTPOST_STREAMS
void ReceiverDialogTest::startsWithTheStateOfTheLink()
{
    startSim(sim::Fault::OpenSilent);
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        QCOMPARE(form.status->text(), QStringLiteral("Disconnected"));
        connectToSim(form);
        QTRY_COMPARE(form.status->text(),
                     QStringLiteral("WebSocket open — waiting for SND at /kiwi/0/SND"));
    });
    receiver->setEndpoints({});
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        QCOMPARE(form.status->text(), QStringLiteral("Connecting — 14.074000 MHz\n"
                                                     "Endpoint: /kiwi/0/SND\n"
                                                     "No verified SND data yet."));
        connectToSim(form);
        QTRY_VERIFY(summaryLine(window).startsWith(QStringLiteral("Kiwi Connected")));
    });
    inReceiverDialog(window, [](const ReceiverForm &form) {
        QVERIFY(form.status->text().startsWith(QStringLiteral("Connected — 14.074000 MHz\n"
                                                              "Endpoint: /kiwi/0/SND\nSND: ")));
    });
}

void ReceiverDialogTest::showsLinkNewsWhileOpen()
{
    startSim();
    sim::EndpointBehaviours slow;
    slow.fallback = {sim::Fault::SlowOpen, 0.3, {}};
    receiver->setEndpoints(slow);
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        connectToSim(form);
        QTRY_COMPARE(form.status->text(), QStringLiteral("Connecting — trying /kiwi/0/SND"));
        QTRY_VERIFY(form.status->text().startsWith(
            QStringLiteral("Connected — 14.074000 MHz\nEndpoint: /kiwi/0/SND\nSND: ")));
        receiver->close();
        QTRY_COMPARE(form.status->text(),
                     QStringLiteral("Disconnected — verified SND stream ended"));
    });
}

void ReceiverDialogTest::linkNewsReplacesARefusal()
{
    startSim();
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        connectToSim(form);
        QTRY_VERIFY(form.status->text().startsWith(QStringLiteral("Connected")));
        form.host->clear();
        clickApply(form);
        QCOMPARE(form.status->text(), QStringLiteral("Receiver host is required."));
        QTRY_VERIFY(form.status->text().startsWith(QStringLiteral("Connected")));
    });
}

void ReceiverDialogTest::disconnectTellsSoAndStaysOpen()
{
    startSim();
    const MainWindow window;
    const LogTrace trace;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        connectToSim(form);
        QTRY_VERIFY(form.status->text().startsWith(QStringLiteral("Connected")));
        QTest::mouseClick(form.disconnectReceiver, Qt::LeftButton);
        QCOMPARE(form.status->text(), QStringLiteral("Disconnected"));
        QVERIFY(form.dialog->isVisible());
    });
    QCOMPARE(trace.count(QStringLiteral("Kiwi receiver disconnected.")), 1);
}

// Its label no longer exists.
void ReceiverDialogTest::linkNewsAfterClosingGoesNowhere()
{
    startSim();
    const MainWindow window;
    inReceiverDialog(window, [&](const ReceiverForm &form) {
        connectToSim(form);
        QTRY_VERIFY(form.status->text().startsWith(QStringLiteral("Connected")));
    });
    const QString atClosing = window.kiwiStatusText();
    QTRY_VERIFY(window.kiwiStatusText() != atClosing);
    QVERIFY(window.kiwiStatusText().startsWith(QStringLiteral("Connected")));
}
#endif

} // namespace outpost

OUTPOST_WINDOW_TEST_MAIN(outpost::ReceiverDialogTest)
#include "receiverdialog_test.moc"
