#include "base/datafile.h"
#include "bench/fuzz/fuzzing.h"
#include "store/statuslog.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace outpost
{

namespace
{
constexpr qint64 startMs = 1768573395000;

bool isEntry(const QJsonValue &element, const StatusSession &session)
{
    const QJsonObject entry = element.toObject();
    return element.isObject() &&
           entry.value(QLatin1String("Host"))
                   .toString()
                   .compare(session.host, Qt::CaseInsensitive) == 0 &&
           entry.value(QLatin1String("Port")).toInt(0) == session.port;
}

// An integer in the range that a double represents exactly.
qint64 whole(const QJsonValue &value)
{
    const double number = value.toDouble();
    return static_cast<qint64>(qBound(-9007199254740992.0, number, 9007199254740992.0));
}

void requireKept(const QJsonObject &old, const QJsonObject &updated, const QStringList &own)
{
    for (auto key = old.begin(); key != old.end(); ++key) {
        require(own.contains(key.key()) || updated.value(key.key()) == key.value(),
                "keys of others are kept");
    }
}

void checkTotals(const QJsonObject &old, const QJsonObject &entry, const StatusSession &session,
                 qint64 seconds)
{
    const auto number = [](const QJsonObject &object, const char *key) {
        return whole(object.value(QLatin1String(key)));
    };
    require(entry.value(QLatin1String("Host")) == session.host, "the host as typed last");
    require(number(entry, "Port") == session.port, "the port");
    require(number(entry, "Sessions") == old.value(QLatin1String("Sessions")).toInt() + 1LL,
            "one session more");
    require(number(entry, "TotalDecodes") ==
                qMin(number(old, "TotalDecodes") + session.decodes, 9007199254740992LL),
            "the decodes are added");
    require(number(entry, "TotalSeconds") ==
                qMin(number(old, "TotalSeconds") + seconds, 9007199254740992LL),
            "the seconds are added");
    requireKept(old, entry,
                {QStringLiteral("Host"), QStringLiteral("Port"), QStringLiteral("Sessions"),
                 QStringLiteral("TotalSeconds"), QStringLiteral("TotalDecodes"),
                 QStringLiteral("LastConnectedUtc"), QStringLiteral("LastFrequencyMhz")});
}

void checkReceivers(const QJsonArray &old, const QJsonArray &updated, const StatusSession &session,
                    qint64 seconds)
{
    int found = 0;
    while (found < old.size() && !isEntry(old.at(found), session)) {
        ++found;
    }
    require(updated.size() == qMax(old.size(), found + 1), "an entry is replaced or added");
    for (int i = 0; i < updated.size(); ++i) {
        require(i == found || updated.at(i) == old.at(i), "other receivers stay");
    }
    checkTotals(old.at(found).toObject(), updated.at(found).toObject(), session, seconds);
}

void checkSessions(const QJsonArray &old, const QJsonArray &updated, const StatusSession &session,
                   qint64 seconds)
{
    require(updated.size() == old.size() + 1, "one session is appended");
    for (int i = 0; i < old.size(); ++i) {
        require(updated.at(i) == old.at(i), "earlier sessions stay");
    }
    const QJsonObject record = updated.last().toObject();
    require(record.size() == 7, "a session has seven keys");
    require(isEntry(record, session), "the session is the receiver's");
    require(whole(record.value(QLatin1String("DurationSeconds"))) == seconds, "its duration");
    require(whole(record.value(QLatin1String("Decodes"))) == session.decodes, "its decodes");
}

int lineEnds(const QJsonArray &entries, int from, const char *timeKey)
{
    int count = 0;
    for (int i = from; i < entries.size(); ++i) {
        const QJsonObject entry = entries.at(i).toObject();
        count += entry.value(QLatin1String("Host")).toString().count(QLatin1Char('\n'));
        count += entry.value(QLatin1String(timeKey)).toString().count(QLatin1Char('\n'));
    }
    return count;
}

// One line per receiver and per session of the latest 20. Line breaks inside a text are shown as
// they are.
void checkHistory(const QByteArray &file, const std::optional<QJsonObject> &log)
{
    const QString text = statusHistoryText(file);
    require(text.startsWith(QStringLiteral("RECEIVER TOTALS\n")), "the history has its heading");
    if (!log) {
        require(text.endsWith(QStringLiteral("\nStatus data file is not valid JSON.")),
                "a damaged file is named");
        return;
    }
    const QJsonArray receivers = log->value(QLatin1String("Receivers")).toArray();
    const QJsonArray sessions = log->value(QLatin1String("Sessions")).toArray();
    const int lines = 1 + qMax(1, receivers.size()) + 2 + qBound(1, sessions.size(), 20);
    const int shownFrom = qMax(0, sessions.size() - 20);
    require(text.count(QLatin1Char('\n')) + 1 == lines +
                                                     lineEnds(receivers, 0, "LastConnectedUtc") +
                                                     lineEnds(sessions, shownFrom, "StartUtc"),
            "as many lines as entries, at most 20 sessions");
}

StatusSession readSession(const QByteArray &line)
{
    const QList<QByteArray> words = line.split(' ');
    StatusSession session;
    session.active = true;
    session.port = words.first().toInt();
    session.host = QString::fromUtf8(words.last()).trimmed();
    session.frequencyMhz = 14.074;
    session.startMs = startMs;
    session.decodes = words.size() > 2 ? qAbs(qint64(words.at(1).toShort())) : 0;
    return session;
}

// The document as Qt writes it: integers beyond 2^53 become the nearest double.
std::optional<QJsonObject> readDocument(const QByteArray &json)
{
    const std::optional<QJsonObject> document = parseJsonObject(json);
    return document ? parseJsonObject(QJsonDocument(*document).toJson()) : std::nullopt;
}
} // namespace

// Qt's JSON parser leaks memory if an object contains a key twice.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}

// Input: a line with port, decodes and host, then the file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const StatusSession session = readSession(input.line());
    const QByteArray file = input.rest();
    const std::optional<QJsonObject> log = readDocument(file);
    checkHistory(file, log);

    const qint64 elapsedMs = 1000 * session.decodes - 1;
    const qint64 seconds = qMax<qint64>(0, session.decodes - 1);
    const QJsonObject old = log.value_or(QJsonObject());
    const QJsonObject updated = withFinishedSession(old, session, startMs + elapsedMs);
    require(updated.value(QLatin1String("FormatVersion")) == 1, "the format's version is 1");
    requireKept(
        old, updated,
        {QStringLiteral("FormatVersion"), QStringLiteral("Receivers"), QStringLiteral("Sessions")});
    checkReceivers(old.value(QLatin1String("Receivers")).toArray(),
                   updated.value(QLatin1String("Receivers")).toArray(), session, seconds);
    checkSessions(old.value(QLatin1String("Sessions")).toArray(),
                  updated.value(QLatin1String("Sessions")).toArray(), session, seconds);

    const QByteArray json = QJsonDocument(updated).toJson();
    const std::optional<QJsonObject> again = parseJsonObject(json);
    require(again && *again == updated, "the written log reads back");
    checkHistory(json, again);
    return 0;
}

} // namespace outpost
