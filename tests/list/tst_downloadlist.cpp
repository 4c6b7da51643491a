#include "datatable.h"
#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "listrows.h"

#include <QtTest>

// What a field stores of a text: the field, the text, what it stores; an empty
// stored text means the write fails and the field keeps its value. (Status, 50
// characters at most, is checked by the list file's tests, which read it into
// the list, and so is a long LinkURL.)
using FieldTexts = Table<Field, QString, QString>;

class TestDownloadList : public QObject
{
    Q_OBJECT
private slots:
    void fieldValues_data()
    {
        const FieldTexts row;
        const QString x255(255, 'x');
        row("FileSize 21", Field::FileSize, QString(21, 'x'), {});
        row("LocalFilePath 255", Field::LocalFilePath, x255, x255);
        row("LocalFilePath 256", Field::LocalFilePath, x255 + 'x', {});
        row("number rounded", Field::CheckBox, " 2.5 ", "3");
        row("not a number", Field::IsDownloading, "yes", {});
    }
    void fieldValues()
    {
        const auto [field, text, stored] = FieldTexts::fetch();
        DownloadList list;
        list.open();
        list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
        RowCursor rows = list.getSiteRecords(7);
        const QString before = rows.field(field);
        const bool written = ignoreFailure([&] { rows.setField(field, text); });
        QCOMPARE(written, !stored.isEmpty());
        QCOMPARE(rows.field(field), written ? stored : before);
    }

    // Which links an opened list takes.
    void sitesAndLinks()
    {
        DownloadList list;
        list.open();
        FakePrompts prompts;
        // A site without rows: the duplicate walk is skipped, the row is added.
        QVERIFY(list.addLinkToList("http://RapidShare.com/files/1/A.zip", 1, &prompts));
        QVERIFY(!list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &prompts));
        // The same link under another site is no duplicate.
        QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip", 3, &prompts));
        // A finished row still blocks the same link. ActiveTotal is fixed when
        // the row is made and never follows the queues.
        RowCursor rows = list.getSiteRecords(1);
        rows.setField(Field::Status, "Complete");
        rows.setField(Field::IsDownloading, 1);
        QCOMPARE(rows.intField(Field::IsDownloading), 1);
        QCOMPARE(list.siteRowAt(0)->activeTotal, QString("0 Active, 0 Total"));
        QVERIFY(!list.addLinkToList("HTTP://RAPIDSHARE.COM/FILES/1/A.ZIP", 1, &prompts));
        // No normalising: a trailing slash makes another link.
        QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip/", 1, &prompts));
        // Editing a link frees the old text and blocks the new one.
        rows.setField(Field::LinkURL, "rapidshare.com/files/2/b.zip");
        QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &prompts));
        QVERIFY(!list.addLinkToList("RAPIDSHARE.COM/files/2/b.zip", 1, &prompts));
        // Deleting a row frees its link.
        rows.deleteRow();
        QVERIFY(list.addLinkToList("rapidshare.com/files/2/b.zip", 1, &prompts));
        // A number outside 1..8 names no site: the link is refused with a balloon.
        for (int site : {0, 9, -1}) {
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, list.getSiteRecords(site));
            QVERIFY(!list.addLinkToList("rapidshare.com/files/1/a.zip", site, &prompts));
        }
        // An information balloon for three seconds.
        QCOMPARE(prompts.told(),
                 QStringList(3, "balloon 1 3000 TessalwickDownloadManager: Can not Add link: "
                                "rapidshare.com/files/1/a.zip"));
        QCOMPARE(rowsOf(list), (QStringList{"1|http://rapidshare.com/files/1/a.zip/",
                                            "1|http://rapidshare.com/files/1/a.zip",
                                            "1|rapidshare.com/files/2/b.zip",
                                            "3|http://rapidshare.com/files/1/a.zip"}));

        // The defaults of a new row.
        const auto &values = list.childAt(3, 0)->values;
        QCOMPARE(QStringList(values.begin(), values.end()).join('|'),
                 "3|0|http://rapidshare.com/files/1/a.zip|?|Waiting|?|||0|||0||0");
    }

    // A cursor stays on its row while others come and go; on a deleted row
    // reads and writes fail and moving goes on from where the row stood;
    // reopening the list leaves old cursors without rows.
    void cursors()
    {
        DownloadList list;
        list.open();
        for (int i = 0; i < 5; ++i)
            list.addLinkToList(QString("hotfile.com/dl/%1/x.rar").arg(i), 7, nullptr);
        auto link = [](const RowCursor &c) { return c.field(Field::LinkURL).section('/', 2, 2); };
        RowCursor cursor = list.getSiteRecords(7);
        cursor.moveToIndex(2);
        list.getSiteRecords(7).deleteRow(); // row 0
        list.addLinkToList("hotfile.com/dl/9/x.rar", 7, nullptr);
        QCOMPARE(link(cursor) + ' ' + QString::number(cursor.recordCount()), "2 5");

        // Rows 1 2 3 4 9: a queue's cursor on 3 loses its row to another
        // cursor, and its write reaches no other row.
        RowCursor queue = list.getSiteRecords(7);
        queue.moveToIndex(2);
        RowCursor(queue).deleteRow(); // the user's
        QVERIFY(!ignoreFailure([&] { queue.setField(Field::Status, "Complete"); }));
        queue.moveNext();
        QCOMPARE(link(queue), QString("4"));

        // Walking on still follows list order.
        QStringList seen;
        for (; !cursor.eof(); cursor.moveNext())
            seen << link(cursor) + ' ' + cursor.field(Field::Status);
        QCOMPARE(seen, QStringList({"2 Waiting", "4 Waiting", "9 Waiting"}));
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.moveNext());
        cursor.moveLast();
        QCOMPARE(link(cursor), QString("9"));
        cursor.moveFirst();
        cursor.movePrevious();
        QVERIFY(cursor.bof());
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.field(Field::Status));

        RowCursor old = list.getSiteRecords(7);
        list.open();
        QVERIFY(!ignoreFailure([&] { old.setField(Field::Status, "Complete"); }));
        list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
        QCOMPARE(old.recordCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDownloadList)
#include "tst_downloadlist.moc"
