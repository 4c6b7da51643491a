#pragma once

#include "fakesite.h"

// A MediaFire stand-in on a TestServer:
//
//   /?<key>                          the link's page with the download
//                                    script's marker
//   /dynamic/download.php?qk=<key>   the script: `var` declarations of the
//                                    server (mL, this one), a path segment
//                                    (mH), the name (mY) and an 11-character
//                                    segment, then the function that writes
//                                    the link to the file
//   /<11 characters>g/<mH>/<mY>      the file
class FakeMediaFire : public FakeSite
{
public:
    FakeMediaFire() : FakeSite(Sites::MediaFire) {}
    // Puts a file on the site and gives its link.
    QString addFile(const QString &key, const QString &eleven, const QString &name,
                    const QByteArray &content)
    {
        const QString segment = "h7k2p" + key;
        page(scriptPath(key),
             scriptPage({"cb=" + eleven, "mL=" + hostPort(), "mH=" + segment, "mY=" + name}));
        file(("/" + eleven + "g/" + segment + "/" + name).toLatin1(), content);
        return page(
            linkPath(key),
            "<script type=\"text/javascript\">Eo(); setTimeout(\"cu('dl')\", 100);</script>");
    }
    static QByteArray linkPath(const QString &key) { return "/?" + key.toLatin1(); }
    static QByteArray scriptPath(const QString &key)
    {
        return "/dynamic/download.php?qk=" + key.toLatin1();
    }
    // The dynamic page declaring these values in turn, each "name=value".
    static QString scriptPage(const QStringList &declarations)
    {
        QString script;
        for (const QString &declaration : declarations)
            script +=
                "var " + declaration.section('=', 0, 0) + "='" + declaration.section('=', 1) + "';";
        return "<html><head><script language=\"JavaScript\"><!--\n" + script +
               " function DoShow(b) { parent.document.getElementById('download_link').innerHTML = "
               "\"<a href=\\\"http://\"+mL+\"/\" + cb + \"g/\" + mH + \"/\" + mY + \"\\\">Click "
               "here to start download</a>\"; }\n//--></script></head><body "
               "onload=\"DoShow()\"></body></html>\n";
    }
};
