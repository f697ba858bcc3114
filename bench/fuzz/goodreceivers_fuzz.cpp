#include "base/datafile.h"
#include "base/receiverkey.h"
#include "bench/fuzz/fuzzing.h"
#include "store/goodreceivers.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace outpost
{

namespace
{
bool isEntry(const QJsonValue &element, const QString &host, int port)
{
    const QJsonObject entry = element.toObject();
    return element.isObject() &&
           entry.value(QLatin1String("Host")).toString().compare(host, Qt::CaseInsensitive) == 0 &&
           entry.value(QLatin1String("Port")).toInt(8073) == port;
}

void checkShown(const QJsonArray &list)
{
    const QVector<GoodReceiver> receivers = readGoodReceivers(list);
    int shown = 0;
    for (const QJsonValue &element : list) {
        const QJsonObject entry = element.toObject();
        const QString host = entry.value(QLatin1String("Host")).toString();
        if (!element.isObject() || host.trimmed().isEmpty()) {
            continue;
        }
        require(shown < receivers.size(), "every entry with a host is shown");
        const GoodReceiver &receiver = receivers.at(shown++);
        require(receiver.host == host, "hosts are as stored, in the file's order");
        require(containsReceiver(list, host.toUpper(), receiver.port) ==
                        containsReceiver(list, host, receiver.port) ||
                    host.toUpper().compare(host, Qt::CaseInsensitive) != 0,
                "letter case does not matter");
        require(containsReceiver(list, host, receiver.port), "what is shown is in the list");
        const QString text = goodReceiverText(receiver);
        require(text.startsWith(host + QLatin1Char(':')) &&
                    text.endsWith(QStringLiteral(" decode(s)")),
                "the text begins with the host as it stands");
    }
    require(shown == receivers.size(), "nothing else is shown");
}

void checkWithout(const QJsonArray &list, const QString &host, int port)
{
    const QJsonArray kept = withoutReceiver(list, host, port);
    require(!containsReceiver(kept, host, port), "a removed receiver is gone");
    int index = 0;
    for (const QJsonValue &element : list) {
        if (!isEntry(element, host, port)) {
            require(index < kept.size() && kept.at(index++) == element,
                    "all else stays, unchanged and in order");
        }
    }
    require(index == kept.size(), "nothing is added");
}

void checkWith(const QJsonArray &list, const GoodReceiver &receiver)
{
    const QJsonArray longer = withReceiver(list, receiver, 1768573395000);
    require(longer.size() == list.size() + 1, "one entry is added");
    for (int i = 0; i < list.size(); ++i) {
        require(longer.at(i) == list.at(i), "what was there stays");
    }
    require(isEntry(longer.last(), receiver.host, receiver.port), "the new one is at the end");
    require(longer.last().toObject().size() == 5, "an entry has five keys");

    const QByteArray json = QJsonDocument(longer).toJson();
    const std::optional<QJsonArray> again = parseJsonArray(json);
    require(again && *again == longer, "the written list reads back");
}

void checkKeys(const QString &host, int port)
{
    const ReceiverKey key = receiverKey(host, port);
    const QStringList once = withKey({}, key);
    require(withKey(once, key.toUpper()).size() ==
                (key.compare(key.toUpper(), Qt::CaseInsensitive) == 0 ? 1 : 2),
            "a key in another case is the same");
    require(withoutKey(once, key).isEmpty(), "a key can be taken away again");
}

// The document as Qt writes it: integers beyond 2^53 become the nearest double.
std::optional<QJsonArray> readDocument(const QByteArray &json)
{
    const std::optional<QJsonArray> document = parseJsonArray(json);
    return document ? parseJsonArray(QJsonDocument(*document).toJson()) : std::nullopt;
}
} // namespace

// Qt's JSON parser leaks memory if an object contains a key twice.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}

// Input: a line with port and host, then the file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const QList<QByteArray> words = input.line().split(' ');
    GoodReceiver receiver;
    receiver.port = words.first().toInt();
    receiver.host = QString::fromUtf8(words.last()).trimmed();
    receiver.frequencyMhz = 7.074;
    receiver.lastDecodeCount = words.size();
    checkKeys(receiver.host, receiver.port);

    const std::optional<QJsonArray> list = readDocument(input.rest());
    if (!list) {
        return 0;
    }
    checkShown(*list);
    checkWithout(*list, receiver.host, receiver.port);
    if (!containsReceiver(*list, receiver.host, receiver.port)) {
        checkWith(*list, receiver);
    }
    return 0;
}

} // namespace outpost
