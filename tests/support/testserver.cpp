#include "testserver.h"

#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

void TestServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        socket->setParent(this); // deleted after this object's connections are gone
        m_connections.insert(socket, {});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_closedByClient += !socket->property("closedByServer").toBool();
            m_connections.remove(socket);
            socket->deleteLater();
        });
    }
}

void TestServer::onReadyRead(QTcpSocket *socket)
{
    if (!m_connections.contains(socket))
        return;
    Connection &connection = m_connections[socket];
    connection.buffer += socket->readAll();
    const qsizetype blank = connection.buffer.indexOf("\r\n\r\n");
    if (connection.busy || blank < 0)
        return; // the request waits for the answer in progress, or for its end

    const QList<QByteArray> lines = connection.buffer.left(blank).split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    Request request;
    request.method = first.value(0);
    request.path = first.value(1);
    for (const QByteArray &line : lines.mid(1))
        if (const qsizetype colon = line.indexOf(':'); colon > 0)
            request.headers.append({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
    const qint64 end = blank + 4 + request.header("Content-Length").toLongLong();
    if (connection.buffer.size() < end)
        return;
    request.raw = connection.buffer.left(end);
    request.body = request.raw.mid(blank + 4);
    connection.buffer.remove(0, end);
    connection.busy = true;

    m_requests.append(request);
    emit requestReceived(request);
    const Answer answer = answerFor(request);
    if (!answer.silent)
        sendPiece(socket, answer, 0);
}

TestServer::Answer TestServer::answerFor(const Request &request)
{
    for (const QByteArray &key : {request.path, request.pathOnly(), QByteArray()}) {
        if (QList<Handler> &handlers = m_table[key]; !handlers.isEmpty())
            return (handlers.size() > 1 ? handlers.takeFirst() : handlers.first())(request);
    }
    return Answer::status(404, "Not Found", "<html>not found</html>");
}

void TestServer::sendPiece(QTcpSocket *socket, const Answer &a, int piece, bool waited)
{
    if (const int delay = piece == 0 ? a.firstDelay : a.delay; delay > 0 && !waited)
        return QTimer::singleShot(delay, socket, [=, this] { sendPiece(socket, a, piece, true); });
    if (!m_connections.contains(socket))
        return;
    const qint64 start = piece == 0 ? 0 : a.cuts.at(piece - 1);
    socket->write(a.bytes.mid(start, a.cuts.value(piece, a.bytes.size()) - start));
    if (piece < a.cuts.size())
        return sendPiece(socket, a, piece + 1);
    if (a.keepAlive && !a.reset) { // the next request, if it came already
        m_connections[socket].busy = false;
        return QTimer::singleShot(0, socket, [this, socket] { onReadyRead(socket); });
    }
    if (a.reset) {
        // A linger of zero makes the close a reset.
        socket->flush();
        const linger now{1, 0};
        ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
    }
    socket->setProperty("closedByServer", true);
    a.reset ? socket->abort() : socket->disconnectFromHost();
}
