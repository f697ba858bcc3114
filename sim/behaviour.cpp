#include "sim/behaviour.h"

namespace outpost
{

namespace sim
{

namespace
{

constexpr int kEndpoints = 4;

QVector<BehaviourInfo> refusals()
{
    return {
        {"refuse",
         {Fault::Refuse, 0, {}},
         nullptr,
         0,
         "reset the connection (with all=refuse the port does not even listen)"},
        {"no-connect",
         {Fault::NoConnect, 0, {}},
         nullptr,
         0,
         "never answer the TCP connect (one endpoint alone: as no-answer)"},
        {"no-answer",
         {Fault::NoAnswer, 0, {}},
         nullptr,
         0,
         "accept TCP and never answer the request"},
        {"http-404",
         {Fault::HttpError, 0, "404 Not Found"},
         nullptr,
         0,
         "the receiver is offline, says the proxy"},
        {"http-307",
         {Fault::HttpError, 0, "307 Temporary Redirect"},
         nullptr,
         0,
         "the proxy sends the client elsewhere"},
        {"http-503",
         {Fault::HttpError, 0, "503 Service Unavailable"},
         nullptr,
         0,
         "the receiver has just booted"},
        {"endless-headers",
         {Fault::EndlessHeaders, 0, {}},
         nullptr,
         0,
         "an upgrade reply whose headers never end"},
        {"slow-open",
         {Fault::SlowOpen, 4, {}},
         "seconds",
         0,
         "answer the upgrade late, then stream"},
        {"open-silent", {Fault::OpenSilent, 0, {}}, nullptr, 0, "open and never send anything"},
        {"monitor",
         {Fault::Monitor, 0, {}},
         nullptr,
         0,
         "all channels taken: messages for ever, no sound"},
        {"msg-only",
         {Fault::MessagesOnly, 0, {}},
         nullptr,
         0,
         "the whole greeting, then messages for ever, no sound"},
        {"text-only", {Fault::TextOnly, 0, {}}, nullptr, 0, "text messages for ever, no sound"},
        {"other-tags-only",
         {Fault::OtherTagsOnly, 0, {}},
         nullptr,
         0,
         "binary frames W/F and EXT for ever, no sound"},
        {"too-busy",
         {Fault::TooBusy, 1, {}},
         "seconds",
         0.01,
         "too_busy again and again, this far apart"},
        {"badp", {Fault::Notice, 0, "badp=1"}, nullptr, 0, "password needed, then a close"},
        {"one-per-address",
         {Fault::Notice, 0, "badp=5"},
         nullptr,
         0,
         "one connection per address, then a close"},
        {"down", {Fault::Notice, 0, "down=1"}, nullptr, 0, "the receiver is down, then a close"},
        {"redirect",
         {Fault::Notice, 0, "redirect=http://127.0.0.1:9"},
         nullptr,
         0,
         "redirect message, then a close"},
        {"ip-limit",
         {Fault::Notice, 0, "ip_limit=60,127.0.0.1"},
         nullptr,
         0,
         "daily limit of this address reached, then a close"},
        {"badp-open",
         {Fault::OpenNotice, 0, "badp=1"},
         nullptr,
         0,
         "password needed, then silence with the link still open"},
        {"down-open",
         {Fault::OpenNotice, 0, "down=1"},
         nullptr,
         0,
         "the receiver is down, then silence with the link still open"},
        {"busy-open",
         {Fault::OpenNotice, 0, "too_busy=8"},
         nullptr,
         0,
         "too_busy once, then silence with the link still open"},
    };
}

QVector<BehaviourInfo> oddSound()
{
    return {
        {"stream", {Fault::Stream, 0, {}}, nullptr, 0, "a faithful receiver (the default)"},
        {"bursty",
         {Fault::Bursty, 3, {}},
         "seconds",
         0.01,
         "sound late and in bursts, this far apart, from the period boundary on"},
        {"minute-burst",
         {Fault::MinuteBurst, 5, {}},
         "seconds",
         0,
         "a minute's audio at once, this long after the period boundary"},
        {"big-msg",
         {Fault::BigMessage, 200, {}},
         "kB",
         1,
         "configuration messages of this size in the greeting"},
        {"msg-between",
         {Fault::MessagesBetween, 0, {}},
         nullptr,
         0,
         "messages between the sound frames"},
        {"text-between",
         {Fault::TextBetween, 0, {}},
         nullptr,
         0,
         "text messages between the sound frames"},
        {"other-tags",
         {Fault::OtherTags, 0, {}},
         nullptr,
         0,
         "binary frames W/F and EXT between the sound frames"},
        {"stale-first",
         {Fault::StaleFirst, 0, {}},
         nullptr,
         0,
         "the first frame carries a loud tone left over from another listener"},
        {"rate",
         {Fault::Rate, 12001.06, {}},
         "Hz",
         1000,
         "the receiver's clock is off by a little"},
        {"wide",
         {Fault::WideBand, 20250, {}},
         "Hz",
         1000,
         "sound sampled at another rate, as 3-channel firmware does"},
        {"lost-samples",
         {Fault::LostSamples, 4, {}},
         "seconds",
         0.01,
         "300 samples lost this often with no gap in the sequence"},
        {"sequence-gaps",
         {Fault::SequenceGaps, 4, {}},
         "seconds",
         0.01,
         "a frame lost this often, its sequence number too"},
        {"overload",
         {Fault::Overload, 0, {}},
         nullptr,
         0,
         "the overload flag 02 toggles with every frame"},
        {"big-endian",
         {Fault::BigEndian, 0, {}},
         nullptr,
         0,
         "uncompressed big-endian samples, flag 80 clear"},
        {"odd-payload",
         {Fault::OddPayload, 0, {}},
         nullptr,
         0,
         "payloads with an odd number of bytes"},
        {"short-frames",
         {Fault::ShortFrames, 0, {}},
         nullptr,
         0,
         "sound frames of 3 to 10 bytes between the real ones"},
        {"tiny-frames",
         {Fault::TinyFrames, 0, {}},
         nullptr,
         0,
         "binary frames of 0 to 2 bytes between the real ones"},
        {"random",
         {Fault::RandomPayload, 0, {}},
         nullptr,
         0,
         "random bytes of random length after \"SND\""},
        {"fragments",
         {Fault::Fragments, 0, {}},
         nullptr,
         0,
         "every sound frame as a message of three fragments"},
        {"no-pong", {Fault::NoPong, 0, {}}, nullptr, 0, "a client's ping is never answered"},
    };
}

QVector<BehaviourInfo> endings()
{
    return {
        {"kick", {Fault::Kick, 10, {}}, "seconds", 0, "sound, then too_busy and a close"},
        {"owner-kick",
         {Fault::OwnerKick, 10, {}},
         "seconds",
         0,
         "sound, then kiwi_kick and a close"},
        {"inactivity",
         {Fault::Inactivity, 10, {}},
         "seconds",
         0,
         "sound, then inactivity_timeout and a close"},
        {"close",
         {Fault::CloseFrame, 10, {}},
         "seconds",
         0,
         "sound, then a close frame without status code"},
        {"drop",
         {Fault::DropTcp, 10, {}},
         "seconds",
         0,
         "sound, then TCP closed without a close frame"},
        {"reset", {Fault::ResetTcp, 10, {}}, "seconds", 0, "sound, then TCP reset"},
        {"stall", {Fault::Stall, 10, {}}, "seconds", 0, "sound, then nothing with TCP still open"},
        {"half-frame",
         {Fault::HalfFrame, 10, {}},
         "seconds",
         0,
         "sound, then half a frame and silence"},
        {"huge",
         {Fault::HugeFrame, 10, {}},
         "seconds",
         0,
         "sound, then one sound frame of 16 MiB, then sound"},
        {"endless-fragments",
         {Fault::EndlessFragments, 10, {}},
         "seconds",
         0,
         "sound, then a message whose fragments never end"},
        {"ping-flood",
         {Fault::PingFlood, 10, {}},
         "seconds",
         0,
         "sound, then pings without end and without reading the answers"},
    };
}

QString plain(const char *text)
{
    return QString::fromLatin1(text);
}

QString nameWithParameter(const BehaviourInfo &info)
{
    if (!info.parameter) {
        return plain(info.name);
    }
    return QStringLiteral("%1[:%2]").arg(plain(info.name), plain(info.parameter));
}

} // namespace

bool Behaviour::neverSounds() const
{
    switch (fault) {
    case Fault::Monitor:
    case Fault::MessagesOnly:
    case Fault::TextOnly:
    case Fault::OtherTagsOnly:
    case Fault::TooBusy:
    case Fault::Notice:
    case Fault::OpenNotice:
        return true;
    default:
        return false;
    }
}

const QVector<BehaviourInfo> &behaviourTable()
{
    static const QVector<BehaviourInfo> table = oddSound() + endings() + refusals();
    return table;
}

bool parseBehaviour(const QString &text, Behaviour *behaviour, QString *error)
{
    const QString name = text.section(QLatin1Char(':'), 0, 0);
    const QString parameter = text.section(QLatin1Char(':'), 1);
    const auto &table = behaviourTable();
    const auto info = std::find_if(table.begin(), table.end(), [&](const BehaviourInfo &candidate) {
        return name == QLatin1String(candidate.name);
    });
    if (info == table.end()) {
        *error = QStringLiteral("unknown behaviour \"%1\"").arg(name);
        return false;
    }
    *behaviour = info->behaviour;
    if (name.size() == text.size()) {
        return true;
    }
    bool isNumber = false;
    behaviour->parameter = parameter.toDouble(&isNumber);
    if (info->parameter && isNumber && behaviour->parameter >= info->least &&
        behaviour->parameter <= 1e6) {
        return true;
    }
    *error = QStringLiteral("behaviour \"%1\" is written %2").arg(text, nameWithParameter(*info));
    return false;
}

QString behaviourHelp()
{
    QString help;
    for (const BehaviourInfo &info : behaviourTable()) {
        QString line =
            QStringLiteral("  %1 %2").arg(nameWithParameter(info), -27).arg(plain(info.help));
        if (info.parameter) {
            line += QStringLiteral(" (%1)").arg(info.behaviour.parameter, 0, 'g', 8);
        }
        help += line + QLatin1Char('\n');
    }
    return help;
}

bool EndpointBehaviours::apply(const QString &option, QString *error)
{
    const QString key = option.section(QLatin1Char('='), 0, 0);
    Behaviour behaviour;
    if (!option.contains(QLatin1Char('='))) {
        *error = QStringLiteral("\"%1\" is not written K=BEHAVIOUR").arg(option);
        return false;
    }
    if (!parseBehaviour(option.section(QLatin1Char('='), 1), &behaviour, error)) {
        return false;
    }
    if (key == QLatin1String("all")) {
        byNumber.clear();
        fallback = behaviour;
        return true;
    }
    bool isNumber = false;
    const int number = key.toInt(&isNumber);
    if (!isNumber || number < 0 || number >= kEndpoints) {
        *error = QStringLiteral("endpoint \"%1\" is neither 0, 1, 2, 3 nor all").arg(key);
        return false;
    }
    byNumber.insert(number, behaviour);
    return true;
}

bool EndpointBehaviours::areAll(Fault fault) const
{
    return fallback.fault == fault &&
           std::all_of(byNumber.begin(), byNumber.end(),
                       [fault](const Behaviour &one) { return one.fault == fault; });
}

} // namespace sim

} // namespace outpost
