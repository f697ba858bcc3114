#pragma once

#include "app/menus.h"
#include "app/stationoptions.h"
#include "kiwi/sounddecoder.h"
#include "store/goodreceiverstore.h"
#include "store/profilestore.h"
#include "store/sessionlog.h"

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QVector>
#include <memory>

namespace outpost
{

class BridgeStatusDialog;
class DecodeTable;
class DecoderChooser;
class KiwiAudioCapture;
class KiwiLink;
class ReceiverDialog;
class StationDisplay;
class StatusLogWindow;
class StatusSummary;
class WsjtBridge;
struct Ft8Decode;
struct ReceiverInput;

// The main window owns the parts of the station and connects them. Parsing, encoding, merging and
// formatting are core functions that it calls. Everything here runs on the GUI thread.
class MainWindow : public QMainWindow
{
public:
    explicit MainWindow(StationOptions stationOptions = {});
    ~MainWindow() override;

    void connectKiwi();
    QString kiwiStatusText() const;
    void appendDecodes(const QString &periodLabel, const QVector<Ft8Decode> &decodes);
    void onDecodesDelivered(const QString &periodLabel, const QVector<Ft8Decode> &decodes);
    void recordGoodReceiver(int decodeCount);
    void startStatusSession();
    void addSessionDecodes(qint64 count) { sessionLog.addSessionDecodes(count); }
    void finishStatusSession() { sessionLog.finishStatusSession(); }
    ProfileStore &profileStore() { return profiles; }
    const DecoderChooser &decoderChooser() const { return *chooser; }

private:
    MenuChoices menuChoices();
    void buildDecodeTable();
    void fitToDecodes(int tableWidth);
    void buildCapture();
    std::unique_ptr<DecoderChooser> newDecoderChooser();
    WsjtBridge *newBridge();
    void prepareForLogOff();
    void loadStartupProfile();
    void connectAtStart();

    // app/receiverlink.cpp
    void buildLink();
    void takeSound(const QByteArray &frame);

    void setKiwiStatus(const QString &text); // an empty text shows kiwiStatusText()
    void showReceiverDialog();
    void applyReceiver(const ReceiverInput &input);
    void editHighlightCalls();
    void refreshStatusBar();
    void refreshSession();
    void showStatusLogWindow();
    void refreshStatusLogView();
    void showStationDisplay();
    void refreshStationDisplay();
    void showBridgeStatusDialog();
    void refreshBridgeStatus();

    const StationOptions options;

    KiwiLink *link = nullptr; // child of the window

    // Decode
    SoundDecoder soundDecoder;
    std::unique_ptr<KiwiAudioCapture> capture;

    // Display: table, status bar
    DecodeTable *decodeTable = nullptr;
    StatusSummary *statusSummary = nullptr;

    // Display: bridge
    WsjtBridge *const bridge;                        // child of the window
    QPointer<BridgeStatusDialog> bridgeStatusDialog; // null while closed

    // Display: Station Display
    QPointer<StationDisplay> stationDisplay; // null while closed

    // Store
    ProfileStore profiles;
    GoodReceiverStore goodReceivers;
    SessionLog sessionLog;
    const std::unique_ptr<DecoderChooser> chooser;
    ReceiverDialog *receiverDialog = nullptr; // null while closed
    QPointer<StatusLogWindow> statusLogWindow;
};

} // namespace outpost
