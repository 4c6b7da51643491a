#pragma once

#include "fakesite.h"

#include <QByteArray>
#include <QString>

// A YouTube stand-in on a TestServer: the watch page /watch?v=<id> carries
// the id and the token "tk<id>%2B%3D", and the file is answered at
// /get_video?video_id=<id>&t=tk<id>+=&asv, for the token unescaped only.
class FakeYoutube : public FakeSite
{
public:
    FakeYoutube() : FakeSite(Sites::Youtube) {}
    // Puts a video on the site and gives its link; `file` answers for the file.
    QString addVideo(const QString &id, const QString &title, const TestServer::Answer &file);
    static QByteArray watchPath(const QString &id) { return "/watch?v=" + id.toLatin1(); }
    // The watch page; a null title leaves the title's meta tag out.
    static QString watchPage(const QString &id, const QString &token, const QString &title);
};
