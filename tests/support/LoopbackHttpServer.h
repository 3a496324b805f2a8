#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

// A one-route HTTP server on 127.0.0.1 for download tests. It answers every request with the
// body given (status 200), with a 404, or not at all (to exercise time-outs). It runs on the
// caller's event loop, which the synchronous download spins while it waits.
class LoopbackHttpServer
{
public:
    enum class Mode { Serve, NotFound, Silent };

    LoopbackHttpServer()
    {
        m_server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(socket); });
                QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QUrl url(const QString &path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
    }

    Mode mode = Mode::Serve;
    QByteArray body;
    int requests = 0;

private:
    void answer(QTcpSocket *socket)
    {
        m_pending[socket] += socket->readAll();
        if (!m_pending[socket].contains("\r\n\r\n"))
            return;
        m_pending.remove(socket);
        ++requests;
        if (mode == Mode::Silent)
            return;
        const QByteArray status = mode == Mode::Serve ? "200 OK" : "404 Not Found";
        const QByteArray payload = mode == Mode::Serve ? body : QByteArray("missing");
        socket->write("HTTP/1.1 " + status + "\r\nContent-Type: application/octet-stream\r\nContent-Length: "
                      + QByteArray::number(payload.size()) + "\r\nConnection: close\r\n\r\n" + payload);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QHash<QTcpSocket *, QByteArray> m_pending;
};
