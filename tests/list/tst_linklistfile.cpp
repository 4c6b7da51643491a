#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/linklistfile.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
const QString kCorrupted = "LinkList.lq is corrupted, Last saved list will not be loaded";

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

QByteArray record(const char *id, const char *link, const char *file, const char *status,
                  const char *size, const char *folder)
{
    return QByteArray(id) + "\r\n" + link + "\r\n" + file + "\r\n" + status + "\r\n" + size +
           "\r\n" + folder + "\r\n";
}
} // namespace

class TestLinkListFile : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void roundTrip();
    void emptyListLeavesNoFile();
    void readOnlyFileReplaced();
    void failedSaveKeepsOldFile();
    void damagedFiles_data();
    void damagedFiles();
    void otherSiteNumbersVanish();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_path;
};

void TestLinkListFile::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_path = m_dir->filePath("LinkList.lq");
}

void TestLinkListFile::roundTrip()
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
    rows.setField(Field::CheckBox, 1);
    rows.setField(Field::DirectURL, "http://rs1.example/a.zip");
    rows.setField(Field::WaitTimeInSec, "12");
    rows.setField(Field::IsDownloading, 1);
    rows.setField(Field::Speed, "10 KB/s");

    QVERIFY(LinkListFile::saveLinkList(list, m_path));
    const QByteArray bytes = readAll(m_path);
    // Sites in number order, six CR LF lines a row, a final line end.
    QVERIFY(bytes.startsWith("1\r\nrapidshare.com/files/1/a.zip\r\na.zip\r\nStopped(45%)\r\n1.5 "
                             "MB\r\n/home/u/Sharing Downloads/RapidShare\r\n1\r\n"));
    QVERIFY(bytes.endsWith("7\r\nhotfile.com/dl/1/b.rar\r\n?\r\nWaiting\r\n?\r\n\r\n"));
    QCOMPARE(bytes.count("\r\n"), 18);
    QCOMPARE(bytes.count('\n'), 18);

    DownloadList loaded;
    loaded.open();
    FakePrompts prompts;
    LinkListFile::loadLinkList(loaded, m_path, &prompts);
    QVERIFY(prompts.messages.isEmpty());
    QCOMPARE(loaded.childCount(1), 2);
    QCOMPARE(loaded.childCount(7), 1);
    RowCursor back = loaded.getSiteRecords(1);
    QCOMPARE(back.field(Field::LinkURL), QString("rapidshare.com/files/1/a.zip"));
    QCOMPARE(back.field(Field::LocalFile), QString("a.zip"));
    QCOMPARE(back.field(Field::Status), QString("Stopped(45%)"));
    QCOMPARE(back.field(Field::FileSize), QString("1.5 MB"));
    QCOMPARE(back.field(Field::LocalFilePath), QString("/home/u/Sharing Downloads/RapidShare"));
    // Fields not stored come back with their defaults.
    QCOMPARE(back.intField(Field::CheckBox), 0);
    QCOMPARE(back.field(Field::DirectURL), QString());
    QCOMPARE(back.field(Field::WaitTimeInSec), QString("0"));
    QCOMPARE(back.intField(Field::IsDownloading), 0);
    QCOMPARE(back.field(Field::Speed), QString());
    back.moveNext();
    QCOMPARE(back.field(Field::LinkURL), QString("rapidshare.com/files/2/ä ö.zip"));
    QCOMPARE(back.field(Field::LocalFile), QString("?"));
}

void TestLinkListFile::emptyListLeavesNoFile()
{
    writeAll(m_path, record("1", "rapidshare.com/files/1/a.zip", "?", "Waiting", "?", ""));
    DownloadList list;
    list.open();
    QVERIFY(LinkListFile::saveLinkList(list, m_path));
    QVERIFY(!QFile::exists(m_path));
    // And the next start says nothing.
    FakePrompts prompts;
    LinkListFile::loadLinkList(list, m_path, &prompts);
    QVERIFY(prompts.messages.isEmpty());
}

void TestLinkListFile::readOnlyFileReplaced()
{
    writeAll(m_path, record("1", "rapidshare.com/files/old/a.zip", "?", "Waiting", "?", ""));
    QFile::setPermissions(m_path, QFile::ReadOwner);
    DownloadList list;
    list.open();
    list.addLinkToList("hotfile.com/dl/1/b.rar", 7, nullptr);
    QVERIFY(LinkListFile::saveLinkList(list, m_path));
    QCOMPARE(readAll(m_path), record("7", "hotfile.com/dl/1/b.rar", "?", "Waiting", "?", ""));
    QVERIFY(QFileInfo(m_path).isWritable());
}

void TestLinkListFile::failedSaveKeepsOldFile()
{
    const QByteArray before =
        record("1", "rapidshare.com/files/old/a.zip", "?", "Waiting", "?", "");
    writeAll(m_path, before);
    // A folder that can't be written: the save fails and the old list stays whole.
    QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::ExeOwner);
    DownloadList list;
    list.open();
    list.addLinkToList("hotfile.com/dl/1/b.rar", 7, nullptr);
    const bool saved = LinkListFile::saveLinkList(list, m_path);
    QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (saved)
        QSKIP("running with rights that ignore folder permissions");
    QCOMPARE(readAll(m_path), before);
}

void TestLinkListFile::damagedFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("message");
    QTest::addColumn<int>("rowsKept");

    const QByteArray good = record("1", "rapidshare.com/files/1/a.zip", "?", "Waiting", "?", "");
    QTest::newRow("5 lines") << QByteArray("1\r\na\r\nb\r\nc\r\nd\r\n") << false << 0;
    QTest::newRow("6 lines, no final end")
        << QByteArray("1\r\nrapidshare.com/files/1/a.zip\r\n?\r\nWaiting\r\n?\r\n") << false << 0;
    QTest::newRow("7 lines") << good + "2\r\n" << true << 0;
    QTest::newRow("zero length") << QByteArray() << true << 0;
    QTest::newRow("lone LF does not cut")
        << QByteArray("1\nrapidshare.com/files/1/a.zip\n?\nWaiting\n?\n\n") << false << 0;
    QTest::newRow("ItemID not a number")
        << good + record("x", "hotfile.com/dl/1/b.rar", "?", "Waiting", "?", "") << true << 1;
    QTest::newRow("Status of 51 characters")
        << good +
               record("7", "hotfile.com/dl/1/b.rar", "?", QByteArray(51, 's').constData(), "?",
                      "") +
               record("7", "hotfile.com/dl/2/c.rar", "?", "Waiting", "?", "")
        << true << 1;
    QTest::newRow("Status of 50 characters")
        << good +
               record("7", "hotfile.com/dl/1/b.rar", "?", QByteArray(50, 's').constData(), "?", "")
        << false << 2;
}

void TestLinkListFile::damagedFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, message);
    QFETCH(int, rowsKept);
    writeAll(m_path, content);
    DownloadList list;
    list.open();
    FakePrompts prompts;
    LinkListFile::loadLinkList(list, m_path, &prompts);
    QCOMPARE(prompts.messages.size(), message ? 1 : 0);
    if (message) {
        QCOMPARE(prompts.messages[0].text, kCorrupted);
        QCOMPARE(prompts.messages[0].icon, Prompts::Icon::Critical);
        QCOMPARE(prompts.messages[0].buttons, Prompts::Buttons::Ok);
    }
    int rows = 0;
    for (int site = 1; site <= 8; ++site)
        rows += list.childCount(site);
    QCOMPARE(rows, rowsKept);
    // The file itself is left as it was.
    QCOMPARE(readAll(m_path), content);
}

void TestLinkListFile::otherSiteNumbersVanish()
{
    writeAll(m_path,
             record("9", "example.com/x/y", "?", "Waiting", "?", "") +
                 record("2", "youtube.com/watch?v=abc", "clip.flv", "Complete", "2 MB", "/tmp"));
    DownloadList list;
    list.open();
    FakePrompts prompts;
    LinkListFile::loadLinkList(list, m_path, &prompts);
    QVERIFY(prompts.messages.isEmpty());
    QCOMPARE(list.childCount(2), 1);
    QVERIFY(LinkListFile::saveLinkList(list, m_path));
    QCOMPARE(readAll(m_path),
             record("2", "youtube.com/watch?v=abc", "clip.flv", "Complete", "2 MB", "/tmp"));
}

QTEST_GUILESS_MAIN(TestLinkListFile)
#include "tst_linklistfile.moc"
