#pragma once

#include "fakesite.h"

// A YouTube stand-in on a TestServer:
//
//   /watch?v=<id>                             the watch page with the id and
//                                             the token "tk<id>%2B%3D"
//   /get_video?video_id=<id>&t=tk<id>+=&asv   a redirect to the file, answered
//                                             for the token unescaped only
//   /videos/<id>.flv                          the file
class FakeYoutube : public FakeSite
{
public:
    FakeYoutube() : FakeSite(Sites::Youtube) {}
    // Puts a video on the site and gives its link; `file` answers for the file.
    QString addVideo(const QString &id, const QString &title = "Video",
                     const TestServer::Answer &file = TestServer::Answer::ok("video"))
    {
        server().setAnswer(("/videos/" + id + ".flv").toLatin1(), file);
        server().setAnswer(("/get_video?video_id=" + id + "&t=tk" + id + "+=&asv").toLatin1(),
                           TestServer::Answer::redirect(302, url("/videos/" + id + ".flv")));
        return page("/watch?v=" + id.toLatin1(), watchPage(id, "tk" + id + "%2B%3D", title));
    }
    // The watch page; a null title leaves the title's meta tag out.
    static QString watchPage(const QString &id, const QString &token, const QString &title)
    {
        const QString meta = "<meta name=\"title\" content=\"" + title + "\">\n";
        return QString("<head><title>YouTube - %1</title>\n%2</head><script>\nvar swfArgs = "
                       "{\"video_id\": \"%3\"};\nvar fullscreenUrl = "
                       "'/watch_fullscreen?video_id=%3&t=%4&fs=1';\n</script>")
            .arg(title, title.isNull() ? QString() : meta, id, token);
    }
};
