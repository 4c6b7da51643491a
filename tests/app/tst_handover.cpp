#include "app/appcore.h"
#include "app/captureserver.h"
#include "app/handover.h"
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
private slots:
    void reader_data()
    {
        // A byte stream cut into pieces ("|" between them; "L<n>" stands for
        // a length prefix of n), and what the reader makes of it.
        QTest::addColumn<QString>("pieces");
        QTest::addColumn<QString>("read"); // texts; "!" for a message too long
        auto row = [](const char *tag, const char *pieces, const char *read) {
            QTest::newRow(tag) << QString(pieces) << QString(read);
        };
        row("cut in the text", "L3a|bc", "abc");
        row("two in one piece", "L1aL2bc", "a,bc");
        row("empty text", "L0L1x", ",x");
        row("longest allowed is waited for", "L16777216x", "");
        row("taken out pieces make room", "L1a|L1b|L1c", "a,b,c");
        row("longer is refused at once", "L16777217", "!");
    }

    void reader()
    {
        QFETCH(QString, pieces);
        QFETCH(QString, read);
        HandOver::Reader reader;
        QStringList texts;
        for (const QString &piece : pieces.split(u'|')) {
            QByteArray bytes;
            qsizetype at = 0;
            static const QRegularExpression prefix("L(\\d+)");
            for (const auto &m : prefix.globalMatch(piece)) {
                QByteArray length(4, '\0');
                qToBigEndian<quint32>(m.captured(1).toUInt(), length.data());
                bytes += piece.mid(at, m.capturedStart() - at).toUtf8() + length;
                at = m.capturedEnd();
            }
            reader.append(bytes + piece.mid(at).toUtf8());
            QByteArray text;
            for (auto state = reader.next(&text); state != HandOver::Reader::State::NeedMore;
                 state = reader.next(&text)) {
                if (state == HandOver::Reader::State::TooLong) {
                    texts << "!";
                    break;
                }
                texts << QString::fromUtf8(text);
            }
        }
        QCOMPARE(texts.join(u','), read);
        QCOMPARE(HandOver::frame("abc"), QByteArray("\0\0\0\3abc", 7));
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
