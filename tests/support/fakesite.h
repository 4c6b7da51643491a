#pragma once

#include "list/sitetable.h"
#include "testserver.h"

#include <QStringList>

// What every fake site is made of: its own TestServer on 127.0.0.1, pages
// and files at paths. A site's fake derives from this and adds its pages,
// written from what the site's recipe reads.
class FakeSite
{
public:
    // With a site's number, the site table's host of that site is the fake's
    // address while it lives; then every site's host is the table's again.
    explicit FakeSite(int site = 0)
    {
        m_server.listen();
        if (Sites::isSite(site))
            SiteHosts::instance().setHost(QString::fromLatin1(Sites::site(site).key), hostPort());
    }
    virtual ~FakeSite() { SiteHosts::instance().reset(); }

    TestServer &server() { return m_server; }
    QString url(const QString &path) const { return m_server.url(path); }
    // "127.0.0.1:<port>", to stand for the site's host in the site table.
    QString hostPort() const { return m_server.hostPort(); }

    // An HTML page with status 200, optionally setting a cookie "name=value".
    static TestServer::Answer html(const QString &page, const QByteArray &setCookie = {})
    {
        TestServer::Headers headers{{"Content-Type", "text/html; charset=UTF-8"}};
        if (!setCookie.isEmpty())
            headers.append({"Set-Cookie", setCookie + "; path=/"});
        return TestServer::Answer::sized(200, "OK", headers, page.toUtf8());
    }
    // Serves the page at `path` and gives its address.
    QString page(const QByteArray &path, const QString &body, const QByteArray &setCookie = {})
    {
        m_server.setAnswer(path, html(body, setCookie));
        return url(path);
    }
    void file(const QByteArray &path, const QByteArray &content)
    {
        m_server.setAnswer(path, TestServer::Answer::ok(content));
    }
    // `post` answers a POST at `path` (with exactly `body`, if one is given),
    // `get` anything else; gives the address.
    QString route(const QByteArray &path, const TestServer::Answer &get,
                  const TestServer::Answer &post, const QByteArray &body = {})
    {
        m_server.setRoute(path, [=](const TestServer::Request &r) {
            return r.method == "POST" && (body.isNull() || r.body == body) ? post : get;
        });
        return url(path);
    }

    // The requests so far, one "METHOD /path?query" each; with `form`, each
    // followed by " Content-type|Content-length|Connection|body".
    QStringList requestLines(bool form = false) const
    {
        QStringList lines;
        for (const TestServer::Request &r : m_server.requests()) {
            const QByteArrayList parts{r.header("Content-type"), r.header("Content-length"),
                                       r.header("Connection"), r.body};
            lines << QString::fromLatin1(r.method + ' ' + r.path +
                                         (form ? ' ' + parts.join('|') : QByteArray()));
        }
        return lines;
    }

private:
    TestServer m_server;
};
