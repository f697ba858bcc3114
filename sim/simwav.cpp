#include "sim/simwav.h"

#include <QDataStream>
#include <QFile>
#include <QSaveFile>
#include <QtEndian>

namespace outpost
{

namespace sim
{

namespace
{

constexpr int kWavHeaderBytes = 44;
constexpr qint64 kLargestWavBytes = 1 << 20;

quint16 word(const QByteArray &bytes, int offset)
{
    return qFromLittleEndian<quint16>(bytes.constData() + offset);
}

quint32 doubleWord(const QByteArray &bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

// The payload of the first chunk named `name` after the 12-byte RIFF header; null if there is none.
QByteArray chunk(const QByteArray &file, const char *name)
{
    qint64 offset = 12;
    while (offset + 8 <= file.size()) {
        const qint64 size = doubleWord(file, int(offset) + 4);
        if (file.mid(int(offset), 4) == name) {
            return file.mid(int(offset) + 8, int(qMin<qint64>(size, file.size())));
        }
        offset += 8 + size + (size & 1);
    }
    return {};
}

QString faultOf(const QByteArray &file)
{
    if (!file.startsWith("RIFF") || file.mid(8, 4) != "WAVE") {
        return QStringLiteral("not a WAV file");
    }
    const QByteArray format = chunk(file, "fmt ");
    if (format.size() < 16 || word(format, 0) != 1) {
        return QStringLiteral("not plain PCM");
    }
    if (word(format, 2) != 1) {
        return QStringLiteral("%1 channels instead of one").arg(word(format, 2));
    }
    if (doubleWord(format, 4) != kSampleRateHz) {
        return QStringLiteral("%1 Hz instead of 12000 Hz").arg(doubleWord(format, 4));
    }
    if (word(format, 14) != 16) {
        return QStringLiteral("%1 bits instead of 16").arg(word(format, 14));
    }
    const int bytes = chunk(file, "data").size();
    if (bytes != kPeriodSamples * 2) {
        return QStringLiteral("%1 samples instead of 180000 (15 s)").arg(bytes / 2);
    }
    return {};
}

QByteArray wavHeader(int dataBytes)
{
    QByteArray header;
    QDataStream out(&header, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData("RIFF", 4);
    out << quint32(dataBytes + kWavHeaderBytes - 8);
    out.writeRawData("WAVEfmt ", 8);
    // chunk size, PCM, mono, samples per second, bytes per second, bytes and bits per sample
    out << quint32(16) << quint16(1) << quint16(1) << quint32(kSampleRateHz)
        << quint32(kSampleRateHz * 2) << quint16(2) << quint16(16);
    out.writeRawData("data", 4);
    out << quint32(dataBytes);
    return header;
}

QString refusal(const QString &path, const QString &reason)
{
    return QStringLiteral("%1: %2").arg(path, reason);
}

} // namespace

PeriodSound readPeriodWav(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {{}, refusal(path, file.errorString())};
    }
    const QByteArray bytes = file.read(kLargestWavBytes + 1);
    if (bytes.size() > kLargestWavBytes) {
        return {{}, refusal(path, QStringLiteral("too large for one period"))};
    }
    const QString fault = faultOf(bytes);
    if (!fault.isEmpty()) {
        return {{}, refusal(path, fault)};
    }
    return {fromLittleEndian(chunk(bytes, "data")), QString()};
}

QString writePeriodWav(const QString &path, const Samples &samples)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return refusal(path, file.errorString());
    }
    const QByteArray bytes = wavHeader(samples.size() * 2) + toLittleEndian(samples);
    // When a disk fills up, a short write may not report an error, and commit() would then replace
    // the file with a truncated one.
    if (file.write(bytes) != bytes.size() || !file.flush() ||
        file.error() != QFileDevice::NoError) {
        file.cancelWriting();
    }
    return file.commit() ? QString() : refusal(path, file.errorString());
}

QByteArray toLittleEndian(const Samples &samples)
{
    QByteArray bytes(samples.size() * 2, Qt::Uninitialized);
    qToLittleEndian<qint16>(samples.constData(), samples.size(), bytes.data());
    return bytes;
}

QByteArray toBigEndian(const Samples &samples)
{
    QByteArray bytes(samples.size() * 2, Qt::Uninitialized);
    qToBigEndian<qint16>(samples.constData(), samples.size(), bytes.data());
    return bytes;
}

Samples fromLittleEndian(const QByteArray &bytes)
{
    Samples samples(bytes.size() / 2);
    qFromLittleEndian<qint16>(bytes.constData(), samples.size(), samples.data());
    return samples;
}

} // namespace sim

} // namespace outpost
