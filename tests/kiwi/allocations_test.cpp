// Sound must not allocate memory between the end of one period and the next.

#include "app/receiversound.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/sounddecoder.h"

#include <QTemporaryDir>
#include <QTest>
#include <atomic>

namespace outpost
{

namespace
{

// All allocations of this process pass through these functions.
std::atomic<int> allocations{0};

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
extern "C" void __sanitizer_malloc_hook(const volatile void * /*memory*/, size_t /*bytes*/)
{
    ++allocations;
}
#else
extern "C" void *__libc_malloc(size_t bytes);
extern "C" void *__libc_calloc(size_t count, size_t bytes);
extern "C" void *__libc_realloc(void *memory, size_t bytes);

extern "C" void *malloc(size_t bytes) noexcept
{
    ++allocations;
    return __libc_malloc(bytes);
}

extern "C" void *calloc(size_t count, size_t bytes) noexcept
{
    ++allocations;
    return __libc_calloc(count, bytes);
}

extern "C" void *realloc(void *memory, size_t bytes) noexcept
{
    ++allocations;
    return __libc_realloc(memory, bytes);
}
#endif
// NOLINTEND(bugprone-reserved-identifier)

class AllocationsTest : public QObject
{
    Q_OBJECT

private slots:
    void allocationsAreCounted();
    void soundWithinAPeriodAllocatesNothing_data();
    void soundWithinAPeriodAllocatesNothing();
};

void AllocationsTest::allocationsAreCounted()
{
    const int before = allocations;
    const QByteArray bytes(1000, 'x');
    QVERIFY(allocations > before);
}

void AllocationsTest::soundWithinAPeriodAllocatesNothing_data()
{
    QTest::addColumn<char>("flags");
    QTest::newRow("ADPCM") << '\x10';
    QTest::newRow("16-bit samples") << '\0';
}

void AllocationsTest::soundWithinAPeriodAllocatesNothing()
{
    QFETCH(char, flags);
    const qint64 boundaryMs = 1768565700000;
    const QTemporaryDir folder;
    const QString endpoint = QStringLiteral("/kiwi/0/SND");
    const QByteArray frame = QByteArray("SND") + flags + QByteArray(6, '\0') + QByteArray(1024, 7);
    KiwiAudioCapture capture;
    SoundDecoder sound;
    capture.setCaptureFolder(folder.path());
    captureFrame(capture, sound, frame, endpoint, boundaryMs - 5000);
    const int before = allocations;
    for (int i = 0; i < 80; ++i) {
        captureFrame(capture, sound, frame, endpoint, boundaryMs);
    }
    const int after = allocations;
    QVERIFY(capture.periodCounters().samples >= 80 * 512);
    QCOMPARE(after - before, 0);
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::AllocationsTest)
#include "allocations_test.moc"
