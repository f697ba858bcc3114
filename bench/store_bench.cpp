// The good receivers and the status log; the reference parses (and writes) their JSON once.

#include "app/mainwindow.h"
#include "base/datapaths.h"
#include "bench/compare.h"
#include "bench/windowbenches.h"
#include "fixture/home.h"

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

namespace outpost
{

namespace
{
const QString host = QStringLiteral("receiver.example.org");
constexpr int port = 8073;
constexpr qint64 startMs = 1767225600000; // 2026-01-01T00:00:00Z

QString hostNumber(int number)
{
    return QStringLiteral("receiver%1.example.org").arg(number);
}

// `last` is at the end of the list, so that a search passes all entries.
QByteArray receiverList(int entries, const QString &last)
{
    QJsonArray list;
    for (int i = 1; i <= entries; ++i) {
        list.append(
            QJsonObject{{QStringLiteral("Host"), i == entries ? last : hostNumber(i)},
                        {QStringLiteral("Port"), port},
                        {QStringLiteral("FrequencyMhz"), 14.074},
                        {QStringLiteral("LastDecodeCount"), i % 40},
                        {QStringLiteral("LastDecodeUtc"), QStringLiteral("2026-01-31T18:04:15Z")}});
    }
    return QJsonDocument(list).toJson();
}

// A log with this number of sessions, and a tenth as many receivers.
QByteArray statusLog(int entries)
{
    QJsonArray sessions;
    QJsonArray receivers;
    for (int i = 0; i < entries; ++i) {
        sessions.append(
            QJsonObject{{QStringLiteral("Host"), hostNumber(i / 10)},
                        {QStringLiteral("Port"), port},
                        {QStringLiteral("FrequencyMhz"), 14.074},
                        {QStringLiteral("StartUtc"), QStringLiteral("2026-01-31T18:04:15Z")},
                        {QStringLiteral("EndUtc"), QStringLiteral("2026-01-31T19:04:15Z")},
                        {QStringLiteral("DurationSeconds"), 3600},
                        {QStringLiteral("Decodes"), i}});
    }
    for (int i = 0; i < entries; i += 10) {
        receivers.append(QJsonObject{
            {QStringLiteral("Host"), hostNumber(i / 10)},
            {QStringLiteral("Port"), port},
            {QStringLiteral("Sessions"), 10},
            {QStringLiteral("TotalSeconds"), 36000},
            {QStringLiteral("TotalDecodes"), 10 * i},
            {QStringLiteral("LastConnectedUtc"), QStringLiteral("2026-01-31T19:04:15Z")},
            {QStringLiteral("LastFrequencyMhz"), 14.074}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("FormatVersion"), 1},
                                     {QStringLiteral("Receivers"), receivers},
                                     {QStringLiteral("Sessions"), sessions}})
        .toJson();
}

QJsonDocument readJson(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(path));
    }
    return QJsonDocument::fromJson(file.readAll());
}

void parseOnce(const QString &path)
{
    const QJsonDocument document = readJson(path);
    benchmark::DoNotOptimize(&document);
}

void parseAndWriteOnce(const QString &path)
{
    const QByteArray json = readJson(path).toJson();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size() || !file.commit()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

void useProfile()
{
    testHome().writeProfile({{QStringLiteral("Host"), host},
                             {QStringLiteral("Port"), port},
                             {QStringLiteral("BridgePort"), freePort()}});
}

void knownReceiver(benchmark::State &state)
{
    useProfile();
    MainWindow window(StationOptions{[] { return startMs; }});
    const QString path = goodReceiversPath();
    putFile(path, receiverList(static_cast<int>(state.range(0)), host));
    compare(
        state, [] {}, [&] { window.recordGoodReceiver(25); }, [&] { parseOnce(path); });
}

void newReceiver(benchmark::State &state)
{
    useProfile();
    MainWindow window(StationOptions{[] { return startMs; }});
    const QString path = goodReceiversPath();
    const QByteArray list = receiverList(static_cast<int>(state.range(0)), hostNumber(0));
    compare(
        state, [&] { putFile(path, list); }, [&] { window.recordGoodReceiver(25); },
        [&] { parseAndWriteOnce(path); });
}

void finishSession(benchmark::State &state)
{
    useProfile();
    MainWindow window(StationOptions{[] { return startMs; }});
    const QString path = statusLogPath();
    const QByteArray log = statusLog(static_cast<int>(state.range(0)));
    const auto prepare = [&] {
        putFile(path, log);
        window.startStatusSession();
    };
    compare(
        state, prepare, [&] { window.finishStatusSession(); }, [&] { parseAndWriteOnce(path); });
}

void registerSizes(const char *name, void (*bench)(benchmark::State &), int rounds)
{
    auto *registered = benchmark::RegisterBenchmark(name, bench);
    for (const int entries : {10, 1000, 10000}) {
        registered->Arg(entries);
    }
    registered->UseManualTime()->Iterations(rounds);
}
} // namespace

void registerStoreBench(int rounds)
{
    registerSizes("known receiver", knownReceiver, rounds);
    registerSizes("new receiver", newReceiver, rounds);
    registerSizes("session", finishSession, rounds);
}

} // namespace outpost
