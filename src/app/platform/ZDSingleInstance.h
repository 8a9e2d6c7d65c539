#pragma once

#include <QObject>
#include <QStringList>

class QLocalServer;
class QLocalSocket;

/// Keeps one running program per user session. The first program listens on a local socket;
/// a later start connects to it, hands over its arguments and exits.
///
/// The exchange is one line of JSON (an array of strings) each way: the arguments, then the
/// first program's answer, so the sender knows they arrived.
class ZDSingleInstance : public QObject
{
    Q_OBJECT
public:
    /// `serverName` is a socket path or name; by default one per user and configuration folder.
    explicit ZDSingleInstance(const QString &serverName = defaultServerName(), QObject *parent = nullptr);
    ~ZDSingleInstance() override;

    static QString defaultServerName();
    QString serverName() const { return m_serverName; }

    /// Hands `arguments` to a running program. True when one answered; then the caller exits.
    bool sendToRunningInstance(const QStringList &arguments, int timeoutMs = 3000) const;

    /// Starts listening. A socket left behind by a program that died is removed first; false
    /// only when it cannot listen at all.
    bool listen(QString *errorMessage = nullptr);
    bool isListening() const;

Q_SIGNALS:
    /// Another start handed over its arguments (without the program name).
    void argumentsReceived(const QStringList &arguments);

private:
    void readRequest(QLocalSocket *socket);

    QString m_serverName;
    QLocalServer *m_server = nullptr;
};
