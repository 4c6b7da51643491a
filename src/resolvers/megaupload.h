#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <optional>

class QTcpSocket;

// MegaUpload tries two ways for one link. The socket way asks the site's
// mgr_dl.php by a hand-made request on a socket of its own, and may get the
// file's address at once. Otherwise the page way fetches the link's page,
// shows the site's captcha to the user, posts the answer and reads the
// download page with its countdown.
class MegaUploadRecipe : public QObject, public SiteRecipe
{
    Q_OBJECT
public:
    MegaUploadRecipe();
    ~MegaUploadRecipe() override;

    // The way goes by the site's stage: below 1 the socket, else the page.
    void resolve(RecipeSite &site) override;
    // The site's stop closes the socket.
    void closeConnections() override;

    // The socket way's request path for a link, "/mgr_dl.php?d=..."; nothing
    // for a link without "d=".
    static std::optional<QString> requestPath(const QString &link);
    // The seven lines the socket sends, each ended by CR LF, and the empty line.
    static QByteArray request(const QString &path, const QString &host);

    // What the socket's first chunk says.
    struct SocketAnswer
    {
        enum class Kind {
            PageWay,    // on to the page way, posting to `target`
            File,       // the file itself is at `target`
            NoSlash,    // a redirect whose target has no "/": nothing happens
            Connection, // anything else: a connection failure
        };
        Kind kind = Kind::Connection;
        QString target;
    };
    // Throws where a redirect's Location line has no end.
    static SocketAnswer readSocketAnswer(const QString &text, const QString &requestPath);

    // What the link's page says: the file is gone; or the captcha picture's
    // address and the two hidden values of the form (each null where its
    // markers are missing).
    struct CaptchaPage
    {
        bool gone = false;
        QString pictureUrl;
        QString captchaCode;
        QString megavar;
    };
    static CaptchaPage readCaptchaPage(const QString &page);
    // The form body, nothing escaped.
    static QByteArray postBody(const QString &captchaCode, const QString &megavar,
                               const QString &captcha);
    // What the download page says, for files going to `folder`. A run-time
    // failure gives "Error".
    static Reading readDownloadPage(const QString &page, const QString &folder);

    QString captchaString() const { return m_captcha; }

private:
    void socketWay(RecipeSite &site);
    void pageWay(RecipeSite &site);
    void parseMegaUploadPage(RecipeSite &site, const QString &page);
    void onConnected();
    void onReadyRead();
    void onError();

    QTcpSocket *m_socket = nullptr;   // ws_MegaUpload
    std::optional<RecipeSite> m_site; // the site the socket's events write to
    QString m_path;                   // the request path, then the address the page way posts to
    QString m_captcha;                // what the user last read from a captcha
};
