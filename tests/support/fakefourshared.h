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
    // Puts a file on the site and gives its link; with `busyFirst` the first
    // ask for the download page gets the busy page.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 1, bool busyFirst = false)
    {
        const QString direct = "/download/" + id + "/" + name + "?tsid=" + id;
        const auto ready = html(downloadPage.arg(QString::number(waitSeconds), url(direct)));
        const QByteArray get = ("/get/" + id + "/" + name + ".html").toLatin1();
        server().setAnswers(get, busyFirst ? QList{html(busyPage), ready} : QList{ready});
        file(direct.toLatin1(), content);
        return url("/file/" + id + "/" + name + ".html?ref=share");
    }
    // The download page, for .arg(the countdown element's text, the file's address).
    static inline const QString downloadPage =
        "<div>Your download starts in <b id=\"sec\">%1</b> seconds...</div>\n<a href='%2' "
        "class=\"dbtn\">Click here to download this file</a>";
    // A page without a countdown, which the recipe asks for once more.
    static inline const QString busyPage = "<p>Server busy.</p>";
};
