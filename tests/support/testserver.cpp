#include "testserver.h"

#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <algorithm>

#include <sys/socket.h>

QByteArray TestServer::Request::header(const QByteArray &name) const
{
    for (const auto &h : headers)
        if (h.first.compare(name, Qt::CaseInsensitive) == 0)
            return h.second;
    return QByteArray();
}

TestServer::Answer TestServer::Answer::http(int code, const QByteArray &reason,
                                            const Headers &headers, const QByteArray &body)
{
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(code) + ' ' + reason + "\r\n";
    for (const auto &h : headers)
        bytes += h.first + ": " + h.second + "\r\n";
    return raw(bytes + "\r\n" + body);
}

TestServer::Answer TestServer::Answer::sized(int code, const QByteArray &reason,
                                             const Headers &headers, const QByteArray &body)
{
    return http(code, reason,
                headers + Headers{{"Content-Length", QByteArray::number(body.size())},
                                  {"Connection", "close"}},
                body);
}

TestServer::Answer TestServer::Answer::redirect(int code, const QString &location)
{
    return sized(code, code == 303 ? "See Other" : "Found",
                 {{"Location", location.toLatin1()}, {"Content-Type", "text/html"}},
                 "<html>moved</html>");
}

TestServer::Answer &TestServer::Answer::cutAfterHeader(int delayMs)
{
    const qsizetype blank = bytes.indexOf("\r\n\r\n");
    return blank < 0 ? *this : cutAt({blank + 4}, delayMs);
}

TestServer::Answer &TestServer::Answer::cutAt(const QList<qint64> &offsets, int delayMs)
{
    cuts = offsets;
    std::sort(cuts.begin(), cuts.end());
    delay = delayMs;
    return *this;
}

TestServer::Answer &TestServer::Answer::cutEvery(qint64 size, int delayMs)
{
    QList<qint64> offsets;
    for (qint64 at = size; size > 0 && at < bytes.size(); at += size)
        offsets.append(at);
    return cutAt(offsets, delayMs);
}

TestServer::Answer &TestServer::Answer::keepOpen()
{
    keepAlive = true;
    return *this;
}

TestServer::Answer &TestServer::Answer::thenReset()
{
    reset = true;
    return *this;
}

TestServer::Answer &TestServer::Answer::delayFirst(int delayMs)
{
    firstDelay = delayMs;
    return *this;
}

TestServer::TestServer(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &TestServer::onNewConnection);
}

TestServer::~TestServer()
{
    m_server.close();
    for (QTcpSocket *socket : m_connections.keys()) {
        socket->disconnect(this);
        socket->abort();
        delete socket;
    }
}

void TestServer::setAnswers(const QByteArray &path, const QList<Answer> &answers)
{
    QList<Handler> &handlers = m_table[path];
    handlers.clear();
    for (const Answer &answer : answers)
        handlers.append([answer](const Request &) { return answer; });
}

bool TestServer::waitForRequests(int count, int timeoutMs)
{
    return QTest::qWaitFor([&] { return m_requests.size() >= count; }, timeoutMs);
}

void TestServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        socket->setParent(nullptr);
        m_connections.insert(socket, {});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_closedByClient += !socket->property("closedByServer").toBool();
            m_connections.remove(socket);
            socket->disconnect(this);
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

    Request request;
    const QList<QByteArray> lines = connection.buffer.left(blank).split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    request.method = first.value(0);
    request.path = first.value(1);
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        if (const qsizetype colon = line.indexOf(':'); colon > 0)
            request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
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
    for (const QByteArray &key : {request.path, request.pathOnly()}) {
        auto it = m_table.find(key);
        if (it != m_table.end() && !it->isEmpty())
            return (it->size() > 1 ? it->takeFirst() : it->first())(request);
    }
    return m_handler ? m_handler(request)
                     : Answer::status(404, "Not Found", "<html>not found</html>");
}

void TestServer::sendPiece(QTcpSocket *socket, const Answer &a, int piece, bool waited)
{
    const int delay = piece == 0 ? a.firstDelay : a.delay;
    if (delay > 0 && !waited) {
        QTimer::singleShot(delay, socket, [=, this] { sendPiece(socket, a, piece, true); });
        return;
    }
    if (!m_connections.contains(socket))
        return;
    const qint64 start = piece == 0 ? 0 : a.cuts.at(piece - 1);
    socket->write(a.bytes.mid(start, a.cuts.value(piece, a.bytes.size()) - start));
    if (piece < a.cuts.size())
        return sendPiece(socket, a, piece + 1);
    if (a.keepAlive && !a.reset) {
        Connection &connection = m_connections[socket];
        connection.busy = false;
        if (!connection.buffer.isEmpty())
            QTimer::singleShot(0, socket, [this, socket] { onReadyRead(socket); });
        return;
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
