#include "transfer/downloadasynch.h"

#include "list/formats.h"
#include "list/sitetable.h"
#include "list/statustext.h"
#include "prompts/prompts.h"
#include "system/filefolder.h"
#include "transfer/bytesearch.h"
#include "transfer/rawsocket.h"

#include <cmath>
#include <fcntl.h>
#include <limits>

namespace {

const QString kEmptyAddress =
    QStringLiteral("URL is empty or LocalFile is net set, Download can not be started");
// What the handlers report when a text operation gets an impossible position
// or count: an address without a "/", a header without its empty line.
const QString kInvalidArgument = QStringLiteral("Invalid procedure call or argument");
const QString kBadFile = QStringLiteral("Bad file name or number");
constexpr qint64 kReadChunk = 512 * 1024;

// YouTube's addresses hold the word, or the site's host as the site table has it.
bool isYoutubeAddress(const QString &url)
{
    const QString host = SiteHosts::instance().host(Sites::Youtube);
    return url.contains(QStringLiteral("youtube"), Qt::CaseInsensitive) ||
           (!host.isEmpty() && url.contains(host + u'/', Qt::CaseInsensitive));
}

// Rounds to two decimals, ties to the even digit.
double roundTwoDecimals(double value)
{
    return std::nearbyint(value * 100.0) / 100.0;
}

// A single-precision count converted to a 32-bit integer, rounding half to
// even; values beyond the range stay at its ends.
qint32 toInt32(float value)
{
    const double rounded = std::nearbyint(static_cast<double>(value));
    if (rounded >= 2147483647.0)
        return std::numeric_limits<qint32>::max();
    if (rounded <= -2147483648.0)
        return std::numeric_limits<qint32>::min();
    return static_cast<qint32>(rounded);
}

// A number as a person would write it: blanks around it, a sign, decimals
// and an exponent are allowed.
bool parseNumber(const QByteArray &text, double *value)
{
    const QByteArray trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return false;
    for (char c : trimmed) {
        if (!((c >= '0' && c <= '9') || c == '.' || c == '+' || c == '-' || c == 'e' || c == 'E'))
            return false;
    }
    bool ok = false;
    *value = trimmed.toDouble(&ok);
    return ok && std::isfinite(*value);
}

} // namespace

DownloadAsynch::DownloadAsynch(Prompts *prompts, QObject *parent)
    : QObject(parent), m_prompts(prompts)
{
    m_tmrSpeed.setInterval(1000);
    m_tmrWiat.setInterval(60000);
    connect(&m_tmrSpeed, &LogicalTimer::timeout, this, &DownloadAsynch::speedTick);
    connect(&m_tmrWiat, &LogicalTimer::timeout, this, &DownloadAsynch::silenceTick);
}

DownloadAsynch::~DownloadAsynch()
{
    if (m_ws) {
        m_ws->disconnect(this);
        m_ws->close();
    }
    closeFile();
}

void DownloadAsynch::setUrl(const QString &url)
{
    m_url = url;
}

void DownloadAsynch::setLocalFilePath(const QString &path)
{
    m_localFilePath = path;
}

float DownloadAsynch::fileSize() const
{
    return m_fileSize;
}

void DownloadAsynch::setFileSize(float size)
{
    m_fileSize = size;
}

bool DownloadAsynch::splitHostPort(const QString &host, QString *name, quint16 *port)
{
    *name = host;
    *port = 80;
    const int colon = host.lastIndexOf(QLatin1Char(':'));
    // "[::1]:8080" and "name:8080" carry a port; a bare IPv6 address doesn't.
    if (colon < 0 ||
        (host.indexOf(QLatin1Char(':')) != colon && !host.startsWith(QLatin1Char('['))))
        return true;
    if (host.startsWith(QLatin1Char('[')) && host.lastIndexOf(QLatin1Char(']')) > colon)
        return true;
    bool ok = false;
    const uint number = host.mid(colon + 1).toUInt(&ok);
    if (!ok || number == 0 || number > 65535)
        return false;
    *name = host.left(colon);
    if (name->startsWith(QLatin1Char('[')) && name->endsWith(QLatin1Char(']')))
        *name = name->mid(1, name->size() - 2);
    *port = static_cast<quint16>(number);
    return true;
}

void DownloadAsynch::startDownload()
{
    m_fDownloaded = 0;
    m_fPrevDownloaded = 0;
    m_iBytesPerSecond = 0;
    // bFinished and the size stay as they are: the size is the owner's guess
    // until a header replaces it.

    if (m_url.isEmpty() || m_localFilePath.isEmpty()) {
        emit error(kEmptyAddress);
        return;
    }

    QString address = m_url;
    address.remove(QStringLiteral("http://"), Qt::CaseInsensitive);
    const int slash = address.indexOf(QLatin1Char('/'));
    QString failure;
    if (slash < 0) {
        failure = kInvalidArgument;
    } else {
        m_sHost = address.left(slash);
        m_sPath = address.mid(slash + 1);
        wsClose();
        wsConnect(m_sHost, &failure);
    }
    if (failure.isEmpty())
        return;

    emit error(failure);
    finishDownload();
    if (m_prompts)
        m_prompts->messageBox(failure, Prompts::Icon::None, Prompts::Buttons::Ok);
}

void DownloadAsynch::stopDownload()
{
    m_tmrSpeed.stop();
    if (!m_url.isEmpty())
        wsClose();
    emit stopped();
    closeFile();
    // A stopped transfer loses its file, but for YouTube, whose part stays.
    if (!isYoutubeAddress(m_url))
        FileFolder::deleteFile(m_localFilePath, true);
}

bool DownloadAsynch::wsConnect(const QString &host, QString *failure)
{
    wsClose();
    QString name;
    quint16 port = 80;
    if (!splitHostPort(host, &name, &port)) {
        *failure = kInvalidArgument;
        return false;
    }
    // Chunks are taken at most half a megabyte at a time, into the socket's
    // one buffer: searched and written while they are still in the
    // processor's cache.
    m_ws = new RawSocket(kReadChunk, this);
    connect(m_ws, &RawSocket::connected, this, &DownloadAsynch::onConnected);
    connect(m_ws, &RawSocket::received, this, &DownloadAsynch::onReceived);
    connect(m_ws, &RawSocket::peerClosed, this, &DownloadAsynch::onPeerClosed);
    connect(m_ws, &RawSocket::failed, this, &DownloadAsynch::onSocketFailed);
    m_wsState = Connecting;
    m_ws->connectToHost(name, port);
    return true;
}

void DownloadAsynch::wsClose()
{
    // Each connection gets a socket of its own, so a close from inside one of
    // the socket's own signals can't disturb it; the old one is let go later.
    if (m_ws) {
        m_ws->disconnect(this);
        m_ws->close();
        m_ws->deleteLater();
        m_ws = nullptr;
    }
    m_wsState = Closed;
}

void DownloadAsynch::onConnected()
{
    m_wsState = Connected;
    closeFile();
    makeFolderPath(FileFolder::parentFolderName(m_localFilePath));
    // A file with content keeps its name and the transfer takes the next free
    // one; an empty file (as after a redirect) is used again.
    m_localFilePath = uniqueLocalFileName(m_localFilePath);
    if (!openFile())
        emit error(m_file.errorString());

    const QByteArray request = "GET /" + m_sPath.toLatin1() +
                               " HTTP/1.1\r\nHost: " + m_sHost.toLatin1() +
                               "\r\nAccept: */*\r\n\r\n";
    m_tmrWiat.start();
    m_bFirstPacket = true;
    if (m_ws && !m_ws->write(request))
        emit error(kInvalidArgument);
}

// Opened without cutting it to zero (writing begins at its start), and never
// through a symbolic link: a link is a name that is taken.
bool DownloadAsynch::openFile()
{
    const QByteArray path = QFile::encodeName(m_localFilePath);
    const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0) {
        m_file.setFileName(m_localFilePath);
        // The open fails again here, which gives the system's description.
        return m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered) && false;
    }
    m_file.setFileName(m_localFilePath);
    return m_file.open(fd, QIODevice::ReadWrite | QIODevice::Unbuffered,
                       QFileDevice::AutoCloseHandle);
}

void DownloadAsynch::onReceived(const char *data, qsizetype size)
{
    handleData(QByteArrayView(data, size), size, m_wsState);
}

void DownloadAsynch::onPeerClosed()
{
    if (m_wsState != Connected)
        return;
    m_wsState = PeerClosed;
    closeFile();
    // The peer's orderly close reaches the data handler as an arrival of zero
    // bytes.
    handleData(QByteArrayView(), 0, PeerClosed);
}

void DownloadAsynch::onSocketFailed(const QString &description)
{
    // A reset or any other failure of the connection: not the end of the data.
    m_wsState = Failed;
    closeFile();
    emit error(description);
}

void DownloadAsynch::closeFile()
{
    if (m_file.isOpen())
        m_file.close();
}

void DownloadAsynch::finishDownload()
{
    if (m_bFinished)
        return;
    m_tmrSpeed.stop();
    m_bFinished = true;
    emit complete();
}

void DownloadAsynch::handleData(QByteArrayView chunk, qint64 bytesTotal, int state)
{
    // Each arrival restarts the minute of silence.
    m_tmrWiat.stop();
    m_tmrWiat.start();

    // Only a connected socket hands its data over.
    const QByteArrayView data = state == Connected ? chunk : QByteArrayView();
    QString failure;
    if (!takeChunk(data, bytesTotal, state, &failure)) {
        emit error(failure);
        m_bFirstPacket = false;
    }
}

// Every check is made on every chunk: nothing remembers that the header has
// passed. Returns false with a description when the chunk can't be handled.
bool DownloadAsynch::takeChunk(QByteArrayView data, qint64 bytesTotal, int state, QString *failure)
{
    // The three status words are looked for in one pass over the chunk.
    static const QByteArrayView statusWords[3] = {"303 see other", "302 found", "200 ok"};
    bool present[3];
    containsEachNoCase(data, statusWords, 3, present);
    bool handled = false;

    // A redirect, wherever it stands, breaks the transfer off and connects to
    // the new address; its own body is dropped.
    if (present[0] || present[1]) {
        const qsizetype a = indexOfNoCase(data, "Location:");
        const qsizetype b = a >= 0 ? data.indexOf("\r\n", a) : -1;
        if (a >= 0 && b >= 0) {
            // One blank behind the colon is assumed.
            const qsizetype count = b - a - 10;
            if (count < 0) {
                *failure = kInvalidArgument;
                return false;
            }
            QString target = QString::fromLatin1(data.sliced(a + 10, count));
            target.remove(QStringLiteral("http://www."), Qt::CaseInsensitive);
            target.remove(QStringLiteral("http://"), Qt::CaseInsensitive);
            const int slash = target.indexOf(QLatin1Char('/'));
            if (slash < 0) {
                *failure = kInvalidArgument;
                return false;
            }
            m_sHost = target.left(slash);
            m_sPath = target.mid(slash + 1);
            wsClose();
            return wsConnect(m_sHost, failure);
        }
    }

    if (!handled && present[2]) {
        handled = true;
        if (containsNoCase(data, "location:") || containsNoCase(data, "content-type:")) {
            // A header: the speed ticks begin and the body behind the empty
            // line is what remains of the chunk.
            m_tmrSpeed.start();
            m_bFinished = false;
            const qsizetype blank = data.indexOf("\r\n\r\n");
            const qsizetype headerLength = blank >= 0 ? blank : data.size();
            const qsizetype bodyLength = data.size() - headerLength - 4;
            if (bodyLength < 0) {
                *failure = kInvalidArgument;
                return false;
            }
            const QByteArrayView header = data.first(headerLength);
            data = data.last(bodyLength);

            // The size is read only from a line that ends in CR LF, so a
            // "Content-Length:" in the header's last line is not seen.
            const qsizetype a = indexOfNoCase(header, "Content-Length:");
            const qsizetype b = a >= 0 ? header.indexOf("\r\n", a) : -1;
            if (a >= 0 && b >= 0) {
                const qsizetype count = b - a - 16;
                if (count < 0) {
                    *failure = kInvalidArgument;
                    return false;
                }
                double value = 0;
                if (parseNumber(header.sliced(a + 16, count).toByteArray(), &value)) {
                    const double rounded = std::nearbyint(value);
                    if (std::fabs(rounded) >= 9.2e18) {
                        *failure = QStringLiteral("Overflow");
                        return false;
                    }
                    m_fileSize = static_cast<float>(static_cast<qint64>(rounded));
                    emit fileBegin(m_fileSize);
                }
            }
        }
    }

    if (!handled && m_bFirstPacket) {
        // The first chunk is no answer of a known kind (404, 206, ...). It is
        // still written, and the socket stays open.
        emit error(StatusText::ConnectionError);
        m_tmrSpeed.stop();
    }

    m_bFirstPacket = false;

    if (m_fDownloaded != 0 && bytesTotal == 0 && state == PeerClosed)
        finishDownload();

    if (bytesTotal != 0 && !data.isEmpty()) {
        if (!m_file.isOpen()) {
            *failure = kBadFile;
            return false;
        }
        if (m_file.write(data.data(), data.size()) != data.size()) {
            *failure = m_file.errorString();
            return false;
        }
        m_fDownloaded = static_cast<float>(static_cast<double>(m_fDownloaded) +
                                           static_cast<double>(data.size()));
    }
    return true;
}

void DownloadAsynch::speedTick()
{
    // The speed is the amount of the last second alone.
    m_iBytesPerSecond = toInt32(m_fDownloaded - m_fPrevDownloaded);
    m_fPrevDownloaded = m_fDownloaded;

    if (m_fileSize == 0) {
        if (!m_bFinished)
            emit progress(-1, m_iBytesPerSecond, m_fDownloaded, -1, -1);
    } else {
        if (m_iBytesPerSecond == 0)
            m_iBytesPerSecond = 1;
        if (!m_bFinished) {
            const float share = m_fDownloaded / m_fileSize;
            const double percent = roundTwoDecimals(static_cast<double>(share) * 100.0);
            const float remain = m_fileSize - m_fDownloaded;
            const float remainTime =
                static_cast<float>(static_cast<double>(remain) / m_iBytesPerSecond);
            emit progress(percent, m_iBytesPerSecond, m_fDownloaded, remain, remainTime);
        }
    }

    if (m_fileSize != 0 && m_fDownloaded == m_fileSize)
        finishDownload();
    if (m_wsState == Closed && !m_bFinished)
        finishDownload();
}

void DownloadAsynch::silenceTick()
{
    // Neither completion nor a stop ends this timer: it fires every minute
    // from the first connection on, and reports again each time.
    wsClose();
    if (m_fileSize == 0) {
        // No share can be computed; the transfer counts as complete.
        emit complete();
        return;
    }
    const double share = roundTwoDecimals(static_cast<double>(m_fDownloaded / m_fileSize) * 100.0);
    if (share > 96 && (m_url.contains(QStringLiteral("rapidshare"), Qt::CaseInsensitive) ||
                       isYoutubeAddress(m_url)))
        emit complete();
    else
        emit error(StatusText::ConnectionError);
}
