#include "app/receiversound.h"
#include "bench/fuzz/fuzzing.h"
#include "bench/fuzz/referenceadpcm.h"
#include "decode/kiwiaudiocapture.h"
#include "kiwi/sndframe.h"
#include "kiwi/sounddecoder.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

namespace outpost
{

namespace
{
// Calculates the capture's expected contents, sample by sample and without shortcuts.
class Reference
{
public:
    SoundOutcome takeFrame(const QByteArray &frame, qint64 nowMs, bool folderIsSet)
    {
        if (!started && !folderIsSet) {
            return {true, false, QStringLiteral("Capture directory was not configured.")};
        }
        if (!started) {
            start(nowMs);
        }
        ++counters.framesSeen;
        armed |= nowMs >= periodStartMs;
        closed = false;
        if ((frame.at(3) & 0x10) != 0) {
            takeCompressed(frame.mid(10));
        } else {
            takePlain(frame.mid(10));
        }
        return {closed, closed, {}};
    }

    bool started = false;
    bool armed = false;
    qint64 periodStartMs = 0;
    PeriodCounters counters;
    ImaAdpcmState adpcm;
    int closedPeriods = 0;

private:
    void start(qint64 nowMs)
    {
        started = true;
        armed = false;
        counters = {};
        adpcm = {};
        periodStartMs = (nowMs / 15000 + 1) * 15000;
        if (periodStartMs - nowMs < 2500) {
            periodStartMs += 15000;
        }
    }

    void takeCompressed(const QByteArray &payload)
    {
        for (const char byte : payload) {
            const int both = static_cast<quint8>(byte);
            takeSample(referenceSample(adpcm, both % 16));
            takeSample(referenceSample(adpcm, both / 16));
        }
    }

    void takePlain(const QByteArray &payload)
    {
        for (int i = 0; i + 1 < payload.size(); i += 2) {
            const int low = static_cast<quint8>(payload.at(i));
            const int high = static_cast<quint8>(payload.at(i + 1));
            const int both = low + 256 * high;
            takeSample(both < 32768 ? both : both - 65536);
        }
    }

    void takeSample(int sample)
    {
        if (!armed) {
            return;
        }
        ++counters.samples;
        counters.sumOfSquares += qint64(sample) * sample;
        counters.peak = qMax(counters.peak, sample < 0 ? -sample : sample);
        if (counters.samples < 180000) {
            return;
        }
        counters = {};
        periodStartMs += 15000;
        closed = true;
        ++closedPeriods;
    }

    bool closed = false;
};

bool same(const PeriodCounters &a, const PeriodCounters &b)
{
    return a.framesSeen == b.framesSeen && a.samples == b.samples &&
           a.sumOfSquares == b.sumOfSquares && a.peak == b.peak;
}

void compare(const KiwiAudioCapture &capture, const SoundDecoder &sound, const Reference &reference)
{
    require(capture.isStarted() == reference.started, "started as the reference");
    require(capture.isArmed() == reference.armed, "armed as the reference");
    require(capture.periodStart() == reference.periodStartMs, "the reference's period start");
    require(same(capture.periodCounters(), reference.counters), "the reference's counters");
    if (!reference.started) {
        return; // starting the capture resets the decoder
    }
    require(sound.adpcmState().adpcmIndex == reference.adpcm.adpcmIndex, "the reference's index");
    require(sound.adpcmState().adpcmPredictor == reference.adpcm.adpcmPredictor,
            "the reference's predictor");
}

// Mostly short, so that runs are fast; the longest exceed those of a receiver.
int readPayloadBytes(FuzzInput &input)
{
    const int code = input.byte();
    return code >= 240 && input.isOneIn(64) ? (code - 239) * 4096 : code;
}

// A frame with the input's flags and length. The payload repeats a few bytes, so that a short input
// can fill a period.
QByteArray readFrame(FuzzInput &input)
{
    QByteArray frame = "SND" + input.take(1).leftJustified(7, '\0');
    const int payloadBytes = readPayloadBytes(input);
    const QByteArray pattern = input.take(1 + input.byte() % 32).leftJustified(1, '\x77');
    while (frame.size() < 10 + payloadBytes) {
        frame += pattern;
    }
    frame.truncate(10 + payloadBytes);
    return frame;
}

// Runs the commands in the input; returns the number of completed periods.
int play(FuzzInput &input, const QString &folder)
{
    constexpr int maxPeriods = 2;
    constexpr int maxBytes = 500000;
    const auto noLines = [](const QString &, const QVector<Ft8Decode> &) {
        require(false, "without a decoder there are no lines");
    };
    KiwiAudioCapture capture({noLines, noLines});
    SoundDecoder sound;
    capture.setCaptureFolder(folder);

    Reference reference;
    bool folderIsSet = true;
    qint64 nowMs = 1768573395000; // a quarter minute
    int bytes = 0;
    while (!input.atEnd() && bytes < maxBytes && reference.closedPeriods < maxPeriods) {
        switch (input.byte() % 8) {
        case 0:
            capture.reset();
            reference = Reference();
            break;
        case 1:
            folderIsSet = input.byte() % 2 == 0;
            capture.setCaptureFolder(folderIsSet ? folder : QStringLiteral(" \t"));
            break;
        case 2:
            nowMs += input.word();
            break;
        case 3:
            nowMs -= input.word(); // a clock can be set back
            break;
        default:
            const QByteArray frame = readFrame(input);
            require(isSndFrame(frame), "the frame is a sound frame");
            const SoundOutcome outcome =
                captureFrame(capture, sound, frame, QStringLiteral("r"), nowMs);
            const SoundOutcome expected = reference.takeFrame(frame, nowMs, folderIsSet);
            require(outcome.attempted == expected.attempted, "attempted as the reference");
            require(outcome.succeeded == expected.succeeded, "succeeded as the reference");
            require(outcome.text == expected.text, "the reference's reason");
            bytes += frame.size();
        }
        compare(capture, sound, reference);
    }
    QCoreApplication::sendPostedEvents(&capture);
    return reference.closedPeriods;
}
} // namespace

int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    qunsetenv("PELQ_JT9_PATH");
    static const QCoreApplication application(*argc, *argv);
    return 0;
}

// Input: one-byte commands with their arguments.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir folder;
    FuzzInput input(data, size);
    if (play(input, folder.path()) > 0) {
        require(QDir(folder.path()).isEmpty(), "no worker's folder is left behind");
    }
    return 0;
}

} // namespace outpost
