// Receivers that cost little, in a process of their own, on any loopback address. To each client
// they send sound in real time, each client's frames at a time of their own.
// Usage: sound_feed raw|compressed. Prints its port; ends with standard input.

#include "sim/imaadpcmencoder.h"
#include "sim/simwav.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>
#include <QWebSocket>
#include <QWebSocketServer>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <unistd.h>
#include <vector>

namespace outpost
{

namespace
{
constexpr int payloadBytes = 1024;
constexpr int tickMs = 2;

QByteArray soundFrame(char flags, const QByteArray &payload)
{
    return QByteArray("SND") + flags + QByteArray(6, '\0') + payload;
}

// Each sample is one more than the one before, modulo 65536: so many frames, then again.
std::vector<QByteArray> rawFrames()
{
    constexpr int samplesPerFrame = payloadBytes / 2;
    std::vector<QByteArray> frames;
    for (int at = 0; at < 65536; at += samplesPerFrame) {
        sim::Samples samples;
        for (int i = 0; i < samplesPerFrame; ++i) {
            samples.append(qint16(quint16(at + i)));
        }
        frames.push_back(soundFrame(0, sim::toBigEndian(samples)));
    }
    return frames;
}

std::vector<QByteArray> compressedFrames()
{
    std::mt19937 random(1); // the same on every run
    std::normal_distribution<float> noise(0, float(sim::kNoiseRms));
    sim::AdpcmState state;
    std::vector<QByteArray> frames;
    for (int frame = 0; frame < 16; ++frame) {
        sim::Samples samples(2 * payloadBytes);
        std::generate(samples.begin(), samples.end(), [&] { return qint16(noise(random)); });
        frames.push_back(soundFrame(0x10, sim::encodeAdpcm(&state, samples)));
    }
    return frames;
}

class SoundFeed : public QObject
{
public:
    explicit SoundFeed(bool compressed)
        : frames(compressed ? compressedFrames() : rawFrames()),
          frameMs((compressed ? 2 * payloadBytes : payloadBytes / 2) / 12.0)
    {
        clock.start();
        connect(&server, &QWebSocketServer::newConnection, this, [this] { accept(); });
        connect(&ticker, &QTimer::timeout, this, [this] { sendDue(); });
        server.setMaxPendingConnections(1000);
        ticker.setTimerType(Qt::PreciseTimer);
        ticker.start(tickMs);
    }

    int listen()
    {
        server.listen(QHostAddress::AnyIPv4);
        return server.serverPort();
    }

private:
    struct Client {
        QWebSocket *socket;
        double startMs;
        std::size_t sent;
    };

    void accept()
    {
        // Frames of clients that connect together are spread over a frame's time by the golden
        // ratio.
        const double share = std::fmod(0.618034 * double(clients.size()), 1);
        clients.push_back({server.nextPendingConnection(), now() + frameMs * share, 0});
    }

    double now() const { return double(clock.nsecsElapsed()) / 1e6; }

    void sendDue()
    {
        for (Client &client : clients) {
            while (client.startMs + double(client.sent + 1) * frameMs <= now()) {
                client.socket->sendBinaryMessage(frames[client.sent % frames.size()]);
                ++client.sent;
            }
        }
    }

    const std::vector<QByteArray> frames;
    const double frameMs;
    QElapsedTimer clock;
    QTimer ticker;
    QWebSocketServer server{QString(), QWebSocketServer::NonSecureMode};
    std::vector<Client> clients;
};
} // namespace

} // namespace outpost

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    outpost::SoundFeed feed(application.arguments().value(1) == QLatin1String("compressed"));
    std::printf("%d\n", feed.listen());
    std::fflush(stdout);
    const QSocketNotifier parent(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&parent, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
