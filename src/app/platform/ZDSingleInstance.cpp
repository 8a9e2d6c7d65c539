#include "ZDSingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

namespace {
constexpr qint64 kMaximumRequestSize = 1 << 20;

QByteArray encode(const QStringList &list)
{
    return QJsonDocument(QJsonArray::fromStringList(list)).toJson(QJsonDocument::Compact) + '\n';
}

bool decode(const QByteArray &line, QStringList *list)
{
    const QJsonDocument document = QJsonDocument::fromJson(line);
    if (!document.isArray())
        return false;
    for (const QJsonValue &value : document.array())
        list->append(value.toString());
    return true;
}
} // namespace

ZDSingleInstance::ZDSingleInstance(const QString &serverName, QObject *parent)
    : QObject(parent), m_serverName(serverName)
{
}

ZDSingleInstance::~ZDSingleInstance() = default;

QString ZDSingleInstance::defaultServerName()
{
    // Two sessions with different configuration folders (a test run, a second user profile)
    // each get their own program.
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QByteArray tag = QCryptographicHash::hash(config.toUtf8(), QCryptographicHash::Md5).toHex().left(12);
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + QStringLiteral("/zandrio-") + QString::fromLatin1(tag) + QStringLiteral(".socket");
}

bool ZDSingleInstance::sendToRunningInstance(const QStringList &arguments, int timeoutMs) const
{
    QLocalSocket socket;
    socket.connectToServer(m_serverName);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(encode(arguments));
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    QStringList answer;
    return decode(socket.readLine(), &answer);
}

bool ZDSingleInstance::listen(QString *errorMessage)
{
    if (m_server)
        return true;
    auto *server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(m_serverName)) {
        // Nobody answered on the name (the caller tried first), so the socket is stale.
        QLocalServer::removeServer(m_serverName);
        if (!server->listen(m_serverName)) {
            if (errorMessage)
                *errorMessage = server->errorString();
            delete server;
            return false;
        }
    }
    m_server = server;
    connect(server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readRequest(socket); });
            if (socket->bytesAvailable() > 0)
                readRequest(socket);
        }
    });
    return true;
}

bool ZDSingleInstance::isListening() const
{
    return m_server && m_server->isListening();
}

void ZDSingleInstance::readRequest(QLocalSocket *socket)
{
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() > kMaximumRequestSize)
            socket->abort();
        return;
    }
    QStringList arguments;
    if (!decode(socket->readLine(), &arguments)) {
        socket->abort();
        return;
    }
    socket->write(encode({QStringLiteral("ok")}));
    socket->flush();
    socket->disconnectFromServer();
    Q_EMIT argumentsReceived(arguments);
}
