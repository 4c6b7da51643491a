// The native messaging host's framing and the extension's generated copy of
// the recognition table.
#include "app/appcore.h"
#include "datatable.h"
#include "intake/browsercapture.h"
#include "intake/linkextraction.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using BrowserCapture::NativeHost;

// The input, fed in pieces of `cut` bytes (0: whole); the texts handed over,
// the answers, and whether the input may end there.
using Inputs = Table<QByteArray, int, QStringList, QStringList, bool>;

class TestBrowserCapture : public QObject
{
    Q_OBJECT

    static QByteArray message(const QByteArray &json)
    {
        return HandOver::frame(json, QSysInfo::ByteOrder);
    }

private slots:
    void nativeHost_data()
    {
        const Inputs row;
        const QString taken = R"({"taken":true})";
        const quint32 longest = BrowserCapture::kMaxMessage + 1; // in the machine's order
        const QByteArray tooLong(reinterpret_cast<const char *>(&longest), 4);
        row("two in one piece", message(R"({"text":"a b"})") + message(R"({"text":"c"})"), 0,
            {"a b", "c"}, {taken, taken}, true);
        row("byte by byte", message(R"({"text":"é"})"), 1, {"é"}, {taken}, true);
        row("refused, no text, not JSON",
            message(R"({"text":"refuse"})") + message(R"({"link":"x"})") + message("[1"), 0,
            {"refuse"},
            {R"({"error":"no instance","taken":false})",
             R"({"error":"not a message with a text","taken":false})",
             R"({"error":"not a message with a text","taken":false})"},
            true);
        row("cut off", message(R"({"text":"abc"})").chopped(2), 3, {}, {}, false);
        row("too long, nothing after it read", tooLong + message(R"({"text":"a"})"), 0, {},
            {R"({"error":"message too long","taken":false})"}, false);
    }

    void nativeHost()
    {
        const auto [input, cut, handedOver, answered, between] = Inputs::fetch();
        QStringList sent;
        NativeHost host([&](const QString &text) {
            sent << text;
            return text == "refuse" ? QStringLiteral("no instance") : QString();
        });
        QByteArray out;
        const qsizetype step = cut ? cut : input.size();
        for (qsizetype at = 0; at < input.size(); at += step)
            out += host.take(QByteArrayView(input).sliced(at, qMin(step, input.size() - at)));
        HandOver::Reader reader(QSysInfo::ByteOrder);
        reader.append(out);
        QStringList answers;
        for (QByteArray answer; reader.next(&answer) == HandOver::Reader::State::Message;)
            answers << QString::fromUtf8(answer);
        QCOMPARE(sent, handedOver);
        QCOMPARE(answers, answered);
        QCOMPARE(host.betweenMessages(), between);
        QCOMPARE(reader.buffered(), 0);
    }

    // The extension's table recognises what the program does: each site's
    // literal with its required fragment is that site's link, and each
    // excluded fragment makes it nobody's.
    void extensionTable()
    {
        QByteArray script = BrowserCapture::extensionTable();
        const qsizetype start = script.indexOf('{');
        QVERIFY(start > 0 && script.trimmed().endsWith("};"));
        const QJsonObject table =
            QJsonDocument::fromJson(script.sliced(start, script.lastIndexOf('}') - start + 1))
                .object();
        QCOMPARE(table["prefix"].toString(), AppCore::capturePrefix);
        QCOMPARE(table["hostName"].toString(), BrowserCapture::kHostName);
        QList<int> numbers;
        for (const QJsonValue &entry : table["sites"].toArray()) {
            const QJsonObject site = entry.toObject();
            const QString link =
                "http://" + site["literal"].toString() + site["required"].toString() + "x/1";
            QCOMPARE(classifyLink(link), site["number"].toInt());
            for (const QJsonValue &fragment : site["excluded"].toArray())
                QCOMPARE(classifyLink(link + fragment.toString()), 0);
            numbers << site["number"].toInt();
        }
        QCOMPARE(numbers, (QList<int>{1, 2, 3, 4, 6, 7, 8}));

        // The Chromium id the host's manifest allows follows from the key in
        // the extension's manifest.
        QFile manifest(QFINDTESTDATA("../../browser/manifest.json"));
        QVERIFY(manifest.open(QIODevice::ReadOnly));
        const QByteArray key = QByteArray::fromBase64(
            QJsonDocument::fromJson(manifest.readAll())["key"].toString().toLatin1());
        QString id;
        for (char digit :
             QCryptographicHash::hash(key, QCryptographicHash::Sha256).toHex().left(32))
            id += QChar('a' + QByteArray(1, digit).toInt(nullptr, 16));
        QCOMPARE(id, BrowserCapture::kChromeExtensionId);
    }
};

QTEST_GUILESS_MAIN(TestBrowserCapture)
#include "tst_browsercapture.moc"
