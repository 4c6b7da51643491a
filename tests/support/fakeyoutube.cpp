#include "fakeyoutube.h"

QString FakeYoutube::addVideo(const QString &id, const QString &title,
                              const TestServer::Answer &file)
{
    page(watchPath(id), watchPage(id, "tk" + id + "%2B%3D", title));
    server().setAnswer(("/get_video?video_id=" + id + "&t=tk" + id + "+=&asv").toLatin1(), file);
    return url(watchPath(id));
}

QString FakeYoutube::watchPage(const QString &id, const QString &token, const QString &title)
{
    const QString meta =
        title.isNull() ? QString() : "<meta name=\"title\" content=\"" + title + "\">\n";
    return QStringLiteral("<html><head>\n<title>YouTube - %1</title>\n%2</head><body><script>\n"
                          "var swfArgs = {\"video_id\": \"%3\", \"l\": 212};\nvar fullscreenUrl = "
                          "'/watch_fullscreen?video_id=%3&l=212&t=%4&sk=x9&fs=1';\n"
                          "</script></body></html>\n")
        .arg(title, meta, id, token);
}
