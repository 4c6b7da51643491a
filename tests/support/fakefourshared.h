#pragma once

#include "fakesite.h"

// A 4Shared stand-in on a TestServer. Each file has three addresses:
//
//   /file/<id>/<name>.html?ref=share   the link, never fetched as it stands
//   /get/<id>/<name>.html              the download page: the countdown in
//       the element before "seconds..." and the file's address in the
//       href='...' of "Click here to download this file"
//   /download/<id>/<name>?tsid=<id>    the file itself
class FakeFourShared : public FakeSite
{
public:
    FakeFourShared() : FakeSite(Sites::FourShared) {}
    // Puts a file on the site and gives its link.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 1)
    {
        const QString direct = "/download/" + id + "/" + name + "?tsid=" + id;
        page(getPath(id, name), downloadPage(url(direct), QString::number(waitSeconds)));
        file(direct.toLatin1(), content);
        return url("/file/" + id + "/" + name + ".html?ref=share");
    }
    static QByteArray getPath(const QString &id, const QString &name)
    {
        return ("/get/" + id + "/" + name + ".html").toLatin1();
    }
    // `wait` is the countdown element's text.
    static QString downloadPage(const QString &directUrl, const QString &wait)
    {
        return "<div>Your download starts in <b id=\"sec\">" + wait +
               "</b> seconds...</div>\n<a href='" + directUrl +
               "' class=\"dbtn\">Click here to download this file</a>";
    }
};
