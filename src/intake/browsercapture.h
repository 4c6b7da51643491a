#pragma once

#include "app/handover.h"

#include <QByteArray>
#include <QString>

#include <functional>

// What the browser extension, its native messaging host (tessalwick-send
// --native-messaging) and the program agree on.
namespace BrowserCapture {

// The host's name as the browsers know it, and the extension's ids: Firefox's
// from the extension's manifest, the Chromium family's from the manifest's key.
extern const QString kHostName;           // "net.tessalwick.send"
extern const QString kFirefoxExtensionId; // "capture@tessalwick.net"
extern const QString kChromeExtensionId;
// The longest message the host takes from a browser; a link list is far shorter.
constexpr quint32 kMaxMessage = 1024 * 1024;

// The extension's copy of the capture prefix, the host's name and the
// recognition table, as a script that sets globalThis.TESSALWICK. The build
// writes it from the site table, so the extension and the program recognise
// the same links.
QByteArray extensionTable();

// The native messaging host's side of the conversation. A browser message is
// a 4-byte length in the machine's byte order and that much JSON,
// {"text": "..."}; each text is handed over as one capture message, and the
// answer, framed the same way, is {"taken": true} or {"taken": false,
// "error": "..."}.
class NativeHost
{
public:
    // Hands a text over; gives the empty text once the instance took it,
    // otherwise why not.
    using Send = std::function<QString(const QString &text)>;
    explicit NativeHost(Send send) : m_send(std::move(send)) {}

    // Takes bytes from the browser and gives the answers to write back.
    QByteArray take(QByteArrayView bytes);
    // A message announced more than kMaxMessage bytes: its end can't be
    // found, so nothing after it can be read.
    bool broken() const { return m_broken; }
    // Input may end here: no message has been cut off.
    bool betweenMessages() const { return !m_broken && m_reader.buffered() == 0; }

    static QByteArray answer(const QString &error);

private:
    Send m_send;
    HandOver::Reader m_reader{QSysInfo::ByteOrder, kMaxMessage};
    bool m_broken = false;
};

} // namespace BrowserCapture
