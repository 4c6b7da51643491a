#pragma once

#include "fakesite.h"

#include <QByteArray>
#include <QString>

// A RapidShare stand-in on a TestServer. Each file has three addresses:
//
//   /files/<id>/<name>.html  the link's page with the form id="ff" whose
//                            action posts to /post/<id>/<name>
//   /post/<id>/<name>        the answer to "dl.start=Free": the wait
//                            ("var c=N;"), the size (">|123 KB<") and the
//                            form name="dlf" whose action is /file/<id>/<name>
//   /file/<id>/<name>        the file itself
//
// The link's page sets a session cookie, and the post is answered only with
// it. Tests replace any of the answers with the failure pages below.
class FakeRapidShare : public FakeSite
{
public:
    // Puts a file on the site and gives its link.
    QString addFile(const QString &id, const QString &name, const QByteArray &content,
                    int waitSeconds = 0, const QString &sizeKb = QStringLiteral("123"));

    static QByteArray firstPath(const QString &id, const QString &name);
    static QByteArray postPath(const QString &id, const QString &name);
    static QByteArray filePath(const QString &id, const QString &name);

    // The pages, as the site writes them.
    static QByteArray filePage(const QString &formAction, const QString &name);
    static QByteArray downloadPage(const QString &directUrl, int waitSeconds, const QString &sizeKb,
                                   const QString &name);
    // The link's page of a file that is gone.
    static QByteArray goneFirstPage();
    // A page without the form id="ff".
    static QByteArray noFormPage();
    // The error page of the post for a file that is gone.
    static QByteArray goneErrorPage();
    // The error page of the post asking for a pause; `minutesText` is what
    // stands before the word "minutes" ("3 " or "12").
    static QByteArray minutesErrorPage(const QString &minutesText);
};
