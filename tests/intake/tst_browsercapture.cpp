// The native messaging host's framing and the extension's generated copy of
// the recognition table.
#include "app/appcore.h"
#include "intake/browsercapture.h"
#include "intake/linkextraction.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

class TestBrowserCapture : public QObject
{
    Q_OBJECT

    // A browser message: its length in the machine's order, then the JSON.
    static QByteArray message(const QByteArray &json)
    {
        return HandOver::frame(json, QSysInfo::ByteOrder);
    }

private slots:
    // One host takes a browser's input as it comes: two messages byte by
    // byte, then three in one piece. Each message is answered in turn, a
    // refusal and a message without a text too; input may end only between
    // messages. A length over the limit ends the reading for good.
    void nativeHost()
    {
        QStringList sent;
        BrowserCapture::NativeHost host([&](const QString &text) {
            sent << text;
            return text == "refuse" ? QStringLiteral("no instance") : QString();
        });
        const QByteArray bytes = message(R"({"text":"a b"})") + message(R"({"text":"é"})");
        QByteArray out;
        int ends = 0; // the bytes after which input may end
        for (qsizetype at = 0; at < bytes.size(); ++at) {
            out += host.take(bytes.sliced(at, 1));
            ends += host.betweenMessages();
        }
        QCOMPARE(ends, 2);
        out +=
            host.take(message(R"({"text":"refuse"})") + message(R"({"link":"x"})") + message("[1"));
        QCOMPARE(sent, (QStringList{"a b", "é", "refuse"}));
        const QByteArray taken = message(R"({"taken":true})");
        const QByteArray noText = message(R"({"error":"not a message with a text","taken":false})");
        QCOMPARE(out, taken + taken + message(R"({"error":"no instance","taken":false})") + noText +
                          noText);

        const QByteArray tooLong = message(QByteArray(BrowserCapture::kMaxMessage + 1, ' '));
        QCOMPARE(host.take(tooLong + message(R"({"text":"d"})")),
                 message(R"({"error":"message too long","taken":false})"));
        QCOMPARE(host.take(message(R"({"text":"e"})")), QByteArray());
        QVERIFY(!host.betweenMessages());
        QCOMPARE(sent.size(), 3);
    }

    // The extension's table recognises what the program does: each site's
    // literal with its required fragment is that site's link, and each
    // excluded fragment makes it nobody's. (The Chromium id that the host's
    // manifest allows is the one the extension's key gives: the browser test
    // runs the extension through the host.)
    void extensionTable()
    {
        const QString script = QString::fromUtf8(BrowserCapture::extensionTable());
        const QString json = script.section("globalThis.TESSALWICK = ", 1).chopped(2); // ";\n"
        const QJsonObject table = QJsonDocument::fromJson(json.toUtf8()).object();
        QCOMPARE(table["prefix"].toString(), AppCore::capturePrefix);
        QCOMPARE(table["hostName"].toString(), BrowserCapture::kHostName);
        // Every site but MediaFire.
        QCOMPARE(table["sites"].toArray().size(), 7);
        for (const QJsonValue &entry : table["sites"].toArray()) {
            const QJsonObject site = entry.toObject();
            const QString link =
                "http://" + site["literal"].toString() + site["required"].toString() + "x/1";
            QCOMPARE(classifyLink(link), site["number"].toInt());
            for (const QJsonValue &fragment : site["excluded"].toArray())
                QCOMPARE(classifyLink(link + fragment.toString()), 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestBrowserCapture)
#include "tst_browsercapture.moc"
