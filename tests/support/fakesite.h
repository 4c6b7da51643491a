#pragma once

#include "list/sitetable.h"
#include "testserver.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

// What every fake site is made of: its own TestServer on 127.0.0.1, pages
// and files at paths, and routes that answer by the request's cookie. A
// site's fake derives from this and adds its pages, written from what the
// site's recipe reads.
class FakeSite
{
public:
    // With a site's number, the site table's host of that site is the fake's
    // address while it lives.
    explicit FakeSite(int site = 0);
    virtual ~FakeSite();

    TestServer &server() { return m_server; }
    QString url(const QString &path) const { return m_server.url(path); }
    QString url(const QByteArray &path) const { return url(QString::fromLatin1(path)); }
    // "127.0.0.1:<port>", to stand for the site's host in the site table.
    QString hostPort() const { return m_server.hostPort(); }

    // An HTML page with status 200, optionally setting a cookie "name=value".
    static TestServer::Answer html(const QString &page, const QByteArray &setCookie = {});
    // A whole page around a body, with a title.
    static QString htmlPage(const QString &title, const QString &body);

    void page(const QByteArray &path, const QString &body, const QByteArray &setCookie = {});
    void file(const QByteArray &path, const QByteArray &content);
    // `with` for a request that carries the cookie "name=value", else `without`.
    void cookieRoute(const QByteArray &path, const QByteArray &cookie,
                     const TestServer::Answer &with, const TestServer::Answer &without);

    // The requests so far, one "METHOD /path?query" each.
    QStringList requestLines() const;

    // The ways a request can fail.
    enum class Fault {
        NotFound404, // an answer with status 404
        Closed,      // the connection closed before any answer
        Silence,     // no answer at all: the shared time-out ends the wait
    };
    void fail(const QByteArray &path, Fault fault);

private:
    TestServer m_server;
    int m_site;
};
