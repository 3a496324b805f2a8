#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <map>
#include <utility>

// An HTTP server on 127.0.0.1 for download and web-page tests, on the caller's event loop
// (which a synchronous download spins while it waits). With routes, each path (its query left
// out) is answered with its type and body and anything else with a 404; without, every request
// gets `body` (Serve), a 404 (NotFound) or no answer at all (Silent, to exercise time-outs), as
// does the path "/silent". Answers come `pauseMs` after the request.
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

    QUrl url(const QString &pathAndQuery) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(pathAndQuery));
    }
    void route(const QByteArray &path, const QByteArray &type, const QByteArray &routeBody)
    {
        m_routes[path] = {type, routeBody};
    }

    Mode mode = Mode::Serve;
    QByteArray body;
    int pauseMs = 0;
    int requests = 0;
    QList<QByteArray> requested; // the request targets, query included

private:
    void answer(QTcpSocket *socket)
    {
        QByteArray &pending = m_pending[socket];
        pending += socket->readAll();
        if (!pending.contains("\r\n\r\n"))
            return;
        const QByteArray target = pending.split(' ').value(1);
        m_pending.remove(socket);
        const QByteArray path = target.split('?').value(0);
        ++requests;
        requested.append(target);
        if (mode == Mode::Silent || path == "/silent")
            return;
        bool found = mode == Mode::Serve;
        QByteArray type = "application/octet-stream";
        QByteArray payload = body;
        if (!m_routes.empty()) {
            const auto it = m_routes.find(path);
            found = it != m_routes.end();
            if (found)
                std::tie(type, payload) = it->second;
        }
        if (!found) {
            type = "text/plain";
            payload = "missing";
        }
        const QByteArray response = "HTTP/1.1 " + QByteArray(found ? "200 OK" : "404 Not Found") + "\r\nContent-Type: " + type
                                  + "\r\nContent-Length: " + QByteArray::number(payload.size())
                                  + "\r\nConnection: close\r\n\r\n" + payload;
        const auto send = [socket, response] {
            socket->write(response);
            socket->disconnectFromHost();
        };
        if (pauseMs > 0)
            QTimer::singleShot(pauseMs, socket, send);
        else
            send();
    }

    QTcpServer m_server;
    std::map<QByteArray, std::pair<QByteArray, QByteArray>> m_routes;
    QHash<QTcpSocket *, QByteArray> m_pending;
};
