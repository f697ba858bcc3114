#include "bench/fuzz/fuzzing.h"
#include "display/highlightcalls.h"

namespace outpost
{

namespace
{
bool isCallSign(QChar c)
{
    return (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) ||
           (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('/');
}

bool isCall(const QString &entry)
{
    bool valid = !entry.isEmpty() && entry.size() <= 15;
    for (const QChar c : entry) {
        valid = valid && isCallSign(c);
    }
    return valid;
}

// Upper case, including the characters that a case-insensitive comparison treats as A to Z: Unicode
// folds the Kelvin sign and the long s to letters.
QString folded(QString text)
{
    for (QChar &c : text) {
        if (c >= QLatin1Char('a') && c <= QLatin1Char('z')) {
            c = QChar(c.unicode() - 'a' + 'A');
        } else if (c == QChar(0x212a)) {
            c = QLatin1Char('K');
        } else if (c == QChar(0x017f)) {
            c = QLatin1Char('S');
        }
    }
    return text;
}

// Whether the callsign occurs without a callsign character on either side.
bool standsAlone(const QString &upperText, const QString &call)
{
    for (int at = upperText.indexOf(call); at >= 0; at = upperText.indexOf(call, at + 1)) {
        const int end = at + call.size();
        if ((at == 0 || !isCallSign(upperText.at(at - 1))) &&
            (end == upperText.size() || !isCallSign(upperText.at(end)))) {
            return true;
        }
    }
    return false;
}

void checkStored(const QStringList &stored)
{
    QStringList expected;
    for (const QString &entry : stored) {
        const QString call = entry.trimmed().toUpper();
        if (isCall(call) && !expected.contains(call) && expected.size() < 10) {
            expected.append(call);
        }
    }
    require(validHighlightCalls(stored) == expected, "the first ten valid calls are taken");
    require(validHighlightCalls(expected) == expected, "what was taken is taken again");
}

void checkTyped(const QString &typed, const QStringList &lines)
{
    QStringList calls;
    QString invalid;
    for (const QString &line : lines) {
        const QString call = line.trimmed().toUpper();
        if (call.isEmpty()) {
            continue;
        }
        if (!isCall(call)) {
            invalid = call;
            break;
        }
        if (!calls.contains(call)) {
            calls.append(call);
        }
    }
    const HighlightEdit edit = parseHighlightCalls(typed);
    require(edit.invalidEntry == invalid, "the first line that is no call is named");
    require(edit.calls == calls, "the calls before it, in the order typed");
}

void checkMatch(const QString &text, const QStringList &calls)
{
    bool any = false;
    for (const QString &call : calls) {
        const bool expected = standsAlone(folded(text), call);
        require(containsCall(text, {call}) == expected, "a call is found when it stands alone");
        any = any || expected;
    }
    require(containsCall(text, calls) == any, "any call of the list is found");
}
} // namespace

// Input: a line with a message, then the list as typed, one callsign per line.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const QString text = QString::fromUtf8(input.line());
    const QString typed = QString::fromUtf8(input.rest());
    const QStringList lines =
        QString(typed).replace(QLatin1Char('\r'), QLatin1Char('\n')).split(QLatin1Char('\n'));
    checkStored(lines);
    checkTyped(typed, lines);
    checkMatch(text, validHighlightCalls(lines));
    return 0;
}

} // namespace outpost
