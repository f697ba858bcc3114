#pragma once

#include "store/goodreceiverstore.h"
#include "store/receiverinput.h"

#include <QDialog>
#include <functional>

class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace outpost
{

struct ReceiverDialogValues {
    QString host;
    int port;
    double frequencyMhz;
    QString status;
    QVector<GoodReceiver> goodReceivers;
};

struct ReceiverDialogCallbacks {
    std::function<void(const ReceiverInput &input)> onApply; // with valid input
    std::function<void()> onDisconnect;
    std::function<ReceiverRemoval(const QString &host, int port)> onRemove;
};

// The "Kiwi Receiver" dialog: selects a receiver and the dial frequency, connects and disconnects.
// Selecting a receiver or closing the dialog applies nothing.
class ReceiverDialog : public QDialog
{
public:
    ReceiverDialog(const ReceiverDialogValues &values, ReceiverDialogCallbacks callbacksToUse,
                   QWidget *parent);

    void setStatus(const QString &text);

private:
    void arrange(QDialogButtonBox *buttons);
    QDialogButtonBox *newButtons();
    void watchCombos();
    void fillGoodReceiversCombo(const QVector<GoodReceiver> &receivers);
    void selectBand(double mhz);
    void onBandChosen(int index);
    void onGoodReceiverChosen(int index);
    void removeSelectedGoodReceiver();
    void apply();

    const ReceiverDialogCallbacks callbacks;
    QLineEdit *const host;
    QLineEdit *const port;
    QLabel *const status;
    QComboBox *const band;
    QLineEdit *const frequency;
    QComboBox *const goodReceivers;
    QPushButton *const remove;
};

} // namespace outpost
