#pragma once

#include "fakesite.h"

// A MegaUpload stand-in, the site table's MegaUpload host while it lives. A
// link "/?d=<id>" has the site's helper /mgr_dl.php?d=<id>, asked over the
// socket (by default a 302 back to the link's page); the link's page with the
// captcha picture's address and the hidden values "captchacode" and
// "megavar", whose POST gives the download page; the picture
// /gencap.php?<id>.gif; and the file /files/<id>/<name>.
class FakeMegaUpload : public FakeSite
{
public:
    FakeMegaUpload() : FakeSite(Sites::MegaUpload) {}
    // Puts a file on the site, with the download page's count (empty: the
    // page has none), and gives its link.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    const QString &count = QStringLiteral("1"))
    {
        const QByteArray filePath = "/files/" + (id + '/' + name).toLatin1();
        const QByteArray picturePath = "/gencap.php?" + id.toLatin1() + ".gif";
        server().setAnswer(helperPath(id), TestServer::Answer::redirect(302, url(linkPath(id))));
        file(picturePath, picture());
        file(filePath, content);
        // The page for a GET, the download page for the posted form.
        return route(linkPath(id), html(captchaPage(url(picturePath))),
                     html(downloadPage(url(filePath), count)));
    }
    static QByteArray helperPath(const QString &id) { return "/mgr_dl.php?d=" + id.toLatin1(); }
    static QByteArray linkPath(const QString &id) { return "/?d=" + id.toLatin1(); }
    // A GIF of one pixel, as the site's captcha would come.
    static QByteArray picture()
    {
        return QByteArray::fromBase64(
            "R0lGODlhAQABAIAAAP///wAAACH5BAEAAAAALAAAAAABAAEAAAICRAEAOw==");
    }

    static QString captchaPage(const QString &pictureUrl)
    {
        return "<form method=\"POST\"><img src=\"" + pictureUrl +
               "\"><input type=\"hidden\" name=\"captchacode\" value=\"c0de42\">\n<input "
               "type=\"hidden\" name=\"megavar\" value=\"mv%3D7\"><input name=\"captcha\"></form>";
    }
    static QString downloadPage(const QString &address, const QString &count)
    {
        return (count.isEmpty() ? "" : "<script>var count=" + count + ";</script>\n") +
               "<div id=\"downloadlink\"><a href=\"" + address + "\">Download</a></div>";
    }
    static inline const QString gonePage =
        "<p>Unfortunately, the link you have clicked is not available.</p>";
};
