#pragma once

#include <QByteArray>
#include <functional>
#include <memory>

namespace outpost
{

// Writes to a file, pipe or terminal on a thread of its own, so that a reader that has stopped
// never holds back the program. What waits is bounded; beyond, whole pieces are dropped.
class BackgroundWriter
{
public:
    static constexpr int maxWaitingBytes = 1024 * 1024;

    // Writes all of a piece, however long that takes; false when no more can be written.
    using Sink = std::function<bool(const QByteArray &piece)>;

    explicit BackgroundWriter(Sink sink);
    ~BackgroundWriter(); // abandons what is not written
    BackgroundWriter(const BackgroundWriter &) = delete;
    BackgroundWriter &operator=(const BackgroundWriter &) = delete;

    // False if the piece was dropped.
    bool write(const QByteArray &piece);
    // Waits until all is written; false when that takes longer.
    bool flush(int waitMs);

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

// A sink for the program's standard output.
bool writeToStandardOutput(const QByteArray &piece);

} // namespace outpost
