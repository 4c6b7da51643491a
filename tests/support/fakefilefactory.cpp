#include "fakefilefactory.h"

QString FakeFileFactory::addFile(const QString &id, const QString &name, const QByteArray &content,
                                 int waitSeconds)
{
    const QString direct = "/get/" + id + "/" + name;
    page(linkPath(id, name), firstPage("dlf/" + id));
    page(buttonPath(id), downloadPage(url(direct), QString::number(waitSeconds)));
    file(direct.toLatin1(), content);
    return url(linkPath(id, name));
}

QString FakeFileFactory::firstPage(const QString &buttonHref)
{
    return "<div id=\"basicLink\"><a href=\"" + buttonHref +
           "\"><img src=\"/img/free.gif\" alt=\"Download Now\" /></a></div>";
}

QString FakeFileFactory::downloadPage(const QString &directUrl, const QString &countdown)
{
    return "<p>Starting in <span class=\"countdown\">" + countdown +
           "</span></p>\n<p id=\"downloadLink\"><a href=\"" + directUrl +
           "\">Click here to begin your download</a></p>";
}
