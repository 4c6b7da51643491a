#pragma once

#include "fakesite.h"

#include <QByteArray>
#include <QString>

// A YouTube stand-in on a TestServer:
//
//   /watch?v=<id>                         the watch page with the id and the
//                                         token "tk<id>%2B%3D"
//   /get_video?video_id=<id>&t=tk<id>+=&asv   a redirect to the file, answered
//                                         only for the token unescaped
//   /videos/<id>.flv                      the file
class FakeYoutube : public FakeSite
{
public:
    FakeYoutube() : FakeSite(Sites::Youtube) {}
    // Puts a video on the site and gives its link; `file` answers for the file.
    QString addVideo(const QString &id, const QString &title, const TestServer::Answer &file);

    static QByteArray watchPath(const QString &id);
    static QString token(const QString &id) { return QStringLiteral("tk%1%2B%3D").arg(id); }

    // The watch page; a null title leaves the title's meta tag out, a null
    // token leaves out the player's address that carries "&t=".
    static QString watchPage(const QString &id, const QString &token, const QString &title);
    // The pages that stand in the way of a video.
    static QString gonePage();
    static QString ageGatePage();
    static QString oldBrowserPage();
};
