#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/sitetable.h"

#include <QtTest>

class TestDownloadList : public QObject
{
    Q_OBJECT
private slots:
    void siteRows();
    void fieldLimits_data();
    void fieldLimits();
    void addLinkDuplicates();
    void badSiteNumbers_data();
    void badSiteNumbers();
    void cursorStaysOnItsRow();
    void cursorOnDeletedRow();
    void reopenForgetsOldCursors();
};

void TestDownloadList::siteRows()
{
    DownloadList list;
    list.open();
    QCOMPARE(list.siteRowCount(), 8);
    const QStringList expected = {"RapidShare", "Youtube",      "MegaUpload", "4Shared",
                                  "MediaFire",  "DepositFiles", "HotFile",    "FileFactory"};
    for (int i = 0; i < 8; ++i) {
        QCOMPARE(list.siteRowAt(i)->id, i + 1);
        QCOMPARE(list.siteRowAt(i)->siteName, expected[i]);
    }
    // ActiveTotal is fixed when the row is made and never follows the queues.
    FakePrompts prompts;
    QVERIFY(list.addLinkToList("rapidshare.com/files/1/a.zip", 1, &prompts));
    RowCursor rows = list.getSiteRecords(1);
    rows.setField(Field::IsDownloading, 1);
    rows.setField(Field::Status, "45.67");
    for (int i = 0; i < 8; ++i)
        QCOMPARE(list.siteRowAt(i)->activeTotal, QString("0 Active, 0 Total"));
}

void TestDownloadList::fieldLimits_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("fits");
    QTest::newRow("Status 50") << int(Field::Status) << 50 << true;
    QTest::newRow("Status 51") << int(Field::Status) << 51 << false;
    QTest::newRow("FileSize 21") << int(Field::FileSize) << 21 << false;
    QTest::newRow("Speed 20") << int(Field::Speed) << 20 << true;
    QTest::newRow("TimeLeft 21") << int(Field::TimeLeft) << 21 << false;
    QTest::newRow("WaitTimeInSec 21") << int(Field::WaitTimeInSec) << 21 << false;
    QTest::newRow("LocalFilePath 255") << int(Field::LocalFilePath) << 255 << true;
    QTest::newRow("LocalFilePath 256") << int(Field::LocalFilePath) << 256 << false;
    QTest::newRow("LinkURL long") << int(Field::LinkURL) << 5000 << true;
    QTest::newRow("DirectURL long") << int(Field::DirectURL) << 5000 << true;
}

void TestDownloadList::fieldLimits()
{
    QFETCH(int, field);
    QFETCH(int, length);
    QFETCH(bool, fits);
    DownloadList list;
    list.open();
    list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
    RowCursor rows = list.getSiteRecords(7);
    const QString before = rows.field(Field(field));
    const QString text(length, 'x');
    bool threw = false;
    try {
        rows.setField(Field(field), text);
    } catch (const RuntimeFailure &) {
        threw = true;
    }
    QCOMPARE(threw, !fits);
    QCOMPARE(rows.field(Field(field)), fits ? text : before);
}

void TestDownloadList::addLinkDuplicates()
{
    DownloadList list;
    list.open();
    FakePrompts prompts;
    // A site without rows: the duplicate walk is skipped, the row is added.
    QVERIFY(list.addLinkToList("http://RapidShare.com/files/1/A.zip", 1, &prompts));
    QVERIFY(!list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &prompts));
    QCOMPARE(list.childCount(1), 1);
    // The same link under another site is no duplicate.
    QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip", 3, &prompts));
    QCOMPARE(list.childCount(3), 1);
    // A finished row still blocks the same link.
    RowCursor rows = list.getSiteRecords(1);
    rows.setField(Field::Status, "Complete");
    QVERIFY(!list.addLinkToList("HTTP://RAPIDSHARE.COM/FILES/1/A.ZIP", 1, &prompts));
    // No normalising: a trailing slash makes another link.
    QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip/", 1, &prompts));
    // Editing a link frees the old text and blocks the new one.
    rows.moveFirst();
    rows.setField(Field::LinkURL, "rapidshare.com/files/2/b.zip");
    QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &prompts));
    QVERIFY(!list.addLinkToList("RAPIDSHARE.COM/files/2/b.zip", 1, &prompts));
    // Deleting a row frees its link.
    rows.moveFirst();
    rows.deleteRow();
    QVERIFY(list.addLinkToList("rapidshare.com/files/2/b.zip", 1, &prompts));
    QVERIFY(prompts.balloons.isEmpty());

    // The defaults of a new row.
    RowCursor hot = list.getSiteRecords(3);
    QCOMPARE(hot.field(Field::ItemID), QString("3"));
    QCOMPARE(hot.field(Field::Status), QString("Waiting"));
    QCOMPARE(hot.field(Field::LocalFile), QString("?"));
    QCOMPARE(hot.field(Field::FileSize), QString("?"));
    QCOMPARE(hot.field(Field::WaitTimeInSec), QString("0"));
    QCOMPARE(hot.intField(Field::IsDownloading), 0);
    QCOMPARE(hot.intField(Field::CheckBox), 0);
}

void TestDownloadList::badSiteNumbers_data()
{
    QTest::addColumn<int>("site");
    QTest::newRow("0") << 0;
    QTest::newRow("9") << 9;
    QTest::newRow("-1") << -1;
}

void TestDownloadList::badSiteNumbers()
{
    QFETCH(int, site);
    DownloadList list;
    list.open();
    QVERIFY_THROWS_EXCEPTION(RuntimeFailure, list.getSiteRecords(site));
    FakePrompts prompts;
    QVERIFY(!list.addLinkToList("rapidshare.com/files/1/a.zip", site, &prompts));
    QCOMPARE(prompts.balloons.size(), 1);
    QCOMPARE(prompts.balloons[0].text, QString("Can not Add link: rapidshare.com/files/1/a.zip"));
    QCOMPARE(prompts.balloons[0].title, QString("TessalwickDownloadManager"));
    QCOMPARE(prompts.balloons[0].kind, 1);
}

void TestDownloadList::cursorStaysOnItsRow()
{
    DownloadList list;
    list.open();
    for (int i = 0; i < 5; ++i)
        list.addLinkToList(QString("hotfile.com/dl/%1/x.rar").arg(i), 7, nullptr);
    RowCursor cursor = list.getSiteRecords(7);
    cursor.moveNext();
    cursor.moveNext(); // on row 2
    QCOMPARE(cursor.field(Field::LinkURL), QString("hotfile.com/dl/2/x.rar"));

    // Rows come and go around it.
    RowCursor other = list.getSiteRecords(7);
    other.deleteRow(); // row 0
    list.addLinkToList("hotfile.com/dl/9/x.rar", 7, nullptr);
    QCOMPARE(cursor.field(Field::LinkURL), QString("hotfile.com/dl/2/x.rar"));
    QCOMPARE(cursor.recordCount(), 5);

    // Walking from it still follows list order.
    QStringList seen;
    for (; !cursor.eof(); cursor.moveNext())
        seen << cursor.field(Field::LinkURL).section('/', 2, 2);
    QCOMPARE(seen, QStringList({"2", "3", "4", "9"}));
    QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.moveNext());
    cursor.moveLast();
    QCOMPARE(cursor.field(Field::LinkURL), QString("hotfile.com/dl/9/x.rar"));
    cursor.moveFirst();
    cursor.movePrevious();
    QVERIFY(cursor.bof());
    QVERIFY_THROWS_EXCEPTION(RuntimeFailure, cursor.field(Field::Status));
}

void TestDownloadList::cursorOnDeletedRow()
{
    DownloadList list;
    list.open();
    for (int i = 0; i < 3; ++i)
        list.addLinkToList(QString("hotfile.com/dl/%1/x.rar").arg(i), 7, nullptr);
    RowCursor queue = list.getSiteRecords(7);
    queue.moveNext(); // row 1, the active row of a queue
    RowCursor user = list.getSiteRecords(7);
    user.moveNext();
    user.deleteRow();
    // Writes through the queue's cursor fail instead of landing on a neighbour.
    QVERIFY(!ignoreFailure([&] { queue.setField(Field::Status, "Complete"); }));
    QCOMPARE(list.childAt(7, 0)->values[int(Field::Status)], QString("Waiting"));
    QCOMPARE(list.childAt(7, 1)->values[int(Field::Status)], QString("Waiting"));
    // Moving on goes from where the row stood.
    queue.moveNext();
    QCOMPARE(queue.field(Field::LinkURL), QString("hotfile.com/dl/2/x.rar"));
}

void TestDownloadList::reopenForgetsOldCursors()
{
    DownloadList list;
    list.open();
    list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
    RowCursor old = list.getSiteRecords(7);
    list.open();
    QCOMPARE(list.childCount(7), 0);
    QCOMPARE(old.recordCount(), 0);
    QVERIFY(!ignoreFailure([&] { old.setField(Field::Status, "Complete"); }));
    list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
    QCOMPARE(old.recordCount(), 0);
}

QTEST_GUILESS_MAIN(TestDownloadList)
#include "tst_downloadlist.moc"
