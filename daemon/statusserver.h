#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <memory>

class QLocalServer;

namespace outpost
{

// Where a running daemon answers `--status`: a local socket in the user's runtime folder, which
// only its owner may connect to.
QString statusSocketPath();

// Answers each client with the status, once, and hangs up.
class StatusServer
{
public:
    explicit StatusServer(std::function<QByteArray()> statusText);
    ~StatusServer();
    StatusServer(const StatusServer &) = delete;
    StatusServer &operator=(const StatusServer &) = delete;

    // Takes over the socket of a daemon that was killed. Returns an empty text, or why it cannot
    // listen, as when another daemon does.
    QString listen(const QString &path = statusSocketPath());

private:
    void answer();

    const std::function<QByteArray()> text;
    std::unique_ptr<QLocalServer> server;
};

struct StatusAnswer {
    QByteArray text;
    QString error; // empty: the daemon has answered
};

// Asks a running daemon. Waits up to `waitMs` for it.
StatusAnswer askStatus(const QString &path = statusSocketPath(), int waitMs = 5000);

} // namespace outpost
