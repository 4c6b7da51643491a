#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

// A TCP client on a socket of the system's own, driven by the event loop of
// the one thread. Unlike a Qt socket it tells the peer's orderly close (the
// end of the data) apart from a reset or any other failure, and it reads
// into one buffer of its own that is used again for every chunk.
class RawSocket : public QObject
{
    Q_OBJECT
public:
    explicit RawSocket(qsizetype chunkSize, QObject *parent = nullptr);
    ~RawSocket() override;

    // Looks the host up (an address by number needs no lookup) and connects.
    void connectToHost(const QString &host, quint16 port);
    // Queues bytes for sending; false once the socket has failed or closed.
    bool write(const QByteArray &bytes);
    // Closes at once; no signal follows.
    void close();
    bool isOpen() const { return m_fd >= 0 || m_lookupId >= 0; }

    // For programs that feed the transfer by hand (the fuzz targets): every
    // connection then fails at once, and nothing reaches the network.
    static void setOffline(bool offline);

signals:
    void connected();
    // A chunk as it came; the data are valid only during the call.
    void received(const char *data, qsizetype size);
    // The peer closed its end in order: the data are complete.
    void peerClosed();
    // The connection failed or was reset; nothing follows.
    void failed(const QString &description);

private:
    void connectTo(const QByteArray &address, quint16 port, int family);
    void onReadable();
    void onWritable();
    void fail(int error);
    void fail(const QString &description);

    int m_fd = -1;
    int m_lookupId = -1;
    bool m_connecting = false;
    QByteArray m_pending; // bytes queued and not yet sent
    QByteArray m_chunk;   // the one read buffer
    std::unique_ptr<QSocketNotifier> m_readNotifier;
    std::unique_ptr<QSocketNotifier> m_writeNotifier;
};
