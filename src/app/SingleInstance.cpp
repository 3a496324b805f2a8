#include "app/SingleInstance.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>

#include <unistd.h>

namespace {
// A request larger than this is not a list of files someone opened.
constexpr qint64 kMaxRequestBytes = 4 * 1024 * 1024;
} // namespace

SingleInstance::SingleInstance(QString serverName, QObject *parent)
    : QObject(parent)
    , m_serverName(std::move(serverName))
{
}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::serverNameForStore(const QString &storePath)
{
    // The user's runtime folder; the temporary folder where a session has none (the user id
    // in the name keeps users apart there).
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = QDir::tempPath();
    const QByteArray store = QFileInfo(storePath).absoluteFilePath().toUtf8();
    const QByteArray tag = QCryptographicHash::hash(store, QCryptographicHash::Sha1).toHex().left(12);
    return QDir(folder).filePath(QStringLiteral("org.tessary.Tessary-%1-%2.socket").arg(::getuid()).arg(QString::fromLatin1(tag)));
}

bool SingleInstance::sendToRunningInstance(const QStringList &files, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(m_serverName);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    QByteArray request = QJsonDocument(QJsonArray::fromStringList(files)).toJson(QJsonDocument::Compact);
    request.append('\n');
    socket.write(request);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    QByteArray answer;
    while (!answer.contains('\n')) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
        answer += socket.readAll();
    }
    return answer.startsWith("ok");
}

bool SingleInstance::listen()
{
    if (isListening())
        return true;
    // Qt's listen replaces whatever file has the name, so a live instance is asked first; a
    // socket file nobody answers on is what a program that died leaves behind.
    {
        QLocalSocket probe;
        probe.connectToServer(m_serverName);
        if (probe.waitForConnected(500))
            return false;
    }
    QLocalServer::removeServer(m_serverName);
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server->listen(m_serverName))
        return false;
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::acceptConnection);
    return true;
}

bool SingleInstance::isListening() const
{
    return m_server && m_server->isListening();
}

void SingleInstance::acceptConnection()
{
    while (QLocalSocket *socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine()) {
                if (socket->bytesAvailable() > kMaxRequestBytes)
                    socket->abort();
                return;
            }
            const QJsonDocument request = QJsonDocument::fromJson(socket->readLine().trimmed());
            if (!request.isArray()) {
                socket->write("refused\n");
                socket->disconnectFromServer();
                return;
            }
            QStringList files;
            for (const QJsonValue &v : request.array()) {
                if (v.isString())
                    files.append(v.toString());
            }
            socket->write("ok\n");
            socket->flush();
            socket->disconnectFromServer();
            emit filesReceived(files);
        });
    }
}
