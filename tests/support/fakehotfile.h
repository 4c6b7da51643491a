#pragma once

#include "fakesite.h"

#include <QByteArray>
#include <QString>

// A HotFile stand-in on a TestServer. A file has three addresses:
//
//   /dl/<id>           the link's page: the hidden form name=f and the
//                      script's countdown ("timerend=d.getTime()+<ms>;").
//                      The form is posted back here, and passed on (307,
//                      method and body kept) to
//   /post/<id>         the answer to the post: the download link in front
//                      of "click_download", which points at
//   /get/<id>/<name>   the file itself
//
// The post has an address of its own so that tests can replace its answer
// apart from the page's.
class FakeHotFile : public FakeSite
{
public:
    // Puts a file on the site and gives its link. The first `notReady` posts
    // are answered with disabledPage.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    const QString &waitMs = QStringLiteral("1000"), int notReady = 0);
    static QByteArray linkPath(const QString &id) { return "/dl/" + id.toLatin1(); }
    static QByteArray postPath(const QString &id) { return "/post/" + id.toLatin1(); }

    // The link's page, with `padding` characters of a comment in front of the
    // form; its form's body is formBody(id).
    static QString formPage(const QString &id, const QString &waitMs, int padding = 0);
    static QByteArray formBody(const QString &id)
    {
        return "&action=capt&tm=" + id.toLatin1() + "&tmhash=a1b2c3d4&wait=30";
    }
    static QString downloadPage(const QString &directUrl)
    {
        return htmlPage("HotFile", "<a href=\"" + directUrl +
                                       "\" class=click_download>Click here to download</a>");
    }
    // The answer while the site isn't ready to let the file go.
    static inline const QString disabledPage =
        htmlPage("HotFile", "<input type=submit class=disabled value=\"Download\">");
    // A file that is gone: no form.
    static inline const QString gonePage =
        htmlPage("HotFile", "<p>This file is either removed due to copyright claim or is "
                            "deleted by the uploader.</p>");
};
