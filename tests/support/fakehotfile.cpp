#include "fakehotfile.h"

QString FakeHotFile::addFile(const QString &id, const QString &name, const QByteArray &content,
                             const QString &waitMs, int notReady)
{
    const QByteArray filePath = "/get/" + (id + '/' + name).toLatin1();
    const auto form = html(formPage(id, waitMs));
    const auto onward = TestServer::Answer::redirect(307, url(postPath(id)));
    server().setRoute(linkPath(id), [form, onward](const TestServer::Request &request) {
        return request.method == "POST" ? onward : form;
    });
    server().setAnswers(postPath(id), QList<TestServer::Answer>(notReady, html(disabledPage))
                                          << html(downloadPage(url(filePath))));
    file(filePath, content);
    return url(linkPath(id));
}

QString FakeHotFile::formPage(const QString &id, const QString &waitMs)
{
    return "<table><form action=\"\" method=post name=f>\r\n"
           "<input type=hidden name=action value=capt>\r\n<input type=hidden name=tm value=" +
           id +
           ">\r\n<input type=hidden name=tmhash value=a1b2c3d4>\r\n"
           "<input type=hidden name=wait value=30>\r\n<tr><td><script>var d=new Date();var "
           "timerend=d.getTime()+" +
           waitMs + ";</script></td></tr></form></table>";
}
