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
    // Puts a file on the site and gives its link.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 0, const QString &sizeKb = QStringLiteral("123"))
    {
        const QByteArray cookie = "enc=" + id.toLatin1();
        const auto download =
            html(downloadPage(url(filePath(id, name)), waitSeconds, sizeKb, name));
        server().setRoute(postPath(id, name), [=](const TestServer::Request &request) {
            const QByteArray sent = "; " + request.header("Cookie") + ';';
            return sent.contains("; " + cookie + ';') ? download : html(noFormPage());
        });
        file(filePath(id, name), content);
        return page(firstPath(id, name), filePage(url(postPath(id, name)), name), cookie);
    }

    static QByteArray firstPath(const QString &id, const QString &name)
    {
        return QStringLiteral("/files/%1/%2.html").arg(id, name).toLatin1();
    }
    static QByteArray postPath(const QString &id, const QString &name)
    {
        return QStringLiteral("/post/%1/%2").arg(id, name).toLatin1();
    }
    static QByteArray filePath(const QString &id, const QString &name)
    {
        return QStringLiteral("/file/%1/%2").arg(id, name).toLatin1();
    }

    // The pages, as the site writes them.
    static QByteArray filePage(const QString &formAction, const QString &name)
    {
        return QStringLiteral(
                   "<html><head><title>RapidShare: 1-CLICK Web hosting - %1</title></head>\n<body>"
                   "<div class=\"klappbox\">\n<h1>FILE DOWNLOAD</h1>\n<p class=\"downloadlink\">"
                   "%1 <font>| 123 KB</font></p>\n<form id=\"ff\" action=\"%2\" method=\"post\">\n"
                   "<input type=\"submit\" name=\"dl.start\" value=\"Free\" />\n</form></div>"
                   "</body></html>\n")
            .arg(name, formAction)
            .toUtf8();
    }
    static QByteArray downloadPage(const QString &directUrl, int waitSeconds, const QString &sizeKb,
                                   const QString &name)
    {
        return QStringLiteral(
                   "<html><body><div class=\"klappbox\">\n<p class=\"downloadlink\">%1 <font "
                   "style=\"color:#8E908F;\">|%2 KB</font></p>\n<script "
                   "type=\"text/javascript\">var c=%3; function fc() { if (c>0) { c=c-1; "
                   "setTimeout(\"fc()\", 1000); } }</script>\n<form name=\"dlf\" action=\"%4\" "
                   "method=\"post\">\n<input type=\"submit\" name=\"mirror\" value=\"Download\" "
                   "/>\n</form></div></body></html>\n")
            .arg(name, sizeKb, QString::number(waitSeconds), directUrl)
            .toUtf8();
    }
    // The link's page of a file that is gone.
    static QByteArray goneFirstPage()
    {
        return "<html><body><div class=\"klappbox\">\n<p>The file could not be found.  Please "
               "check the download link.</p>\n</div></body></html>\n";
    }
    // A page without the form id="ff".
    static QByteArray noFormPage()
    {
        return "<html><body><h1>RapidShare</h1><p>Maintenance. Please come back later.</p>"
               "</body></html>\n";
    }
    // The error page of the post for a file that is gone.
    static QByteArray goneErrorPage()
    {
        return "<html><body><h1>Error</h1>\n<div class=\"klappbox\"><p>The file could not be "
               "found. It was deleted.</p></div>\n</body></html>\n";
    }
    // The error page of the post asking for a pause; `minutesText` is what
    // stands before the word "minutes" ("3 " or "12").
    static QByteArray minutesErrorPage(const QString &minutesText)
    {
        return QStringLiteral("<html><body><h1>Error</h1>\n<div class=\"klappbox\"><p>You have "
                              "reached the download limit for free-users. Please try again in "
                              "about %1minutes.</p></div>\n</body></html>\n")
            .arg(minutesText)
            .toUtf8();
    }
};
