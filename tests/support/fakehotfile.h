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
        const QString filePath = "/get/" + id + '/' + name, post = "/post/" + id;
        file(filePath.toLatin1(), content);
        const auto ready = html("<a href=\"" + url(filePath) + "\" class=click_download>Get</a>");
        QList<TestServer::Answer> answers(notReady, html(disabledPage));
        server().setAnswers(post.toLatin1(), answers << ready);
        return route("/dl/" + id.toLatin1(), html(formPage(id, waitMs)),
                     TestServer::Answer::redirect(307, url(post)));
    }

    // The link's page; its form's body is "&action=capt&tm=<id>".
    static QString formPage(const QString &id, const QString &waitMs)
    {
        return "<form method=post name=f>\r\n<input type=hidden name=action value=capt>\r\n"
               "<input type=hidden name=tm value=" +
               id + ">\r\n<tr><script>var timerend=d.getTime()+" + waitMs + ";</script></tr>";
    }
    // The answer while the site isn't ready to let the file go.
    static inline const QString disabledPage = "<input type=submit class=disabled value=\"Get\">";
};
