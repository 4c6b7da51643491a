#pragma once

#include "fakesite.h"

// A MegaUpload stand-in. A link "/?d=<id>" has:
//
//   /mgr_dl.php?d=<id>   the site's helper, asked over the socket: by default
//                        a 302 back to the link's page; answer() sets another
//   /?d=<id>             the link's page: the captcha picture's address, the
//                        hidden values "captchacode" and "megavar"; a POST of
//                        the form to it gives the download page
//   /gencap.php?<id>.gif the captcha picture
//   /files/<id>/<name>   the file
//
// Tests point the site table's MegaUpload host at hostPort().
class FakeMegaUpload : public FakeSite
{
public:
    FakeMegaUpload() : FakeSite(Sites::MegaUpload) {}
    // Puts a file on the site, with the download page's count (empty: the
    // page has none), and gives its link.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    const QString &count = QStringLiteral("1"));

    static QByteArray helperPath(const QString &id);
    static QByteArray linkPath(const QString &id);
    // A picture of one pixel, as the site's captcha would come.
    static QByteArray picture()
    {
        return QByteArray("GIF89a\x01\x00\x01\x00\x80\x00\x00\xff\xff\xff\x00\x00\x00!\xf9\x04"
                          "\x01\x00\x00\x00\x00,\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02\x02"
                          "D\x01\x00;",
                          43);
    }

    // What the helper can answer.
    TestServer::Answer redirectToFile(const QString &id, const QString &name) const;
    static TestServer::Answer ok200();

    static QString captchaPage(const QString &pictureUrl);
    static QString downloadPage(const QString &address, const QString &count);
    static QString gonePage();
};
