#include "fakemediafire.h"

QString FakeMediaFire::addFile(const QString &key, const QString &eleven, const QString &name,
                               const QByteArray &content)
{
    const QString segment = QStringLiteral("h7k2p") + key;
    page(linkPath(key), firstPage());
    page(scriptPath(key),
         scriptPage({"cb=" + eleven, "mL=" + hostPort(), "mH=" + segment, "mY=" + name}));
    file(QStringLiteral("/%1g/%2/%3").arg(eleven, segment, name).toLatin1(), content);
    return url(linkPath(key));
}

QString FakeMediaFire::firstPage(bool withMarker)
{
    return htmlPage("MediaFire", QStringLiteral("<div id=\"download_link\"></div>\n"
                                                "<script type=\"text/javascript\">%1 "
                                                "setTimeout(\"cu('dl')\", 100);</script>")
                                     .arg(withMarker ? "Eo();" : "Eq();"));
}

QString FakeMediaFire::scriptPage(const QStringList &declarations)
{
    QString script;
    for (const QString &declaration : declarations)
        script += QStringLiteral("var %1='%2';")
                      .arg(declaration.section('=', 0, 0), declaration.section('=', 1));
    return QStringLiteral(
               "<html><head><script language=\"JavaScript\"><!--\n%1 function DoShow(b) { "
               "parent.document.getElementById('download_link').innerHTML = \"<a "
               "href=\\\"http://\"+mL+\"/\" + cb + \"g/\" + mH + \"/\" + mY + \"\\\">Click here "
               "to start download</a>\"; }\n//--></script></head><body "
               "onload=\"DoShow()\"></body></html>\n")
        .arg(script);
}
