#include "base/buildconfig.h"
#include "daemon/spot.h"
#include "daemon/wsjtxmessages.h"

#include <QtTest>

namespace outpost
{

namespace
{

// The parts of the datagrams here, written by hand.
const QByteArray magic = "ad bc cb da ";
const QByteArray schema2 = "00 00 00 02 ";
const QByteArray schema3 = "00 00 00 03 ";
const QByteArray kiwiA = "00 00 00 06 4b 69 77 69 20 41 "; // "Kiwi A"
const QByteArray ft8 = "00 00 00 03 46 54 38 ";
const QByteArray empty = "00 00 00 00 ";
const QByteArray heartbeat = "00 00 00 00 ";
const QByteArray replay = "00 00 00 07 ";

QByteArray start(const QByteArray &type)
{
    return magic + schema2 + type + kiwiA;
}

QByteArray bytes(const QByteArray &hex)
{
    return QByteArray::fromHex(hex);
}

WsjtxHeader header(quint32 schema = 2)
{
    return {QStringLiteral("Kiwi A"), schema};
}

Spot spot()
{
    Spot spot;
    spot.periodStartMs = QDateTime({2026, 11, 21}, {17, 52, 30}, Qt::UTC).toMSecsSinceEpoch();
    spot.snr = -12;
    spot.dt = 0.3;
    spot.audioHz = 1234;
    spot.message = QStringLiteral("CQ K1ABC FN42");
    return spot;
}

const QByteArray decodeType = "00 00 00 02 ";
const QByteArray decodeNumbers = "03 d5 e7 30 "             // 64350000 ms
                                 "ff ff ff f4 "             // -12 dB
                                 "3f d3 33 33 33 33 33 33 " // 0.3 s
                                 "00 00 04 d2 "             // 1234 Hz
                                 "00 00 00 01 7e ";         // ~
const QByteArray decodeMessage = "00 00 00 0d 43 51 20 4b 31 41 42 43 20 46 4e 34 32 ";

} // namespace

class WsjtxMessagesTest : public QObject
{
    Q_OBJECT

private slots:
    void aHeartbeatNamesTheHighestSchemaAndTheVersion();
    void aStatusSaysWhatAStationThatOnlyReceivesCan_data();
    void aStatusSaysWhatAStationThatOnlyReceivesCan();
    void aDecodeGoesOutByteForByte();
    void aDecodeThatIsShownAgainIsNotNew();
    void aDoubtfulDecodeHasLowConfidence();
    void aDecodesTimeIsUtcAndOfItsDay_data();
    void aDecodesTimeIsUtcAndOfItsDay();
    void textsAreUtf8();
    void clearAndCloseAreTheHeaderAlone();
    void theHeaderHasTheSchemaThatIsAskedFor();
    void readsWhatAServerSends_data();
    void readsWhatAServerSends();
    void ignoresTheRest_data();
    void ignoresTheRest();
    void ignoresADatagramThatIsCutOffAnywhere();
};

void WsjtxMessagesTest::aHeartbeatNamesTheHighestSchemaAndTheVersion()
{
    const QByteArray version = QByteArray(OUTPOST_VERSION).mid(1);
    const QByteArray expected = bytes(start(heartbeat) + schema3) + bytes("00 00 00") +
                                static_cast<char>(version.size()) + version +
                                bytes(empty); // no revision
    QCOMPARE(wsjtxHeartbeat(header()).toHex(), expected.toHex());
}

void WsjtxMessagesTest::aStatusSaysWhatAStationThatOnlyReceivesCan_data()
{
    QTest::addColumn<bool>("decoding");
    QTest::addColumn<QByteArray>("flag");

    QTest::newRow("decoding") << true << QByteArray("01 ");
    QTest::newRow("waiting for the next period") << false << QByteArray("00 ");
}

void WsjtxMessagesTest::aStatusSaysWhatAStationThatOnlyReceivesCan()
{
    QFETCH(bool, decoding);
    QFETCH(QByteArray, flag);
    const QByteArray expected = start("00 00 00 01 ") + "00 00 00 00 00 d6 c0 90 " // 14074000 Hz
                                + ft8 + empty + empty // DX call, report
                                + ft8 + "00 00 "      // Tx mode, not enabled, not transmitting
                                + flag                // decoding
                                + "00 00 00 00 00 00 00 00 " // Rx and Tx marker
                                + empty + empty + empty      // DE call, DE grid, DX grid
                                + "00 " + empty + "00 "      // watchdog, sub-mode, fast mode
                                + "00 "                      // special operation
                                + "ff ff ff ff 00 00 00 0f " // tolerance, period
                                + "00 00 00 03 34 30 6d "    // configuration "40m"
                                + empty;                     // Tx message
    const QByteArray datagram = wsjtxStatus(header(), {14074000, decoding, QStringLiteral("40m")});
    QCOMPARE(datagram.toHex(), bytes(expected).toHex());
}

void WsjtxMessagesTest::aDecodeGoesOutByteForByte()
{
    const QByteArray expected = start(decodeType) + "01 " + decodeNumbers + decodeMessage + "00 00";
    QCOMPARE(wsjtxDecode(header(), spot(), true).toHex(), bytes(expected).toHex());
}

void WsjtxMessagesTest::aDecodeThatIsShownAgainIsNotNew()
{
    const QByteArray expected = start(decodeType) + "00 " + decodeNumbers + decodeMessage + "00 00";
    QCOMPARE(wsjtxDecode(header(), spot(), false).toHex(), bytes(expected).toHex());
}

void WsjtxMessagesTest::aDoubtfulDecodeHasLowConfidence()
{
    Spot doubtful = spot();
    doubtful.lowConfidence = true;
    const QByteArray expected = start(decodeType) + "01 " + decodeNumbers + decodeMessage + "01 00";
    QCOMPARE(wsjtxDecode(header(), doubtful, true).toHex(), bytes(expected).toHex());
}

void WsjtxMessagesTest::aDecodesTimeIsUtcAndOfItsDay_data()
{
    QTest::addColumn<QDateTime>("start");
    QTest::addColumn<QByteArray>("time");

    QTest::newRow("midnight") << QDateTime({2026, 11, 22}, {0, 0, 0}, Qt::UTC)
                              << QByteArray("00000000");
    QTest::newRow("last period") << QDateTime({2026, 11, 21}, {23, 59, 45}, Qt::UTC)
                                 << QByteArray("05262168"); // 86385000
}

void WsjtxMessagesTest::aDecodesTimeIsUtcAndOfItsDay()
{
    QFETCH(QDateTime, start);
    Spot late = spot();
    late.periodStartMs = start.toMSecsSinceEpoch();
    const QByteArray datagram = wsjtxDecode(header(), late, true);
    const int headerBytes = 4 + 4 + 4 + 10;
    QTEST(datagram.mid(headerBytes + 1, 4).toHex(), "time");
}

void WsjtxMessagesTest::textsAreUtf8()
{
    const QByteArray datagram = wsjtxClear({QStringLiteral("Küche"), 2});
    QCOMPARE(datagram.toHex(),
             bytes(magic + schema2 + "00 00 00 03 00 00 00 06 4b c3 bc 63 68 65").toHex());
}

void WsjtxMessagesTest::clearAndCloseAreTheHeaderAlone()
{
    QCOMPARE(wsjtxClear(header()).toHex(), bytes(start("00 00 00 03 ")).toHex());
    QCOMPARE(wsjtxClose(header()).toHex(), bytes(start("00 00 00 06 ")).toHex());
}

void WsjtxMessagesTest::theHeaderHasTheSchemaThatIsAskedFor()
{
    QCOMPARE(wsjtxClear(header(3)).toHex(),
             bytes(magic + schema3 + "00 00 00 03 " + kiwiA).toHex());
    // The fields of the two schemas do not differ.
    QCOMPARE(wsjtxDecode(header(3), spot(), true).mid(8),
             wsjtxDecode(header(2), spot(), true).mid(8));
}

void WsjtxMessagesTest::readsWhatAServerSends_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<bool>("isReplay");
    QTest::addColumn<QString>("id");
    QTest::addColumn<quint32>("maxSchema");

    const QString id = QStringLiteral("Kiwi A");
    const auto row = [](const char *name, const QByteArray &hex) -> QTestData & {
        return QTest::newRow(name) << hex;
    };
    row("heartbeat of schema 3", start(heartbeat) + schema3 + empty + empty) << false << id << 3U;
    row("heartbeat of schema 2", start(heartbeat) + schema2 + empty + empty) << false << id << 2U;
    row("heartbeat of a later schema", start(heartbeat) + "00 00 00 07") << false << id << 7U;
    row("heartbeat of old servers", start(heartbeat)) << false << id << 2U;
    row("heartbeat, schema cut off", start(heartbeat) + "00 00") << false << id << 2U;
    row("heartbeat with more fields", start(heartbeat) + schema3 + empty + empty + "01 02 03")
        << false << id << 3U;
    row("heartbeat in schema 3", magic + schema3 + heartbeat + kiwiA + schema3)
        << false << id << 3U;
    row("replay", start(replay)) << true << id << 0U;
    row("replay with more bytes", start(replay) + "ff ff ff ff 00") << true << id << 0U;
    row("replay in schema 3", magic + schema3 + replay + kiwiA) << true << id << 0U;
    row("empty id", magic + schema2 + replay + empty) << true << QString() << 0U;
    row("null id", magic + schema2 + replay + "ff ff ff ff") << true << QString() << 0U;
    row("id that is no UTF-8", magic + schema2 + replay + "00 00 00 01 ff")
        << true << QString(QChar::ReplacementCharacter) << 0U;
}

void WsjtxMessagesTest::readsWhatAServerSends()
{
    QFETCH(QByteArray, hex);
    QFETCH(bool, isReplay);
    const std::optional<WsjtxRequest> request = readWsjtxRequest(bytes(hex));
    QVERIFY(request.has_value());
    QCOMPARE(request->type == WsjtxRequest::Type::Replay, isReplay);
    QTEST(request->id, "id");
    QTEST(request->maxSchema, "maxSchema");
}

void WsjtxMessagesTest::ignoresTheRest_data()
{
    QTest::addColumn<QByteArray>("hex");

    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("zeros") << QByteArray("00 ").repeated(64);
    QTest::newRow("another magic") << "ad bc cb db " + schema2 + replay + kiwiA;
    QTest::newRow("little-endian") << QByteArray("da cb bc ad 02 00 00 00 07 00 00 00 00 00 00 00");
    QTest::newRow("a schema that nobody agreed on") << magic + "00 00 00 04 " + replay + kiwiA;
    QTest::newRow("id longer than the datagram")
        << magic + schema2 + replay + "00 00 00 07 4b 69 77 69 20 41";
    QTest::newRow("id of 2 GB") << magic + schema2 + replay + "7f ff ff ff 4b";
    QTest::newRow("id of nearly 4 GB") << magic + schema2 + replay + "ff ff ff fe 4b";
    for (const char *type : {"03", "04", "06", "08", "09", "0b", "0d", "0e", "0f", "10", "ff"}) {
        QTest::addRow("type %s", type) << start(QByteArray("00 00 00 ") + type + " ") + schema3;
    }
}

void WsjtxMessagesTest::ignoresTheRest()
{
    QFETCH(QByteArray, hex);
    QVERIFY(!readWsjtxRequest(bytes(hex)));
}

void WsjtxMessagesTest::ignoresADatagramThatIsCutOffAnywhere()
{
    const QByteArray whole = bytes(start(replay));
    QVERIFY(readWsjtxRequest(whole));
    for (int size = 0; size < whole.size(); ++size) {
        QVERIFY2(!readWsjtxRequest(whole.left(size)), qPrintable(QString::number(size)));
    }
}

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::WsjtxMessagesTest)
#include "wsjtxmessages_test.moc"
