#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/linklistfile.h"
#include "listrows.h"

#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

namespace {
QByteArray readAll(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeAll(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

// One row as the file holds it.
QByteArray record(const char *id, const char *link, const QByteArray &file = "?",
                  const QByteArray &status = "Waiting", const char *size = "?",
                  const char *folder = "")
{
    return QByteArray(id) + "\r\n" + link + "\r\n" + file + "\r\n" + status + "\r\n" + size +
           "\r\n" + folder + "\r\n";
}
} // namespace

class TestLinkListFile : public QObject
{
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_path;
    FakePrompts m_prompts;

    // Opens the list afresh and loads the file into it.
    void load(DownloadList &list)
    {
        list.open();
        m_prompts.clear();
        LinkListFile::loadLinkList(list, m_path, &m_prompts);
    }

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_path = m_dir->filePath("LinkList.lq");
    }

    void roundTrip()
    {
        DownloadList list;
        list.open();
        list.addLinkToList("hotfile.com/dl/1/b.rar", 7, nullptr);
        list.addLinkToList("rapidshare.com/files/1/a.zip", 1, nullptr);
        list.addLinkToList("rapidshare.com/files/2/ä ö.zip", 1, nullptr);
        RowCursor rows = list.getSiteRecords(1);
        rows.setField(Field::LocalFile, "a.zip");
        rows.setField(Field::Status, "Stopped(45%)");
        rows.setField(Field::FileSize, "1.5 MB");
        rows.setField(Field::LocalFilePath, "/home/u/Sharing Downloads/RapidShare");
        // Fields the file does not hold.
        rows.setField(Field::CheckBox, 1);
        rows.setField(Field::DirectURL, "http://rs1.example/a.zip");

        QVERIFY(LinkListFile::saveLinkList(list, m_path));
        // Sites in number order, six CR LF lines a row, UTF-8 text.
        QCOMPARE(readAll(m_path),
                 record("1", "rapidshare.com/files/1/a.zip", "a.zip", "Stopped(45%)", "1.5 MB",
                        "/home/u/Sharing Downloads/RapidShare") +
                     record("1", "rapidshare.com/files/2/ä ö.zip") +
                     record("7", "hotfile.com/dl/1/b.rar"));

        DownloadList loaded;
        load(loaded);
        QVERIFY(m_prompts.messages.isEmpty());
        QCOMPARE(rowsOf(loaded), rowsOf(list));
        // The stored fields come back as saved, the others with their defaults.
        const auto &values = loaded.childAt(1, 0)->values;
        QCOMPARE(QStringList(values.begin(), values.end()),
                 (QStringList{"1", "0", "rapidshare.com/files/1/a.zip", "a.zip", "Stopped(45%)",
                              "1.5 MB", "", "", "0", "", "/home/u/Sharing Downloads/RapidShare",
                              "0", "", "0"}));
    }

    // A read-only file is replaced by an ordinary one; an empty list removes
    // the file, read-only or not, and the next start says nothing.
    void replaceAndRemove()
    {
        writeAll(m_path, record("1", "rapidshare.com/files/old/a.zip"));
        QFile::setPermissions(m_path, QFile::ReadOwner);
        DownloadList list;
        list.open();
        list.addLinkToList("hotfile.com/dl/1/b.rar", 7, nullptr);
        QVERIFY(LinkListFile::saveLinkList(list, m_path));
        QCOMPARE(readAll(m_path), record("7", "hotfile.com/dl/1/b.rar"));
        QVERIFY(QFile::permissions(m_path) & QFile::WriteOwner);

        QFile::setPermissions(m_path, QFile::ReadOwner);
        list.open();
        QVERIFY(LinkListFile::saveLinkList(list, m_path));
        QVERIFY(!QFile::exists(m_path));
        QVERIFY(LinkListFile::saveLinkList(list, m_path));
        QVERIFY(!QFile::exists(m_path));
        load(list);
        QVERIFY(m_prompts.messages.isEmpty());
    }

    // A save cut short, here by the file size limit, leaves the old list whole
    // and no half-written file behind, whether the write itself or the final
    // flush of a small list fails.
    void failedSaveKeepsOldFile_data()
    {
        QTest::addColumn<int>("linkSize");
        QTest::newRow("write fails") << 20000;
        QTest::newRow("final flush fails") << 200;
    }
    void failedSaveKeepsOldFile()
    {
        QFETCH(int, linkSize);
        const QByteArray before = record("1", "rapidshare.com/files/old/a.zip");
        writeAll(m_path, before);
        DownloadList list;
        list.open();
        list.addLinkToList("hotfile.com/dl/1/" + QString(linkSize, 'b'), 7, nullptr);
        rlimit saved{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
        const rlimit small{rlim_t(2 * before.size()), saved.rlim_max};
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const bool ok = LinkListFile::saveLinkList(list, m_path);
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, handler);
        QVERIFY(!ok);
        QCOMPARE(readAll(m_path), before);
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList{"LinkList.lq"});
    }

    void damagedFiles_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("message");
        QTest::addColumn<QString>("kept"); // the rows loaded, as "site|link"
        auto row = [](const char *tag, const QByteArray &content, bool message, const char *kept) {
            QTest::newRow(tag) << content << message << QString(kept);
        };
        const QByteArray good = record("1", "r/1");
        const QByteArray status51(51, 's');
        row("5 lines", "1\r\na\r\nb\r\nc\r\nd\r\n", false, "");
        row("6 lines, no final end", "1\r\nr/1\r\n?\r\nWaiting\r\n?\r\n", false, "");
        row("7 lines", good + "2\r\n", true, "");
        row("zero length", "", true, "");
        row("lone LF does not cut", "1\nr/1\n?\nWaiting\n?\n\n", false, "");
        row("ItemID not a number", good + record("x", "h/1"), true, "1|r/1");
        row("Status of 51 characters",
            good + record("7", "h/1", "?", status51) + record("7", "h/2"), true, "1|r/1");
        row("Status of 50 characters", good + record("7", "h/1", "?", QByteArray(50, 's')), false,
            "1|r/1 7|h/1");
        // A row of no site is dropped, but its texts must still fit.
        row("other site",
            record("9", "x/1") + record("2", "y/1", "a.flv", "Complete", "2 MB", "/tmp"), false,
            "2|y/1");
        row("other site, Status too long", good + record("9", "x/1", "?", status51), true, "1|r/1");
    }
    void damagedFiles()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, message);
        QFETCH(QString, kept);
        writeAll(m_path, content);
        DownloadList list;
        load(list);
        QCOMPARE(m_prompts.messages.size(), message ? 1 : 0);
        if (message) {
            QCOMPARE(m_prompts.messages[0].text,
                     QString("LinkList.lq is corrupted, Last saved list will not be loaded"));
            QCOMPARE(m_prompts.messages[0].icon, Prompts::Icon::Critical);
            QCOMPARE(m_prompts.messages[0].buttons, Prompts::Buttons::Ok);
        }
        QCOMPARE(rowsOf(list).join(' '), kept);
        // The file itself is left as it was.
        QCOMPARE(readAll(m_path), content);
    }
};

QTEST_GUILESS_MAIN(TestLinkListFile)
#include "tst_linklistfile.moc"
