#pragma once

#include <QByteArray>
#include <QHash>
#include <QLocalServer>
#include <QObject>
#include <QString>

class AppCore;
class QLocalSocket;

// The way in for other processes: a per-user local socket whose name is
// published as AppTextHandle. A message is a 4-byte big-endian length and the
// text's bytes; the receiver puts the text into the hand-over box, runs its
// change handling and answers one byte, after which the sender closes.
class CaptureServer : public QObject
{
    Q_OBJECT
public:
    explicit CaptureServer(AppCore *core, QObject *parent = nullptr);
    ~CaptureServer() override;

    // Listens on a fresh name in the user's runtime folder.
    bool listen();
    QString name() const;

    // A live instance answers a connection to this name.
    static bool isLive(const QString &name);
    // Delivers the text and waits until the receiver has handled it.
    static bool sendText(const QString &name, const QByteArray &text, int timeoutMs = 30000);

private:
    void onNewConnection();
    void onReadyRead(QLocalSocket *socket);

    AppCore *m_core;
    QLocalServer m_server;
    QHash<QLocalSocket *, QByteArray> m_pending;
};
