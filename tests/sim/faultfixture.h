#pragma once

#include "simclient.h"

#include <QTcpSocket>
#include <QtTest>
#include <memory>

namespace outpost
{

// One receiver and one client per test; `start` selects the behaviour of endpoint 0.
class FaultFixture : public QObject
{
protected:
    void begin()
    {
        m_receiver = std::make_unique<KiwiSim>();
        m_client = std::make_unique<SimClient>(&m_clock);
        m_config = SimConfig();
        m_config.nowMs = [this] { return m_clock.nowMs(); };
        m_config.configKb = 1;
        m_config.audio = {ramp(0)};
        m_config.firstSoundDelayMs = 0;
        // Early in a period, so that the test does not run into a boundary.
        m_clock.jumpTo((m_clock.nowMs() / 15000 + 1) * 15000);
    }

    void end()
    {
        m_client.reset();
        m_receiver.reset();
    }

    void start(const char *behaviour)
    {
        startSim(*m_receiver, {text("0=") + text(behaviour)}, m_config);
        m_client->open(m_receiver->port());
    }

    void startSounding(const char *behaviour)
    {
        start(behaviour);
        QTRY_VERIFY(m_client->boundaryMs != 0);
    }

    void jumpToBoundary() { m_client->jumpToBoundary(); }

    // Sends a valid request over plain TCP.
    void request(QTcpSocket *socket, const char *path = "/kiwi/0/SND")
    {
        socket->connectToHost(text("127.0.0.1"), m_receiver->port());
        QTRY_COMPARE(socket->state(), QAbstractSocket::ConnectedState);
        socket->write(QByteArray("GET ") + path +
                      " HTTP/1.1\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n");
    }

    TestClock m_clock;
    std::unique_ptr<KiwiSim> m_receiver;
    std::unique_ptr<SimClient> m_client;
    SimConfig m_config;
};

} // namespace outpost
