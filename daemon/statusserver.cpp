#include "daemon/statusserver.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QTimer>
#include <utility>

namespace outpost
{

namespace
{
constexpr int maxClients = 8;
constexpr int clientMs = 2000; // for a client to take its answer

bool somebodyAnswers(const QString &path)
{
    QLocalSocket socket;
    socket.connectToServer(path);
    return socket.waitForConnected(1000);
}
} // namespace

QString statusSocketPath()
{
#ifdef Q_OS_WIN
    return QStringLiteral("kiwi-outpostd-") + QDir::home().dirName();
#else
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder + QStringLiteral("/kiwi-outpostd.sock");
#endif
}

StatusServer::StatusServer(std::function<QByteArray()> statusText)
    : text(std::move(statusText)), server(std::make_unique<QLocalServer>())
{
    server->setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(server.get(), &QLocalServer::newConnection, server.get(),
                     [this] { answer(); });
}

StatusServer::~StatusServer() = default;

QString StatusServer::listen(const QString &path)
{
    if (somebodyAnswers(path)) {
        return QStringLiteral("another kiwi-outpostd answers there");
    }
    QLocalServer::removeServer(path);
    return server->listen(path) ? QString() : server->errorString();
}

void StatusServer::answer()
{
    while (QLocalSocket *client = server->nextPendingConnection()) {
        if (server->findChildren<QLocalSocket *>().size() > maxClients) {
            client->abort();
            client->deleteLater();
            continue;
        }
        QObject::connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
        QTimer::singleShot(clientMs, client, [client] {
            client->abort();
            client->deleteLater();
        });
        client->write(text());
        client->disconnectFromServer(); // once all is written
    }
}

StatusAnswer askStatus(const QString &path, int waitMs)
{
    QLocalSocket socket;
    socket.connectToServer(path, QIODevice::ReadOnly);
    if (!socket.waitForConnected(waitMs)) {
        return {{}, QStringLiteral("no kiwi-outpostd of this user is running (%1)").arg(path)};
    }
    StatusAnswer answer;
    const QDeadlineTimer deadline(waitMs);
    while (socket.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
        answer.text += socket.readAll();
    }
    answer.text += socket.readAll();
    if (socket.state() != QLocalSocket::UnconnectedState) {
        answer.error = QStringLiteral("kiwi-outpostd does not answer");
    }
    return answer;
}

} // namespace outpost
