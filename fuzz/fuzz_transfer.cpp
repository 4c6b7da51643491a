// The transfer's handling of what arrives: the input is cut into chunks (a
// 0xff byte ends a chunk) and fed as they would come over a connection that
// ends with the peer's close. Nothing reaches the network.
#include "fuzzcommon.h"
#include "transfer/downloadasynch.h"
#include "transfer/rawsocket.h"

#include <QTemporaryDir>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::application();
    RawSocket::setOffline(true);
    static QTemporaryDir dir;
    DownloadAsynch transfer;
    transfer.setUrl(QStringLiteral("http://127.0.0.1:9/file.bin"));
    transfer.setLocalFilePath(dir.filePath(QStringLiteral("file.bin")));
    transfer.setFileSize(float(size % 4096));
    const QByteArray input = Fuzz::bytes(data, size);
    for (const QByteArray &chunk : input.split('\xff'))
        transfer.handleData(chunk, chunk.size(), DownloadAsynch::Connected);
    transfer.speedTick();
    transfer.handleData(QByteArrayView(), 0, DownloadAsynch::PeerClosed);
    transfer.silenceTick();
    transfer.stopDownload();
    QCoreApplication::processEvents();
    return 0;
}
