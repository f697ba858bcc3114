#include "bench/fuzz/fuzzing.h"
#include "kiwi/receivernotices.h"

#include <QList>
#include <QPair>
#include <algorithm>

namespace outpost
{

namespace
{
bool tellsOfRefusal(const QByteArray &name)
{
    return name == "too_busy" || name == "monitor" || name == "badp" || name == "down" ||
           name == "redirect" || name == "ip_limit" || name == "kiwi_kick" ||
           name == "inactivity_timeout";
}

// A decoded value as the log shows it, with control characters escaped.
QString shown(const QString &value)
{
    QString text;
    const QString cut = value.size() > 180 ? value.left(180) + QStringLiteral("...") : value;
    for (const uint codePoint : cut.toUcs4()) {
        const QChar::Category category = QChar::category(codePoint);
        const bool breaks = category == QChar::Other_Control || category == QChar::Other_Format ||
                            category == QChar::Separator_Line ||
                            category == QChar::Separator_Paragraph;
        text += breaks ? QString::asprintf("\\u%04x", codePoint) : QString::fromUcs4(&codePoint, 1);
    }
    return text;
}

// Adds the notice of one name and its value, if it is a refusal.
void addNotice(QStringList *notices, const QByteArray &name, bool hasValue, const QByteArray &rest)
{
    if (!tellsOfRefusal(name)) {
        return;
    }
    const QByteArray decoded = QByteArray::fromPercentEncoding(rest);
    const QString value = QString::fromUtf8(decoded.constData()); // up to a zero byte
    if (name == "badp" && hasValue && value == QLatin1String("0")) {
        return;
    }
    notices->append(QString::fromLatin1(name) +
                    (hasValue ? QLatin1Char('=') + shown(value) : QString()));
}

// Byte by byte: a blank ends a pair, the first equals sign ends its name.
QStringList referenceNotices(const QByteArray &frame)
{
    QStringList notices;
    if (frame.left(4) != "MSG ") {
        return notices;
    }
    QByteArray name;
    QByteArray rest;
    bool hasValue = false;
    const QByteArray searched = frame.mid(4).left(4096) + ' ';
    for (const char byte : searched) {
        if (byte == ' ') {
            addNotice(&notices, name, hasValue, rest);
            name.clear();
            rest.clear();
            hasValue = false;
        } else if (hasValue) {
            rest += byte;
        } else if (byte == '=') {
            hasValue = true;
        } else {
            name += byte;
        }
    }
    return notices;
}

// Compares RecentNotices with a plain list of everything logged so far.
class Told
{
public:
    void meet(const QString &notice, qint64 nowMs)
    {
        list.erase(std::remove_if(list.begin(), list.end(),
                                  [nowMs](const auto &told) {
                                      return told.second > nowMs || nowMs - told.second >= 60000;
                                  }),
                   list.end());
        const bool known = std::any_of(list.begin(), list.end(),
                                       [&](const auto &told) { return told.first == notice; });
        const bool expected = !known && list.size() < 20;
        require(recent.tell(notice, nowMs) == expected, "once a minute, and at most 20");
        if (expected) {
            list.append({notice, nowMs});
        }
    }

private:
    RecentNotices recent;
    QList<QPair<QString, qint64>> list;
};

void checkFrame(const QByteArray &frame, int stepMs)
{
    const QStringList notices = receiverNotices(frame);
    require(notices == referenceNotices(frame), "the notices are those of the rule");
    Told told;
    qint64 nowMs = 1768573395000;
    for (const QString &notice : notices) {
        told.meet(notice, nowMs);
        nowMs += stepMs;
    }
}
} // namespace

// Input: the time since the last notice in ms, which may be negative (32768 stands for 0), then a
// frame.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const int stepMs = input.word() - 32768;
    const QByteArray frame = input.rest();
    checkFrame(frame, stepMs);
    if (input.isOneIn(64)) { // longer than the part that is searched
        checkFrame("MSG " + frame.repeated(1 + 6000 / qMax(1, frame.size())), stepMs);
    }
    return 0;
}

} // namespace outpost
