#include "fakerapidshare.h"

QByteArray FakeRapidShare::firstPath(const QString &id, const QString &name)
{
    return QStringLiteral("/files/%1/%2.html").arg(id, name).toLatin1();
}

QByteArray FakeRapidShare::postPath(const QString &id, const QString &name)
{
    return QStringLiteral("/post/%1/%2").arg(id, name).toLatin1();
}

QByteArray FakeRapidShare::filePath(const QString &id, const QString &name)
{
    return QStringLiteral("/file/%1/%2").arg(id, name).toLatin1();
}

QString FakeRapidShare::addFile(const QString &id, const QString &name, const QByteArray &content,
                                int waitSeconds, const QString &sizeKb)
{
    const QByteArray cookie = "enc=" + id.toLatin1();
    page(firstPath(id, name), QString::fromUtf8(filePage(url(postPath(id, name)), name)), cookie);
    cookieRoute(
        postPath(id, name), cookie,
        html(QString::fromUtf8(downloadPage(url(filePath(id, name)), waitSeconds, sizeKb, name))),
        html(QString::fromUtf8(noFormPage())));
    file(filePath(id, name), content);
    return url(firstPath(id, name));
}

QByteArray FakeRapidShare::filePage(const QString &formAction, const QString &name)
{
    return QStringLiteral("<html><head><title>RapidShare: 1-CLICK Web hosting - %1</title></head>\n"
                          "<body><div class=\"klappbox\">\n"
                          "<h1>FILE DOWNLOAD</h1>\n"
                          "<p class=\"downloadlink\">%1 <font>| 123 KB</font></p>\n"
                          "<form id=\"ff\" action=\"%2\" method=\"post\">\n"
                          "<input type=\"submit\" name=\"dl.start\" value=\"Free\" />\n"
                          "</form></div></body></html>\n")
        .arg(name, formAction)
        .toUtf8();
}

QByteArray FakeRapidShare::downloadPage(const QString &directUrl, int waitSeconds,
                                        const QString &sizeKb, const QString &name)
{
    return QStringLiteral("<html><body><div class=\"klappbox\">\n"
                          "<p class=\"downloadlink\">%1 <font style=\"color:#8E908F;\">|%2 "
                          "KB</font></p>\n"
                          "<script type=\"text/javascript\">var c=%3; function fc() { if (c>0) "
                          "{ c=c-1; setTimeout(\"fc()\", 1000); } }</script>\n"
                          "<form name=\"dlf\" action=\"%4\" method=\"post\">\n"
                          "<input type=\"submit\" name=\"mirror\" value=\"Download\" />\n"
                          "</form></div></body></html>\n")
        .arg(name, sizeKb)
        .arg(waitSeconds)
        .arg(directUrl)
        .toUtf8();
}

QByteArray FakeRapidShare::goneFirstPage()
{
    return "<html><body><div class=\"klappbox\">\n"
           "<p>The file could not be found.  Please check the download link.</p>\n"
           "</div></body></html>\n";
}

QByteArray FakeRapidShare::noFormPage()
{
    return "<html><body><h1>RapidShare</h1><p>Maintenance. Please come back later.</p>"
           "</body></html>\n";
}

QByteArray FakeRapidShare::goneErrorPage()
{
    return "<html><body><h1>Error</h1>\n"
           "<div class=\"klappbox\"><p>The file could not be found. It was deleted.</p></div>\n"
           "</body></html>\n";
}

QByteArray FakeRapidShare::minutesErrorPage(const QString &minutesText)
{
    return QStringLiteral("<html><body><h1>Error</h1>\n"
                          "<div class=\"klappbox\"><p>You have reached the download limit for "
                          "free-users. Please try again in about %1minutes.</p></div>\n"
                          "</body></html>\n")
        .arg(minutesText)
        .toUtf8();
}
