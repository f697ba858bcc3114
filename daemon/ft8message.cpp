#include "daemon/ft8message.h"

#include <QRegularExpression>

namespace outpost
{

namespace
{

// The forms that the 77 bits of a message unpack to, with single blanks. "…" is any callsign.
//   CQ … FN42, CQ DX … FN42, CQ TEST … FN42, CQ 290 … FN42, DE … FN42, QRZ …
//   … … [R] FN42, … … [R]-11, … … RRR|RR73|73, … …      also with /R, /P
//   [TU;] … … [R] 579 MA|0013                            RTTY contests
//   … … [R] 6A WI                                        Field Day
//   <…> <…> [R] 570007 JO22DI                            contests on VHF
//   … RR73; … <…> -08                                    an expedition to two callers at once
// The sender comes last; angle brackets hold a callsign that was sent as a hash, or "...".
QString messagePattern()
{
    // Two or three characters with a letter before the last digits, then letters; special calls
    // have more of both. A part before or behind a stroke is free.
    const QString hashed = QStringLiteral("<(?:[A-Z0-9/]{3,11}|\\.\\.\\.)>");
    const QString call =
        QLatin1String("(?:") + hashed +
        QStringLiteral(
            "|(?:[A-Z0-9]{1,8}/)?(?:[A-Z]{1,2}|[A-Z][0-9]|[0-9][A-Z]{1,2})[0-9]{1,4}[A-Z]{1,7}(?:/"
            "[A-Z0-9]{1,8})?)");
    const QString grid = QStringLiteral("(?<grid>(?!RR73)[A-R]{2}[0-9]{2})");
    const QString contestGrid =
        QStringLiteral("5[2-9][0-9]{4} (?<longgrid>[A-R]{2}[0-9]{2})[A-X]{2}");
    const QString exchange = QStringLiteral("(?:R )?(?:") + grid + QLatin1Char('|') + contestGrid +
                             QStringLiteral("|5[2-9]9 (?:[0-9]{4}|[A-Z]{2,3}|X[0-9]{2})"
                                            "|[0-9]{1,2}[A-F] [A-Z]{2,3})");
    const QString end =
        QStringLiteral("(?: (?:R?[+-][0-9]{2}|RRR|RR73|73|") + exchange + QStringLiteral("))?");
    const QString toOne = QStringLiteral("(?:CQ(?: (?:[A-Z]{1,4}|[0-9]{3}))?|DE|QRZ|(?:TU; )?") +
                          call + QStringLiteral(") (?<sender>") + call + QLatin1Char(')') + end;
    const QString toTwo = call + QStringLiteral(" RR73; ") + call + QStringLiteral(" (?<fox>") +
                          hashed + QStringLiteral(") [+-][0-9]{2}");
    return QStringLiteral("^(?:") + toOne + QLatin1Char('|') + toTwo + QStringLiteral(")$");
}

// jt9 marks in lower case and behind the message; no message has a lower case letter.
QString withoutMarks(const QString &message)
{
    static const QRegularExpression marks(QStringLiteral("(?: \\?)?(?: a[0-9])?$"));
    return message.simplified().remove(marks);
}

QString withoutBrackets(const QString &callsign)
{
    if (callsign == QLatin1String("<...>")) {
        return {}; // a hash of which the callsign was never heard
    }
    return callsign.startsWith(QLatin1Char('<')) ? callsign.mid(1).chopped(1) : callsign;
}

} // namespace

Ft8Sender senderOf(const QString &message)
{
    static const QRegularExpression pattern(messagePattern());
    const QRegularExpressionMatch match = pattern.match(withoutMarks(message));
    if (!match.hasMatch()) {
        return {};
    }
    const auto either = [&match](const QString &one, const QString &other) {
        return match.captured(one) + match.captured(other); // one of them is empty
    };
    return {withoutBrackets(either(QStringLiteral("sender"), QStringLiteral("fox"))),
            either(QStringLiteral("grid"), QStringLiteral("longgrid"))};
}

} // namespace outpost
