#pragma once

#include <QByteArray>
#include <QHash>
#include <QLocalServer>
#include <QObject>
#include <QString>

#include "app/handover.h"

class AppCore;
class QLocalSocket;

// The way in for other processes: a per-user local socket whose name is
// published as AppTextHandle. A message (see HandOver) is put into the
// hand-over box, its change handling runs, and the receiver answers one byte,
// after which the sender closes. A message longer than HandOver::kMaxLength
// ends its connection; the program goes on.
class CaptureServer : public QObject
{
    Q_OBJECT
public:
    explicit CaptureServer(AppCore *core, QObject *parent = nullptr);
    ~CaptureServer() override;

    // Listens on a fresh name in the user's runtime folder, and removes the
    // names there that earlier instances left when they died.
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
    QHash<QLocalSocket *, HandOver::Reader> m_readers;
};
