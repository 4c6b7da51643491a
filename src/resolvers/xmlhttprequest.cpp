#include "resolvers/xmlhttprequest.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QUrl>

XmlHttpRequest::XmlHttpRequest(QObject *parent) : QObject(parent) {}

XmlHttpRequest::~XmlHttpRequest()
{
    dropReply();
}

QNetworkAccessManager &XmlHttpRequest::network()
{
    static QPointer<QNetworkAccessManager> manager;
    if (!manager) {
        // Owned by the application object, so it goes before the network
        // layer is torn down at the end of the process.
        manager = new QNetworkAccessManager(QCoreApplication::instance());
        manager->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    }
    return *manager;
}

QString XmlHttpRequest::normalizeUrl(const QString &url)
{
    QString result = url.trimmed();
    // Backslashes count as slashes up to the query, as a browser reads them.
    qsizetype end = result.indexOf(QLatin1Char('?'));
    const qsizetype hash = result.indexOf(QLatin1Char('#'));
    if (end < 0 || (hash >= 0 && hash < end))
        end = hash;
    if (end < 0)
        end = result.size();
    for (qsizetype i = 0; i < end; ++i) {
        if (result.at(i) == QLatin1Char('\\'))
            result[i] = QLatin1Char('/');
    }
    static const QRegularExpression scheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]*://"));
    if (!scheme.match(result).hasMatch())
        result.prepend(QStringLiteral("http://"));
    return result;
}

void XmlHttpRequest::dropReply()
{
    if (!m_reply)
        return;
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    reply->disconnect(this);
    if (reply->isRunning())
        reply->abort();
    reply->deleteLater();
}

void XmlHttpRequest::open(const QString &method, const QString &url)
{
    dropReply();
    m_method = method.toUpper();
    m_url = normalizeUrl(url);
    m_headers.clear();
    m_status = 0;
    m_body.clear();
    m_contentType.clear();
    m_readyState = Opened;
}

void XmlHttpRequest::setRequestHeader(const QString &name, const QString &value)
{
    m_headers.append({name.toLatin1(), value.toLatin1()});
}

void XmlHttpRequest::send()
{
    send(QByteArray());
}

void XmlHttpRequest::send(const QByteArray &body)
{
    dropReply();
    QNetworkRequest request{QUrl(m_url, QUrl::TolerantMode)};
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    for (const auto &header : std::as_const(m_headers))
        request.setRawHeader(header.first, header.second);

    QNetworkAccessManager &manager = network();
    QNetworkReply *reply = nullptr;
    if (m_method == QLatin1String("GET"))
        reply = manager.get(request);
    else if (m_method == QLatin1String("POST"))
        reply = manager.post(request, body);
    else
        reply = manager.sendCustomRequest(request, m_method.toLatin1(), body);
    m_reply = reply;
    m_status = 0;
    m_body.clear();
    connect(reply, &QNetworkReply::metaDataChanged, this, &XmlHttpRequest::onMetaData);
    connect(reply, &QNetworkReply::readyRead, this, &XmlHttpRequest::onReadyRead);
    connect(reply, &QNetworkReply::finished, this, &XmlHttpRequest::onFinished);
}

void XmlHttpRequest::sendForm(const QString &url, const QByteArray &body)
{
    open(QStringLiteral("POST"), url);
    setRequestHeader(QStringLiteral("Content-type"),
                     QStringLiteral("application/x-www-form-urlencoded"));
    setRequestHeader(QStringLiteral("Content-length"), QString::number(body.size()));
    setRequestHeader(QStringLiteral("Connection"), QStringLiteral("close"));
    send(body);
}

void XmlHttpRequest::abort()
{
    dropReply();
    m_readyState = Unsent;
    m_status = 0;
}

void XmlHttpRequest::onMetaData()
{
    if (!m_reply)
        return;
    m_status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    m_contentType = m_reply->rawHeader("Content-Type");
    if (m_readyState < HeadersReceived)
        m_readyState = HeadersReceived;
}

void XmlHttpRequest::onReadyRead()
{
    if (!m_reply)
        return;
    m_body += m_reply->readAll();
    m_readyState = Loading;
}

void XmlHttpRequest::onFinished()
{
    if (!m_reply)
        return;
    QNetworkReply *reply = m_reply;
    m_body += reply->readAll();
    m_status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    m_contentType = reply->rawHeader("Content-Type");
    m_reply = nullptr;
    reply->disconnect(this);
    reply->deleteLater();
    m_readyState = Done;
}

QString XmlHttpRequest::responseText() const
{
    // The charset of the answer's Content-Type where it names one this
    // platform knows, UTF-8 otherwise.
    static const QRegularExpression charset(QStringLiteral("charset\\s*=\\s*\"?([^\";\\s]+)"),
                                            QRegularExpression::CaseInsensitiveOption);
    const auto match = charset.match(QString::fromLatin1(m_contentType));
    if (match.hasMatch()) {
        const QByteArray name = match.captured(1).toLatin1();
        QStringDecoder decoder(name.constData());
        if (decoder.isValid())
            return decoder.decode(m_body);
    }
    QStringDecoder utf8(QStringDecoder::Utf8);
    return utf8.decode(m_body);
}
