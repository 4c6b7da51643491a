#include "app/appcore.h"
#include "app/captureserver.h"
#include "app/handover.h"
#include "datatable.h"
#include "fakeprompts.h"
#include "listrows.h"
#include "sandbox.h"
#include "system/apppaths.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QtTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

class TestHandOver : public QObject
{
    Q_OBJECT
    // A length prefix of `n`.
    static QByteArray L(quint32 n)
    {
        QByteArray bytes(4, '\0');
        qToBigEndian(n, bytes.data());
        return bytes;
    }
    // A byte stream cut into pieces, and what the reader makes of it: the
    // texts, "!" for a message too long.
    using Reads = Table<QByteArrayList, QString>;

private slots:
    void reader_data()
    {
        const Reads row;
        row("cut in the text", {L(3) + "a", "bc"}, "abc");
        row("two in one piece", {L(1) + "a" + L(2) + "bc"}, "a,bc");
        row("empty text", {L(0) + L(1) + "x"}, ",x");
        row("longest allowed is waited for", {L(16777216) + "x"}, "");
        row("taken out pieces make room", {L(1) + "a", L(1) + "b", L(1) + "c"}, "a,b,c");
        row("longer is refused at once", {L(16777217)}, "!");
    }

    void reader()
    {
        const auto [pieces, read] = Reads::fetch();
        HandOver::Reader reader;
        QStringList texts;
        for (const QByteArray &piece : pieces) {
            reader.append(piece);
            QByteArray text;
            while (reader.next(&text) == HandOver::Reader::State::Message)
                texts << QString::fromUtf8(text);
            // A message too long stays refused.
            if (reader.next(&text) == HandOver::Reader::State::TooLong)
                texts << "!";
        }
        QCOMPARE(texts.join(u','), read);
        QCOMPARE(HandOver::frame("abc"), L(3) + "abc");
    }

    void server()
    {
        Sandbox sandbox;
        FakePrompts prompts;
        AppCore core(&prompts);
        // A name an instance left when it died is removed; a live one stays.
        const QDir runtime(AppPaths::runtimeFolder());
        QLocalServer live;
        QVERIFY(live.listen(runtime.filePath("tessalwick-capture-1")));
        // A socket file nobody listens on any more, as a crash leaves it.
        const QByteArray deadPath = runtime.filePath("tessalwick-capture-2").toLocal8Bit();
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, deadPath.constData(), sizeof address.sun_path);
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QCOMPARE(::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        ::close(fd);
        CaptureServer server(&core);
        QVERIFY(server.listen());
        QCOMPARE(runtime.entryList({"tessalwick-capture-*"}, QDir::System).size(), 2);
        QVERIFY(!QFile::exists(deadPath));

        // A message too long ends its connection, and the next one is taken.
        QLocalSocket greedy;
        greedy.connectToServer(server.name());
        QVERIFY(greedy.waitForConnected(2000));
        greedy.write(QByteArray("\x01\x00\x00\x01", 4) + QByteArray(1000, 'x'));
        QTRY_COMPARE(greedy.state(), QLocalSocket::UnconnectedState);
        QLocalSocket sender;
        sender.connectToServer(server.name());
        QVERIFY(sender.waitForConnected(2000));
        sender.write(HandOver::frame("http://rapidshare.com/files/1/a.zip"));
        QTRY_VERIFY(sender.bytesAvailable() > 0);
        QCOMPARE(sender.readAll(), QByteArray(1, HandOver::kTaken));
        QCOMPARE(rowsOf(core.list()), QStringList{"1|http://rapidshare.com/files/1/a.zip"});
    }
};

QTEST_GUILESS_MAIN(TestHandOver)
#include "tst_handover.moc"
