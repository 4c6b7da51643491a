#include "fakefilefactory.h"

QByteArray FakeFileFactory::linkPath(const QString &id, const QString &name) const
{
    return QStringLiteral("/file/%1/n/%2").arg(id, name).toLatin1();
}

QString FakeFileFactory::addFile(const QString &id, const QString &name, const QByteArray &content,
                                 int waitSeconds)
{
    const QString direct = QStringLiteral("/get/%1/%2").arg(id, name);
    page(linkPath(id, name), firstPage(QStringLiteral("dlf/") + id));
    page(buttonPath(id), downloadPage(url(direct), QString::number(waitSeconds)));
    file(direct.toLatin1(), content);
    return url(linkPath(id, name));
}

QString FakeFileFactory::firstPage(const QString &buttonHref)
{
    return htmlPage(QStringLiteral("FileFactory"),
                    QStringLiteral("<div id=\"basicLink\"><a href=\"%1\"><img "
                                   "src=\"/img/free.gif\" alt=\"Download Now\" /></a></div>")
                        .arg(buttonHref));
}

QString FakeFileFactory::downloadPage(const QString &directUrl, const QString &countdown)
{
    return htmlPage(QStringLiteral("FileFactory"),
                    QStringLiteral("<p>Starting in <span class=\"countdown\">%2</span></p>\n"
                                   "<p id=\"downloadLink\"><a href=\"%1\">Click here to begin "
                                   "your download</a></p>")
                        .arg(directUrl, countdown));
}

QString FakeFileFactory::farPage(const QString &body)
{
    return QStringLiteral("<!--") + QString(33000, u'-') + QStringLiteral("-->") + body;
}
