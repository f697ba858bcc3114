#pragma once

#include <QMutex>
#include <QString>
#include <functional>

namespace outpost
{

// The decoder that all receivers use. Says once when there is none, and looks again each minute.
// May be asked on any thread.
class DecoderLookup
{
public:
    // `find` returns the path of a decoder that can run, or an empty text; `steadyMs` is a time in
    // ms that only runs on.
    DecoderLookup(std::function<QString()> find, std::function<qint64()> steadyMs);

    QString path(); // empty: none

private:
    void look();

    const std::function<QString()> findDecoder;
    const std::function<qint64()> steadyClock;
    QMutex mutex;
    QString found;
    bool looked = false;
    qint64 lookedMs = 0;
};

// The configured decoder, or the installed one if none is configured; empty if it cannot run.
QString usableDecoder(const QString &configuredPath);

} // namespace outpost
