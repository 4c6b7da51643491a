#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "listrows.h"

#include <QtTest>

namespace {
// An opened list with these links under one site.
struct Fixture
{
    explicit Fixture(int site = 7, int links = 0)
    {
        list.open();
        for (int i = 0; i < links; ++i)
            list.addLinkToList(QString("hotfile.com/dl/%1/x.rar").arg(i), site, nullptr);
    }
    DownloadList list;
    FakePrompts prompts;
};
} // namespace

class TestDownloadList : public QObject
{
    Q_OBJECT
private slots:
    void siteRows()
    {
        Fixture f(1, 1);
        QStringList sites;
        for (int i = 0; i < f.list.siteRowCount(); ++i)
            sites << QString::number(f.list.siteRowAt(i)->id) + ' ' + f.list.siteRowAt(i)->siteName;
        QCOMPARE(sites.join(", "),
                 QString("1 RapidShare, 2 Youtube, 3 MegaUpload, 4 4Shared, "
                         "5 MediaFire, 6 DepositFiles, 7 HotFile, 8 FileFactory"));
        // ActiveTotal is fixed when the row is made and never follows the queues.
        RowCursor rows = f.list.getSiteRecords(1);
        rows.setField(Field::IsDownloading, 1);
        QCOMPARE(rows.intField(Field::IsDownloading), 1);
        QCOMPARE(f.list.siteRowAt(0)->activeTotal, QString("0 Active, 0 Total"));
    }

    // What a field stores of a text; an empty "stored" means the write fails
    // and the field keeps its value.
    void fieldValues_data()
    {
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("stored");
        auto row = [](const char *tag, Field field, const QString &text, const QString &stored) {
            QTest::newRow(tag) << int(field) << text << stored;
        };
        const QString x50(50, 'x');
        row("Status 50", Field::Status, x50, x50);
        row("Status 51", Field::Status, x50 + 'x', "");
        row("FileSize 21", Field::FileSize, QString(21, 'x'), "");
        row("Speed 20", Field::Speed, QString(20, 'x'), QString(20, 'x'));
        row("TimeLeft 21", Field::TimeLeft, QString(21, 'x'), "");
        row("WaitTimeInSec 21", Field::WaitTimeInSec, QString(21, 'x'), "");
        row("LocalFilePath 255", Field::LocalFilePath, QString(255, 'x'), QString(255, 'x'));
        row("LocalFilePath 256", Field::LocalFilePath, QString(256, 'x'), "");
        row("LinkURL long", Field::LinkURL, QString(5000, 'x'), QString(5000, 'x'));
        row("DirectURL long", Field::DirectURL, QString(5000, 'x'), QString(5000, 'x'));
        row("number rounded", Field::CheckBox, " 2.5 ", "3");
        row("not a number", Field::IsDownloading, "yes", "");
    }
    void fieldValues()
    {
        QFETCH(int, field);
        QFETCH(QString, text);
        QFETCH(QString, stored);
        Fixture f(7, 1);
        RowCursor rows = f.list.getSiteRecords(7);
        const QString before = rows.field(Field(field));
        const bool written = ignoreFailure([&] { rows.setField(Field(field), text); });
        QCOMPARE(written, !stored.isEmpty());
        QCOMPARE(rows.field(Field(field)), written ? stored : before);
    }

    void addLinks()
    {
        Fixture f;
        // A site without rows: the duplicate walk is skipped, the row is added.
        QVERIFY(f.list.addLinkToList("http://RapidShare.com/files/1/A.zip", 1, &f.prompts));
        QVERIFY(!f.list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &f.prompts));
        // The same link under another site is no duplicate.
        QVERIFY(f.list.addLinkToList("http://rapidshare.com/files/1/a.zip", 3, &f.prompts));
        // A finished row still blocks the same link.
        RowCursor rows = f.list.getSiteRecords(1);
        rows.setField(Field::Status, "Complete");
        QVERIFY(!f.list.addLinkToList("HTTP://RAPIDSHARE.COM/FILES/1/A.ZIP", 1, &f.prompts));
        // No normalising: a trailing slash makes another link.
        QVERIFY(f.list.addLinkToList("http://rapidshare.com/files/1/a.zip/", 1, &f.prompts));
        // Editing a link frees the old text and blocks the new one.
        rows.moveFirst();
        rows.setField(Field::LinkURL, "rapidshare.com/files/2/b.zip");
        QVERIFY(f.list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &f.prompts));
        QVERIFY(!f.list.addLinkToList("RAPIDSHARE.COM/files/2/b.zip", 1, &f.prompts));
        // Deleting a row frees its link.
        rows.moveFirst();
        rows.deleteRow();
        QVERIFY(f.list.addLinkToList("rapidshare.com/files/2/b.zip", 1, &f.prompts));
        QVERIFY(f.prompts.balloons.isEmpty());
        // A number outside 1..8 names no site: the link is refused with a balloon.
        for (int site : {0, 9, -1}) {
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, f.list.getSiteRecords(site));
            QVERIFY(!f.list.addLinkToList("rapidshare.com/files/1/a.zip", site, &f.prompts));
        }
        QCOMPARE(f.prompts.balloons.size(), 3);
        const FakePrompts::Balloon &b = f.prompts.balloons[2];
        QCOMPARE(
            QString("%1 %2: %3").arg(b.kind).arg(b.title, b.text),
            QString("1 TessalwickDownloadManager: Can not Add link: rapidshare.com/files/1/a.zip"));
        QCOMPARE(rowsOf(f.list), (QStringList{"1|http://rapidshare.com/files/1/a.zip/",
                                              "1|http://rapidshare.com/files/1/a.zip",
                                              "1|rapidshare.com/files/2/b.zip",
                                              "3|http://rapidshare.com/files/1/a.zip"}));

        // The defaults of a new row.
        const auto &values = f.list.childAt(3, 0)->values;
        QCOMPARE(QStringList(values.begin(), values.end()),
                 (QStringList{"3", "0", "http://rapidshare.com/files/1/a.zip", "?", "Waiting", "?",
                              "", "", "0", "", "", "0", "", "0"}));
    }

    // A cursor stays on its row while others come and go; on a deleted row
    // reads and writes fail and moving goes on from where the row stood;
    // reopening the list leaves old cursors without rows.
    void cursors()
    {
        Fixture f(7, 5);
        auto link = [](const RowCursor &c) { return c.field(Field::LinkURL).section('/', 2, 2); };
        RowCursor cursor = f.list.getSiteRecords(7);
        cursor.moveNext();
        cursor.moveNext();
        RowCursor other = f.list.getSiteRecords(7);
        other.deleteRow(); // row 0
        f.list.addLinkToList("hotfile.com/dl/9/x.rar", 7, nullptr);
        QCOMPARE(link(cursor), QString("2"));
        QCOMPARE(cursor.recordCount(), 5);

        // Rows 1 2 3 4 9: a queue's cursor on 3 loses its row to another cursor.
        RowCursor queue = f.list.getSiteRecords(7);
        queue.moveToIndex(2);
        RowCursor user = queue;
        user.deleteRow();
        QVERIFY(!ignoreFailure([&] { queue.setField(Field::Status, "Complete"); }));
        QCOMPARE(f.list.childAt(7, 1)->values[int(Field::Status)], QString("Waiting"));
        QCOMPARE(f.list.childAt(7, 2)->values[int(Field::Status)], QString("Waiting"));
        queue.moveNext();
        QCOMPARE(link(queue), QString("4"));

        // Walking on still follows list order.
        QStringList seen;
        for (; !cursor.eof(); cursor.moveNext())
            seen << link(cursor);
        QCOMPARE(seen, QStringList({"2", "4", "9"}));
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.moveNext());
        cursor.moveLast();
        QCOMPARE(link(cursor), QString("9"));
        cursor.moveFirst();
        cursor.movePrevious();
        QVERIFY(cursor.bof());
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.field(Field::Status));

        RowCursor old = f.list.getSiteRecords(7);
        f.list.open();
        QCOMPARE((QList<int>{f.list.childCount(7), old.recordCount()}), (QList<int>{0, 0}));
        QVERIFY(!ignoreFailure([&] { old.setField(Field::Status, "Complete"); }));
        f.list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
        QCOMPARE(old.recordCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDownloadList)
#include "tst_downloadlist.moc"
