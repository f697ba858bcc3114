#pragma once

#include "sim/clientwire.h"
#include "sim/kiwisim.h"
#include "sim/receivercommands.h"
#include "sim/soundstream.h"

#include <QObject>
#include <QTcpSocket>
#include <QTimer>

namespace outpost
{

namespace sim
{

// What a listener needs from the receiver. Must outlive the listener.
struct ReceiverRoom {
    SimConfig config; // nowMs is set
    PeriodAudio audio;
    std::function<void(const SimEvent &)> report;
    std::function<void(const SentPeriod &)> keepPeriod;
    QSet<QString> channels; // in use, as "address/N"

    qint64 nowMs() const { return config.nowMs(); }
    StreamFormat streamFormat(const Behaviour &behaviour, bool uncompressed) const;
};

// One client of the receiver: its request, greeting and sound, and the faults of its endpoint.
// Driven by the client's messages and a single timer. Owns its socket; calls `onGone` once at the
// end.
class Listener : public QObject
{
public:
    Listener(QTcpSocket *socket, int client, ReceiverRoom *room, QObject *parent);

    void end(); // disconnects the client immediately
    std::function<void()> onGone;

private:
    enum class Phase {
        Request, // nothing answered yet
        Opening, // answer to the request held back
        Open,    // no message from the client yet
        Waiting, // for commands; some behaviours stay here
        Sounding,
        Flooding, // endless data, or 16 MiB
        Silent,   // link open, but nothing more is sent
        Ended,
    };

    // listener.cpp: a faithful receiver
    void readSocket();
    void takeRequest();
    void openLink();
    void takeFrames();
    void takeFrame(const ClientFrame &frame);
    void takeMessage(const QString &text);
    bool takeChannel();
    void greet();
    void planSoundFrom(qint64 earliestMs);
    void tick();
    void sendDueSound(qint64 nowMs);
    void sendSound(const QByteArray &frame);
    void record(const QByteArray &frame, bool kept);
    void gone();

    // listenerfaults.cpp: the faults
    bool refuseRequest();
    bool refuseGreeting();
    void remind(qint64 nowMs);
    void disturbSound(qint64 nowMs);
    void endSound();
    void flood();
    void refuse(const QByteArray &message);
    void turnAway(const QByteArray &message);

    void note(const QString &kind, const QString &text);

    ClientWire m_wire;
    const int m_client;
    ReceiverRoom *m_room;
    Behaviour m_behaviour;
    QTimer m_timer;
    Phase m_phase = Phase::Request;
    QString m_path;
    QByteArray m_requestKey; // Sec-WebSocket-Key
    QByteArray m_received;   // not parsed yet
    QByteArray m_message;    // fragments of an incomplete message
    QString m_channel;       // key of the channel to take, "address/N"
    bool m_hasChannel = false;
    ReceiverCommands m_commands;
    std::unique_ptr<SoundStream> m_sound;
    PeriodRecorder m_recorder;
    int m_periodNumber = 0;
    quint32 m_framesSent = 0;
    qint64 m_keepaliveMs = 0;    // UTC of the last keepalive
    qint64 m_firstSoundMs = 0;   // UTC; 0 until sound starts
    qint64 m_nextFaultMs = 0;    // UTC; of the next late or repeated fault
    qint64 m_floodBytesLeft = 0; // rest of the huge frame
};

} // namespace sim

} // namespace outpost
