#include "fakemegaupload.h"

QString FakeMegaUpload::addFile(const QString &id, const QString &name, const QByteArray &content,
                                const QString &count)
{
    const QByteArray filePath = "/files/" + (id + '/' + name).toLatin1();
    const QByteArray picturePath = "/gencap.php?" + id.toLatin1() + ".gif";
    server().setAnswer(helperPath(id), TestServer::Answer::redirect(302, url(linkPath(id))));
    // The page for a GET, the download page for the posted form.
    const auto page = html(captchaPage(url(picturePath)));
    const auto download = html(downloadPage(url(filePath), count));
    server().setRoute(linkPath(id), [page, download](const TestServer::Request &r) {
        return r.method == "POST" ? download : page;
    });
    server().setAnswer(picturePath, TestServer::Answer::ok(picture()));
    file(filePath, content);
    return url(linkPath(id));
}
