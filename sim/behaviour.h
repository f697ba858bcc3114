#pragma once

#include <QMap>
#include <QString>
#include <QVector>

namespace outpost
{

// What the simulated receiver does on an endpoint: stream faithfully, or one of the faults met in
// the field. The table drives parsing and help.
namespace sim
{

enum class Fault {
    Stream,
    // Before the link is open
    Refuse,
    NoConnect,
    NoAnswer,
    HttpError,
    EndlessHeaders,
    SlowOpen,
    // Open, never sound
    OpenSilent,
    Monitor,
    MessagesOnly,
    TextOnly,
    OtherTagsOnly,
    TooBusy,
    Notice,
    OpenNotice,
    // Sound whose delivery or content is at fault
    Bursty,
    MinuteBurst,
    BigMessage,
    MessagesBetween,
    StaleFirst,
    Rate,
    WideBand,
    LostSamples,
    SequenceGaps,
    Overload,
    BigEndian,
    OddPayload,
    ShortFrames,
    TinyFrames,
    OtherTags,
    TextBetween,
    RandomPayload,
    Fragments,
    NoPong,
    // Sound that ends, or is drowned, after a number of seconds
    Kick,
    OwnerKick,
    Inactivity,
    CloseFrame,
    DropTcp,
    ResetTcp,
    Stall,
    HalfFrame,
    HugeFrame,
    EndlessFragments,
    PingFlood,
};

struct Behaviour {
    Fault fault = Fault::Stream;
    double parameter = 0; // its meaning and unit stand in the table
    QByteArray text;      // HttpError: status line; Notice, OpenNotice: what the message says

    bool is(Fault other) const { return fault == other; }
    bool neverSounds() const;                                         // though the link is open
    qint64 parameterMs() const { return qRound64(parameter * 1000); } // of a parameter in seconds
};

struct BehaviourInfo {
    const char *name;
    Behaviour behaviour;   // with the default parameter
    const char *parameter; // name of the parameter, null if it takes none
    double least;          // smallest parameter allowed
    const char *help;
};
const QVector<BehaviourInfo> &behaviourTable();

// "kick" or "kick:10". On failure returns false with a sentence in `error`.
bool parseBehaviour(const QString &text, Behaviour *behaviour, QString *error);

// One line for each behaviour.
QString behaviourHelp();

// Endpoints 0..3 by the number in the path; every other number gets the fallback.
struct EndpointBehaviours {
    Behaviour fallback;
    QMap<qint64, Behaviour> byNumber;

    Behaviour of(qint64 number) const { return byNumber.value(number, fallback); }
    // "2=kick:10" or "all=monitor"; "all" replaces what was set before.
    bool apply(const QString &option, QString *error);
    bool areAll(Fault fault) const;
};

} // namespace sim

} // namespace outpost
