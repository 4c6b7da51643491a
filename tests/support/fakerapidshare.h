#pragma once

#include "fakesite.h"

// A RapidShare stand-in on a TestServer. Each file has three addresses:
//
//   /files/<id>/<name>.html  the link's page with the form id="ff" whose
//                            action posts to /post/<id>/<name>
//   /post/<id>/<name>        the answer to "dl.start=Free": the wait
//                            ("var c=N;"), the size (">|123 KB<") and the
//                            form name="dlf" whose action is /file/<id>/<name>
//   /file/<id>/<name>        the file itself
//
// The link's page sets a session cookie, and the post is answered only with
// it. Tests replace any of the answers with the failure pages below.
class FakeRapidShare : public FakeSite
{
public:
    static auto firstPath(QString id, QString name) { return at("files", id, name + ".html"); }
    static auto postPath(QString id, QString name) { return at("post", id, name); }
    static auto filePath(QString id, QString name) { return at("file", id, name); }
    static QByteArray at(const char *folder, const QString &id, const QString &name)
    {
        return QStringLiteral("/%1/%2/%3").arg(folder, id, name).toLatin1();
    }

    // Puts a file on the site and gives its link.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 0)
    {
        const QByteArray cookie = "enc=" + id.toLatin1();
        const auto download = html(downloadPage(url(filePath(id, name)), waitSeconds));
        server().setRoute(postPath(id, name), [=](const TestServer::Request &request) {
            const QByteArray sent = "; " + request.header("Cookie") + ';';
            return sent.contains("; " + cookie + ';') ? download : html(noFormPage);
        });
        file(filePath(id, name), content);
        return page(firstPath(id, name), filePage(url(postPath(id, name)), name), cookie);
    }

    // The pages, as the site writes them.
    static QString filePage(const QString &formAction, const QString &name)
    {
        return QStringLiteral("<html><title>RapidShare: %1</title><p class=\"downloadlink\">%1 "
                              "<font>| 123 KB</font></p>\n<form id=\"ff\" action=\"%2\" method="
                              "\"post\"><input type=\"submit\" name=\"dl.start\" value=\"Free\" />"
                              "</form></html>\n")
            .arg(name, formAction);
    }
    static QString downloadPage(const QString &directUrl, int waitSeconds)
    {
        return QStringLiteral(
                   "<html><p class=\"downloadlink\"><font>|123 KB</font></p>\n<script>"
                   "var c=%1; function fc() { if (c>0) { c=c-1; setTimeout(\"fc()\", "
                   "1000); } }</script>\n<form name=\"dlf\" action=\"%2\" method=\"post\">"
                   "<input type=\"submit\" value=\"Download\" /></form></html>\n")
            .arg(QString::number(waitSeconds), directUrl);
    }
    static inline const QString goneFirstPage =
        "<html><p>The file could not be found.  Please check the download link.</p></html>\n";
    static inline const QString noFormPage =
        "<html><h1>RapidShare</h1><p>Maintenance. Please come back later.</p></html>\n";
    // The post's error pages: the file is gone; a pause, with what stands
    // before the word "minutes" ("3 " or "12").
    static inline const QString goneErrorPage =
        "<html><h1>Error</h1>\n<p>The file could not be found. It was deleted.</p></html>\n";
    static QString minutesErrorPage(const QString &minutesText)
    {
        return "<html><h1>Error</h1>\n<p>You have reached the download limit for free-users. "
               "Please try again in about " +
               minutesText + "minutes.</p></html>\n";
    }
};
