#include "transfer/rawsocket.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QPointer>
#include <QSocketNotifier>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
bool g_offline = false;
}

void RawSocket::setOffline(bool offline)
{
    g_offline = offline;
}

RawSocket::RawSocket(qsizetype chunkSize, QObject *parent) : QObject(parent)
{
    m_chunk.resize(chunkSize);
}

RawSocket::~RawSocket()
{
    close();
}

void RawSocket::connectToHost(const QString &host, quint16 port)
{
    close();
    if (g_offline) {
        QMetaObject::invokeMethod(
            this, [this] { fail(ENETUNREACH); }, Qt::QueuedConnection);
        return;
    }
    const QHostAddress address(host);
    if (!address.isNull()) {
        connectTo(address.toString().toLatin1(), port,
                  address.protocol() == QAbstractSocket::IPv6Protocol ? AF_INET6 : AF_INET);
        return;
    }
    m_lookupId = QHostInfo::lookupHost(host, this, [this, port](const QHostInfo &info) {
        m_lookupId = -1;
        if (info.error() != QHostInfo::NoError || info.addresses().isEmpty()) {
            fail(QStringLiteral("Host not found"));
            return;
        }
        const QHostAddress found = info.addresses().first();
        connectTo(found.toString().toLatin1(), port,
                  found.protocol() == QAbstractSocket::IPv6Protocol ? AF_INET6 : AF_INET);
    });
}

void RawSocket::connectTo(const QByteArray &address, quint16 port, int family)
{
    m_fd = ::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_fd < 0) {
        fail(errno);
        return;
    }
    sockaddr_storage peer{};
    socklen_t length = 0;
    if (family == AF_INET6) {
        auto *in6 = reinterpret_cast<sockaddr_in6 *>(&peer);
        in6->sin6_family = AF_INET6;
        in6->sin6_port = htons(port);
        ::inet_pton(AF_INET6, address.constData(), &in6->sin6_addr);
        length = sizeof(sockaddr_in6);
    } else {
        auto *in4 = reinterpret_cast<sockaddr_in *>(&peer);
        in4->sin_family = AF_INET;
        in4->sin_port = htons(port);
        ::inet_pton(AF_INET, address.constData(), &in4->sin_addr);
        length = sizeof(sockaddr_in);
    }
    m_readNotifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
    m_writeNotifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Write);
    m_readNotifier->setEnabled(false);
    connect(m_readNotifier.get(), &QSocketNotifier::activated, this, &RawSocket::onReadable);
    connect(m_writeNotifier.get(), &QSocketNotifier::activated, this, &RawSocket::onWritable);
    m_connecting = true;
    if (::connect(m_fd, reinterpret_cast<sockaddr *>(&peer), length) < 0 && errno != EINPROGRESS) {
        const int error = errno;
        // Reported from the event loop, as a connection's end always is.
        QMetaObject::invokeMethod(
            this, [this, error] { fail(error); }, Qt::QueuedConnection);
        m_writeNotifier->setEnabled(false);
    }
}

bool RawSocket::write(const QByteArray &bytes)
{
    if (m_fd < 0 && m_lookupId < 0)
        return false;
    m_pending += bytes;
    if (m_writeNotifier && !m_connecting)
        m_writeNotifier->setEnabled(true);
    return true;
}

void RawSocket::close()
{
    if (m_lookupId >= 0) {
        QHostInfo::abortHostLookup(m_lookupId);
        m_lookupId = -1;
    }
    // A notifier may be the one whose signal runs now: it goes later.
    for (auto *notifier : {&m_readNotifier, &m_writeNotifier}) {
        if (QSocketNotifier *n = notifier->release()) {
            n->setEnabled(false);
            n->disconnect(this);
            n->deleteLater();
        }
    }
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
    m_pending.clear();
    m_connecting = false;
}

void RawSocket::onWritable()
{
    if (m_connecting) {
        int error = 0;
        socklen_t size = sizeof error;
        ::getsockopt(m_fd, SOL_SOCKET, SO_ERROR, &error, &size);
        if (error != 0) {
            fail(error);
            return;
        }
        m_connecting = false;
        m_readNotifier->setEnabled(true);
        m_writeNotifier->setEnabled(!m_pending.isEmpty());
        QPointer<RawSocket> alive(this);
        emit connected();
        if (!alive || m_fd < 0)
            return;
    }
    while (!m_pending.isEmpty()) {
        const ssize_t sent =
            ::send(m_fd, m_pending.constData(), size_t(m_pending.size()), MSG_NOSIGNAL);
        if (sent < 0) {
            if (errno == EAGAIN || errno == EWOULDBLOCK)
                return;
            fail(errno);
            return;
        }
        m_pending.remove(0, sent);
    }
    m_writeNotifier->setEnabled(false);
}

void RawSocket::onReadable()
{
    const ssize_t got = ::read(m_fd, m_chunk.data(), size_t(m_chunk.size()));
    if (got > 0) {
        emit received(m_chunk.constData(), qsizetype(got));
        return;
    }
    if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
        return;
    if (got == 0) {
        // Nothing more is read: the data are complete.
        close();
        emit peerClosed();
        return;
    }
    fail(errno);
}

void RawSocket::fail(int error)
{
    fail(QString::fromLocal8Bit(std::strerror(error)));
}

void RawSocket::fail(const QString &description)
{
    close();
    emit failed(description);
}
