#include "fakedepositfiles.h"

QString FakeDepositFiles::addFile(const QString &id, const QString &name, const QByteArray &content,
                                  int waitSeconds, const QString &language)
{
    const QByteArray filePath = "/file/" + (id + '/' + name).toLatin1();
    const auto download = html(downloadPage(url(filePath), name, waitSeconds));
    const auto gateway = html("<form method=\"post\"><input type=\"hidden\" "
                              "name=\"gateway_result\" value=\"1\"></form>");
    server().setRoute(pagePath(id), [download, gateway](const TestServer::Request &request) {
        return request.method == "POST" && request.body == "gateway_result=1" ? download : gateway;
    });
    file(filePath, content);
    return url("/" + language + "/files/" + id);
}

QString FakeDepositFiles::downloadPage(const QString &directUrl, const QString &name,
                                       int waitSeconds)
{
    return QStringLiteral("File name: <b title=\"%1\">%1</b>\n<p>Ready in less than a minute.</p>"
                          "<div id=\"download_url\"><form action=\"%2\" method=\"get\"></form>"
                          "</div>\n<script>var c=%3;</script>Please wait <span "
                          "id=\"download_waiter_remain\">%3</span> seconds")
        .arg(name, directUrl)
        .arg(waitSeconds);
}
