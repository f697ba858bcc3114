#include "daemon/refusal.h"

#include "base/logline.h"
#include "kiwi/kiwicommands.h"

#include <QHash>
#include <QRegularExpression>

namespace outpost
{

namespace
{
Refusal causeOf(const QString &name)
{
    static const QHash<QString, Refusal> causes{
        {QStringLiteral("too_busy"), Refusal::TooBusy},
        {QStringLiteral("monitor"), Refusal::AllTaken},
        {QStringLiteral("badp"), Refusal::Password},
        {QStringLiteral("down"), Refusal::Down},
        {QStringLiteral("redirect"), Refusal::Redirect},
        {QStringLiteral("ip_limit"), Refusal::DailyLimit},
        {QStringLiteral("inactivity_timeout"), Refusal::Inactivity},
        {QStringLiteral("kiwi_kick"), Refusal::Kicked}};
    return causes.value(name, Refusal::None);
}

QString pattern(Refusal cause)
{
    switch (cause) {
    case Refusal::TooBusy:
        return QStringLiteral("all channels are taken");
    case Refusal::AllTaken:
        return QStringLiteral("all channels are taken, and it offers to wait");
    case Refusal::Password:
        return QStringLiteral("it wants a password, or another one");
    case Refusal::OnePerAddress:
        return QStringLiteral("it allows one connection for each address");
    case Refusal::Down:
        return QStringLiteral("it is down for now");
    case Refusal::Redirect:
        return QStringLiteral("it sends us to %1");
    case Refusal::DailyLimit:
        return QStringLiteral("its daily limit for this address is used up");
    case Refusal::Inactivity:
        return QStringLiteral("it ends listeners that it takes for inactive");
    case Refusal::Kicked:
        return QStringLiteral("its owner ended the connection");
    case Refusal::Http:
        return QStringLiteral("its web server answered %1");
    case Refusal::NotReached:
        return QStringLiteral("it was not reached: %1");
    case Refusal::NoSound:
        return QStringLiteral("no sound came");
    case Refusal::SoundStopped:
        return QStringLiteral("its sound stopped");
    case Refusal::Ended:
        return QStringLiteral("the connection ended");
    case Refusal::WrongRate:
        return QStringLiteral("it sends %1 samples a second, where FT8 needs 12000");
    case Refusal::None:
        break;
    }
    return {};
}
} // namespace

Ending endingOfNotice(const QString &notice)
{
    const QString value = notice.section(QLatin1Char('='), 1);
    const Refusal cause = causeOf(notice.section(QLatin1Char('='), 0, 0));
    if (cause == Refusal::Password && value == QLatin1String("5")) {
        return {Refusal::OnePerAddress, {}};
    }
    return {cause, cause == Refusal::None ? QString() : value};
}

Ending endingOfError(const QString &error)
{
    if (error.isEmpty()) {
        return {Refusal::NoSound, {}};
    }
    static const QRegularExpression status(QStringLiteral("status code: (.*?)\\.?$"));
    const QRegularExpressionMatch match = status.match(error);
    return match.hasMatch() ? Ending{Refusal::Http, match.captured(1)}
                            : Ending{Refusal::NotReached, error};
}

QString endingText(const Ending &ending)
{
    QString text = pattern(ending.cause);
    if (!text.contains(QLatin1String("%1"))) {
        return text;
    }
    return text.arg(escapedControls(shortenedText(ending.detail))); // it is the receiver's
}

QString endingAdvice(Refusal cause)
{
    switch (cause) {
    case Refusal::Password:
        return QStringLiteral("Ask its owner for the password and name the file with it in the "
                              "configuration. It is tried again every hour.");
    case Refusal::OnePerAddress:
        return QStringLiteral("End the other connection, or listen on one band of it.");
    case Refusal::Redirect:
        return QStringLiteral("Put the new place into the configuration if its owner means it.");
    case Refusal::DailyLimit:
        return QStringLiteral("It is tried again every hour.");
    case Refusal::Inactivity:
    case Refusal::Kicked:
        return QStringLiteral("Its owner may not want listeners that stay; ask, or take another.");
    case Refusal::WrongRate:
        return QStringLiteral("Receivers set up for three channels cannot be decoded; take "
                              "another. It is tried again every hour.");
    default:
        return {};
    }
}

bool isHopeless(Refusal cause)
{
    return cause == Refusal::Password || cause == Refusal::DailyLimit ||
           cause == Refusal::WrongRate;
}

} // namespace outpost
