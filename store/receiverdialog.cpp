#include "app/mainwindow.h"
#include "base/dialogs.h"
#include "base/frequency.h"
#include "base/receiverkey.h"
#include "base/smallscreen.h"
#include "store/receiverinput.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVariantMap>

namespace outpost
{

namespace
{

// The parts of the open dialog; owned by it.
struct ReceiverForm {
    QLineEdit *host = nullptr;
    QLineEdit *port = nullptr;
    QLabel *status = nullptr;
    QComboBox *band = nullptr;
    QLineEdit *frequency = nullptr;
    QComboBox *goodReceivers = nullptr;
    QPushButton *remove = nullptr;
};

constexpr int placeholderIndex = 0; // of the good-receivers combo

void addLabelled(QGridLayout *grid, const QString &label, QWidget *field, int row, int column,
                 int fieldColumns = 1)
{
    auto *text = new QLabel(label);
    text->setBuddy(field);
    grid->addWidget(text, row, column);
    grid->addWidget(field, row, column + 1, 1, fieldColumns);
}

QLabel *newStatusLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText); // it shows host names
    label->setMinimumSize(270, 68);
    label->setFrameShape(QFrame::StyledPanel);
    label->setMargin(7);
    return label;
}

QLabel *newHintLabel()
{
    auto *hint = new QLabel(QStringLiteral("Choose a preset or type any frequency. Connected is "
                                           "shown only after real Kiwi SND audio data arrives."));
    hint->setWordWrap(true);
    return hint;
}

void selectBand(QComboBox *band, double mhz)
{
    const int preset = bandPresetIndex(mhz);
    const int custom = band->count() - 1;
    band->setCurrentIndex(preset < 0 ? custom : preset);
}

QComboBox *newBandCombo(double mhz)
{
    auto *band = new QComboBox;
    for (const BandPreset &preset : bandPresets()) {
        band->addItem(preset.text, preset.mhz);
    }
    band->addItem(QStringLiteral("Custom frequency"));
    selectBand(band, mhz);
    return band;
}

void onBandChosen(const ReceiverForm &form, int index)
{
    const QVariant mhz = form.band->itemData(index);
    if (mhz.isValid()) {
        form.frequency->setText(frequencyText(mhz.toDouble()));
    }
}

void onGoodReceiverChosen(const ReceiverForm &form, int index)
{
    const bool chosen = index > placeholderIndex;
    form.remove->setEnabled(chosen);
    if (!chosen) {
        return;
    }
    const QVariantMap receiver = form.goodReceivers->itemData(index).toMap();
    const double mhz = receiver.value(QStringLiteral("FrequencyMhz")).toDouble();
    form.host->setText(receiver.value(QStringLiteral("Host")).toString());
    form.port->setText(QString::number(receiver.value(QStringLiteral("Port")).toInt()));
    form.frequency->setText(frequencyText(mhz));
    selectBand(form.band, mhz);
}

// A long host name must not push the rest out of the dialog.
QComboBox *newGoodReceiversCombo()
{
    auto *combo = new QComboBox;
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return combo;
}

ReceiverForm newForm(const Profile &profile, double mhz, const QString &statusText)
{
    ReceiverForm form;
    form.host = new QLineEdit(profile.kiwiHost);
    form.port = new QLineEdit(QString::number(profile.kiwiPort));
    form.status = newStatusLabel(statusText);
    form.band = newBandCombo(mhz);
    form.frequency = new QLineEdit(frequencyText(mhz));
    form.goodReceivers = newGoodReceiversCombo();
    form.remove = new QPushButton(QStringLiteral("Remove Selected"));
    form.remove->setEnabled(false);
    return form;
}

// Tab runs through the widgets in the order in which they are added here.
void arrange(QDialog *dialog, const ReceiverForm &form, QDialogButtonBox *buttons)
{
    auto *grid = new QGridLayout(dialog);
    addLabelled(grid, QStringLiteral("Receiver:"), form.host, 0, 0);
    addLabelled(grid, QStringLiteral("Port:"), form.port, 0, 2);
    grid->addWidget(form.status, 0, 4, 2, 1);
    addLabelled(grid, QStringLiteral("Band:"), form.band, 1, 0);
    addLabelled(grid, QStringLiteral("MHz:"), form.frequency, 1, 2);
    addLabelled(grid, QStringLiteral("Good receivers:"), form.goodReceivers, 2, 0, 3);
    grid->addWidget(form.remove, 2, 4);
    grid->addWidget(newHintLabel(), 3, 0, 1, 5);
    grid->addWidget(buttons, 4, 0, 1, 5);
}

void watchCombos(const ReceiverForm &form)
{
    const auto chosen = QOverload<int>::of(&QComboBox::currentIndexChanged);
    QObject::connect(form.band, chosen, form.band,
                     [form](int index) { onBandChosen(form, index); });
    QObject::connect(form.goodReceivers, chosen, form.goodReceivers,
                     [form](int index) { onGoodReceiverChosen(form, index); });
}

} // namespace

void MainWindow::showReceiverDialog()
{
    loadFrequencyFile();
    QDialog dialog(this);
    dialog.setWindowTitle(QStringLiteral("Kiwi Receiver"));
    dialog.setMinimumSize(700, 295);
    dialog.resize(760, 315);

    const ReceiverForm form = newForm(profile, frequencyMhz, kiwiStatusText());
    fillGoodReceiversCombo(form.goodReceivers);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    const auto *apply =
        buttons->addButton(QStringLiteral("Apply and Connect"), QDialogButtonBox::AcceptRole);
    const auto *disconnectButton =
        buttons->addButton(QStringLiteral("Disconnect"), QDialogButtonBox::ActionRole);
    arrange(&dialog, form, buttons);
    tabInShownOrder(*buttons);
    watchCombos(form);
    connect(form.remove, &QPushButton::clicked, this, [this, form] {
        removeSelectedGoodReceiver(form.goodReceivers, form.remove, form.status);
    });
    connect(apply, &QPushButton::clicked, this, [this, form] {
        applyReceiver(form.host->text(), form.port->text(), form.frequency->text());
    });
    connect(disconnectButton, &QPushButton::clicked, this, [this] { disconnectKiwi(true); });
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);

    receiverStatusLabel = form.status;
    keepOnScreen(&dialog);
    dialog.exec();
    receiverStatusLabel = nullptr;
}

void MainWindow::applyReceiver(const QString &hostText, const QString &portText,
                               const QString &mhzText)
{
    const ReceiverInput input = readReceiverInput(hostText, portText, mhzText);
    if (!input.refusal.isEmpty()) {
        return receiverStatusLabel->setText(input.refusal);
    }
    // Once removed, it may be recorded as a good receiver again.
    changeRemovedReceivers(receiverKey(input.host, input.port), false);
    profile.kiwiHost = input.host;
    profile.kiwiPort = input.port;
    frequencyMhz = input.frequencyMhz;
    saveDefaultProfileQuietly();
    saveFrequencyFile();
    connectKiwi();
}

} // namespace outpost
