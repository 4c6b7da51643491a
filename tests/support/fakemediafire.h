#pragma once

#include "fakesite.h"

// A MediaFire stand-in on a TestServer:
//
//   /?<key>                          the link's page with the download
//                                    script's marker
//   /dynamic/download.php?qk=<key>   the script: `var` declarations of an
//                                    11-character segment, the server (mL,
//                                    this one), a path segment (mH, "h<key>")
//                                    and the name (mY), then the function
//                                    that writes the link to the file
//   /A1b2C3d4E5fg/h<key>/<mY>        the file
class FakeMediaFire : public FakeSite
{
public:
    FakeMediaFire() : FakeSite(Sites::MediaFire) {}
    // Puts a file on the site and gives its link.
    QString addFile(const QString &key, const QString &name = "file.bin",
                    const QByteArray &content = "file")
    {
        page(("/dynamic/download.php?qk=" + key).toLatin1(),
             scriptPage({"cb=A1b2C3d4E5f", "mL=" + hostPort(), "mH=h" + key, "mY=" + name}));
        file(("/A1b2C3d4E5fg/h" + key + "/" + name).toLatin1(), content);
        return page("/?" + key.toLatin1(), "<script>Eo(); setTimeout(\"cu('dl')\", 9);</script>");
    }
    // The dynamic page declaring these values in turn, each "name=value".
    static QString scriptPage(const QStringList &declarations)
    {
        QString script = "<script><!--\n";
        for (const QString &each : declarations)
            script += "var " + each.section('=', 0, 0) + "='" + each.section('=', 1) + "';";
        return script +
               " function DoShow() { link.innerHTML = \"<a href=\\\"http://\"+mL+\"/\" + "
               "cb + \"g/\" + mH + \"/\" + mY + \"\\\">Click here</a>\"; }\n//--></script>";
    }
};
