#pragma once

#include "fakesite.h"

// A YouTube stand-in on a TestServer: the watch page /watch?v=<id> carries
// the id and the token "tk<id>%2B%3D", and the file is answered at
// /get_video?video_id=<id>&t=tk<id>+=&asv, for the token unescaped only.
class FakeYoutube : public FakeSite
{
public:
    FakeYoutube() : FakeSite(Sites::Youtube) {}
    // Puts a video on the site and gives its link; `file` answers for the file.
    QString addVideo(const QString &id, const QString &title, const TestServer::Answer &file)
    {
        server().setAnswer(("/get_video?video_id=" + id + "&t=tk" + id + "+=&asv").toLatin1(),
                           file);
        return page(watchPath(id), watchPage(id, "tk" + id + "%2B%3D", title));
    }
    static QByteArray watchPath(const QString &id) { return "/watch?v=" + id.toLatin1(); }
    // The watch page; a null title leaves the title's meta tag out.
    static QString watchPage(const QString &id, const QString &token, const QString &title)
    {
        const QString meta =
            title.isNull() ? QString() : "<meta name=\"title\" content=\"" + title + "\">\n";
        return QStringLiteral("<html><head>\n<title>YouTube - %1</title>\n%2</head><body><script>"
                              "\nvar swfArgs = {\"video_id\": \"%3\", \"l\": 212};\nvar "
                              "fullscreenUrl = '/watch_fullscreen?video_id=%3&l=212&t=%4&sk=x9&fs="
                              "1';\n</script></body></html>\n")
            .arg(title, meta, id, token);
    }
};
