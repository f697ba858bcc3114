#include "sim/wsframe.h"

#include <QtTest>

namespace outpost
{

using namespace sim;

class WsFrameTest : public QObject
{
    Q_OBJECT

private:
    static QByteArray upgradeRequest()
    {
        return "GET /kiwi/0/SND HTTP/1.1\r\nHost: h:8073\r\nUpgrade: websocket\r\n"
               "Sec-WebSocket-Key:  dGhlIHNhbXBsZSBub25jZQ== \r\n\r\n";
    }

    static QByteArray masked(int first, const QByteArray &payload)
    {
        const QByteArray mask("\x11\x22\x33\x44", 4);
        QByteArray frame(1, char(first));
        if (payload.size() < 126) {
            frame.append(char(0x80 | payload.size()));
        } else {
            frame.append(char(0x80 | 126));
            frame.append(char(payload.size() >> 8)).append(char(payload.size() & 0xFF));
        }
        frame += mask;
        for (int i = 0; i < payload.size(); ++i) {
            frame.append(char(payload.at(i) ^ mask.at(i % 4)));
        }
        return frame;
    }

private slots:
    void acceptKeyIsTheOneOfTheRfc()
    {
        QCOMPARE(acceptKey("dGhlIHNhbXBsZSBub25jZQ=="), QByteArray("s3pPLMBiTxaQ9kYGzzhZRbK+xOo="));
        QVERIFY(upgradeReply("k").startsWith("HTTP/1.1 101 "));
        QVERIFY(upgradeReply("k").endsWith("\r\n\r\n"));
    }

    void readsARequest()
    {
        const HttpRequest request = parseRequest(upgradeRequest() + "rest");
        QCOMPARE(request.status, Parse::Done);
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.path, QByteArray("/kiwi/0/SND"));
        QCOMPARE(request.headers.value("host"), QByteArray("h:8073"));
        QCOMPARE(request.headers.value("sec-websocket-key"),
                 QByteArray("dGhlIHNhbXBsZSBub25jZQ=="));
        QCOMPARE(request.consumed, upgradeRequest().size());
    }

    void readsARequestWithoutHeaders()
    {
        const HttpRequest request = parseRequest("GET /0/SND HTTP/1.1\r\n\r\n");
        QCOMPARE(request.status, Parse::Done);
        QCOMPARE(request.path, QByteArray("/0/SND"));
        QVERIFY(request.headers.isEmpty());
    }

    void waitsForTheWholeRequest()
    {
        for (int length = 0; length < upgradeRequest().size(); ++length) {
            QCOMPARE(parseRequest(upgradeRequest().left(length)).status, Parse::NeedMore);
        }
    }

    void badRequests_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("two words") << QByteArray("GET /\r\n\r\n");
        QTest::newRow("no version") << QByteArray("GET / FTP/1\r\n\r\n");
        QTest::newRow("empty") << QByteArray("\r\n\r\n");
        QTest::newRow("too long") << QByteArray(kLargestRequestBytes + 1, 'a');
        QTest::newRow("too long, ended")
            << "GET / HTTP/1.1\r\n" + QByteArray(kLargestRequestBytes, 'a') + "\r\n\r\n";
    }

    void badRequests()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(parseRequest(bytes).status, Parse::Bad);
    }

    void readsAClientFrame_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {0, 1, 5, 125, 126, 127, 4000, 65535}) {
            QTest::addRow("%d bytes", size) << size;
        }
    }

    void readsAClientFrame()
    {
        QFETCH(int, size);
        const QByteArray payload = QByteArray("SET keepalive").repeated(6000).left(size);
        const QByteArray bytes = masked(0x81, payload);
        const ClientFrame frame = parseClientFrame(bytes + "next");
        QCOMPARE(frame.status, Parse::Done);
        QVERIFY(frame.final);
        QCOMPARE(frame.opcode, quint8(Text));
        QCOMPARE(frame.payload, payload);
        QCOMPARE(frame.consumed, bytes.size());
        for (int length = 0; length < qMin(bytes.size(), 200); ++length) {
            QCOMPARE(parseClientFrame(bytes.left(length)).status, Parse::NeedMore);
        }
        QCOMPARE(parseClientFrame(bytes.left(bytes.size() - 1)).status, Parse::NeedMore);
    }

    void readsFragmentsAndControlFrames()
    {
        QVERIFY(!parseClientFrame(masked(0x01, "a")).final);
        QCOMPARE(parseClientFrame(masked(0x89, "a")).opcode, quint8(Ping));
        QCOMPARE(parseClientFrame(masked(0x88, {})).opcode, quint8(Close));
    }

    void badClientFrames_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("not masked") << wsFrame(Text, "hello");
        QTest::newRow("reserved bit") << masked(0xC1, "hello");
        QTest::newRow("eight bytes of length") << QByteArray("\x81\xFF", 2);
    }

    void badClientFrames()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(parseClientFrame(bytes).status, Parse::Bad);
    }

    void writesHeaders_data()
    {
        QTest::addColumn<quint64>("size");
        QTest::addColumn<QByteArray>("header");
        QTest::newRow("empty") << quint64(0) << QByteArray::fromHex("8200");
        QTest::newRow("125") << quint64(125) << QByteArray::fromHex("827d");
        QTest::newRow("126") << quint64(126) << QByteArray::fromHex("827e007e");
        QTest::newRow("1034") << quint64(1034) << QByteArray::fromHex("827e040a");
        QTest::newRow("65535") << quint64(65535) << QByteArray::fromHex("827effff");
        QTest::newRow("65536") << quint64(65536) << QByteArray::fromHex("827f0000000000010000");
    }

    void writesHeaders()
    {
        QFETCH(quint64, size);
        QTEST(frameHeader(Binary, size), "header");
    }

    void writesFragmentsAndCloses()
    {
        QCOMPARE(wsFrame(Binary, "ab", false), QByteArray::fromHex("02026162"));
        QCOMPARE(wsFrame(Continuation, "c"), QByteArray::fromHex("800163"));
        QCOMPARE(wsFrame(Close, {}), QByteArray::fromHex("8800")); // no status code
    }

    void repliesWithoutABody()
    {
        const QByteArray reply = httpReply("404 Not Found", "Location: x\r\n");
        QVERIFY(reply.startsWith("HTTP/1.1 404 Not Found\r\nLocation: x\r\n"));
        QVERIFY(reply.contains("Content-Length: 0\r\n"));
        QVERIFY(reply.endsWith("\r\n\r\n"));
    }
};

} // namespace outpost

QTEST_GUILESS_MAIN(outpost::WsFrameTest)
#include "wsframe_test.moc"
