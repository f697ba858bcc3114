#include "display/highlightcalls.h"

#include "base/settings.h"

#include <QRegularExpression>
#include <algorithm>

namespace outpost
{

namespace
{

const QString callsKey = QStringLiteral("highlight/calls");

QString asCall(const QString &entry)
{
    return entry.trimmed().toUpper();
}

bool isCall(const QString &entry)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Z0-9/]{1,15}$"));
    return pattern.match(entry).hasMatch();
}

} // namespace

QStringList validHighlightCalls(const QStringList &stored)
{
    QStringList calls;
    for (const QString &entry : stored) {
        if (calls.size() == maxHighlightCalls) {
            break;
        }
        const QString call = asCall(entry);
        if (isCall(call) && !calls.contains(call)) {
            calls.append(call);
        }
    }
    return calls;
}

QStringList storedHighlightCalls(const SettingsStore &settings)
{
    return validHighlightCalls(settings.open().value(callsKey).toStringList());
}

void saveHighlightCalls(const SettingsStore &settings, const QStringList &calls)
{
    settings.save(callsKey, calls);
}

HighlightEdit parseHighlightCalls(const QString &typed)
{
    static const QRegularExpression lineBreaks(QStringLiteral("[\r\n]+"));
    HighlightEdit edit;
    for (const QString &line : typed.split(lineBreaks, Qt::SkipEmptyParts)) {
        const QString call = asCall(line);
        if (call.isEmpty() || edit.calls.contains(call)) {
            continue;
        }
        if (!isCall(call)) {
            edit.invalidEntry = call;
            break;
        }
        edit.calls.append(call);
    }
    return edit;
}

namespace
{

bool containsOneCall(const QString &text, const QString &call)
{
    const QRegularExpression pattern(
        QStringLiteral("(^|[^A-Z0-9/])%1(?=$|[^A-Z0-9/])").arg(QRegularExpression::escape(call)),
        QRegularExpression::CaseInsensitiveOption);
    return pattern.match(text).hasMatch();
}

} // namespace

bool containsCall(const QString &text, const QStringList &calls)
{
    if (text.trimmed().isEmpty()) {
        return false;
    }
    return std::any_of(calls.begin(), calls.end(),
                       [&text](const QString &call) { return containsOneCall(text, call); });
}

} // namespace outpost
