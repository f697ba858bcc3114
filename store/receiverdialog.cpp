#include "store/receiverdialog.h"

#include "base/dialogs.h"
#include "base/frequency.h"
#include "base/smallscreen.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVariantMap>
#include <utility>

namespace outpost
{

namespace
{

constexpr int placeholderIndex = 0; // in the good receivers combo box

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

QComboBox *newBandCombo()
{
    auto *band = new QComboBox;
    for (const BandPreset &preset : bandPresets()) {
        band->addItem(preset.text, preset.mhz);
    }
    band->addItem(QStringLiteral("Custom frequency"));
    return band;
}

// The width does not follow the contents, so that a long host name does not widen the dialog.
QComboBox *newGoodReceiversCombo()
{
    auto *combo = new QComboBox;
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return combo;
}

} // namespace

ReceiverDialog::ReceiverDialog(const ReceiverDialogValues &values,
                               ReceiverDialogCallbacks callbacksToUse, QWidget *parent)
    : QDialog(parent), callbacks(std::move(callbacksToUse)), host(new QLineEdit(values.host)),
      port(new QLineEdit(QString::number(values.port))), status(newStatusLabel(values.status)),
      band(newBandCombo()), frequency(new QLineEdit(frequencyText(values.frequencyMhz))),
      goodReceivers(newGoodReceiversCombo()),
      remove(new QPushButton(QStringLiteral("Remove Selected")))
{
    setWindowTitle(QStringLiteral("Kiwi Receiver"));
    setMinimumSize(700, 295);
    resize(760, 315);

    selectBand(values.frequencyMhz);
    fillGoodReceiversCombo(values.goodReceivers);
    remove->setEnabled(false);
    QDialogButtonBox *buttons = newButtons();
    arrange(buttons);
    tabInShownOrder(*buttons);
    watchCombos();
    connect(remove, &QPushButton::clicked, this, [this] { removeSelectedGoodReceiver(); });
    keepOnScreen(this);
}

void ReceiverDialog::setStatus(const QString &text)
{
    status->setText(text);
}

QDialogButtonBox *ReceiverDialog::newButtons()
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    const auto *applyButton =
        buttons->addButton(QStringLiteral("Apply and Connect"), QDialogButtonBox::AcceptRole);
    const auto *disconnectButton =
        buttons->addButton(QStringLiteral("Disconnect"), QDialogButtonBox::ActionRole);
    connect(applyButton, &QPushButton::clicked, this, [this] { apply(); });
    connect(disconnectButton, &QPushButton::clicked, this, [this] { callbacks.onDisconnect(); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    return buttons;
}

// The order in which the widgets are added is their Tab order.
void ReceiverDialog::arrange(QDialogButtonBox *buttons)
{
    auto *grid = new QGridLayout(this);
    addLabelled(grid, QStringLiteral("Receiver:"), host, 0, 0);
    addLabelled(grid, QStringLiteral("Port:"), port, 0, 2);
    grid->addWidget(status, 0, 4, 2, 1);
    addLabelled(grid, QStringLiteral("Band:"), band, 1, 0);
    addLabelled(grid, QStringLiteral("MHz:"), frequency, 1, 2);
    addLabelled(grid, QStringLiteral("Good receivers:"), goodReceivers, 2, 0, 3);
    grid->addWidget(remove, 2, 4);
    grid->addWidget(newHintLabel(), 3, 0, 1, 5);
    grid->addWidget(buttons, 4, 0, 1, 5);
}

void ReceiverDialog::watchCombos()
{
    const auto chosen = QOverload<int>::of(&QComboBox::currentIndexChanged);
    connect(band, chosen, this, [this](int index) { onBandChosen(index); });
    connect(goodReceivers, chosen, this, [this](int index) { onGoodReceiverChosen(index); });
}

void ReceiverDialog::fillGoodReceiversCombo(const QVector<GoodReceiver> &receivers)
{
    goodReceivers->clear();
    goodReceivers->addItem(QStringLiteral("Select a saved good receiver"));
    for (const GoodReceiver &receiver : receivers) {
        goodReceivers->addItem(
            goodReceiverText(receiver),
            QVariantMap{{QStringLiteral("Host"), receiver.host},
                        {QStringLiteral("Port"), receiver.port},
                        {QStringLiteral("FrequencyMhz"), receiver.frequencyMhz}});
    }
}

void ReceiverDialog::selectBand(double mhz)
{
    const int preset = bandPresetIndex(mhz);
    const int custom = band->count() - 1;
    band->setCurrentIndex(preset < 0 ? custom : preset);
}

void ReceiverDialog::onBandChosen(int index)
{
    const QVariant mhz = band->itemData(index);
    if (mhz.isValid()) {
        frequency->setText(frequencyText(mhz.toDouble()));
    }
}

void ReceiverDialog::onGoodReceiverChosen(int index)
{
    const bool chosen = index > placeholderIndex;
    remove->setEnabled(chosen);
    if (!chosen) {
        return;
    }
    const QVariantMap receiver = goodReceivers->itemData(index).toMap();
    const double mhz = receiver.value(QStringLiteral("FrequencyMhz")).toDouble();
    host->setText(receiver.value(QStringLiteral("Host")).toString());
    port->setText(QString::number(receiver.value(QStringLiteral("Port")).toInt()));
    frequency->setText(frequencyText(mhz));
    selectBand(mhz);
}

// Unless the list could not be changed, the combo box shows the new list and its placeholder.
void ReceiverDialog::removeSelectedGoodReceiver()
{
    if (goodReceivers->currentIndex() <= placeholderIndex) {
        return;
    }
    const QVariantMap selected = goodReceivers->currentData().toMap();
    const ReceiverRemoval removal =
        callbacks.onRemove(selected.value(QStringLiteral("Host")).toString().trimmed(),
                           selected.value(QStringLiteral("Port")).toInt());
    if (removal.outcome != ReceiverRemoval::Failed) {
        fillGoodReceiversCombo(removal.left);
    }
    setStatus(removal.text);
}

void ReceiverDialog::apply()
{
    const ReceiverInput input = readReceiverInput(host->text(), port->text(), frequency->text());
    if (!input.refusal.isEmpty()) {
        return setStatus(input.refusal);
    }
    callbacks.onApply(input);
}

} // namespace outpost
