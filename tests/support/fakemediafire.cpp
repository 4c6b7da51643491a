#include "fakemediafire.h"

QString FakeMediaFire::addFile(const QString &key, const QString &eleven, const QString &name,
                               const QByteArray &content)
{
    const QString segment = "h7k2p" + key;
    page(linkPath(key), "<script type=\"text/javascript\">Eo(); setTimeout(\"cu('dl')\", 100);"
                        "</script>");
    page(scriptPath(key),
         scriptPage({"cb=" + eleven, "mL=" + hostPort(), "mH=" + segment, "mY=" + name}));
    file(("/" + eleven + "g/" + segment + "/" + name).toLatin1(), content);
    return url(linkPath(key));
}

QString FakeMediaFire::scriptPage(const QStringList &declarations)
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
