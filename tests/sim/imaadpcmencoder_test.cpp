#include "sim/imaadpcmencoder.h"

#include <QtTest>
#include <cmath>

namespace outpost
{

using namespace sim;

class ImaAdpcmEncoderTest : public QObject
{
    Q_OBJECT

private:
    static Samples sine(int count)
    {
        Samples samples;
        for (int i = 0; i < count; ++i) {
            samples.append(qint16(8000 * std::sin(2 * kPi * 500 * i / kSampleRateHz)));
        }
        return samples;
    }

private slots:
    void decodesByTheStandardTables()
    {
        // Step 7: 7 + 3 + 1; index 8, step 16: -(16 + 8 + 4 + 2); index 16, step 34: 4.
        AdpcmState state;
        QCOMPARE(decodeNibble(&state, 0x7), qint16(11));
        QCOMPARE(state.index, 8);
        QCOMPARE(decodeNibble(&state, 0xF), qint16(-19));
        QCOMPARE(state.index, 16);
        QCOMPARE(decodeNibble(&state, 0x0), qint16(-15));
        QCOMPARE(state.index, 15);
    }

    void lowNibbleComesFirst()
    {
        AdpcmState state;
        QCOMPARE(decodeAdpcm(&state, QByteArray("\xF7", 1)), (Samples{11, -19}));
    }

    void encoderInvertsTheDecoder()
    {
        AdpcmState state;
        QCOMPARE(encodeAdpcm(&state, {11, -19}), QByteArray("\xF7", 1));
        QCOMPARE(state.predictor, -19);
        QCOMPARE(state.index, 16);
    }

    void followsASine()
    {
        AdpcmState encoder;
        AdpcmState decoder;
        const Samples heard = decodeAdpcm(&decoder, encodeAdpcm(&encoder, sine(12000)));
        QCOMPARE(heard.size(), 12000);
        const Samples wanted = sine(12000);
        double signal = 0;
        double error = 0;
        for (int i = 100; i < heard.size(); ++i) { // the steps grow first
            signal += std::pow(wanted.at(i), 2);
            error += std::pow(heard.at(i) - wanted.at(i), 2);
        }
        QVERIFY2(error < signal / 500, "better than 27 dB");
    }

    void encoderStateIsTheListenersState()
    {
        AdpcmState encoder;
        AdpcmState decoder;
        decodeAdpcm(&decoder, encodeAdpcm(&encoder, sine(2048)));
        QCOMPARE(encoder.predictor, decoder.predictor);
        QCOMPARE(encoder.index, decoder.index);
    }

    void stateRunsOnAcrossFrames()
    {
        const Samples all = sine(4096);
        AdpcmState whole;
        AdpcmState parts;
        const QByteArray first = encodeAdpcm(&parts, all.mid(0, 2048));
        QCOMPARE(first + encodeAdpcm(&parts, all.mid(2048)), encodeAdpcm(&whole, all));
    }

    void oddCountIsFilledUp()
    {
        AdpcmState state;
        QCOMPARE(encodeAdpcm(&state, {11, -19, 5}).size(), 2);
    }

    void staysWithinSixteenBits()
    {
        AdpcmState state;
        const QByteArray up(200, '\x77');
        const QByteArray down(200, '\xFF');
        QCOMPARE(decodeAdpcm(&state, up).last(), qint16(32767));
        QCOMPARE(decodeAdpcm(&state, down).last(), qint16(-32768));
        QCOMPARE(state.index, 88);
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::ImaAdpcmEncoderTest)
#include "imaadpcmencoder_test.moc"
