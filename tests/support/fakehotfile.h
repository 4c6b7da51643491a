#pragma once

#include "fakesite.h"

// A HotFile stand-in. A file has three addresses: /dl/<id>, the link's page
// with the hidden form name=f and the script's countdown, where the form is
// posted back and passed on (307, method and body kept) to /post/<id>, the
// answer with the download link in front of "click_download", which points at
// /get/<id>/<name>, the file. The post's address of its own lets a test
// replace its answer apart from the page's.
class FakeHotFile : public FakeSite
{
public:
    FakeHotFile() : FakeSite(Sites::HotFile) {}
    // Puts a file on the site and gives its link; the first `notReady` posts
    // are answered with disabledPage.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    const QString &waitMs = QStringLiteral("1000"), int notReady = 0)
    {
        const QByteArray filePath = "/get/" + (id + '/' + name).toLatin1();
        server().setAnswers(postPath(id), QList<TestServer::Answer>(notReady, html(disabledPage))
                                              << html(downloadPage(url(filePath))));
        file(filePath, content);
        return route(linkPath(id), html(formPage(id, waitMs)),
                     TestServer::Answer::redirect(307, url(postPath(id))));
    }
    static QByteArray linkPath(const QString &id) { return "/dl/" + id.toLatin1(); }
    static QByteArray postPath(const QString &id) { return "/post/" + id.toLatin1(); }

    // The link's page; its form's body is formBody(id).
    static QString formPage(const QString &id, const QString &waitMs)
    {
        return "<table><form action=\"\" method=post name=f>\r\n"
               "<input type=hidden name=action value=capt>\r\n<input type=hidden name=tm value=" +
               id +
               ">\r\n<input type=hidden name=tmhash value=a1b2c3d4>\r\n"
               "<input type=hidden name=wait value=30>\r\n<tr><td><script>var d=new Date();var "
               "timerend=d.getTime()+" +
               waitMs + ";</script></td></tr></form></table>";
    }
    static QByteArray formBody(const QString &id)
    {
        return "&action=capt&tm=" + id.toLatin1() + "&tmhash=a1b2c3d4&wait=30";
    }
    static QString downloadPage(const QString &directUrl)
    {
        return "<a href=\"" + directUrl + "\" class=click_download>Click here to download</a>";
    }
    // The answer while the site isn't ready to let the file go.
    static inline const QString disabledPage = "<input type=submit class=disabled value=\"Get\">";
};
