#pragma once

#include <QString>

namespace outpost
{

// Why a link ended or never came to sound.
enum class Refusal {
    None,
    TooBusy,       // detail: its number of channels
    AllTaken,      // it offers to watch without sound
    Password,      // none, or a wrong one
    OnePerAddress, // another connection from this address is live
    Down,
    Redirect,   // detail: where to
    DailyLimit, // of this address; detail: minutes
    Inactivity, // detail: minutes
    Kicked,
    Http,       // detail: the status
    NotReached, // detail: the system's reason
    NoSound,    // nothing came within the time
    SoundStopped,
    Ended,    // without a reason
    WrongRate // detail: samples a second
};

struct Ending {
    Refusal cause = Refusal::None;
    QString detail;
};

// A notice of the receiver (kiwi/receivernotices.h); cause None if it refuses nothing.
Ending endingOfNotice(const QString &notice);

// Qt's text of a socket error; without one, no sound came.
Ending endingOfError(const QString &error);

// As in "all 8 channels are taken".
QString endingText(const Ending &ending);

// What the operator could do about it, as a sentence; empty if it passes by itself.
QString endingAdvice(Refusal cause);

// Whether a few minutes change nothing.
bool isHopeless(Refusal cause);

} // namespace outpost
