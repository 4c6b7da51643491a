#pragma once

#include "system/logicaltimer.h"

#include <QByteArray>
#include <QFile>
#include <QObject>
#include <QString>

class Prompts;
class RawSocket;

// Fetches one file over plain HTTP on its own TCP socket and reports by
// signals, in this order of numbering: fileBegin, progress, complete,
// stopped, error. The owner sets url, localFilePath and fileSize, calls
// startDownload and afterwards only listens.
class DownloadAsynch : public QObject
{
    Q_OBJECT
public:
    // Socket states as the handlers see them; no other value is told apart.
    enum SocketState { Closed = 0, Connecting = 6, Connected = 7, PeerClosed = 8, Failed = 9 };

    explicit DownloadAsynch(Prompts *prompts = nullptr, QObject *parent = nullptr);
    ~DownloadAsynch() override;

    void setUrl(const QString &url);
    void setLocalFilePath(const QString &path);
    float fileSize() const;
    void setFileSize(float size);

    void startDownload();
    void stopDownload();

    // One arrival of `bytesTotal` bytes with the socket in `state`. The chunk
    // is taken only in state 7 (connected); a close by the peer arrives as
    // zero bytes in state 8. The socket feeds this; tests may call it directly.
    void handleData(QByteArrayView chunk, qint64 bytesTotal, int state);
    // The handlers of the speed timer (every second) and of the silence timer
    // (a minute after the last chunk); public so a test can drive them.
    void speedTick();
    void silenceTick();
    int socketState() const { return m_wsState; }

    // "host[:port]" -> host name and TCP port; port 80 when none is written.
    // False for a port that is not a number from 1 to 65535.
    static bool splitHostPort(const QString &host, QString *name, quint16 *port);

signals:
    void fileBegin(float iFileSize);
    void progress(double iValue, int iBytesPerSecond, float iDownloadedBytes, float iRemainBytes,
                  float iRemainTimeInSeconds);
    void complete();
    void stopped();
    void error(const QString &sDesc);

private:
    bool wsConnect(const QString &host, QString *failure);
    void wsClose();
    void onConnected();
    void onReceived(const char *data, qsizetype size);
    void onPeerClosed();
    void onSocketFailed(const QString &description);
    bool openFile();
    void closeFile();
    void finishDownload();
    bool takeChunk(QByteArrayView data, qint64 bytesTotal, int state, QString *failure);

    Prompts *m_prompts = nullptr;
    QString m_url;
    QString m_localFilePath;
    float m_fileSize = 0;
    QString m_sHost;
    QString m_sPath;
    // Byte counters are single precision: above 16,777,216 bytes they lose
    // their low bits, and sizes, percent and time left all come from them.
    float m_fDownloaded = 0;
    float m_fPrevDownloaded = 0;
    qint32 m_iBytesPerSecond = 0;
    bool m_bFinished = false;
    bool m_bFirstPacket = false;

    RawSocket *m_ws = nullptr;
    int m_wsState = Closed;
    QFile m_file;
    LogicalTimer m_tmrSpeed;
    LogicalTimer m_tmrWiat;
};
