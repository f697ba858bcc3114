#include "decode/slotwav.h"

#include "base/timetext.h"
#include "decode/scratchfolder.h"

#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QFile>

namespace outpost
{

namespace
{
constexpr quint32 headerBytes = 44;
constexpr quint32 chunkPrefixBytes = 8; // id and size, which the size of a chunk does not include
constexpr quint32 formatChunkBytes = 16;
constexpr quint16 formatPcm = 1;
constexpr quint16 channels = 1;
constexpr quint32 sampleRateHz = 12000;
constexpr quint16 sampleBytes = 2;
constexpr quint16 bitsPerByte = 8;

void writeWavHeader(QDataStream &stream, quint32 dataBytes)
{
    stream.writeRawData("RIFF", 4);
    stream << quint32(dataBytes + headerBytes - chunkPrefixBytes);
    stream.writeRawData("WAVE", 4);
    stream.writeRawData("fmt ", 4);
    stream << formatChunkBytes << formatPcm << channels << sampleRateHz
           << quint32(sampleRateHz * channels * sampleBytes) << quint16(channels * sampleBytes)
           << quint16(sampleBytes * bitsPerByte);
    stream.writeRawData("data", 4);
    stream << dataBytes;
}

// If several workers create the same missing folders at once on Windows, mkpath() fails for the one
// that comes second to a parent folder.
bool makeFolder(const QString &folder)
{
    constexpr int tries = 10;
    for (int i = 0; i < tries; ++i) {
        if (QDir().mkpath(folder)) {
            return true;
        }
    }
    return false;
}
} // namespace

QString workerFolderName(const SlotJob &job)
{
    const QDateTime start = QDateTime::fromMSecsSinceEpoch(job.periodStartMs, Qt::UTC);
    return job.scratchPrefix + QStringLiteral("%1_S%2_%3_%4")
                                   .arg(timeText(start, QStringLiteral("yyyyMMdd_HHmmss")))
                                   .arg(job.worker + 1)
                                   .arg(job.band.lowHz)
                                   .arg(job.band.highHz);
}

QString writeSlotWav(const QString &path, const QByteArray &samples)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return file.errorString();
    }

    QDataStream stream(&file);
    stream.setByteOrder(QDataStream::LittleEndian);
    writeWavHeader(stream, static_cast<quint32>(samples.size()));
    const int written = stream.writeRawData(samples.constData(), samples.size());
    file.close();
    if (written != samples.size()) {
        return QStringLiteral("PCM payload write was incomplete.");
    }
    return {};
}

namespace
{
// jt9 reads and writes FFTW's plans ("wisdom") in its folder.
QString fftPlans(const QString &folder)
{
    return folder + QStringLiteral("/jt9_wisdom.dat");
}
} // namespace

Jt9Result decodeSlot(const SlotJob &job, const QByteArray &samples)
{
    if (samples.size() != slotPcmBytes) {
        return {{}, {Jt9Cause::WavNotWritten, QStringLiteral("the period is not whole")}};
    }

    const QString folder = QDir(job.captureFolder).absoluteFilePath(workerFolderName(job));
    if (!removeScratchFolder(folder)) {
        return {{}, {Jt9Cause::OldFolderLeft, {}}};
    }
    if (!makeFolder(folder)) {
        return {{}, {Jt9Cause::FolderMissing, {}}};
    }

    const QString keptPlans = fftPlans(job.captureFolder);
    if (job.keepsFftPlans) {
        QFile::copy(keptPlans, fftPlans(folder));
    }
    const QString wavPath = folder + QStringLiteral("/pelq_ft8_slot.wav");
    const QString wavError = writeSlotWav(wavPath, samples);
    Jt9Result result = wavError.isEmpty() ? runJt9(wavPath, folder, job.band, job.depth, job.limits,
                                                   job.folderIsOwn, job.control)
                                          : Jt9Result{{}, {Jt9Cause::WavNotWritten, wavError}};
    if (job.keepsFftPlans && result.failure.cause == Jt9Cause::None) {
        QFile::rename(fftPlans(folder), keptPlans); // fails if there are some
    }
    if (!removeScratchFolder(folder) && result.failure.cause == Jt9Cause::None) {
        result.failure = {Jt9Cause::FolderLeft, {}};
    }
    return result;
}

} // namespace outpost
