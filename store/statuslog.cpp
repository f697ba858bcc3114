#include "store/statuslog.h"

#include "base/datafile.h"
#include "base/duration.h"
#include "base/frequency.h"
#include "base/receiverkey.h"

#include <QJsonArray>
#include <QStringList>
#include <QtGlobal>
#include <algorithm>

namespace outpost
{

namespace
{

constexpr int shownSessions = 20;

// JSON numbers are doubles; truncates them to the range of exact integers.
qint64 wholeNumber(const QJsonValue &value)
{
    constexpr double exactLimit = 9007199254740992.0; // 2^53
    return static_cast<qint64>(qBound(-exactLimit, value.toDouble(), exactLimit));
}

int entryIndex(const QJsonArray &receivers, const StatusSession &session)
{
    const auto found =
        std::find_if(receivers.begin(), receivers.end(), [&session](const QJsonValue &element) {
            return element.isObject() &&
                   isReceiver(element.toObject(), session.host, session.port, 0);
        });
    return found == receivers.end() ? -1 : static_cast<int>(found - receivers.begin());
}

QJsonObject withTotals(QJsonObject entry, const StatusSession &session, qint64 endMs)
{
    const qint64 sessions = entry.value(QLatin1String("Sessions")).toInt();
    const qint64 seconds = wholeNumber(entry.value(QLatin1String("TotalSeconds")));
    const qint64 decodes = wholeNumber(entry.value(QLatin1String("TotalDecodes")));
    entry.insert(QStringLiteral("Host"), session.host);
    entry.insert(QStringLiteral("Port"), session.port);
    entry.insert(QStringLiteral("Sessions"), sessions + 1);
    entry.insert(QStringLiteral("TotalSeconds"), seconds + wholeSeconds(session.startMs, endMs));
    entry.insert(QStringLiteral("TotalDecodes"), decodes + session.decodes);
    entry.insert(QStringLiteral("LastConnectedUtc"), isoUtc(endMs));
    entry.insert(QStringLiteral("LastFrequencyMhz"), session.frequencyMhz);
    return entry;
}

QJsonArray withReceiverTotals(QJsonArray receivers, const StatusSession &session, qint64 endMs)
{
    const int index = entryIndex(receivers, session);
    if (index < 0) {
        receivers.append(withTotals({}, session, endMs));
    } else {
        receivers.replace(index, withTotals(receivers.at(index).toObject(), session, endMs));
    }
    return receivers;
}

QJsonObject sessionRecord(const StatusSession &session, qint64 endMs)
{
    return {{QStringLiteral("Host"), session.host},
            {QStringLiteral("Port"), session.port},
            {QStringLiteral("FrequencyMhz"), session.frequencyMhz},
            {QStringLiteral("StartUtc"), isoUtc(session.startMs)},
            {QStringLiteral("EndUtc"), isoUtc(endMs)},
            {QStringLiteral("DurationSeconds"), wholeSeconds(session.startMs, endMs)},
            {QStringLiteral("Decodes"), session.decodes}};
}

QString integerText(const QJsonValue &value)
{
    return QString::number(value.toInt());
}

QString wholeNumberText(const QJsonValue &value)
{
    return QString::number(wholeNumber(value));
}

QString durationText(const QJsonValue &seconds)
{
    return formatDuration(wholeNumber(seconds));
}

QString totalsLine(const QJsonObject &entry)
{
    return QStringLiteral("%1:%2 | Sessions: %3 | Time: %4 | Decodes: %5 | Last UTC: %6")
        .arg(entry.value(QLatin1String("Host")).toString(),
             integerText(entry.value(QLatin1String("Port"))),
             integerText(entry.value(QLatin1String("Sessions"))),
             durationText(entry.value(QLatin1String("TotalSeconds"))),
             wholeNumberText(entry.value(QLatin1String("TotalDecodes"))),
             entry.value(QLatin1String("LastConnectedUtc")).toString());
}

QString sessionLine(const QJsonObject &record)
{
    return QStringLiteral("%1 | %2:%3 | %4 MHz | %5 | %6 decodes")
        .arg(record.value(QLatin1String("StartUtc")).toString(),
             record.value(QLatin1String("Host")).toString(),
             integerText(record.value(QLatin1String("Port"))),
             frequencyText(record.value(QLatin1String("FrequencyMhz")).toDouble()),
             durationText(record.value(QLatin1String("DurationSeconds"))),
             wholeNumberText(record.value(QLatin1String("Decodes"))));
}

QStringList totalsLines(const QJsonArray &receivers)
{
    if (receivers.isEmpty()) {
        return {QStringLiteral("No completed receiver sessions yet.")};
    }
    QStringList lines;
    for (const QJsonValue &entry : receivers) {
        lines.append(totalsLine(entry.toObject()));
    }
    return lines;
}

QStringList newestSessionLines(const QJsonArray &sessions)
{
    if (sessions.isEmpty()) {
        return {QStringLiteral("No completed sessions.")};
    }
    QStringList lines;
    const int oldestShown = qMax(0, sessions.size() - shownSessions);
    for (int index = sessions.size() - 1; index >= oldestShown; --index) {
        lines.append(sessionLine(sessions.at(index).toObject()));
    }
    return lines;
}

QStringList historyLines(const std::optional<QByteArray> &file)
{
    if (!file) {
        return {QStringLiteral("No completed receiver sessions yet.")};
    }
    const std::optional<QJsonObject> log = parseJsonObject(*file);
    if (!log) {
        return {QStringLiteral("Status data file is not valid JSON.")};
    }
    return totalsLines(log->value(QLatin1String("Receivers")).toArray())
           << QString() << QStringLiteral("RECENT COMPLETED SESSIONS")
           << newestSessionLines(log->value(QLatin1String("Sessions")).toArray());
}

QStringList currentConnectionLines(const StatusSession &session, qint64 nowMs)
{
    if (!session.active) {
        return {QStringLiteral("Disconnected")};
    }
    return {QStringLiteral("Receiver: %1:%2").arg(session.host, QString::number(session.port)),
            QStringLiteral("Frequency: %1 MHz").arg(frequencyText(session.frequencyMhz)),
            QStringLiteral("Connected since UTC: %1").arg(isoUtc(session.startMs)),
            QStringLiteral("Elapsed: %1").arg(formatDuration(wholeSeconds(session.startMs, nowMs))),
            QStringLiteral("Session decodes: %1").arg(session.decodes)};
}

} // namespace

qint64 wholeSeconds(qint64 startMs, qint64 endMs)
{
    return qMax<qint64>(0, (endMs - startMs) / 1000);
}

QJsonObject withFinishedSession(QJsonObject log, const StatusSession &session, qint64 endMs)
{
    QJsonArray sessions = log.value(QLatin1String("Sessions")).toArray();
    sessions.append(sessionRecord(session, endMs));
    log.insert(QStringLiteral("FormatVersion"), 1);
    log.insert(QStringLiteral("Receivers"),
               withReceiverTotals(log.value(QLatin1String("Receivers")).toArray(), session, endMs));
    log.insert(QStringLiteral("Sessions"), sessions);
    return log;
}

QString statusHistoryText(const std::optional<QByteArray> &file)
{
    const QStringList lines = QStringList(QStringLiteral("RECEIVER TOTALS")) + historyLines(file);
    return lines.join(QLatin1Char('\n'));
}

QString statusLogText(const StatusSession &session, qint64 nowMs, const QString &shownPath,
                      const QString &history)
{
    QStringList lines{QStringLiteral("PELQ KIWI OUTPOST STATUS LOG"),
                      QStringLiteral("Data file: %1").arg(shownPath), QString(),
                      QStringLiteral("CURRENT CONNECTION")};
    lines << currentConnectionLines(session, nowMs) << QString() << history;
    return lines.join(QLatin1Char('\n'));
}

} // namespace outpost
