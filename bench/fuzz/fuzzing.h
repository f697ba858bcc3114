#pragma once

#include <QByteArray>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace outpost
{

// libFuzzer's entry points; being extern "C", they may be declared in a namespace.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

// A violated invariant ends the run; libFuzzer then saves the input.
inline void require(bool holds, const char *invariant)
{
    if (holds) {
        return;
    }
    std::fprintf(stderr, "Broken invariant: %s\n", invariant);
    std::abort();
}

// Reads the input from the front; past the end it returns zeros and empty texts.
class FuzzInput
{
public:
    FuzzInput(const uint8_t *data, size_t size)
        : bytes(reinterpret_cast<const char *>(data), static_cast<int>(size))
    {
    }

    bool atEnd() const { return position >= bytes.size(); }
    int byte() { return atEnd() ? 0 : static_cast<quint8>(bytes.at(position++)); }
    int word() // little-endian, 0..65535
    {
        const int low = byte();
        return low + 256 * byte();
    }
    QByteArray take(int count)
    {
        const QByteArray taken = bytes.mid(position, count);
        position += taken.size();
        return taken;
    }
    QByteArray line() // without LF
    {
        const int end = bytes.indexOf('\n', position);
        const QByteArray taken = take(end < 0 ? bytes.size() : end - position);
        ++position;
        return taken;
    }
    QByteArray rest() { return take(bytes.size()); }

    // For slow checks: true for one input in `count`, always the same ones.
    bool isOneIn(int count) const
    {
        return qChecksum(bytes.constData(), static_cast<uint>(bytes.size())) % count == 0;
    }

private:
    const QByteArray bytes;
    int position = 0;
};

} // namespace outpost
