// What a resolver's wait for a slow page costs: a server on 127.0.0.1 (in a
// thread of its own) answers after 20 seconds, the resolver's poll waits for
// it, and the process's processor time over the wait is measured. A timer
// firing every 100 ms in the same event loop shows that timers keep running
// while the poll waits.
//
// Last line: cpu_percent=<share of one core> ticks=<timer ticks> wall_ms=...

#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "resolvers/resolverframe.h"
#include "resolvers/xmlhttprequest.h"
#include "scheduling/sitequeues.h"
#include "system/logicaltimer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>

#include <sys/resource.h>

#include <cstdio>

namespace {

constexpr int kAnswerDelayMs = 20000;

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec) + double(usage.ru_stime.tv_sec) +
           (double(usage.ru_utime.tv_usec) + double(usage.ru_stime.tv_usec)) / 1e6;
}

// Answers every request with a short page, kAnswerDelayMs after it came.
class SlowServer : public QObject
{
public:
    bool listen()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, socket, [socket] {
                    if (!socket->readAll().contains("\r\n\r\n") ||
                        socket->property("seen").toBool())
                        return;
                    socket->setProperty("seen", true);
                    QTimer::singleShot(kAnswerDelayMs, socket, [socket] {
                        socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n"
                                      "Content-Length: 4\r\nConnection: close\r\n\r\nlate");
                        socket->disconnectFromHost();
                    });
                });
            }
        });
        return m_server.listen(QHostAddress::LocalHost);
    }
    quint16 port() const { return m_server.serverPort(); }

private:
    QTcpServer m_server{this}; // a child, so it moves to the server's thread
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);

    QThread serverThread;
    SlowServer *server = new SlowServer;
    server->moveToThread(&serverThread);
    serverThread.start();
    quint16 port = 0;
    QMetaObject::invokeMethod(
        server,
        [server, &port] {
            if (server->listen())
                port = server->port();
        },
        Qt::BlockingQueuedConnection);
    if (port == 0) {
        std::fprintf(stderr, "could not listen on 127.0.0.1\n");
        return 1;
    }

    DownloadList list;
    list.open();
    SiteQueues queues(list, nullptr);
    list.addLinkToList(QStringLiteral("http://127.0.0.1:%1/files/1/slow.html").arg(port),
                       Sites::RapidShare, nullptr);
    SiteContext &context = queues.context(Sites::RapidShare);
    context.cursor = list.getSiteRecords(Sites::RapidShare);
    RecipeSite site(context);

    int ticks = 0;
    QTimer ticker;
    ticker.setInterval(100);
    QObject::connect(&ticker, &QTimer::timeout, [&ticks] { ++ticks; });
    ticker.start();

    XmlHttpRequest request;
    request.open(QStringLiteral("GET"), site.link());
    const double cpuBefore = cpuSeconds();
    QElapsedTimer wall;
    wall.start();
    request.send();
    const bool answered = ResolverFrame::waitForAnswer(site, request);
    const qint64 wallMs = wall.elapsed();
    const double cpu = cpuSeconds() - cpuBefore;

    QMetaObject::invokeMethod(
        server, [server] { delete server; }, Qt::BlockingQueuedConnection);
    serverThread.quit();
    serverThread.wait();

    std::printf("answered=%s status=%d text=%s\n", answered ? "yes" : "no", request.status(),
                qPrintable(request.responseText()));
    std::printf("cpu_seconds=%.4f wall_seconds=%.3f\n", cpu, wallMs / 1000.0);
    std::printf("cpu_percent=%.3f ticks=%d wall_ms=%lld\n", 100.0 * cpu / (wallMs / 1000.0), ticks,
                static_cast<long long>(wallMs));
    return answered ? 0 : 1;
}
