#include "fakemegaupload.h"

QByteArray FakeMegaUpload::helperPath(const QString &id)
{
    return "/mgr_dl.php?d=" + id.toLatin1();
}

QByteArray FakeMegaUpload::linkPath(const QString &id)
{
    return "/?d=" + id.toLatin1();
}

QString FakeMegaUpload::addFile(const QString &id, const QString &name, const QByteArray &content,
                                const QString &count)
{
    const QByteArray filePath = "/files/" + id.toLatin1() + '/' + name.toLatin1();
    server().setAnswer(helperPath(id),
                       TestServer::Answer::redirect(302, url(linkPath(id)) + "&from=helper"));
    // The page for a GET, the download page for the posted form.
    const TestServer::Answer page = html(captchaPage(url("/gencap.php?" + id.toLatin1() + ".gif")));
    const TestServer::Answer download = html(downloadPage(url(filePath), count));
    server().setRoute(linkPath(id), [page, download](const TestServer::Request &r) {
        return r.method == "POST" ? download : page;
    });
    server().setAnswer("/gencap.php?" + id.toLatin1() + ".gif", TestServer::Answer::ok(picture()));
    file(filePath, content);
    return url(linkPath(id));
}

TestServer::Answer FakeMegaUpload::redirectToFile(const QString &id, const QString &name) const
{
    return TestServer::Answer::redirect(302,
                                        url("/files/" + id.toLatin1() + '/' + name.toLatin1()));
}

TestServer::Answer FakeMegaUpload::ok200()
{
    return TestServer::Answer::ok("<html>Please use the site.</html>", "text/html");
}

QString FakeMegaUpload::captchaPage(const QString &pictureUrl)
{
    return htmlPage(QStringLiteral("MegaUpload"),
                    QStringLiteral("<form method=\"POST\" id=\"captchaform\">\n"
                                   "<img src=\"%1\" alt=\"code\">\n"
                                   "<input type=\"hidden\" name=\"captchacode\" value=\"c0de42\">\n"
                                   "<input type=\"hidden\" name=\"megavar\" value=\"mv%3D7\">\n"
                                   "<input type=\"text\" name=\"captcha\"></form>")
                        .arg(pictureUrl));
}

QString FakeMegaUpload::downloadPage(const QString &address, const QString &count)
{
    const QString script =
        count.isEmpty() ? QString() : QStringLiteral("<script>var count=%1;</script>\n").arg(count);
    return htmlPage(QStringLiteral("MegaUpload - Download"),
                    script + QStringLiteral("<div id=\"downloadlink\"><a href=\"%1\">Download</a>"
                                            "</div>")
                                 .arg(address));
}

QString FakeMegaUpload::gonePage()
{
    return htmlPage(QStringLiteral("MegaUpload"),
                    QStringLiteral("<p>Unfortunately, the link you have clicked is not available."
                                   "</p>"));
}
