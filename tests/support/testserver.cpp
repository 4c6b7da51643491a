#include "testserver.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

#include <sys/socket.h>

QByteArray TestServer::Request::header(const QByteArray &name) const
{
    for (const auto &h : headers) {
        if (h.first.compare(name, Qt::CaseInsensitive) == 0)
            return h.second;
    }
    return QByteArray();
}

QByteArray TestServer::Request::pathOnly() const
{
    const qsizetype q = path.indexOf('?');
    return q < 0 ? path : path.left(q);
}

TestServer::Answer TestServer::Answer::http(int code, const QByteArray &reason,
                                            const QList<QPair<QByteArray, QByteArray>> &headers,
                                            const QByteArray &body)
{
    Answer a;
    a.bytes = "HTTP/1.1 " + QByteArray::number(code) + ' ' + reason + "\r\n";
    for (const auto &h : headers)
        a.bytes += h.first + ": " + h.second + "\r\n";
    a.bytes += "\r\n" + body;
    return a;
}

TestServer::Answer TestServer::Answer::ok(const QByteArray &body, const QByteArray &contentType)
{
    return http(200, "OK",
                {{"Content-Length", QByteArray::number(body.size())},
                 {"Content-Type", contentType},
                 {"Connection", "close"}},
                body);
}

TestServer::Answer TestServer::Answer::status(int code, const QByteArray &reason,
                                              const QByteArray &body)
{
    return http(code, reason,
                {{"Content-Type", "text/html"},
                 {"Content-Length", QByteArray::number(body.size())},
                 {"Connection", "close"}},
                body);
}

TestServer::Answer TestServer::Answer::redirect(int code, const QString &location)
{
    const QByteArray reason = code == 303   ? "See Other"
                              : code == 301 ? "Moved Permanently"
                                            : "Found";
    return http(code, reason,
                {{"Location", location.toLatin1()},
                 {"Content-Type", "text/html"},
                 {"Content-Length", "17"},
                 {"Connection", "close"}},
                "<html>moved</html>");
}

TestServer::Answer TestServer::Answer::raw(const QByteArray &bytes)
{
    Answer a;
    a.bytes = bytes;
    return a;
}

TestServer::Answer TestServer::Answer::silence()
{
    Answer a;
    a.silent = true;
    return a;
}

TestServer::Answer &TestServer::Answer::cutAfterHeader(int delayMs)
{
    const qsizetype blank = bytes.indexOf("\r\n\r\n");
    if (blank >= 0)
        cutAt({blank + 4}, delayMs);
    return *this;
}

TestServer::Answer &TestServer::Answer::cutAt(const QList<qint64> &offsets, int delayMs)
{
    cuts = offsets;
    std::sort(cuts.begin(), cuts.end());
    const int first = delays.isEmpty() ? 0 : delays.first();
    delays = QList<int>(cuts.size() + 1, delayMs);
    delays[0] = first;
    return *this;
}

TestServer::Answer &TestServer::Answer::cutEvery(qint64 size, int delayMs)
{
    QList<qint64> offsets;
    for (qint64 at = size; size > 0 && at < bytes.size(); at += size)
        offsets.append(at);
    return cutAt(offsets, delayMs);
}

TestServer::Answer TestServer::Answer::connectionReset()
{
    return raw(QByteArray()).thenReset();
}

TestServer::Answer &TestServer::Answer::thenReset()
{
    reset = true;
    return *this;
}

TestServer::Answer &TestServer::Answer::keepOpen()
{
    keepAlive = true;
    return *this;
}

TestServer::Answer &TestServer::Answer::delayFirst(int delayMs)
{
    if (delays.isEmpty())
        delays.append(delayMs);
    else
        delays[0] = delayMs;
    return *this;
}

TestServer::TestServer(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &TestServer::onNewConnection);
}

TestServer::~TestServer()
{
    m_server.close();
    const auto sockets = m_buffers.keys();
    for (QTcpSocket *socket : sockets) {
        socket->disconnect(this);
        socket->abort();
        delete socket;
    }
}

bool TestServer::listen()
{
    return m_server.listen(QHostAddress::LocalHost, 0);
}

quint16 TestServer::port() const
{
    return m_server.serverPort();
}

QString TestServer::hostPort() const
{
    return QStringLiteral("127.0.0.1:%1").arg(port());
}

QString TestServer::url(const QString &path) const
{
    return QStringLiteral("http://") + hostPort() + path;
}

void TestServer::setAnswer(const QByteArray &path, const Answer &answer)
{
    m_table.insert(path, {answer});
}

void TestServer::setAnswers(const QByteArray &path, const QList<Answer> &answers)
{
    m_table.insert(path, answers);
}

void TestServer::setHandler(Handler handler)
{
    m_handler = std::move(handler);
}

void TestServer::setRoute(const QByteArray &path, Handler handler)
{
    m_routes.insert(path, std::move(handler));
}

bool TestServer::waitForRequests(int count, int timeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (m_requests.size() < count && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    return m_requests.size() >= count;
}

void TestServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        socket->setParent(nullptr);
        m_buffers.insert(socket, QByteArray());
        m_busy.insert(socket, false);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            if (!socket->property("closedByServer").toBool())
                ++m_closedByClient;
            m_buffers.remove(socket);
            m_busy.remove(socket);
            socket->disconnect(this);
            socket->deleteLater();
        });
    }
}

void TestServer::onReadyRead(QTcpSocket *socket)
{
    if (!m_buffers.contains(socket))
        return;
    QByteArray &buffer = m_buffers[socket];
    buffer += socket->readAll();
    if (m_busy.value(socket))
        return; // the next request waits for the answer in progress

    const qsizetype blank = buffer.indexOf("\r\n\r\n");
    if (blank < 0)
        return;
    Request request;
    const QList<QByteArray> lines = buffer.left(blank).split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    request.method = first.value(0);
    request.path = first.value(1);
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines.at(i).trimmed();
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    const qint64 bodyLength = request.header("Content-Length").toLongLong();
    if (buffer.size() < blank + 4 + bodyLength)
        return;
    request.body = buffer.mid(blank + 4, bodyLength);
    request.raw = buffer.left(blank + 4 + bodyLength);
    buffer.remove(0, request.raw.size());

    m_requests.append(request);
    emit requestReceived(request);
    answer(socket, request);
}

TestServer::Answer TestServer::answerFor(const Request &request)
{
    for (const QByteArray &key : {request.path, request.pathOnly()}) {
        auto it = m_table.find(key);
        if (it != m_table.end() && !it->isEmpty())
            return it->size() > 1 ? it->takeFirst() : it->first();
    }
    for (const QByteArray &key : {request.path, request.pathOnly()}) {
        if (m_routes.contains(key))
            return m_routes.value(key)(request);
    }
    if (m_handler)
        return m_handler(request);
    return Answer::status(404, "Not Found", "<html>not found</html>");
}

void TestServer::answer(QTcpSocket *socket, const Request &request)
{
    const Answer a = answerFor(request);
    m_busy[socket] = true;
    if (a.silent)
        return;
    sendPiece(socket, a, 0);
}

void TestServer::sendPiece(QTcpSocket *socket, Answer a, int piece)
{
    const int delay = a.delays.value(piece, 0);
    if (delay > 0) {
        // Zero the delay so the timer's call sends at once.
        Answer later = a;
        if (later.delays.size() <= piece)
            later.delays.resize(piece + 1);
        later.delays[piece] = 0;
        QTimer::singleShot(delay, socket,
                           [this, socket, later, piece] { sendPiece(socket, later, piece); });
        return;
    }
    if (!m_buffers.contains(socket))
        return;

    const qint64 start = piece == 0 ? 0 : a.cuts.value(piece - 1);
    const qint64 end = piece < a.cuts.size() ? a.cuts.at(piece) : a.bytes.size();
    socket->write(a.bytes.constData() + start, end - start);
    if (piece < a.cuts.size()) {
        sendPiece(socket, a, piece + 1);
        return;
    }
    if (a.reset) {
        // A linger of zero makes the close a reset.
        socket->flush();
        const linger now{1, 0};
        ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
        socket->setProperty("closedByServer", true);
        socket->abort();
        return;
    }
    if (!a.keepAlive) {
        socket->setProperty("closedByServer", true);
        socket->disconnectFromHost();
        return;
    }
    m_busy[socket] = false;
    if (!m_buffers.value(socket).isEmpty())
        QTimer::singleShot(0, socket, [this, socket] { onReadyRead(socket); });
}
