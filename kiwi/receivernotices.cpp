#include "kiwi/receivernotices.h"

#include "base/logline.h"
#include "kiwi/kiwicommands.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace outpost
{

namespace
{
// Refusals are short; longer messages, such as a configuration of megabytes, are not searched.
constexpr int maxSearchedBytes = 4096;
constexpr int maxNotices = 20;
constexpr qint64 repeatMs = 60000;

bool tellsOfRefusal(const QByteArray &name)
{
    static const std::array<QByteArray, 8> names{"too_busy",  "monitor",           "badp",
                                                 "down",      "redirect",          "ip_limit",
                                                 "kiwi_kick", "inactivity_timeout"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

QByteArrayList messageWords(const QByteArray &frame)
{
    const QByteArray tag = "MSG ";
    if (!frame.startsWith(tag)) {
        return {};
    }
    return frame.mid(tag.size(), maxSearchedBytes).split(' ');
}

// The notice in one "name" or "name=value"; empty if it is not a refusal.
QString notice(const QByteArray &pair)
{
    const int equals = pair.indexOf('=');
    const QByteArray name = pair.mid(0, equals);
    if (!tellsOfRefusal(name)) {
        return {};
    }
    if (equals < 0) {
        return QString::fromLatin1(name);
    }
    // fromUtf8(QByteArray) stops at the first zero byte.
    const QString value = QString::fromUtf8(QByteArray::fromPercentEncoding(pair.mid(equals + 1)));
    if (name == "badp" && value == QLatin1String("0")) {
        return {}; // password accepted
    }
    return QString::fromLatin1(name) + QLatin1Char('=') + escapedControls(shortenedText(value));
}
} // namespace

QStringList receiverNotices(const QByteArray &frame)
{
    QStringList notices;
    for (const QByteArray &pair : messageWords(frame)) {
        notices.append(notice(pair));
    }
    notices.removeAll(QString());
    return notices;
}

std::optional<double> receiverSampleRate(const QByteArray &frame)
{
    const QByteArray name = "sample_rate=";
    for (const QByteArray &pair : messageWords(frame)) {
        bool isNumber = false;
        const double rateHz = pair.mid(name.size()).toDouble(&isNumber);
        if (pair.startsWith(name) && isNumber) {
            return rateHz;
        }
    }
    return {};
}

bool RecentNotices::tell(const QString &notice, qint64 nowMs)
{
    forget(nowMs);
    if (toldMs.contains(notice) || toldMs.size() >= maxNotices) {
        return false;
    }
    toldMs.insert(notice, nowMs);
    return true;
}

// Forgets notices older than a minute, and those from the future after the clock was set back.
void RecentNotices::forget(qint64 nowMs)
{
    for (auto it = toldMs.begin(); it != toldMs.end();) {
        const bool recent = it.value() <= nowMs && nowMs - it.value() < repeatMs;
        it = recent ? std::next(it) : toldMs.erase(it);
    }
}

} // namespace outpost
