#include "app/captureserver.h"

#include "app/appcore.h"
#include "system/apppaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QLocalSocket>
#include <QPointer>
#include <QtEndian>

namespace {
constexpr char kHandled = 'K';
}

CaptureServer::CaptureServer(AppCore *core, QObject *parent) : QObject(parent), m_core(core)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &CaptureServer::onNewConnection);
}

CaptureServer::~CaptureServer() = default;

bool CaptureServer::listen()
{
    const QString name =
        QDir(AppPaths::runtimeFolder())
            .filePath(
                QStringLiteral("tessalwick-capture-%1").arg(QCoreApplication::applicationPid()));
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
    QByteArray message(4, '\0');
    qToBigEndian<quint32>(quint32(text.size()), message.data());
    message += text;
    socket.write(message);
    if (!socket.waitForBytesWritten(timeoutMs) && socket.bytesToWrite() > 0)
        return false;
    // The receiver answers once its change handling has run.
    bool handled = false;
    while (!handled && socket.waitForReadyRead(timeoutMs))
        handled = socket.readAll().contains(kHandled);
    socket.disconnectFromServer();
    return handled;
}

void CaptureServer::onNewConnection()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
            m_pending.remove(socket);
            socket->deleteLater();
        });
    }
}

void CaptureServer::onReadyRead(QLocalSocket *socket)
{
    // The change handling may pump events (a start of all downloads does),
    // so nothing here holds a reference into m_pending across it.
    QPointer<QLocalSocket> guard(socket);
    QByteArray buffer = m_pending.take(socket) + socket->readAll();
    while (buffer.size() >= 4) {
        const quint32 length = qFromBigEndian<quint32>(buffer.constData());
        if (quint32(buffer.size() - 4) < length)
            break;
        const QByteArray text = buffer.mid(4, length);
        buffer.remove(0, 4 + length);
        m_core->setCaptureText(QString::fromUtf8(text));
        if (!guard)
            return;
        socket->write(&kHandled, 1);
        socket->flush();
    }
    if (!buffer.isEmpty())
        m_pending.insert(socket, buffer);
}
