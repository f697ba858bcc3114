#include "kiwi/imaadpcm.h"

#include <QCryptographicHash>
#include <QTest>
#include <QVector>
#include <QtEndian>

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

// The payload that the reference decoder below was given.
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

// 4096 samples that Python's audioop made of the same payload (nibbles swapped for it).
void ImaAdpcmTest::agreesWithAnIndependentDecoder()
{
    ImaAdpcmState state;
    QByteArray bytes;
    const QVector<qint16> samples = decodePayload(state, noisePayload());
    for (const qint16 sample : samples) {
        const qint16 little = qToLittleEndian(sample);
        bytes.append(reinterpret_cast<const char *>(&little), 2);
    }
    QCOMPARE(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex(),
             QByteArray("23afa18c02ff0cd90de328c1ff4b3beb9f4b429a797338c3536ab1371f842e15"));
    QCOMPARE(state.adpcmPredictor, 28672);
    QCOMPARE(state.adpcmIndex, 87);
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

QTEST_APPLESS_MAIN(ImaAdpcmTest)
#include "imaadpcm_test.moc"
