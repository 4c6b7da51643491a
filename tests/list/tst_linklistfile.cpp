#include "datatable.h"
#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/linklistfile.h"
#include "listrows.h"

#include <QtTest>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

namespace {
// A file's content, the messages its load shows and the rows loaded, as
// "site|link".
using Damaged = Table<QByteArray, QString, QString>;

// The message of a damaged file, as load() gives it: Critical (1), Ok (0).
const QString kDamaged =
    QStringLiteral("1 0 LinkList.lq is corrupted, Last saved list will not be loaded|");

QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// One row as the file holds it, without local file, size or folder.
QByteArray record(QByteArray id, QByteArray link, QByteArray status = "Waiting")
{
    return id + "\r\n" + link + "\r\n?\r\n" + status + "\r\n?\r\n\r\n";
}

// 4,000 rows of one site, the links tagged so two lists differ in every row.
void fill(DownloadList &list, char tag)
{
    list.open();
    for (int i = 0; i < 4000; ++i)
        list.addLinkToList(QStringLiteral("rapidshare.com/files/%1/%2.zip").arg(i).arg(tag), 1,
                           nullptr);
}

// The child of the crash test: saves the two lists in turn until killed.
[[noreturn]] void saveForever(const QString &path)
{
    DownloadList lists[2];
    fill(lists[0], 'a');
    fill(lists[1], 'b');
    std::fputs("saving\n", stdout);
    std::fflush(stdout);
    for (unsigned turn = 0;; ++turn)
        LinkListFile::saveLinkList(lists[turn % 2], path);
}
} // namespace

class TestLinkListFile : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    const QString m_path = m_dir.filePath("LinkList.lq");
    DownloadList m_list;

    // Opens the list afresh and loads the file into it; gives each message
    // shown as "icon buttons text".
    QString load()
    {
        m_list.open();
        FakePrompts prompts;
        LinkListFile::loadLinkList(m_list, m_path, &prompts);
        QString told;
        for (const FakePrompts::Message &m : prompts.messages)
            told += QString("%1 %2 %3|").arg(int(m.icon)).arg(int(m.buttons)).arg(m.text);
        return told;
    }

private slots:
    void init() { m_list.open(); }

    void roundTrip()
    {
        m_list.addLinkToList("hotfile.com/dl/1/b.rar", 7, nullptr);
        m_list.addLinkToList("rapidshare.com/files/1/a.zip", 1, nullptr);
        m_list.addLinkToList("rapidshare.com/files/2/ä ö.zip", 1, nullptr);
        RowCursor rows = m_list.getSiteRecords(1);
        rows.setField(Field::LocalFile, "a.zip");
        rows.setField(Field::Status, "Stopped(45%)");
        rows.setField(Field::FileSize, "1.5 MB");
        rows.setField(Field::LocalFilePath, "/home/u/Sharing Downloads/RapidShare");

        QVERIFY(LinkListFile::saveLinkList(m_list, m_path));
        // Sites in number order, six CR LF lines a row, UTF-8 text.
        const QByteArray saved = readAll(m_path);
        QCOMPARE(saved, "1\r\nrapidshare.com/files/1/a.zip\r\na.zip\r\nStopped(45%)\r\n1.5 MB\r\n"
                        "/home/u/Sharing Downloads/RapidShare\r\n" +
                            record("1", "rapidshare.com/files/2/ä ö.zip") +
                            record("7", "hotfile.com/dl/1/b.rar"));

        // A save cut short, here by the file size limit, leaves the old list
        // whole and no half-written file behind. The longer list still fits
        // the write buffer: only the final flush fails.
        m_list.addLinkToList("hotfile.com/dl/2/" + QString(100, 'c'), 7, nullptr);
        rlimit unlimited{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
        const rlimit small{rlim_t(saved.size() + 50), unlimited.rlim_max};
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool ok = LinkListFile::saveLinkList(m_list, m_path);
        setrlimit(RLIMIT_FSIZE, &unlimited);
        std::signal(SIGXFSZ, handler);
        QVERIFY(!ok);
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files), QStringList{"LinkList.lq"});
        QCOMPARE(readAll(m_path), saved);

        // Every stored field comes back: the list loaded and saved again (over
        // a read-only file, which the new one replaces) gives the same file.
        QFile::setPermissions(m_path, QFile::ReadOwner);
        QCOMPARE(load(), QString());
        QVERIFY(LinkListFile::saveLinkList(m_list, m_path));
        QCOMPARE(readAll(m_path), saved);
        QVERIFY(QFile::permissions(m_path) & QFile::WriteOwner);

        // An empty list removes the file, read-only or not, and the next
        // start says nothing.
        QFile::setPermissions(m_path, QFile::ReadOwner);
        m_list.open();
        QVERIFY(LinkListFile::saveLinkList(m_list, m_path) && !QFile::exists(m_path));
        QVERIFY(LinkListFile::saveLinkList(m_list, m_path) && !QFile::exists(m_path));
        QCOMPARE(load(), QString());
    }

    void damagedFiles_data()
    {
        const Damaged row;
        const QByteArray good = record("1", "r/1"), s50(50, 's'), s51(51, 's');
        // Five CR LF lines are too few to look at, however many lone LFs they hold.
        row("5 lines, lone LF does not cut", "1\r\nr/1\r\n?\r\nWaiting\r\n?\n\r\n", "", "");
        row("7 lines", good + "2\r\n", kDamaged, "");
        row("zero length", "", kDamaged, "");
        row("ItemID not a number", good + record("x", "h/1"), kDamaged, "1|r/1");
        // ItemID is a 32-bit whole number, halves to even.
        row("ItemID halves to even", record("6.5", "h/1") + record(" 7.5 ", "h/2"), "",
            "6|h/1 8|h/2");
        row("ItemID beyond 32 bits", good + record("4294967297", "h/1"), kDamaged, "1|r/1");
        row("Status of 51", good + record("7", "h/1", s51) + record("7", "h/2"), kDamaged, "1|r/1");
        // A row of no site is dropped, but its texts must still fit.
        row("Status of 50, other site", good + record("9", "x/1", s50) + record("7", "h/1", s50),
            "", "1|r/1 7|h/1");
        row("other site, Status of 51", good + record("9", "x/1", s51), kDamaged, "1|r/1");
    }
    void damagedFiles()
    {
        const auto [content, told, kept] = Damaged::fetch();
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        QCOMPARE(load(), told);
        QCOMPARE(rowsOf(m_list).join(' '), kept);
        // The file itself is left as it was.
        QCOMPARE(readAll(m_path), content);
    }

    // A process killed at any moment of a save leaves the old list or the new.
    void killedDuringSave()
    {
        DownloadList lists[2];
        fill(lists[0], 'a');
        fill(lists[1], 'b');
        QVERIFY(LinkListFile::saveLinkList(lists[0], m_path));
        const QByteArray whole[2] = {
            readAll(m_path), (LinkListFile::saveLinkList(lists[1], m_path), readAll(m_path))};
        QVERIFY(whole[0] != whole[1] && whole[0].count('\n') == 24000);
        for (int run = 0; run < 50; ++run) {
            QProcess child;
            child.start(QCoreApplication::applicationFilePath(), {"--save-forever", m_path});
            QVERIFY(child.waitForStarted());
            QVERIFY(child.waitForReadyRead(10000));
            QTest::qWait(QRandomGenerator::global()->bounded(40));
            ::kill(pid_t(child.processId()), SIGKILL);
            QVERIFY(child.waitForFinished());
            const QByteArray left = readAll(m_path);
            QVERIFY2(left == whole[0] || left == whole[1], qPrintable(QString::number(run)));
        }
    }
};

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--save-forever") == 0)
        saveForever(QString::fromLocal8Bit(argv[2]));
    TestLinkListFile test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_linklistfile.moc"
