#include "datatable.h"
#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/linklistfile.h"
#include "listrows.h"

#include <QtTest>

#include <csignal>
#include <fstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
// A file's content, the messages its load shows and the rows loaded, as
// "site|link".
using Damaged = Table<QByteArray, QString, QString>;

// The message of a damaged file: Critical (1), Ok (0).
const QString kDamaged = "message 1 0 Tessalwick: LinkList.lq is corrupted, Last saved list will "
                         "not be loaded";

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

} // namespace

class TestLinkListFile : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    const QString m_path = m_dir.filePath("LinkList.lq");
    DownloadList m_list;

    // Opens the list afresh and loads the file into it; gives the messages
    // shown.
    QString load()
    {
        m_list.open();
        FakePrompts prompts;
        LinkListFile::loadLinkList(m_list, m_path, &prompts);
        return prompts.told().join('|');
    }

private slots:
    void roundTrip()
    {
        m_list.open();
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
        std::signal(SIGXFSZ, SIG_IGN); // the write fails instead
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool ok = LinkListFile::saveLinkList(m_list, m_path);
        setrlimit(RLIMIT_FSIZE, &unlimited);
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

        // An empty list removes the file, read-only or not.
        QFile::setPermissions(m_path, QFile::ReadOwner);
        m_list.open();
        QVERIFY(LinkListFile::saveLinkList(m_list, m_path) && !QFile::exists(m_path));
        QVERIFY(LinkListFile::saveLinkList(m_list, m_path) && !QFile::exists(m_path));
    }

    void damagedFiles_data()
    {
        const Damaged row;
        const QByteArray good = record("1", "r/1"), s50(50, 's'), s51(51, 's');
        // Five CR LF lines are too few to look at, however many lone LFs they hold.
        row("5 lines, lone LF does not cut", "1\r\nr/1\r\n?\r\nWaiting\r\n?\n\r\n", "", "");
        row("7 lines", good + "2\r\n", kDamaged, "");
        row("zero length", "", kDamaged, "");
        // ItemID is a 32-bit whole number, halves to even. A row of no site is
        // dropped, but its texts must still fit.
        row("ItemID halves to even, other site",
            record("6.5", "h/1") + record("9", "x/1", s50) + record(" 7.5 ", "h/2", s50), "",
            "6|h/1 8|h/2");
        row("ItemID beyond 32 bits", good + record("4294967297", "h/1"), kDamaged, "1|r/1");
        // A row that fails half way goes; the rows before it stay.
        row("Status of 51", good + record("7", "h/1", s51) + good, kDamaged, "1|r/1");
        row("other site, Status of 51", good + record("9", "x/1", s51), kDamaged, "1|r/1");
    }
    void damagedFiles()
    {
        const auto [content, told, kept] = Damaged::fetch();
        std::ofstream(m_path.toStdString(), std::ios::binary) << content.toStdString();
        QCOMPARE(load(), told);
        QCOMPARE(rowsOf(m_list).join(' '), kept);
        // The file itself is left as it was.
        QCOMPARE(readAll(m_path), content);
    }

    // A process killed at any moment of a save leaves the old list or the new.
    void killedDuringSave()
    {
        // Two lists of 4,000 rows, different in every row.
        DownloadList lists[2];
        QList<QByteArray> whole(2);
        for (int t : {0, 1}) {
            lists[t].open();
            for (int i = 0; i < 4000; ++i)
                lists[t].addLinkToList(QString("rapidshare.com/files/%1/%2").arg(i).arg(t), 1,
                                       nullptr);
            LinkListFile::saveLinkList(lists[t], m_path);
            whole[t] = readAll(m_path);
        }
        for (int run = 0; run < 50; ++run) {
            const pid_t child = fork();
            QVERIFY(child >= 0);
            if (child == 0) // saves the two lists in turn until killed
                for (unsigned turn = 0;; ++turn)
                    LinkListFile::saveLinkList(lists[turn % 2], m_path);
            QTest::qWait(QRandomGenerator::global()->bounded(40));
            ::kill(child, SIGKILL);
            QCOMPARE(waitpid(child, nullptr, 0), child);
            QVERIFY2(whole.contains(readAll(m_path)), qPrintable(QString::number(run)));
        }
    }
};

QTEST_GUILESS_MAIN(TestLinkListFile)
#include "tst_linklistfile.moc"
