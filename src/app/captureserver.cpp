#include "app/captureserver.h"

#include "app/appcore.h"
#include "system/apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QLocalSocket>
#include <QPointer>
#include <QtEndian>

namespace {
const QString kNamePrefix = QStringLiteral("tessalwick-capture-");
}

CaptureServer::CaptureServer(AppCore *core, QObject *parent) : QObject(parent), m_core(core)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &CaptureServer::onNewConnection);
}

CaptureServer::~CaptureServer()
{
    // The server's connections go with it and report their end on the way:
    // nothing here is to hear of that.
    const auto sockets = m_server.findChildren<QLocalSocket *>();
    for (QLocalSocket *socket : sockets)
        socket->disconnect(this);
}

bool CaptureServer::listen()
{
    const QDir folder(AppPaths::runtimeFolder());
    const QString name =
        folder.filePath(kNamePrefix + QString::number(QCoreApplication::applicationPid()));
    // A name nobody answers on belonged to an instance that has died.
    const QStringList names = folder.entryList({kNamePrefix + u'*'}, QDir::System);
    for (const QString &entry : names) {
        const QString other = folder.filePath(entry);
        if (other != name && !isLive(other))
            QLocalServer::removeServer(other);
    }
    QLocalServer::removeServer(name);
    return m_server.listen(name);
}

QString CaptureServer::name() const
{
    return m_server.fullServerName();
}

bool CaptureServer::isLive(const QString &name)
{
    if (name.isEmpty())
        return false;
    QLocalSocket socket;
    socket.connectToServer(name);
    const bool live = socket.waitForConnected(2000);
    socket.abort();
    return live;
}

bool CaptureServer::sendText(const QString &name, const QByteArray &text, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(name);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(HandOver::frame(text));
    if (!socket.waitForBytesWritten(timeoutMs) && socket.bytesToWrite() > 0)
        return false;
    // The receiver answers once its change handling has run.
    bool handled = false;
    while (!handled && socket.waitForReadyRead(timeoutMs))
        handled = socket.readAll().contains(HandOver::kTaken);
    socket.disconnectFromServer();
    return handled;
}

void CaptureServer::onNewConnection()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
            m_readers.remove(socket);
            socket->deleteLater();
        });
    }
}

void CaptureServer::onReadyRead(QLocalSocket *socket)
{
    // The change handling may pump events (a start of all downloads does),
    // so nothing here holds a reference into m_readers across it.
    QPointer<QLocalSocket> guard(socket);
    m_readers[socket].append(socket->readAll());
    for (;;) {
        QByteArray text;
        const HandOver::Reader::State state = m_readers[socket].next(&text);
        if (state == HandOver::Reader::State::NeedMore)
            return;
        if (state == HandOver::Reader::State::TooLong) {
            m_readers.remove(socket);
            socket->abort();
            return;
        }
        m_core->setCaptureText(QString::fromUtf8(text));
        if (!guard)
            return;
        socket->write(&HandOver::kTaken, 1);
        socket->flush();
    }
}
