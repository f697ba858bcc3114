#pragma once

#include "daemon/output.h"

#include <functional>
#include <memory>

namespace outpost
{

// Runs an output that may block, as one on a disk that hangs, on a thread of its own. What waits is
// bounded; beyond, whole calls are dropped, and the log says so.
class BackgroundOutput : public Output
{
public:
    static constexpr int maxWaiting = 10000; // calls; more than an hour of ten receivers

    // `name` is for the log, as in "ALL.TXT".
    BackgroundOutput(QString nameToUse, std::unique_ptr<Output> slowOutput,
                     int closeMsToUse = 1000);
    ~BackgroundOutput() override; // abandons what waits
    BackgroundOutput(const BackgroundOutput &) = delete;
    BackgroundOutput &operator=(const BackgroundOutput &) = delete;

    void showSource(const SourceState &source) override;
    void dropSource(const QString &source) override;
    void take(const PeriodSpots &period) override;
    void close() override; // waits for the output to end, but no longer than closeMs

private:
    struct Shared;
    using Call = std::function<void(Output &)>;

    void call(Call one);

    const QString name;
    const int closeMs;
    const std::shared_ptr<Shared> shared;
    bool drops = false;
};

} // namespace outpost
