// From a sound frame to the period buffer: time and allocations.

#include "app/receiversound.h"
#include "bench/compare.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/sounddecoder.h"
#include "sim/imaadpcmencoder.h"

#include <QTemporaryDir>
#include <atomic>
#include <random>

namespace outpost
{

namespace
{
std::atomic<quint64> allocations;
} // namespace

// All allocations pass through these functions: operator new as well as Qt's containers.
extern "C" {
void *__libc_malloc(size_t bytes);              // NOLINT
void *__libc_calloc(size_t count, size_t each); // NOLINT
void *__libc_realloc(void *old, size_t bytes);  // NOLINT

void *malloc(size_t bytes) noexcept
{
    ++allocations;
    return __libc_malloc(bytes);
}

void *calloc(size_t count, size_t each) noexcept
{
    ++allocations;
    return __libc_calloc(count, each);
}

void *realloc(void *old, size_t bytes) noexcept
{
    ++allocations;
    return __libc_realloc(old, bytes);
}
}

namespace
{
constexpr int payloadBytes = 1024;
constexpr int samplesPerFrame = 2 * payloadBytes;
// No frame completes a period.
constexpr int frames = KiwiAudioCapture::samplesPerPeriod / samplesPerFrame;
constexpr qint64 boundaryMs = KiwiAudioCapture::periodMs;

QByteArray noiseFrame()
{
    std::mt19937 random(1); // the same on every run
    std::normal_distribution<float> noise(0, float(sim::kNoiseRms));
    sim::Samples samples(samplesPerFrame);
    std::generate(samples.begin(), samples.end(), [&] { return qint16(noise(random)); });
    sim::AdpcmState state;
    return QByteArray("SND\x10\0\0\0\0\0\0", 10) + sim::encodeAdpcm(&state, samples);
}

void soundPath(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QByteArray frame = noiseFrame();
    const QString receiver = QStringLiteral("/kiwi/0/SND");
    KiwiAudioCapture capture;
    SoundDecoder sound;
    capture.setCaptureFolder(folder.path());
    std::vector<qint16> period(KiwiAudioCapture::samplesPerPeriod);
    quint64 allocated = 0;

    const auto prepare = [&] {
        capture.reset();
        capture.start(receiver, 0);
    };
    const auto own = [&] {
        const quint64 before = allocations;
        for (int i = 0; i < frames; ++i) {
            captureFrame(capture, sound, frame, receiver, boundaryMs);
        }
        allocated += allocations - before;
        benchmark::DoNotOptimize(capture.periodCounters().samples);
    };
    const auto reference = [&] {
        ImaAdpcmState adpcm;
        qint16 *out = period.data();
        for (int i = 0; i < frames; ++i) {
            for (const char byte : frame.mid(10)) {
                *out++ = decodeImaNibble(adpcm, quint8(byte) & 0x0f);
                *out++ = decodeImaNibble(adpcm, quint8(byte) >> 4);
            }
        }
        benchmark::DoNotOptimize(period.data());
        benchmark::ClobberMemory();
    };
    compare(state, prepare, own, reference);
    state.counters["samples"] = double(frames) * samplesPerFrame;
    state.counters["allocations"] = double(allocated);
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    const int rounds = roundsAskedFor(argc, argv, 501);
    benchmark::RegisterBenchmark("sound", soundPath)->UseManualTime()->Iterations(rounds);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
