#pragma once
// A tiny HTTP server on 127.0.0.1 for the update check's tests: each path has
// a canned answer (status and body); a path marked silent is accepted and
// never answered; an unknown path gets 404. Runs in the test's event loop.

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QSet>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>

namespace kestrel::test {

class LocalHttpServer {
public:
    LocalHttpServer()
    {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
            while (QTcpSocket *socket = server_.nextPendingConnection())
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { serve(socket); });
        });
    }

    void answer(const QString &path, int status, const QByteArray &body) { answers_[path] = {status, body}; }
    void silent(const QString &path) { silent_.insert(path); }
    [[nodiscard]] std::string url(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(server_.serverPort()).arg(path).toStdString();
    }
    [[nodiscard]] int requests() const { return requests_; }

private:
    struct Answer {
        int status = 200;
        QByteArray body;
    };

    void serve(QTcpSocket *socket)
    {
        QByteArray &seen = pending_[socket];
        seen += socket->readAll();
        if (!seen.contains("\r\n\r\n"))
            return;
        ++requests_;
        const QString path = QString::fromLatin1(seen.split(' ').value(1));
        pending_.remove(socket);
        if (silent_.contains(path))
            return; // accepted, read, never answered
        const Answer a = answers_.value(path, Answer{404, "not here"});
        socket->write("HTTP/1.1 " + QByteArray::number(a.status) + (a.status == 200 ? " OK" : " Error") +
                      "\r\nContent-Type: text/plain\r\nContent-Length: " + QByteArray::number(a.body.size()) +
                      "\r\nConnection: close\r\n\r\n" + a.body);
        socket->disconnectFromHost();
    }

    QTcpServer server_;
    QHash<QString, Answer> answers_;
    QSet<QString> silent_;
    QHash<QTcpSocket *, QByteArray> pending_;
    int requests_ = 0;
};

} // namespace kestrel::test
