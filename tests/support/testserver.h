#pragma once

// A scripted HTTP server for tests, on 127.0.0.1 only (port 0: the system
// picks one; read it with port()).
//
// Every request is parsed (method, path, headers, body by Content-Length) and
// recorded with its exact bytes. The answer comes from what was last set for
// the request's path (with its query first, then without) with setAnswer(),
// setAnswers() or setRoute(), else from the handler set with setHandler(),
// else a 404. An Answer is the exact bytes to send, optionally cut into pieces
// with a delay before each, or kept back entirely (silence). After the answer
// the connection is closed unless keepOpen() was asked for; an open
// connection reads the next request.
//
//     TestServer server;
//     QVERIFY(server.listen());
//     server.setAnswer("/file.bin", TestServer::Answer::ok("payload"));
//     server.setAnswer("/old", TestServer::Answer::redirect(302, server.url("/file.bin")));
//     server.setAnswer("/slow", TestServer::Answer::ok(body).cutAfterHeader(50));
//     ... server.requests().at(0).raw == "GET /file.bin HTTP/1.1\r\n..."
#include <QHash>
#include <QTcpServer>
#include <QTest>

#include <functional>

class QTcpSocket;

class TestServer : public QObject
{
    Q_OBJECT
public:
    using Headers = QList<QPair<QByteArray, QByteArray>>;

    struct Request
    {
        QByteArray raw;    // the exact bytes received: request line, headers, body
        QByteArray method; // "GET", "POST", ...
        QByteArray path;   // as sent, with its query
        Headers headers;   // in order, as sent
        QByteArray body;

        // The first header of that name (any case), or a null array.
        QByteArray header(const QByteArray &name) const
        {
            for (const auto &[key, value] : headers)
                if (key.compare(name, Qt::CaseInsensitive) == 0)
                    return value;
            return QByteArray();
        }
        // The path without its query.
        QByteArray pathOnly() const { return path.split('?').first(); }
    };

    struct Answer
    {
        QByteArray bytes = {};   // everything to send, status line included
        QList<qint64> cuts = {}; // byte offsets where a new piece begins, in order
        int firstDelay = 0;      // ms before the first piece
        int delay = 0;           // ms before each later piece
        bool silent = false;     // send nothing, keep the connection open
        bool keepAlive = false;  // keep the connection open after the answer
        bool reset = false;      // end with a reset (RST) instead of a close

        // "HTTP/1.1 <code> <reason>", the headers exactly in the given order,
        // an empty line and the body. Nothing is added.
        static Answer http(int code, const QByteArray &reason, const Headers &headers,
                           const QByteArray &body = QByteArray())
        {
            QByteArray bytes = "HTTP/1.1 " + QByteArray::number(code) + ' ' + reason + "\r\n";
            for (const auto &[name, value] : headers)
                bytes += name + ": " + value + "\r\n";
            return raw(bytes + "\r\n" + body);
        }
        // The status, the headers, Content-Length, Connection: close and the body.
        static Answer sized(int code, const QByteArray &reason, const Headers &headers,
                            const QByteArray &body)
        {
            return http(code, reason,
                        headers + Headers{{"Content-Length", QByteArray::number(body.size())},
                                          {"Connection", "close"}},
                        body);
        }
        // 200 OK with Content-Type, Content-Length and Connection: close.
        static Answer ok(const QByteArray &body,
                         const QByteArray &contentType = "application/octet-stream")
        {
            return sized(200, "OK", {{"Content-Type", contentType}}, body);
        }
        // A status other than 200 with a short HTML body.
        static Answer status(int code, const QByteArray &reason,
                             const QByteArray &body = "<html>error</html>")
        {
            return sized(code, reason, {{"Content-Type", "text/html"}}, body);
        }
        // 302 Found or 303 See Other (any code) with a Location line.
        static Answer redirect(int code, const QString &location)
        {
            return sized(code, code == 303 ? "See Other" : "Found",
                         {{"Location", location.toLatin1()}, {"Content-Type", "text/html"}},
                         "<html>moved</html>");
        }
        static Answer raw(const QByteArray &bytes) { return {.bytes = bytes}; }
        static Answer silence() { return {.silent = true}; }
        // A connection reset before any answer.
        static Answer connectionReset() { return {.reset = true}; }

        // Sends the header (up to and with the empty line) and the body as
        // two pieces, `delayMs` apart.
        Answer &cutAfterHeader(int delayMs = 50)
        {
            return cutAt({bytes.indexOf("\r\n\r\n") + 4}, delayMs);
        }
        // Cuts at these offsets (in order), each piece after `delayMs`.
        Answer &cutAt(const QList<qint64> &offsets, int delayMs = 50)
        {
            return set(cuts, offsets).set(delay, delayMs);
        }
        // Cuts (further) into pieces of `size` bytes, each after `delayMs`.
        Answer &cutEvery(qint64 size, int delayMs = 50)
        {
            for (qint64 at = size; size > 0 && at < bytes.size(); at += size)
                cuts.append(at);
            return set(delay, delayMs);
        }
        // Leaves the connection open after the answer.
        Answer &keepOpen() { return set(keepAlive, true); }
        // Resets the connection once the answer is sent.
        Answer &thenReset() { return set(reset, true); }
        // Waits `delayMs` before the first byte.
        Answer &delayFirst(int delayMs) { return set(firstDelay, delayMs); }

        // Sets one of the fields above, for a chain of these calls.
        template <typename T> Answer &set(T &field, const T &value)
        {
            field = value;
            return *this;
        }
    };

    using Handler = std::function<Answer(const Request &)>;

    explicit TestServer(QObject *parent = nullptr) : QObject(parent)
    {
        connect(&m_server, &QTcpServer::newConnection, this, &TestServer::onNewConnection);
    }

    bool listen() { return m_server.listen(QHostAddress::LocalHost, 0); } // a free port
    quint16 port() const { return m_server.serverPort(); }
    QString hostPort() const { return QStringLiteral("127.0.0.1:%1").arg(port()); }
    QString url(const QString &path) const { return "http://" + hostPort() + path; }

    // The answer to every request for `path`.
    void setAnswer(const QByteArray &path, const Answer &answer) { setAnswers(path, {answer}); }
    // Successive requests for `path` get these answers in turn; the last one
    // stays for any further request.
    void setAnswers(const QByteArray &path, const QList<Answer> &answers)
    {
        m_table[path].clear();
        for (const Answer &answer : answers)
            m_table[path].append([answer](const Request &) { return answer; });
    }
    // Answers every request for `path` by calling `handler`.
    void setRoute(const QByteArray &path, Handler handler) { m_table.insert(path, {handler}); }
    // Answers the requests that nothing set for their path answers (the
    // route of the empty path).
    void setHandler(Handler handler) { setRoute({}, std::move(handler)); }

    QList<Request> requests() const { return m_requests; }
    // Connections that the client closed, or that failed on its side.
    int closedByClient() const { return m_closedByClient; }
    // Pumps the event loop until `count` requests have come, or the time is up.
    bool waitForRequests(int count, int timeoutMs = 5000)
    {
        return QTest::qWaitFor([&] { return m_requests.size() >= count; }, timeoutMs);
    }

signals:
    void requestReceived(const TestServer::Request &request);

private:
    struct Connection
    {
        QByteArray buffer; // what came and isn't a whole request yet
        bool busy = false; // an answer is in progress: the next request waits
    };

    void onNewConnection();
    void onReadyRead(QTcpSocket *socket);
    Answer answerFor(const Request &request);
    void sendPiece(QTcpSocket *socket, const Answer &answer, int piece, bool waited = false);

    QTcpServer m_server;
    QHash<QByteArray, QList<Handler>> m_table; // by path, answered in turn
    QList<Request> m_requests;
    QHash<QTcpSocket *, Connection> m_connections;
    int m_closedByClient = 0;
};
