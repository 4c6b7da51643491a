#pragma once

#include "fakesite.h"

// A FileFactory stand-in on a TestServer. Each file has three addresses:
//
//   /file/<id>/n/<name>   the link's page, whose "Download Now" button points
//                         to "dlf/<id>" on the site's www host
//   /dlf/<id>             the button's page: the downloadLink and the countdown
//   /get/<id>/<name>      the file itself
//
// The site's host is the fake's address, which has no "www." form: the
// button's page is asked at the address as it stands.
class FakeFileFactory : public FakeSite
{
public:
    FakeFileFactory() : FakeSite(Sites::FileFactory) {}
    // Puts a file on the site and gives its link.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 1)
    {
        const QString direct = "/get/" + id + "/" + name;
        page("/dlf/" + id.toLatin1(), downloadPage.arg(QString::number(waitSeconds), url(direct)));
        file(direct.toLatin1(), content);
        return page(("/file/" + id + "/n/" + name).toLatin1(), firstPage.arg("dlf/" + id));
    }
    // The link's page, for .arg(the button's address).
    static inline const QString firstPage = "<div id=\"basicLink\"><a href=\"%1\"><img "
                                            "src=\"free.gif\" alt=\"Download Now\" /></a></div>";
    // The button's page, for .arg(the countdown's text, the file's address).
    static inline const QString downloadPage =
        "<p>Starting in <span class=\"countdown\">%1</span></p>\n<p id=\"downloadLink\"><a "
        "href=\"%2\">Click here to begin your download</a></p>";
    // The pages that end a run.
    static inline const QString gonePage = "<p>Sorry, this file is no longer available. It may "
                                           "have been deleted by the uploader, or has expired.</p>";
    static inline const QString noSlotsPage = "<p>Sorry, there are currently no free download "
                                              "slots available on this server.</p>";
    static inline const QString tryLaterPage =
        "<p>You are downloading too fast. Please try again later.</p>";
};
