#include "intake/browsercapture.h"

#include "app/appcore.h"
#include "list/sitetable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace BrowserCapture {

const QString kHostName = QStringLiteral("net.tessalwick.send");
const QString kFirefoxExtensionId = QStringLiteral("capture@tessalwick.net");
// Follows from the "key" in browser/manifest.json: the first 32 hex digits of
// the key's SHA-256, each written as a letter from 'a' to 'p'.
const QString kChromeExtensionId = QStringLiteral("fjpbfnodinlmblddleoojhidgknhgggc");

QByteArray extensionTable()
{
    QJsonArray sites;
    const SiteHosts &hosts = SiteHosts::instance();
    for (const Sites::Site &site : Sites::all()) {
        QString host = hosts.host(site.number).toLower();
        if (host.startsWith(u"www."))
            host.remove(0, 4);
        if (!site.recognition.recognised || host.isEmpty())
            continue;
        QJsonArray excluded;
        for (QStringView fragment : site.recognition.excluded) {
            if (!fragment.isEmpty())
                excluded.append(fragment.toString());
        }
        sites.append(QJsonObject{{"number", site.number},
                                 {"name", QString::fromLatin1(site.name)},
                                 {"literal", host + u'/'},
                                 {"excluded", excluded},
                                 {"required", site.recognition.required.toString()}});
    }
    const QJsonObject table{
        {"hostName", kHostName}, {"prefix", AppCore::capturePrefix}, {"sites", sites}};
    return "// Written from the program's site table when it is built; not to be edited.\n"
           "globalThis.TESSALWICK = " +
           QJsonDocument(table).toJson(QJsonDocument::Indented).trimmed() + ";\n";
}

QByteArray NativeHost::take(QByteArrayView bytes)
{
    QByteArray answers;
    if (m_broken)
        return answers;
    m_reader.append(bytes);
    QByteArray message;
    for (;;) {
        const auto state = m_reader.next(&message);
        if (state == HandOver::Reader::State::NeedMore)
            break;
        if (state == HandOver::Reader::State::TooLong) {
            m_broken = true;
            answers += answer(QStringLiteral("message too long"));
            break;
        }
        const QJsonValue text = QJsonDocument::fromJson(message).object().value(u"text");
        answers += answer(text.isString() ? m_send(text.toString())
                                          : QStringLiteral("not a message with a text"));
    }
    return answers;
}

QByteArray NativeHost::answer(const QString &error)
{
    QJsonObject reply{{"taken", error.isEmpty()}};
    if (!error.isEmpty())
        reply.insert(u"error", error);
    return HandOver::frame(QJsonDocument(reply).toJson(QJsonDocument::Compact),
                           QSysInfo::ByteOrder);
}

} // namespace BrowserCapture
