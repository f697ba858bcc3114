#include "daemon/backgroundwriter.h"

#include <QFile>
#include <QQueue>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <utility>

namespace outpost
{

// Owned by the writer and its thread alike: a thread that hangs in a write outlives the writer.
struct BackgroundWriter::Shared {
    Sink sink;
    std::mutex mutex;
    std::condition_variable changed;
    QQueue<QByteArray> waiting;
    int waitingBytes = 0;
    bool writing = false;
    bool ended = false; // nothing more is taken or written
};

namespace
{
template <typename Shared>
void writeUntilEnded(Shared &shared)
{
    std::unique_lock<std::mutex> lock(shared.mutex);
    while (true) {
        shared.changed.wait(lock, [&] { return shared.ended || !shared.waiting.isEmpty(); });
        if (shared.ended) {
            return;
        }
        const QByteArray piece = shared.waiting.dequeue();
        shared.waitingBytes -= piece.size();
        shared.writing = true;
        lock.unlock();
        const bool isWritten = shared.sink(piece);
        lock.lock();
        shared.writing = false;
        shared.ended = shared.ended || !isWritten;
        shared.changed.notify_all();
    }
}
} // namespace

BackgroundWriter::BackgroundWriter(Sink sink) : shared(std::make_shared<Shared>())
{
    shared->sink = std::move(sink);
    std::thread([kept = shared] { writeUntilEnded(*kept); }).detach();
}

BackgroundWriter::~BackgroundWriter()
{
    const std::lock_guard<std::mutex> lock(shared->mutex);
    shared->ended = true;
    shared->changed.notify_all();
}

bool BackgroundWriter::write(const QByteArray &piece)
{
    const std::lock_guard<std::mutex> lock(shared->mutex);
    if (shared->ended || shared->waitingBytes + piece.size() > maxWaitingBytes) {
        return false;
    }
    shared->waiting.enqueue(piece);
    shared->waitingBytes += piece.size();
    shared->changed.notify_all();
    return true;
}

bool BackgroundWriter::flush(int waitMs)
{
    std::unique_lock<std::mutex> lock(shared->mutex);
    return shared->changed.wait_for(lock, std::chrono::milliseconds(waitMs), [&] {
        return shared->ended || (shared->waiting.isEmpty() && !shared->writing);
    });
}

// Not by stdio: the process could not exit while a write hangs, since that waits for stdio's locks.
bool writeToStandardOutput(const QByteArray &piece)
{
    QFile output;
    return output.open(fileno(stdout), QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           output.write(piece) == piece.size();
}

} // namespace outpost
