#include "fakedepositfiles.h"

QString FakeDepositFiles::addFile(const QString &id, const QString &name, const QByteArray &content,
                                  int waitSeconds, const QString &language)
{
    const QByteArray filePath = QStringLiteral("/file/%1/%2").arg(id, name).toLatin1();
    const auto download = html(downloadPage(url(filePath), name, waitSeconds));
    const auto gateway = html(gatewayPage);
    server().setRoute(pagePath(id), [download, gateway](const TestServer::Request &request) {
        return request.method == "POST" && request.body == "gateway_result=1" ? download : gateway;
    });
    file(filePath, content);
    return url(QStringLiteral("/%1/files/%2").arg(language, id));
}

QString FakeDepositFiles::downloadPage(const QString &directUrl, const QString &name,
                                       int waitSeconds)
{
    return htmlPage(
        "DepositFiles",
        QStringLiteral("<div class=\"info\">File name: <b title=\"%1\">%1</b></div>\n"
                       "<p>Free users: the link opens in less than a minute.</p>\n"
                       "<div id=\"download_url\" style=\"display:none\">\n"
                       "<form action=\"%2\" method=\"get\">"
                       "<input type=\"submit\" value=\"Download the file\"></form></div>\n"
                       "<script>var c=%3; function tick() { c--; }</script>\n"
                       "Please wait <span id=\"download_waiter_remain\">%3</span> seconds")
            .arg(name, directUrl)
            .arg(waitSeconds));
}
