#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "listrows.h"

#include <QtTest>

class TestDownloadList : public QObject
{
    Q_OBJECT
private slots:
    // Which links an opened list takes, and what a row's fields take.
    void linksAndFields()
    {
        DownloadList list;
        list.open();
        FakePrompts prompts;
        // A site without rows: the duplicate walk is skipped, the row is added.
        QVERIFY(list.addLinkToList("http://RapidShare.com/files/1/A.zip", 1, &prompts));
        QVERIFY(!list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &prompts));
        // The same link under another site is no duplicate.
        QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip", 3, &prompts));

        // A write that fails leaves the field as it was: a text too long for
        // its field, no number for a number field. A number is trimmed and
        // rounded. (The list file's tests write a Status of 51 characters and
        // a long LinkURL.)
        RowCursor rows = list.getSiteRecords(1);
        rows.setField(Field::IsDownloading, 1);
        const QString x255(255, 'x');
        using Write = std::pair<Field, QString>;
        QStringList seen;
        for (const Write &w : {Write{Field::LocalFilePath, x255 + 'x'},
                               {Field::LocalFilePath, x255},
                               {Field::CheckBox, " 2.5 "},
                               {Field::IsDownloading, "yes"}}) {
            const bool written = ignoreFailure([&] { rows.setField(w.first, w.second); });
            seen << (written ? "set " : "kept ") + rows.field(w.first);
        }
        QCOMPARE(seen, (QStringList{"kept ", "set " + x255, "set 3", "kept 1"}));

        // A finished row still blocks the same link. ActiveTotal is fixed when
        // the row is made and never follows the queues.
        rows.setField(Field::Status, "Complete");
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
        // A number outside 1..8 names no site: the link is refused with an
        // information balloon for three seconds.
        for (int site : {0, 9}) {
            QVERIFY_THROWS_EXCEPTION(RuntimeFailure, list.getSiteRecords(site));
            QVERIFY(!list.addLinkToList("rapidshare.com/files/1/a.zip", site, &prompts));
        }
        QCOMPARE(prompts.told(),
                 QStringList(2, "balloon 1 3000 TessalwickDownloadManager: Can not Add link: "
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

        // Walking on still follows list order, up to the end, where nothing
        // can be read and no step taken.
        QStringList seen;
        for (; !cursor.eof(); cursor.moveNext())
            seen << link(cursor);
        QCOMPARE(seen, QStringList({"2", "4", "9"}));
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.field(Field::Status));
        QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.moveNext());

        RowCursor old = list.getSiteRecords(7);
        list.open();
        list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
        QCOMPARE(old.recordCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDownloadList)
#include "tst_downloadlist.moc"
