#include "fakefourshared.h"

QString FakeFourShared::addFile(const QString &id, const QString &name, const QByteArray &content,
                                int waitSeconds)
{
    const QString direct = "/download/" + id + "/" + name + "?tsid=" + id;
    page(getPath(id, name), downloadPage(url(direct), QString::number(waitSeconds)));
    file(direct.toLatin1(), content);
    return url("/file/" + id + "/" + name + ".html?ref=share");
}

QString FakeFourShared::downloadPage(const QString &directUrl, const QString &wait)
{
    return "<div>Your download starts in <b id=\"sec\">" + wait +
           "</b> seconds...</div>\n<a href='" + directUrl +
           "' class=\"dbtn\">Click here to download this file</a>";
}
