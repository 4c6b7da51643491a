#include "fakefourshared.h"

QByteArray FakeFourShared::getPath(const QString &id, const QString &name)
{
    return QStringLiteral("/get/%1/%2.html").arg(id, name).toLatin1();
}

QString FakeFourShared::addFile(const QString &id, const QString &name, const QByteArray &content,
                                int waitSeconds)
{
    const QString direct = QStringLiteral("/download/%1/%2?tsid=%1").arg(id, name);
    page(getPath(id, name), downloadPage(url(direct), QString::number(waitSeconds)));
    file(direct.toLatin1(), content);
    return url(QStringLiteral("/file/%1/%2.html?ref=share").arg(id, name));
}

QString FakeFourShared::downloadPage(const QString &directUrl, const QString &wait)
{
    return htmlPage(QStringLiteral("4shared.com - free file sharing"),
                    QStringLiteral("<div>Your download starts in <b id=\"sec\">%1</b> "
                                   "seconds...</div>\n<a href='%2' class=\"dbtn\">Click here to "
                                   "download this file</a>")
                        .arg(wait, directUrl));
}
