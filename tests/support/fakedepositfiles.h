#pragma once

#include "fakesite.h"

#include <QByteArray>
#include <QString>

// A DepositFiles stand-in on a TestServer. A file has two addresses:
//
//   /en/files/<id>     the link's English page: the gateway form, or, for a
//                      post of "gateway_result=1", the download page
//   /file/<id>/<name>  the file itself
//
// There are no pages in other languages. Tests replace the link's page with
// the site's other pages below.
class FakeDepositFiles : public FakeSite
{
public:
    // Puts a file on the site and gives its link in `language`.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 60, const QString &language = QStringLiteral("en"));
    static QByteArray pagePath(const QString &id) { return "/en/files/" + id.toLatin1(); }

    // The download form with its action, the file name, the site's countdown
    // and its "var c=N;".
    static QString downloadPage(const QString &directUrl, const QString &name, int waitSeconds);
    static inline const QString gatewayPage = htmlPage(
        "DepositFiles", "<form method=\"post\"><input type=\"hidden\" name=\"gateway_result\" "
                        "value=\"1\"><input type=\"submit\" value=\"Free downloading\"></form>");
    static inline const QString slotsBusyPage =
        htmlPage("DepositFiles", "<p>We are sorry, but all downloading slots for your country "
                                 "are busy. Please try again in 3 minutes.</p>");
    static inline const QString ipBusyPage =
        htmlPage("DepositFiles", "<p>Your IP is already downloading a file from our system.</p>");
    static inline const QString gonePage =
        htmlPage("DepositFiles", "<p>Such file does not exist or it has been removed for "
                                 "infringement of copyrights.</p>");
};
