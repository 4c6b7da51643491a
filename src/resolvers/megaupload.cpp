#include "resolvers/megaupload.h"

#include "list/sitetable.h"
#include "resolvers/recipes.h"
#include "resolvers/resolverframe.h"
#include "resolvers/textpos.h"
#include "resolvers/xmlhttprequest.h"
#include "system/filefolder.h"
#include "transfer/downloadasynch.h"

#include <QFile>
#include <QNetworkProxy>
#include <QTcpSocket>

#include <utility>

using namespace TextPos;

std::unique_ptr<SiteRecipe> makeMegaUploadRecipe()
{
    return std::make_unique<MegaUploadRecipe>();
}

MegaUploadRecipe::MegaUploadRecipe() = default;

MegaUploadRecipe::~MegaUploadRecipe()
{
    closeConnections();
}

void MegaUploadRecipe::resolve(RecipeSite &site)
{
    m_site.emplace(site);
    if (site.step() < 1)
        socketWay(site);
    else
        pageWay(site);
}

void MegaUploadRecipe::closeConnections()
{
    if (!m_socket)
        return;
    QTcpSocket *socket = std::exchange(m_socket, nullptr);
    socket->disconnect(this);
    socket->abort();
    socket->deleteLater();
}

// ---- The socket way ----

std::optional<QString> MegaUploadRecipe::requestPath(const QString &link)
{
    const int p = find(link, QStringLiteral("d="));
    if (p == 0)
        return std::nullopt;
    // Up to the "&" of a further field, less the character in front of it:
    // the id loses its last character, as the site's own helper sends it.
    const int q = find(link, QStringLiteral("&"), p);
    const QString id = q != 0 ? span(link, p, q - p - 1) : spanToEnd(link, p);
    return QStringLiteral("/mgr_dl.php?") + id;
}

QByteArray MegaUploadRecipe::request(const QString &path, const QString &host)
{
    return "GET " + path.toLatin1() +
           " HTTP/1.1\r\n"
           "Accept: text/plain,text/html,*/*;q=0.3\r\n"
           "Accept-Encoding: *;q=0.1\r\n"
           "TE: trailers\r\n"
           "Host: " +
           host.toLatin1() +
           "\r\n"
           "Connection:  TE\r\n"
           "User-Agent: Mozilla/4.0 (compatible; MSIE 6.0; Windows NT 5.1)\r\n"
           "\r\n";
}

void MegaUploadRecipe::socketWay(RecipeSite &site)
{
    ResolverFrame::guardResolve(site, [&] {
        // 1.-3. The path of the request; a link without "d=" goes no further.
        const auto path = requestPath(site.link());
        if (!path) {
            site.connectionError();
            return;
        }
        m_path = *path;

        // 4. Connect; the rest happens in the socket's events, without the
        // shared time-out and without a look at the stop flag.
        QString name;
        quint16 port = 80;
        if (!DownloadAsynch::splitHostPort(SiteHosts::instance().host(Sites::MegaUpload), &name,
                                           &port))
            throw RuntimeFailure("Invalid procedure call or argument");
        // Each connection gets a socket of its own: the next link may start
        // from inside an event of the last one's socket.
        closeConnections();
        m_socket = new QTcpSocket(this);
        m_socket->setProxy(QNetworkProxy::NoProxy);
        connect(m_socket, &QTcpSocket::connected, this, &MegaUploadRecipe::onConnected);
        connect(m_socket, &QTcpSocket::readyRead, this, &MegaUploadRecipe::onReadyRead);
        connect(m_socket, &QTcpSocket::errorOccurred, this, &MegaUploadRecipe::onError);
        m_socket->connectToHost(name, port);
    });
}

void MegaUploadRecipe::onConnected()
{
    // A failure here is passed over: the request goes out as far as it can.
    m_socket->write(request(m_path, SiteHosts::instance().host(Sites::MegaUpload)));
}

MegaUploadRecipe::SocketAnswer MegaUploadRecipe::readSocketAnswer(const QString &text,
                                                                  const QString &requestPath)
{
    SocketAnswer answer;
    if (contains(text, QStringLiteral("302 Found")) && contains(text, QStringLiteral("location"))) {
        const int a = find(text, QStringLiteral("Location:"));
        const int b = find(text, QStringLiteral("\r\n"), a);
        answer.target = trimBlanks(span(text, a + 9, b - a - 9));
        // Sent back to the link's own page: the page way takes over there.
        const QString ownPage =
            QString(requestPath).remove(QStringLiteral("mgr_dl.php"), Qt::CaseInsensitive);
        if (contains(answer.target, ownPage))
            answer.kind = SocketAnswer::Kind::PageWay;
        else if (findBack(answer.target, QStringLiteral("/")) != 0)
            answer.kind = SocketAnswer::Kind::File;
        else
            answer.kind = SocketAnswer::Kind::NoSlash;
    } else if (contains(text, QStringLiteral("200 OK"))) {
        answer.kind = SocketAnswer::Kind::PageWay;
    }
    return answer;
}

void MegaUploadRecipe::onReadyRead()
{
    if (!m_site)
        return;
    // The first chunk decides; the socket is closed on it.
    const QString text = QString::fromLatin1(m_socket->readAll());
    closeConnections();
    m_site->runEvent([&](RecipeSite &site) {
        try {
            const SocketAnswer answer = readSocketAnswer(text, m_path);
            switch (answer.kind) {
            case SocketAnswer::Kind::PageWay:
                m_path = answer.target;
                site.step() += 1;
                pageWay(site);
                break;
            case SocketAnswer::Kind::File:
                // No wait and no timer on this way: the transfer starts now.
                apply(site,
                      Reading()
                          .set(Field::LocalFile, afterLast(answer.target, QStringLiteral("/")))
                          .set(Field::LocalFilePath, site.localFolder())
                          .set(Field::Status, StatusText::Connecting)
                          .set(Field::DirectURL, answer.target)
                          .transfer());
                break;
            case SocketAnswer::Kind::NoSlash:
                break;
            case SocketAnswer::Kind::Connection:
                site.connectionError();
                break;
            }
        } catch (const RuntimeFailure &) {
            write(site, Reading().fail(StatusText::Error));
        }
    });
}

void MegaUploadRecipe::onError()
{
    if (!m_site)
        return;
    closeConnections();
    m_site->runEvent([](RecipeSite &site) { site.connectionError(); });
}

// ---- The page way ----

MegaUploadRecipe::CaptchaPage MegaUploadRecipe::readCaptchaPage(const QString &page)
{
    CaptchaPage result;
    result.gone = contains(page, QStringLiteral("the link you have clicked is not available"));
    // The picture: back from "gencap.php" to its "http://", on to ".gif".
    const int g = find(page, QStringLiteral("gencap.php"));
    const int r = g ? findBack(page, QStringLiteral("http://"), g) : 0;
    const int e = r ? find(page, QStringLiteral(".gif"), r) : 0;
    if (e != 0)
        result.pictureUrl = span(page, r, e - r + 4);
    // A hidden value: behind "value=" and its quote, up to the next quote
    // looked for from the value's second character on.
    auto hidden = [&page](const QString &name) {
        const int c = find(page, name);
        const int v = c ? find(page, QStringLiteral("value="), c) : 0;
        const int w = v ? find(page, QStringLiteral("\""), v + 8) : 0;
        return w != 0 ? span(page, v + 7, w - v - 7) : QString();
    };
    result.captchaCode = hidden(QStringLiteral("captchacode"));
    result.megavar = hidden(QStringLiteral("megavar"));
    return result;
}

QByteArray MegaUploadRecipe::postBody(const QString &captchaCode, const QString &megavar,
                                      const QString &captcha)
{
    return (QStringLiteral("captchacode=") + captchaCode + QStringLiteral("&megavar=") + megavar +
            QStringLiteral("&captcha=") + captcha)
        .toUtf8();
}

void MegaUploadRecipe::pageWay(RecipeSite &site)
{
    ResolverFrame::guardResolve(site, [&] {
        // 1. The link's page.
        XmlHttpRequest request;
        m_path = site.link();
        const auto page = ResolverFrame::get(site, request, m_path);
        if (!page)
            return;

        // 2. The file is gone: the queue rests on this row.
        const CaptchaPage captchaPage = readCaptchaPage(*page);
        if (captchaPage.gone) {
            write(site, Reading().failAtRest(StatusText::NotFound));
            return;
        }
        const auto giveUp = [&site] { site.notFound(); };

        // 3.-5. The captcha picture, saved as it came.
        if (captchaPage.pictureUrl.isNull()) {
            giveUp();
            return;
        }
        request.abort();
        if (!ResolverFrame::get(site, request, captchaPage.pictureUrl,
                                ResolverFrame::OnBadStatus::Accepted))
            return;
        const QString picture = site.captchaFile();
        FileFolder::deleteFile(picture, true);
        QFile file(picture);
        if (file.open(QIODevice::WriteOnly))
            file.write(request.responseBody());
        file.close();

        // 6. The user reads it; a dialog closed without the button leaves the
        // answer before in place.
        if (const auto typed = site.askCaptcha(picture))
            m_captcha = *typed;

        // 7.-9. The form of the first page, posted with the answer.
        if (captchaPage.captchaCode.isNull() || captchaPage.megavar.isNull()) {
            giveUp();
            return;
        }
        request.abort();
        request.sendForm(m_path, postBody(captchaPage.captchaCode, captchaPage.megavar, m_captcha));

        // 10. Neither a stop nor the time-out ends this wait.
        ResolverFrame::pollToTheEnd(request);

        // 11.
        if (request.status() != 200) {
            site.connectionError();
            return;
        }
        parseMegaUploadPage(site, request.responseText());
    });
}

void MegaUploadRecipe::parseMegaUploadPage(RecipeSite &site, const QString &page)
{
    apply(site, readDownloadPage(page, site.localFolder()));
}

Reading MegaUploadRecipe::readDownloadPage(const QString &page, const QString &folder)
{
    return readGuarded([&](Reading &row) {
        // 1.-2. The address behind the download link's href and its quote.
        const int d = find(page, QStringLiteral("downloadlink\""));
        const int h = d ? find(page, QStringLiteral("href="), d) : 0;
        const int q = h ? find(page, QStringLiteral("\""), h + 7) : 0;
        if (q == 0) {
            row.fail(StatusText::Error);
            return;
        }
        const QString address = span(page, h + 6, q - h - 6);
        row.set(Field::DirectURL, address);

        // 3. The name behind the address's last "/", not cleaned; or a
        // made-up one.
        const QString name = afterLast(address, QStringLiteral("/"));
        row.set(Field::LocalFile,
                name.isNull() ? ResolverFrame::madeUpName(QStringLiteral("MegaUploadFile")) : name);

        // 4. The wait as the page's script has it, without a check; or 46.
        const int c = find(page, QStringLiteral("count="));
        const int e = c ? find(page, QStringLiteral(";"), c) : 0;
        const QString wait = e != 0 ? span(page, c + 6, e - c - 6) : QStringLiteral("46");

        // 5.-7.
        row.set(Field::LocalFilePath, folder);
        row.set(Field::Status, StatusText::Connecting);
        row.waitSeconds(wait);
    });
}
