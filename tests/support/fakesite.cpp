#include "fakesite.h"

FakeSite::FakeSite(int site) : m_site(site)
{
    m_server.listen();
    if (Sites::isSite(site))
        SiteHosts::instance().setHost(QString::fromLatin1(Sites::site(site).key), hostPort());
}

FakeSite::~FakeSite()
{
    if (Sites::isSite(m_site))
        SiteHosts::instance().setHost(QString::fromLatin1(Sites::site(m_site).key),
                                      QString::fromLatin1(Sites::site(m_site).defaultHost));
}

TestServer::Answer FakeSite::html(const QString &page, const QByteArray &setCookie)
{
    const QByteArray body = page.toUtf8();
    QList<QPair<QByteArray, QByteArray>> headers{
        {"Content-Type", "text/html; charset=UTF-8"},
        {"Content-Length", QByteArray::number(body.size())}};
    if (!setCookie.isEmpty())
        headers.append(qMakePair(QByteArray("Set-Cookie"), setCookie + "; path=/"));
    headers.append(qMakePair(QByteArray("Connection"), QByteArray("close")));
    return TestServer::Answer::http(200, "OK", headers, body);
}

QString FakeSite::htmlPage(const QString &title, const QString &body)
{
    return QStringLiteral("<html><head><title>%1</title></head>\n<body>\n%2\n</body></html>\n")
        .arg(title, body);
}

void FakeSite::page(const QByteArray &path, const QString &body, const QByteArray &setCookie)
{
    m_server.setAnswer(path, html(body, setCookie));
}

void FakeSite::file(const QByteArray &path, const QByteArray &content)
{
    m_server.setAnswer(path, TestServer::Answer::ok(content));
}

void FakeSite::cookieRoute(const QByteArray &path, const QByteArray &cookie,
                           const TestServer::Answer &with, const TestServer::Answer &without)
{
    m_server.setRoute(path, [cookie, with, without](const TestServer::Request &request) {
        for (const QByteArray &sent : request.header("Cookie").split(';')) {
            if (sent.trimmed() == cookie)
                return with;
        }
        return without;
    });
}

QStringList FakeSite::requestLines() const
{
    QStringList lines;
    for (const TestServer::Request &r : m_server.requests())
        lines << QString::fromLatin1(r.method + ' ' + r.path);
    return lines;
}

void FakeSite::fail(const QByteArray &path, Fault fault)
{
    switch (fault) {
    case Fault::NotFound404:
        m_server.setAnswer(path, TestServer::Answer::status(404, "Not Found"));
        break;
    case Fault::Closed:
        m_server.setAnswer(path, TestServer::Answer::raw(QByteArray()));
        break;
    case Fault::Silence:
        m_server.setAnswer(path, TestServer::Answer::silence());
        break;
    }
}
