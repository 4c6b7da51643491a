#include "fakeyoutube.h"

QByteArray FakeYoutube::watchPath(const QString &id)
{
    return "/watch?v=" + id.toLatin1();
}

QString FakeYoutube::addVideo(const QString &id, const QString &title,
                              const TestServer::Answer &file)
{
    const QString videoPath = QStringLiteral("/videos/%1.flv").arg(id);
    page(watchPath(id), watchPage(id, token(id), title));
    server().setAnswer(QStringLiteral("/get_video?video_id=%1&t=tk%1+=&asv").arg(id).toLatin1(),
                       TestServer::Answer::redirect(302, url(videoPath)));
    server().setAnswer(videoPath.toLatin1(), file);
    return url(watchPath(id));
}

QString FakeYoutube::watchPage(const QString &id, const QString &token, const QString &title)
{
    QString head = QStringLiteral("<title>YouTube - %1</title>\n").arg(title);
    if (!title.isNull())
        head += QStringLiteral("<meta name=\"title\" content=\"%1\">\n").arg(title);
    QString player = QStringLiteral("var swfArgs = {\"video_id\": \"%1\", \"l\": 212};\n").arg(id);
    if (!token.isNull())
        player += QStringLiteral("var fullscreenUrl = '/watch_fullscreen?video_id=%1&l=212&t=%2"
                                 "&sk=x9&fs=1';\n")
                      .arg(id, token);
    return QStringLiteral("<html><head>\n%1</head><body><div id=\"watch-player\"></div>\n"
                          "<script type=\"text/javascript\">\n%2</script></body></html>\n")
        .arg(head, player);
}

QString FakeYoutube::gonePage()
{
    return htmlPage("YouTube - Broadcast Yourself.",
                    "<div class=\"errorBox\">The video you have requested is not available.</div>");
}

QString FakeYoutube::ageGatePage()
{
    return htmlPage("YouTube - Broadcast Yourself.",
                    "<div>This video or group may contain content that is inappropriate for some "
                    "users. To view this video or group, please verify you are 18 or older by "
                    "<a href=\"/signup\">signing up</a>.</div>");
}

QString FakeYoutube::oldBrowserPage()
{
    return htmlPage("YouTube - Broadcast Yourself.",
                    "<div>Your browser is no longer supported by YouTube. Please upgrade.</div>");
}
