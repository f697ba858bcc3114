#pragma once

#include <QMap>
#include <QString>
#include <QVector>

namespace outpost
{

// What the simulated receiver does on an endpoint: stream faithfully, or show a fault seen in the
// field. behaviourTable() drives the parser and the help text.
namespace sim
{

enum class Fault {
    Stream,
    // Before the WebSocket is open
    Refuse,
    NoConnect,
    NoAnswer,
    HttpError,
    EndlessHeaders,
    SlowOpen,
    // WebSocket open, but no sound
    OpenSilent,
    Monitor,
    MessagesOnly,
    TextOnly,
    OtherTagsOnly,
    TooBusy,
    Notice,
    OpenNotice,
    // Sound with faulty timing or content
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
    // Sound that stops, or is drowned in other traffic, after the given number of seconds
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
    double parameter = 0; // meaning and unit: see the table
    QByteArray text;      // HttpError: status line; Notice, OpenNotice: the message

    bool is(Fault other) const { return fault == other; }
    // Whether no sound follows although the WebSocket opens.
    bool neverSounds() const;
    qint64 parameterMs() const { return qRound64(parameter * 1000); } // for parameters in seconds
};

struct BehaviourInfo {
    const char *name;
    Behaviour behaviour;   // with the default parameter
    const char *parameter; // its name; null if it takes none
    double least;          // smallest allowed parameter
    const char *help;
};
const QVector<BehaviourInfo> &behaviourTable();

// Parses "kick" or "kick:10". On failure returns false and sets `error` to a sentence.
bool parseBehaviour(const QString &text, Behaviour *behaviour, QString *error);

// One line per behaviour.
QString behaviourHelp();

// Endpoints 0 to 3 by the number in the path; any other number gets the fallback.
struct EndpointBehaviours {
    Behaviour fallback;
    QMap<qint64, Behaviour> byNumber;

    Behaviour of(qint64 number) const { return byNumber.value(number, fallback); }
    // Applies "2=kick:10" or "all=monitor"; "all" discards earlier options. On failure returns
    // false and sets `error`.
    bool apply(const QString &option, QString *error);
    bool areAll(Fault fault) const;
};

} // namespace sim

} // namespace outpost
