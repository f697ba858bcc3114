#include "kiwi/sounddecoder.h"

#include <QTest>

Q_DECLARE_METATYPE(outpost::SampleOrder)

namespace outpost
{

namespace
{
QByteArray frame(int flags, const QByteArray &payload)
{
    return QByteArray("SND") + static_cast<char>(flags) + QByteArray(6, '\x55') + payload;
}

QByteArray adpcmFrame(const QByteArray &payload)
{
    return frame(0x10, payload);
}

QVector<qint16> decoded(const QList<int> &nibbles)
{
    ImaAdpcmState state;
    QVector<qint16> samples;
    for (const int nibble : nibbles) {
        samples.append(decodeImaNibble(state, nibble));
    }
    return samples;
}
} // namespace

class SoundDecoderTest : public QObject
{
    Q_OBJECT

private slots:
    void adpcmTakesTheLowNibbleFirst();
    void adpcmRunsOnFromFrameToFrame();
    void aResetStartsAnew();
    void plainSamplesLeaveTheAdpcmStateAlone();
    void plainSamplesInTheirByteOrder_data();
    void plainSamplesInTheirByteOrder();
    void aHeaderAloneHasNoSamples_data();
    void aHeaderAloneHasNoSamples();
    void aShortFrameAfterALongOneHasOnlyItsOwnSamples();
};

void SoundDecoderTest::adpcmTakesTheLowNibbleFirst()
{
    SoundDecoder decoder;
    QCOMPARE(decoder.decode(adpcmFrame("\x0f\x74")), decoded({15, 0, 4, 7}));
}

void SoundDecoderTest::adpcmRunsOnFromFrameToFrame()
{
    SoundDecoder decoder;
    decoder.decode(adpcmFrame("\x17\x7f"));
    QCOMPARE(decoder.decode(adpcmFrame("\x3a")), decoded({7, 1, 15, 7, 10, 3}).mid(4));
}

void SoundDecoderTest::aResetStartsAnew()
{
    SoundDecoder decoder;
    decoder.decode(adpcmFrame("\x77\x77"));
    decoder.reset();
    QCOMPARE(decoder.adpcmState().adpcmIndex, 0);
    QCOMPARE(decoder.adpcmState().adpcmPredictor, 0);
    QCOMPARE(decoder.decode(adpcmFrame("\x3a")), decoded({10, 3}));
}

void SoundDecoderTest::plainSamplesLeaveTheAdpcmStateAlone()
{
    SoundDecoder decoder;
    decoder.decode(adpcmFrame("\x17"));
    decoder.decode(frame(0, "abcdef"));
    QCOMPARE(decoder.decode(adpcmFrame("\x3a")), decoded({7, 1, 10, 3}).mid(2));
}

void SoundDecoderTest::plainSamplesInTheirByteOrder_data()
{
    QTest::addColumn<SampleOrder>("order");
    QTest::addColumn<int>("flags");
    QTest::addColumn<QVector<qint16>>("samples");
    const QVector<qint16> little{0x1234, -32768};
    const QVector<qint16> big{0x3412, 0x0080};
    QTest::newRow("little-endian") << SampleOrder::LittleEndian << 0 << little;
    QTest::newRow("little-endian, flag set") << SampleOrder::LittleEndian << 0x80 << little;
    QTest::newRow("big-endian") << SampleOrder::BigEndian << 0 << big;
    QTest::newRow("big-endian, flag set") << SampleOrder::BigEndian << 0x80 << big;
    QTest::newRow("by the flag, clear") << SampleOrder::FlagDecides << 0x6f << big;
    QTest::newRow("by the flag, set") << SampleOrder::FlagDecides << 0x80 << little;
}

void SoundDecoderTest::plainSamplesInTheirByteOrder()
{
    QFETCH(SampleOrder, order);
    QFETCH(int, flags);
    SoundDecoder decoder(order);
    // An odd last byte is dropped.
    QTEST(decoder.decode(frame(flags, QByteArray("\x34\x12\x00\x80\x7f", 5))), "samples");
}

void SoundDecoderTest::aHeaderAloneHasNoSamples_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("ADPCM") << adpcmFrame({});
    QTest::newRow("16-bit samples") << frame(0, {});
    QTest::newRow("half a sample") << frame(0, "x");
}

void SoundDecoderTest::aHeaderAloneHasNoSamples()
{
    QFETCH(QByteArray, bytes);
    SoundDecoder decoder;
    QCOMPARE(decoder.decode(bytes), QVector<qint16>());
}

void SoundDecoderTest::aShortFrameAfterALongOneHasOnlyItsOwnSamples()
{
    SoundDecoder decoder;
    QCOMPARE(decoder.decode(frame(0, QByteArray(1000, 'x'))).size(), 500);
    QCOMPARE(decoder.decode(adpcmFrame("x")).size(), 2);
}

} // namespace outpost

QTEST_APPLESS_MAIN(outpost::SoundDecoderTest)
#include "sounddecoder_test.moc"
