#include "kiwi/imaadpcm.h"

#include <QCryptographicHash>
#include <QTest>
#include <QVector>
#include <QtEndian>
#include <cmath>

namespace outpost
{

namespace
{
// Low nibble first, as the receiver packs them.
QVector<qint16> decodePayload(ImaAdpcmState &state, const QByteArray &payload)
{
    QVector<qint16> samples;
    for (const char byte : payload) {
        const int nibbles = static_cast<quint8>(byte);
        samples.append(decodeImaNibble(state, nibbles & 15));
        samples.append(decodeImaNibble(state, nibbles >> 4));
    }
    return samples;
}

// Payloads that were also given to the reference decoder below. Noise keeps the index high.
QByteArray noisePayload()
{
    QByteArray payload;
    quint32 x = 1;
    for (int i = 0; i < 2048; ++i) {
        x = (x * 1103515245U + 12345U) & 0x7fffffffU;
        payload.append(static_cast<char>((x >> 16) & 0xffU));
    }
    return payload;
}

// Up through all steps, one per byte, and down again; the signs keep the samples away from the
// limits.
QByteArray sweepPayload()
{
    return QByteArray("\x84\x0c").repeated(44) + "\x84\x4c" + QByteArray("\x80").repeated(50);
}

// The recommendation's steps: 7 to 14, then each a tenth larger than the one before, rounded down,
// up to the largest sample.
int recommendedStep(int index)
{
    if (index < 8) {
        return 7 + index;
    }
    return index < 88 ? int(16 * std::pow(1.1, index - 8)) : 32767;
}
} // namespace

class ImaAdpcmTest : public QObject
{
    Q_OBJECT

private slots:
    void oneNibbleFromRest_data();
    void oneNibbleFromRest();
    void indexStaysWithinTheTable();
    void predictorStaysWithin16Bits();
    void stepIsTakenBeforeTheIndexMoves();
    void everyStepIsTheRecommendedOne();
    void agreesWithAnIndependentDecoder_data();
    void agreesWithAnIndependentDecoder();
    void stateRunsOnAcrossFrames();
};

void ImaAdpcmTest::oneNibbleFromRest_data()
{
    QTest::addColumn<int>("nibble");
    QTest::addColumn<int>("sample");
    QTest::addColumn<int>("index");
    // The first step is 7: 7>>3 = 0, 7>>2 = 1, 7>>1 = 3.
    const int samples[16] = {0, 1, 3, 4, 7, 8, 10, 11, 0, -1, -3, -4, -7, -8, -10, -11};
    const int indexes[8] = {0, 0, 0, 0, 2, 4, 6, 8};
    for (int nibble = 0; nibble < 16; ++nibble) {
        QTest::addRow("%d", nibble) << nibble << samples[nibble] << indexes[nibble & 7];
    }
}

void ImaAdpcmTest::oneNibbleFromRest()
{
    QFETCH(int, nibble);
    ImaAdpcmState state;
    QTEST(int(decodeImaNibble(state, nibble)), "sample");
    QTEST(state.adpcmIndex, "index");
    QTEST(state.adpcmPredictor, "sample");
}

void ImaAdpcmTest::indexStaysWithinTheTable()
{
    ImaAdpcmState state;
    for (int i = 0; i < 20; ++i) {
        decodeImaNibble(state, 7);
    }
    QCOMPARE(state.adpcmIndex, 88);
    for (int i = 0; i < 100; ++i) {
        decodeImaNibble(state, 0);
    }
    QCOMPARE(state.adpcmIndex, 0);
}

void ImaAdpcmTest::predictorStaysWithin16Bits()
{
    ImaAdpcmState state{88, 32000};
    QCOMPARE(int(decodeImaNibble(state, 7)), 32767);
    state = {88, -32000};
    QCOMPARE(int(decodeImaNibble(state, 15)), -32768);
}

void ImaAdpcmTest::stepIsTakenBeforeTheIndexMoves()
{
    ImaAdpcmState state{10, 0};
    // Step 19 at index 10: 2 + 4 + 9 + 19.
    QCOMPARE(int(decodeImaNibble(state, 7)), 34);
    QCOMPARE(state.adpcmIndex, 18);
}

void ImaAdpcmTest::everyStepIsTheRecommendedOne()
{
    for (int index = 0; index <= 88; ++index) {
        const int step = recommendedStep(index);
        ImaAdpcmState state{index, -32768};
        QCOMPARE(int(decodeImaNibble(state, 7)), -32768 + step / 8 + step / 4 + step / 2 + step);
    }
}

// Samples that Python's audioop decoded from the same payload (with nibbles swapped).
void ImaAdpcmTest::agreesWithAnIndependentDecoder_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("sha256"); // of the samples, little-endian
    QTest::addColumn<int>("predictor");     // at the end
    QTest::addColumn<int>("index");
    QTest::newRow("noise") << noisePayload()
                           << QByteArray("23afa18c02ff0cd90de328c1ff4b3beb"
                                         "9f4b429a797338c3536ab1371f842e15")
                           << 28672 << 87;
    QTest::newRow("sweep") << sweepPayload()
                           << QByteArray("3597f402f320ae50bbca243751182659"
                                         "538f2bd90f2184fdd5ca15bb78171fc1")
                           << 19309 << 0;
}

void ImaAdpcmTest::agreesWithAnIndependentDecoder()
{
    QFETCH(QByteArray, payload);
    ImaAdpcmState state;
    QByteArray bytes;
    const QVector<qint16> samples = decodePayload(state, payload);
    for (const qint16 sample : samples) {
        const qint16 little = qToLittleEndian(sample);
        bytes.append(reinterpret_cast<const char *>(&little), 2);
    }
    QTEST(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex(), "sha256");
    QTEST(state.adpcmPredictor, "predictor");
    QTEST(state.adpcmIndex, "index");
}

void ImaAdpcmTest::stateRunsOnAcrossFrames()
{
    const QByteArray payload = noisePayload();
    ImaAdpcmState whole;
    const QVector<qint16> joined = decodePayload(whole, payload);

    ImaAdpcmState split;
    QVector<qint16> parts = decodePayload(split, payload.left(1024));
    parts += decodePayload(split, payload.mid(1024));
    QCOMPARE(parts, joined);
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::ImaAdpcmTest)
#include "imaadpcm_test.moc"
