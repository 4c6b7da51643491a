#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

// The resolvers' HTTP request: open, headers, send, then poll readyState from
// the single thread while the event queue is pumped. One object serves one
// run of a resolver and may be opened again for the recipe's next step.
//
// All request objects share one network manager and with it one cookie jar
// for the life of the process, so a site's session cookie from the first page
// goes along with the post. Redirects are followed as a browser would; the
// resolver sees only the final status and body.
class XmlHttpRequest : public QObject
{
    Q_OBJECT
public:
    enum ReadyState { Unsent = 0, Opened = 1, HeadersReceived = 2, Loading = 3, Done = 4 };

    explicit XmlHttpRequest(QObject *parent = nullptr);
    // A request still under way is cancelled with its object.
    ~XmlHttpRequest() override;

    // Sets up a request. Any request still under way on this object is
    // dropped and the headers of the last one are forgotten. Every request
    // is asynchronous.
    void open(const QString &method, const QString &url);
    void setRequestHeader(const QString &name, const QString &value);
    // Starts the request and returns at once.
    void send();
    void send(const QByteArray &body);
    // A form post: opens `url` for POST and sends `body` with the headers
    // Content-type (form-urlencoded), Content-length (the body's length) and
    // Connection (close), in that order.
    void sendForm(const QString &url, const QByteArray &body);
    void abort();

    int readyState() const { return m_readyState; }
    // The HTTP status of the answer; 0 where no answer came.
    int status() const { return m_status; }
    QString responseText() const;
    QByteArray responseBody() const { return m_body; }

    // The address actually requested for `url`: a backslash where a slash
    // belongs is taken as one, and an address without a scheme gets "http://".
    static QString normalizeUrl(const QString &url);

    // The one manager behind every request object, made on first use and kept
    // until the application object goes.
    static QNetworkAccessManager &network();

private:
    void dropReply();
    void onMetaData();
    void onReadyRead();
    void onFinished();

    QString m_method;
    QString m_url;
    QList<QPair<QByteArray, QByteArray>> m_headers;
    QPointer<QNetworkReply> m_reply;
    int m_readyState = Unsent;
    int m_status = 0;
    QByteArray m_body;
    QByteArray m_contentType;
};
