#include "ramp.h"
#include "sim/soundstream.h"

#include <QtEndian>
#include <QtTest>

namespace outpost
{

using namespace sim;

namespace
{

constexpr qint64 kBoundaryMs = 1700006400000; // a multiple of 15000

StreamFormat rawFormat()
{
    StreamFormat format;
    format.codec = Codec::LittleEndian;
    return format;
}

SoundStream streamAt(const StreamFormat &format, const PeriodAudio &audio = ramp, int filler = 3)
{
    SoundPlan plan;
    plan.boundaryMs = kBoundaryMs;
    plan.fillerFrames = filler;
    return {format, plan, audio, 1};
}

Samples rawSamples(SoundStream *stream, int count)
{
    Samples samples;
    while (samples.size() < count) {
        samples += fromLittleEndian(stream->nextFrame().mid(10));
    }
    samples.resize(count);
    return samples;
}

} // namespace

class SoundStreamTest : public QObject
{
    Q_OBJECT

private slots:
    void frameLayout()
    {
        SoundStream stream = streamAt({});
        const QByteArray first = stream.nextFrame();
        QCOMPARE(first.size(), 1034);
        QCOMPARE(first.left(3), QByteArray("SND"));
        QCOMPARE(quint8(first.at(3)), quint8(0x15));
        QCOMPARE(qFromLittleEndian<quint32>(first.constData() + 4), 1U);
        QCOMPARE(qFromBigEndian<quint16>(first.constData() + 8), quint16(300)); // -97 dBm
        const QByteArray second = stream.nextFrame();
        QCOMPARE(quint8(second.at(3)), quint8(0x10));
        QCOMPARE(qFromLittleEndian<quint32>(second.constData() + 4), 2U);
    }

    void fillerEndsAtTheBoundaryWhateverTheCodecBecomes()
    {
        SoundStream stream = streamAt(rawFormat(), ramp, 11); // 2.75 compressed frames
        QCOMPARE(stream.nextFrame().size(), 1034);
        stream.setCodec(Codec::Adpcm);
        QCOMPARE(stream.position(), qint64(-2 * 2048));
        QCOMPARE(quint8(stream.nextFrame().at(3)), quint8(0x10));
        QCOMPARE(stream.position(), qint64(-2048));
        stream.setCodec(Codec::LittleEndian);
        QCOMPARE(stream.position(), qint64(-2048));
        rawSamples(&stream, 2048);
        QCOMPARE(stream.position(), qint64(0));
        QCOMPARE(rawSamples(&stream, 1000), ramp(0).mid(0, 1000));
    }

    void aChangedCodecTakesTheNextSample()
    {
        SoundStream stream = streamAt(rawFormat(), ramp, 0);
        rawSamples(&stream, 512);
        stream.setCodec(Codec::BigEndian);
        QCOMPARE(stream.position(), qint64(512));
        const QByteArray frame = stream.nextFrame();
        QCOMPARE(frame.size(), 1034);
        QCOMPARE(qFromBigEndian<qint16>(frame.constData() + 10), ramp(0).at(512));
    }

    void flagsSayTheCodec_data()
    {
        QTest::addColumn<int>("codec");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("later");
        QTest::newRow("compressed") << int(Codec::Adpcm) << 0x15 << 0x10;
        QTest::newRow("little-endian") << int(Codec::LittleEndian) << 0x85 << 0x80;
        QTest::newRow("big-endian") << int(Codec::BigEndian) << 0x05 << 0x00;
    }

    void flagsSayTheCodec()
    {
        QFETCH(int, codec);
        StreamFormat format;
        format.codec = Codec(codec);
        SoundStream stream = streamAt(format);
        QTEST(int(quint8(stream.nextFrame().at(3))), "first");
        QTEST(int(quint8(stream.nextFrame().at(3))), "later");
        stream.setOverload(true);
        QVERIFY(stream.nextFrame().at(3) & 0x02);
    }

    void aFrameBeginsWithTheFirstSampleOfThePeriod()
    {
        SoundStream stream = streamAt(rawFormat());
        QCOMPARE(stream.position(), qint64(-3 * 512));
        const Samples filler = rawSamples(&stream, 3 * 512);
        for (const qint16 sample : filler) {
            QVERIFY(qAbs(sample) < 3000); // noise, not signal
        }
        QCOMPARE(stream.position(), qint64(0));
        QCOMPARE(rawSamples(&stream, kPeriodSamples), ramp(0));
    }

    void periodsFollowWithoutAGap()
    {
        SoundStream stream = streamAt(rawFormat(), ramp, 0);
        const Samples all = rawSamples(&stream, 3 * kPeriodSamples);
        QVERIFY(all == ramp(0) + ramp(1) + ramp(2));
    }

    void bigEndianTurnsTheBytes()
    {
        StreamFormat format;
        format.codec = Codec::BigEndian;
        SoundStream big = streamAt(format, ramp, 0);
        SoundStream little = streamAt(rawFormat(), ramp, 0);
        QCOMPARE(toBigEndian(fromLittleEndian(little.nextFrame().mid(10))),
                 big.nextFrame().mid(10));
    }

    void compressedSoundIsTheEncodersReconstruction()
    {
        SoundStream stream = streamAt({}, ramp, 2);
        AdpcmState listener;
        decodeAdpcm(&listener, stream.nextFrame().mid(10));
        decodeAdpcm(&listener, stream.nextFrame().mid(10));
        AdpcmState encoder = listener;
        const Samples heard = decodeAdpcm(&listener, stream.nextFrame().mid(10));
        encodeAdpcm(&encoder, ramp(0).mid(0, 2048));
        QCOMPARE(heard.last(), qint16(encoder.predictor));
        QVERIFY(qAbs(heard.last() - ramp(0).at(2047)) < 500);
    }

    void shortAudioIsFollowedByNoise()
    {
        SoundStream stream = streamAt(
            rawFormat(), [](int period) { return ramp(period).mid(0, 1000); }, 0);
        const Samples all = rawSamples(&stream, kPeriodSamples + 1000);
        QCOMPARE(all.mid(0, 1000), ramp(0).mid(0, 1000));
        QVERIFY(qAbs(all.at(1000)) < 3000);
        QCOMPARE(all.mid(kPeriodSamples), ramp(1).mid(0, 1000));
    }

    void noiseHasTheLevelOfTheFloor()
    {
        SoundStream stream = streamAt(
            rawFormat(), [](int) { return Samples(); }, 0);
        double power = 0;
        for (const qint16 sample : rawSamples(&stream, 100000)) {
            power += double(sample) * sample;
        }
        QVERIFY(qAbs(std::sqrt(power / 100000) - kNoiseRms) < 5);
    }

    void anotherRateMovesThePeriods_data()
    {
        QTest::addColumn<double>("rate");
        QTest::addColumn<int>("slot");
        QTest::newRow("fast clock") << 12001.06 << 180016;
        QTest::newRow("slow clock") << 11998.8 << 179982;
    }

    void anotherRateMovesThePeriods()
    {
        QFETCH(double, rate);
        QFETCH(int, slot);
        StreamFormat format = rawFormat();
        format.rateHz = rate;
        QCOMPARE(format.slotSamples(), slot);
        SoundStream stream = streamAt(format, ramp, 0);
        const Samples all = rawSamples(&stream, slot + 1000);
        const int kept = qMin(slot, kPeriodSamples);
        QVERIFY(all.mid(0, kept) == ramp(0).mid(0, kept));
        QVERIFY(all.mid(slot) == ramp(1).mid(0, 1000));
    }

    void wideBandSoundIsStretched()
    {
        StreamFormat format = rawFormat();
        format.rateHz = 24000;
        format.resample = true;
        const auto line = [](int) {
            Samples samples(kPeriodSamples);
            for (int i = 0; i < samples.size(); ++i) {
                samples[i] = qint16(i % 10000 * 2);
            }
            return samples;
        };
        SoundStream stream = streamAt(format, line, 0);
        const Samples all = rawSamples(&stream, 1000);
        for (int i = 0; i < all.size(); ++i) {
            QCOMPARE(all.at(i), qint16(i));
        }
    }

    void framesAreDueAtTheirRate()
    {
        SoundStream stream = streamAt({}, ramp, 6);
        // Six frames of 170.67 ms come before it. The last ones are sent early, so that none
        // arrives after the boundary.
        QVector<int> dueMs;
        for (int i = 0; i < 9; ++i) {
            dueMs.append(int(stream.dueMs() - kBoundaryMs));
            stream.nextFrame();
        }
        QCOMPARE(dueMs, (QVector<int>{-1024, -853, -682, -512, -400, -400, 0, 171, 342}));
    }

    void speedBeginsAfterTheRealTimePeriods()
    {
        StreamFormat format;
        format.speed = 10;
        SoundStream stream = streamAt(
            format, [](int) { return Samples(); }, 0);
        while (stream.position() < kPeriodSamples) {
            stream.nextFrame();
        }
        const qint64 over = stream.position() - kPeriodSamples;
        QCOMPARE(stream.dueMs(), kBoundaryMs + 15000 + qint64(std::ceil(double(over) / 120)));
        while (stream.position() < 2 * kPeriodSamples) {
            stream.nextFrame();
        }
        QVERIFY(stream.dueMs() < kBoundaryMs + 15000 + 1520);
    }

    void pacingNeverDrifts()
    {
        StreamFormat format;
        format.rateHz = 12001.06;
        SoundStream stream = streamAt(
            format, [](int) { return Samples(); }, 0);
        for (int i = 0; i < 2000; ++i) {
            stream.nextFrame();
        }
        QCOMPARE(stream.dueMs(), kBoundaryMs + qint64(std::ceil(2000 * 2048 / 12.00106)));
    }

    void skippedFillerLeavesThePeriodWhole()
    {
        SoundStream stream = streamAt(rawFormat());
        stream.nextFrame();
        stream.skipFiller();
        QCOMPARE(stream.position(), qint64(0));
        QCOMPARE(rawSamples(&stream, 1000), ramp(0).mid(0, 1000));
        stream.skipFiller();
        QVERIFY(stream.position() > 0);
    }

    void lostSamplesLeaveNoGapInTheSequence()
    {
        SoundStream stream = streamAt(rawFormat(), ramp, 0);
        stream.nextFrame();
        stream.loseSamples(300);
        const QByteArray next = stream.nextFrame();
        QCOMPARE(qFromLittleEndian<quint32>(next.constData() + 4), 2U);
        QCOMPARE(fromLittleEndian(next.mid(10)), ramp(0).mid(812, 512));
    }

    void toneOfTheFirstFrameTakesItsPlace()
    {
        SoundStream stream = streamAt(rawFormat());
        stream.setFirstFrameTone(true);
        const Samples first = fromLittleEndian(stream.nextFrame().mid(10));
        QCOMPARE(first.size(), 512);
        QVERIFY(*std::max_element(first.begin(), first.end()) > 16000);
        QCOMPARE(stream.position(), qint64(-2 * 512));
        QVERIFY(qAbs(fromLittleEndian(stream.nextFrame().mid(10)).at(3)) < 3000);
    }

    void oddPayloads_data()
    {
        QTest::addColumn<int>("codec");
        QTest::addColumn<int>("samples");
        QTest::newRow("compressed") << int(Codec::Adpcm) << 2046;
        QTest::newRow("uncompressed") << int(Codec::LittleEndian) << 511;
    }

    void oddPayloads()
    {
        QFETCH(int, codec);
        StreamFormat format;
        format.codec = Codec(codec);
        format.payloadBytes = 1023;
        QTEST(format.frameSamples(), "samples");
        SoundStream stream = streamAt(format, ramp, 0);
        QCOMPARE(stream.nextFrame().size(), 1033);
        QCOMPARE(stream.position(), qint64(format.frameSamples()));
    }

    void recorderCutsTheListenersPeriods()
    {
        SoundStream stream = streamAt({}, ramp, 3);
        PeriodRecorder recorder;
        AdpcmState listener;
        Samples heard;
        QVector<Samples> recorded;
        while (recorded.size() < 2) {
            const bool kept = stream.position() >= 0;
            const QByteArray frame = stream.nextFrame();
            const Samples samples = decodeAdpcm(&listener, frame.mid(10));
            if (kept) {
                heard += samples;
            }
            recorded += recorder.take(frame, kept);
        }
        QVERIFY(recorded.at(0) == heard.mid(0, kPeriodSamples));
        QVERIFY(recorded.at(1) == heard.mid(kPeriodSamples, kPeriodSamples));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::SoundStreamTest)
#include "soundstream_test.moc"
