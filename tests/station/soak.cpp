// Days of operation within minutes: the real window gets sound as fast as it can process it, while
// sessions start and end, bridge clients connect and disconnect, highlights are edited and windows
// are opened and closed. Measures memory, threads, descriptors and objects; the exit status is 1 if
// one of them grows.
// Usage: kiwi-outpost-soak [--periods N]

#include "app/mainwindow.h"
#include "app/startup.h"
#include "base/timetext.h"
#include "tests/fixture/footprint.h"
#include "tests/fixture/home.h"
#include "tests/fixture/logtrace.h"
#include "tests/fixture/memoryhome.h"
#include "tests/fixture/operator.h"
#include "tests/fixture/puppetreceiver.h"
#include "tests/fixture/testoptions.h"
#include "tests/station/slope.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTableWidget>
#include <QTcpSocket>
#include <QTest>
#include <QWebSocket>
#include <QWebSocketServer>
#include <cstdio>
#include <memory>
#include <random>

namespace outpost
{

namespace
{
constexpr int periodMs = 15000;
constexpr int framePayloadBytes = 1024; // as receivers send them: 2048 samples of ADPCM
constexpr int periodBytes = 90000;
constexpr int longestWaitMs = 60000;

// Fluctuation of memory in a short run, in kB. The address sanitizer keeps freed memory.
#ifdef __SANITIZE_ADDRESS__
constexpr double memoryAllowanceKb = 300000;
#else
constexpr double memoryAllowanceKb = 3000;
#endif

[[noreturn]] void giveUp(const char *what)
{
    std::fprintf(stderr, "soak: waited in vain: %s\n", what);
    std::_Exit(2);
}

void waitFor(const std::function<bool()> &reached, const char *what)
{
    if (!QTest::qWaitFor(reached, longestWaitMs)) {
        giveUp(what);
    }
}

QByteArray noise(int bytes)
{
    std::mt19937 random(14);
    QByteArray all(bytes, '\0');
    for (char &byte : all) {
        byte = static_cast<char>(random());
    }
    return all;
}

// A receiver that keeps nothing of ended links, unlike those of the tests.
class Receiver
{
public:
    Receiver()
    {
        QObject::connect(&server, &QWebSocketServer::newConnection, &server, [this] { accept(); });
        if (!server.listen(QHostAddress::LocalHost)) {
            giveUp("a port");
        }
    }

    int port() const { return server.serverPort(); }
    bool isListenedTo() const { return link && commands >= 7; }
    void send(const QByteArray &frame) const { link->sendBinaryMessage(frame); }
    void endLink() const { link->close(); }

private:
    void accept()
    {
        link = server.nextPendingConnection();
        commands = 0;
        QObject::connect(link, &QWebSocket::disconnected, link, &QObject::deleteLater);
        QObject::connect(link, &QWebSocket::textMessageReceived, &server, [this] { ++commands; });
    }

    QWebSocketServer server{QString(), QWebSocketServer::NonSecureMode};
    QPointer<QWebSocket> link;
    int commands = 0; // received on this link
};

class Soak
{
public:
    Soak();

    void run(int periods);
    bool report() const; // false if something grows

private:
    struct Quantity {
        const char *name;
        const char *unit;
        double boundPer1000;
        double allowance; // for fluctuations in a short run
        QVector<Sample> samples;
    };

    void connectReceiver();
    void sendPeriod();
    void disturb(int period);
    void measure(int period);
    void editHighlights(int period);
    void showAndClose(const QString &entry, const QString &title);
    QString lastPeriodShown() const;

    // Shortly before midnight, so that the date changes in the short form, too.
    qint64 nowMs = QDateTime(QDate(2026, 1, 16), QTime(23, 55), Qt::UTC).toMSecsSinceEpoch();
    int sentBytes = 0; // in the current period
    const QByteArray sound = noise(periodBytes);
    Receiver receiver;
    LogTrace trace; // keeps the station's log off the terminal
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<QTcpSocket> client;
    const int bridgePort = freePort();
    QVector<Quantity> quantities = {
        {"resident memory", "kB", 512, memoryAllowanceKb, {}},
        {"threads", "", 0.5, 0.9, {}},
        {"descriptors", "", 1, 2, {}},
        {"objects", "", 2, 8, {}},
    };
};

QString installDecoder()
{
    const QString folder = testHome().path(QStringLiteral("bin/"));
    const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/kiwi-outpost-soak-decoder");
    QDir().mkpath(folder);
    for (const QString &name : {QStringLiteral("jt9"), QStringLiteral("wsjtx")}) {
        if (!QFile::copy(program, folder + name)) {
            giveUp("decoder");
        }
    }
    return folder + QStringLiteral("jt9");
}

Soak::Soak()
{
    testHome().writeProfile({{QStringLiteral("Host"), QStringLiteral("127.0.0.1")},
                             {QStringLiteral("Port"), receiver.port()},
                             {QStringLiteral("Jt9Path"), installDecoder()},
                             {QStringLiteral("BridgePort"), bridgePort}});
    window = std::make_unique<MainWindow>(testOptions([this] { return nowMs; }));
    window->show();
}

// Starts again 5 s before a period.
void Soak::connectReceiver()
{
    waitFor([&] { return !receiver.isListenedTo(); }, "the old link's end");
    nowMs += periodMs - nowMs % periodMs + periodMs - 5000;
    window->connectKiwi();
    waitFor([&] { return receiver.isListenedTo(); }, "the commands");
    receiver.send(adpcmFrame(sound.left(framePayloadBytes)));
    waitFor([&] { return window->kiwiStatusText().startsWith(QStringLiteral("Connected")); },
            "sound");
    nowMs += 5000;
    sentBytes = 0;
}

// Sends a complete period and waits until it is shown, so that no period is skipped. As on the air,
// frames do not end at the boundary.
void Soak::sendPeriod()
{
    const QString label =
        timeText(QDateTime::fromMSecsSinceEpoch(nowMs, Qt::UTC), QStringLiteral("HH:mm:ss"));
    while (sentBytes < periodBytes) {
        receiver.send(adpcmFrame(sound.left(framePayloadBytes)));
        sentBytes += framePayloadBytes;
    }
    sentBytes -= periodBytes;
    if (!QTest::qWaitFor([&] { return lastPeriodShown() == label; }, longestWaitMs)) {
        std::fprintf(stderr, "soak: %s\n%s\n%s\n", qPrintable(window->kiwiStatusText()),
                     qPrintable(lastPeriodShown()),
                     qPrintable(trace.lines().join(QLatin1Char('\n'))));
        giveUp(qPrintable(QStringLiteral("the period of ") + label));
    }
    nowMs += periodMs;
}

QString Soak::lastPeriodShown() const
{
    const QTableWidget *table = decodeTableOf(*window);
    return table->rowCount() > 0 ? table->item(table->rowCount() - 1, 0)->text() : QString();
}

// An operator's actions, at intervals that do not coincide.
void Soak::disturb(int period)
{
    if (period % 5 == 0) {
        client = client ? nullptr : std::make_unique<QTcpSocket>();
        if (client) {
            client->connectToHost(QHostAddress::LocalHost, static_cast<quint16>(bridgePort));
            waitFor([this] { return client->bytesAvailable() > 0; }, "the bridge");
        }
    }
    if (client) {
        client->readAll();
    }
    if (period % 7 == 0) {
        editHighlights(period);
    }
    if (period % 11 == 0) {
        showAndClose(QStringLiteral("Station Display"),
                     QStringLiteral("PELQ Kiwi Outpost Station Display"));
        showAndClose(QStringLiteral("Bridge Status"),
                     QStringLiteral("PELQ Kiwi Outpost Bridge Status"));
        showAndClose(QStringLiteral("Status Log"), QStringLiteral("PELQ Kiwi Outpost Status Log"));
    }
    if (period % 17 == 0) {
        choose(*window, {QStringLiteral("Settings"), QStringLiteral("Disconnect Receiver")});
        connectReceiver();
    }
    if (period % 23 == 0) {
        receiver.endLink();
        waitFor([this] { return window->kiwiStatusText() == QStringLiteral("Disconnected"); },
                "the stream's end");
        connectReceiver();
    }
}

void Soak::editHighlights(int period)
{
    whenDialogOpens([period](QWidget *dialog) {
        auto *edit = dialog->findChild<QPlainTextEdit *>();
        edit->setPlainText(QStringLiteral("K1AIA\nK%1AAB").arg(period % 10));
        qobject_cast<QDialog *>(dialog)->accept();
    });
    choose(*window, {QStringLiteral("Settings"), QStringLiteral("Highlight Calls...")});
}

void Soak::showAndClose(const QString &entry, const QString &title)
{
    choose(*window, {QStringLiteral("Settings"), QStringLiteral("View"), entry});
    waitFor([&] { return openDialog(title) != nullptr; }, "a window");
    openDialog(title)->close();
    waitFor([&] { return openDialog(title) == nullptr; }, "a window's end");
}

// Measures without bridge clients, that is, every second time.
void Soak::measure(int period)
{
    trace.clear();
    if (client) {
        return;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const Footprint now = footprintNow(window.get());
    const double values[] = {double(now.residentKb), double(now.threads), double(now.descriptors),
                             double(now.objects)};
    for (int i = 0; i < quantities.size(); ++i) {
        quantities[i].samples.append({double(period), values[i]});
    }
}

void Soak::run(int periods)
{
    connectReceiver();
    const int progressEvery = qMax(1, periods / 20);
    QElapsedTimer timer;
    timer.start();
    for (int period = 1; period <= periods; ++period) {
        sendPeriod();
        disturb(period);
        measure(period);
        if (period % progressEvery == 0) {
            std::printf("period %d of %d: %lld kB, %.1f periods a second\n", period, periods,
                        static_cast<long long>(footprintNow().residentKb),
                        1000.0 * period / double(qMax<qint64>(1, timer.elapsed())));
            std::fflush(stdout);
        }
    }
}

// The first quarter is a warm-up.
bool Soak::report() const
{
    bool steady = true;
    for (const Quantity &quantity : quantities) {
        const QVector<Sample> warm = quantity.samples.mid(quantity.samples.size() / 4);
        const bool tooMuch = grows(warm, quantity.boundPer1000, quantity.allowance);
        std::printf("%s: %.0f at the start, %.0f warm, %.0f at the end; slope %+.2f %s per 1000 "
                    "periods (bound %.1f)%s\n",
                    quantity.name, quantity.samples.first().value, warm.first().value,
                    warm.last().value, slopePer1000(warm), quantity.unit, quantity.boundPer1000,
                    tooMuch ? ": GROWS" : "");
        steady = steady && !tooMuch;
    }
    return steady;
}
} // namespace

} // namespace outpost

using namespace outpost;

int main(int argc, char **argv)
{
    testHome();
    const auto application = startApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    const QCommandLineOption periodsOption(QStringLiteral("periods"),
                                           QStringLiteral("FT8 periods; a day has 5760."),
                                           QStringLiteral("N"), QStringLiteral("5760"));
    parser.addOption(periodsOption);
    parser.addHelpOption();
    parser.process(*application);
    const int periods = parser.value(periodsOption).toInt();
    if (periods < 8) {
        std::fprintf(stderr, "soak: at least 8 periods\n");
        return 2;
    }
    Soak soak;
    soak.run(periods);
    return soak.report() ? 0 : 1;
}
