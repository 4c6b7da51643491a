#include "app/appcore.h"
#include "app/captureserver.h"
#include "app/handover.h"
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
        return QByteArray::fromHex(QByteArray::number(n, 16).rightJustified(8, '0'));
    }

private slots:
    // One stream in pieces: a message cut in its text, two in one piece, an
    // empty text; each piece after a message was taken out makes room first.
    // The longest length is waited for, a longer one refused at once and for
    // good.
    void reader()
    {
        HandOver::Reader reader, longest;
        QStringList texts;
        QByteArray text;
        for (const QByteArray &piece : {L(3) + "a", QByteArray("bc"), L(1) + "a" + L(2) + "bc",
                                        L(0) + L(1) + "x", L(1) + "y", L(16777217)}) {
            reader.append(piece);
            while (reader.next(&text) == HandOver::Reader::State::Message)
                texts << QString::fromUtf8(text);
        }
        QCOMPARE(texts.join(u','), "abc,a,bc,,x,y");
        QVERIFY(reader.next(&text) == HandOver::Reader::State::TooLong);
        longest.append(L(16777216) + "x");
        QVERIFY(longest.next(&text) == HandOver::Reader::State::NeedMore);
        QCOMPARE(HandOver::frame("abc"), L(3) + "abc");
    }

    void server()
    {
        Sandbox sandbox;
        AppCore core(nullptr);
        // A name an instance left when it died is removed; a live one stays.
        const QDir runtime(AppPaths::runtimeFolder());
        QLocalServer live;
        QVERIFY(live.listen(runtime.filePath("tessalwick-capture-1")));
        // A socket file nobody listens on any more, as a crash leaves it.
        const QByteArray deadPath = runtime.filePath("tessalwick-capture-2").toLocal8Bit();
        sockaddr_un address{AF_UNIX, {}};
        qstrncpy(address.sun_path, deadPath.constData(), sizeof address.sun_path);
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QCOMPARE(::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        ::close(fd);
        CaptureServer server(&core);
        QVERIFY(server.listen());
        QCOMPARE(runtime.entryList({"tessalwick-capture-*"}, QDir::System).size(), 2);
        QVERIFY(!QFile::exists(deadPath));

        // A message too long ends its connection, and the next one is taken.
        QLocalSocket greedy, sender;
        greedy.connectToServer(server.name());
        QVERIFY(greedy.waitForConnected(2000));
        greedy.write(L(16777217) + QByteArray(1000, 'x'));
        QTRY_COMPARE(greedy.state(), QLocalSocket::UnconnectedState);
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
