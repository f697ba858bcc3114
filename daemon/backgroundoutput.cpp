#include "daemon/backgroundoutput.h"

#include "base/logline.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace outpost
{

// Owned by the output and its thread alike: a thread that hangs outlives the output.
struct BackgroundOutput::Shared {
    void runCalls();

    std::unique_ptr<Output> output; // for the thread alone
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Call> waiting;
    bool closed = false; // nothing more is taken
    bool ended = false;
};

void BackgroundOutput::Shared::runCalls()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return closed || !waiting.empty(); });
        if (waiting.empty()) {
            break;
        }
        const Call next = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        next(*output);
        lock.lock();
    }
    ended = true;
    changed.notify_all();
}

BackgroundOutput::BackgroundOutput(QString nameToUse, std::unique_ptr<Output> slowOutput,
                                   int closeMsToUse)
    : name(std::move(nameToUse)), closeMs(closeMsToUse), shared(std::make_shared<Shared>())
{
    shared->output = std::move(slowOutput);
    std::thread([kept = shared] { kept->runCalls(); }).detach();
}

BackgroundOutput::~BackgroundOutput()
{
    const std::lock_guard<std::mutex> lock(shared->mutex);
    shared->closed = true;
    shared->waiting.clear();
    shared->changed.notify_all();
}

void BackgroundOutput::showSource(const SourceState &source)
{
    call([source](Output &output) { output.showSource(source); });
}

void BackgroundOutput::dropSource(const QString &source)
{
    call([source](Output &output) { output.dropSource(source); });
}

void BackgroundOutput::take(const PeriodSpots &period)
{
    call([period](Output &output) { output.take(period); });
}

void BackgroundOutput::call(Call one)
{
    const std::lock_guard<std::mutex> lock(shared->mutex);
    const bool isFull = shared->waiting.size() >= maxWaiting;
    if (isFull && !std::exchange(drops, true)) {
        logLine(QStringLiteral("%1 hangs, and so much waits for it that decodes are dropped.")
                    .arg(name));
    }
    if (isFull || shared->closed) {
        return;
    }
    drops = false;
    shared->waiting.push_back(std::move(one));
    shared->changed.notify_all();
}

void BackgroundOutput::close()
{
    std::unique_lock<std::mutex> lock(shared->mutex);
    if (!std::exchange(shared->closed, true)) {
        shared->waiting.push_back([](Output &output) { output.close(); });
    }
    shared->changed.notify_all();
    const auto limit = std::chrono::milliseconds(closeMs);
    if (!shared->changed.wait_for(lock, limit, [this] { return shared->ended; })) {
        logLine(QStringLiteral("%1 hangs; what waits for it is lost.").arg(name));
    }
}

} // namespace outpost
