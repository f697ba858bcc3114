#include "store/sessionlog.h"

#include "base/atomicfile.h"
#include "base/datafile.h"
#include "base/datapaths.h"
#include "base/lockfile.h"
#include "base/logline.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLockFile>
#include <utility>

namespace outpost
{

namespace
{

// A damaged log is replaced with a new one.
QJsonObject statusLogIn(const std::optional<QByteArray> &file)
{
    return parseJsonObject(file.value_or(QByteArray())).value_or(QJsonObject());
}

SaveResult addToStatusLog(const QString &path, const StatusSession &session, qint64 endMs)
{
    QDir().mkpath(QFileInfo(path).path());
    const auto lock = takeLock(path, changeWaitMs);
    const std::optional<QByteArray> file = readFile(path);
    const QJsonObject log = withFinishedSession(statusLogIn(file), session, endMs);
    return saveAtomically(path, QJsonDocument(log).toJson(), {}, waitToReplaceMs(file.has_value()));
}

} // namespace

SessionLog::SessionLog(const QString &dataFolder, std::function<qint64()> clockToUse,
                       std::function<void()> onChangeToCall)
    : path(statusLogPath(dataFolder)), clock(std::move(clockToUse)),
      onChange(std::move(onChangeToCall))
{
}

void SessionLog::startStatusSession(const QString &host, int port, double frequencyMhz)
{
    const QString trimmed = host.trimmed();
    if (current.active || trimmed.isEmpty()) {
        return;
    }
    current = {true, trimmed, port, frequencyMhz, clock(), 0};
    onChange();
}

void SessionLog::addSessionDecodes(qint64 count)
{
    if (current.active && count > 0) {
        current.decodes += count;
    }
}

void SessionLog::finishStatusSession()
{
    if (!current.active) {
        return;
    }
    const SaveResult saved = addToStatusLog(path, current, clock());
    if (!saved) {
        logLine(QStringLiteral("Status log save failed: %1").arg(saved.error));
    }
    current = {};
    rebuildStatusHistory();
    onChange();
}

void SessionLog::rebuildStatusHistory()
{
    history = statusHistoryText(readFile(path));
}

QString SessionLog::text() const
{
    return statusLogText(current, clock(), QDir::toNativeSeparators(path), history);
}

} // namespace outpost
