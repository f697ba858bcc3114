#pragma once

#include "ramp.h"
#include "sim/imaadpcmencoder.h"
#include "sim/soundplan.h"
#include "tests/fixture/simulator.h"
#include "tests/fixture/text.h"

#include <QElapsedTimer>
#include <QTest>
#include <QUrl>
#include <QWebSocket>
#include <algorithm>

namespace outpost
{

// UTC for tests: it can be moved forward and runs at the real rate.
class TestClock
{
public:
    qint64 nowMs() const
    {
        return m_isHeld ? m_heldMs : m_startMs + m_jumpedMs + m_running.elapsed();
    }
    void jumpTo(qint64 utcMs) { m_jumpedMs += qMax<qint64>(0, utcMs - nowMs()); }

    void hold()
    {
        m_heldMs = nowMs();
        m_isHeld = true;
    }
    void release() // continues from where it was held
    {
        m_isHeld = false;
        m_jumpedMs += m_heldMs - nowMs();
    }

    explicit TestClock(qint64 startMs = 1700006400000) : m_startMs(startMs) { m_running.start(); }

private:
    qint64 m_startMs;
    qint64 m_jumpedMs = 0;
    qint64 m_heldMs = 0;
    bool m_isHeld = false;
    QElapsedTimer m_running;
};

// A client like the program: it sends seven commands when the link opens, picks its first boundary
// at the first sound frame, and splits periods by counting samples.
class SimClient : public QObject
{
public:
    explicit SimClient(TestClock *clock) : m_clock(clock)
    {
        connect(&socket, &QWebSocket::connected, this, [this] {
            for (const QString &command : qAsConst(commands)) {
                socket.sendTextMessage(command);
            }
        });
        connect(&socket, &QWebSocket::textMessageReceived, this,
                [this](const QString &text) { texts.append(text); });
        connect(&socket, &QWebSocket::binaryMessageReceived, this,
                [this](const QByteArray &message) { take(message); });
        connect(&socket, &QWebSocket::disconnected, this, [this] { ++closes; });
    }

    void open(quint16 port, const QString &path = QStringLiteral("/kiwi/0/SND"))
    {
        socket.open(QUrl(QStringLiteral("ws://127.0.0.1:%1%2").arg(port).arg(path)));
    }

    // True after the reply to a ping. By then, the replies to all earlier messages have arrived.
    bool hasAnsweredAll()
    {
        bool isAnswered = false;
        const auto pong = connect(&socket, &QWebSocket::pong, this, [&] { isAnswered = true; });
        socket.ping();
        const bool result = QTest::qWaitFor([&] { return isAnswered; }, 10000);
        disconnect(pong);
        return result;
    }

    // Returns when nothing more arrives at the current time of the clock.
    void takeEverything()
    {
        m_clock->hold();
        // A wait on a busy machine may be a single turn of the event loop; the receiver and this
        // client need a turn each.
        int before = -1;
        for (int quietWaits = 0; quietWaits < 4; ++quietWaits) {
            if (before != sounds.size()) {
                before = sounds.size();
                quietWaits = 0;
            }
            QTest::qWait(50);
        }
        m_clock->release();
    }

    // Once sound has started, skips the filler and jumps to the boundary.
    void jumpToBoundary()
    {
        m_clock->jumpTo(boundaryMs - 390);
        takeEverything();
        m_clock->jumpTo(boundaryMs);
    }

    static QStringList sevenCommands()
    {
        return {QStringLiteral("SET auth t=kiwi p="),
                QStringLiteral("SET ident_user=PELQ_Kiwi_Outpost"),
                QStringLiteral("SET keepalive"),
                QStringLiteral("SET AR OK in=12000 out=12000"),
                QStringLiteral("SET compression=1"),
                QStringLiteral("SET mod=usb low_cut=300 high_cut=3000 freq=14074.000"),
                QStringLiteral("SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50")};
    }

    QWebSocket socket;
    QStringList commands = sevenCommands();
    QStringList texts;
    QList<QByteArray> messages;  // "MSG …"
    QList<QByteArray> sounds;    // "SND…", the last 2000
    QList<QByteArray> others;    // any other binary message
    QVector<sim::Samples> heard; // whole periods
    qint64 boundaryMs = 0;       // 0 before the first sound frame
    qint64 firstSoundMs = 0;
    int closes = 0;

private:
    void take(const QByteArray &message)
    {
        if (message.startsWith("SND")) {
            takeSound(message);
        } else {
            (message.startsWith("MSG ") ? messages : others).append(message);
        }
    }

    void takeSound(const QByteArray &frame)
    {
        if (boundaryMs == 0) {
            firstSoundMs = m_clock->nowMs();
            boundaryMs = sim::firstBoundaryMs(firstSoundMs);
        }
        sounds.append(frame);
        if (sounds.size() > 2000) {
            sounds.removeFirst();
        }
        m_armed = m_armed || (frame.size() > 9 && m_clock->nowMs() >= boundaryMs);
        if (frame.size() < 11) {
            return;
        }
        const sim::Samples samples = (quint8(frame.at(3)) & 0x10)
                                         ? sim::decodeAdpcm(&m_adpcm, frame.mid(10))
                                         : sim::fromLittleEndian(frame.mid(10));
        if (m_armed) {
            m_period += samples;
        }
        while (m_period.size() >= sim::kPeriodSamples) {
            heard.append(m_period.mid(0, sim::kPeriodSamples));
            m_period = m_period.mid(sim::kPeriodSamples);
        }
    }

    TestClock *m_clock;
    sim::AdpcmState m_adpcm;
    sim::Samples m_period;
    bool m_armed = false;
};

// Connects another client to another endpoint; true when it has heard sound. By then, all earlier
// clients have received everything that was due.
inline bool laterListenerHears(const KiwiSim &receiver, TestClock *clock)
{
    SimClient later(clock);
    later.open(receiver.port(), text("/kiwi/1/SND"));
    return QTest::qWaitFor([&] { return !later.sounds.isEmpty(); }, 10000);
}

inline bool wasSent(const KiwiSim &receiver, const char *what)
{
    const auto &events = receiver.events();
    return std::any_of(events.begin(), events.end(), [what](const SimEvent &event) {
        return event.kind == QLatin1String("sent") && event.text == QLatin1String(what);
    });
}

} // namespace outpost
