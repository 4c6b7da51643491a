#pragma once

#include "fakesite.h"

// A DepositFiles stand-in. A file has two addresses: /en/files/<id>, the
// link's English page (the gateway form; for a POST of "gateway_result=1" the
// download page), and /file/<id>/<name>, the file. There are no pages in other
// languages. Tests replace the link's page with the site's other pages below.
class FakeDepositFiles : public FakeSite
{
public:
    FakeDepositFiles() : FakeSite(Sites::DepositFiles) {}
    // Puts a file on the site and gives its link in `language`.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 60, const QString &language = QStringLiteral("en"))
    {
        const QByteArray filePath = "/file/" + (id + '/' + name).toLatin1();
        file(filePath, content);
        route("/en/files/" + id.toLatin1(), html("<form method=\"post\">"),
              html(downloadPage(url(filePath), name, waitSeconds)), "gateway_result=1");
        return url("/" + language + "/files/" + id);
    }

    // The download form's action, the file name, the site's countdown and its
    // "var c=N;".
    static QString downloadPage(const QString &directUrl, const QString &name, int waitSeconds)
    {
        return QStringLiteral("File name: <b title=\"%1\">%1</b> Ready in less than a minute.\n"
                              "<div id=\"download_url\"><form action=\"%2\"></form></div>\n"
                              "<script>var c=%3;</script><span id=\"download_waiter_remain\">%3<")
            .arg(name, directUrl, QString::number(waitSeconds));
    }
    static inline const QString slotsBusyPage = "<p>We are sorry, but all downloading slots for "
                                                "your country are busy. Try again in 3 minutes.";
    static inline const QString ipBusyPage =
        "<p>Your IP is already downloading a file from our system.</p>";
    static inline const QString gonePage = "<p>Such file does not exist or it has been removed "
                                           "for infringement of copyrights.</p>";
};
