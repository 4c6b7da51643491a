#include "list/downloadlist.h"
#include "list/downloadlistmodel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

class TestDownloadListModel : public QObject
{
    Q_OBJECT
private slots:
    void treeShape();
    void testerThroughChanges();
    void fieldWriteIsOneCell_data();
    void fieldWriteIsOneCell();
    void persistentIndexesSurvive();
    void resetOnlyOnReopen();
    void checkBoxColumn();
    void headerTexts_data();
    void headerTexts();
};

namespace {
const int kLink = int(Field::LinkURL);
const int kStatus = int(Field::Status);

QString linkAt(const DownloadListModel &model, int site, int row)
{
    return model.index(row, kLink, model.siteIndex(site)).data().toString();
}
} // namespace

void TestDownloadListModel::treeShape()
{
    DownloadList list;
    list.open();
    DownloadListModel model(&list);
    QCOMPARE(model.rowCount(), 8);
    for (int i = 0; i < 8; ++i) {
        const QModelIndex site = model.index(i, DownloadListModel::SiteName);
        QCOMPARE(site.data().toString(), list.siteRowAt(i)->siteName);
        QCOMPARE(model.index(i, DownloadListModel::SiteId).data().toInt(), i + 1);
        QCOMPARE(model.index(i, DownloadListModel::SiteActiveTotal).data().toString(),
                 QString("0 Active, 0 Total"));
        QVERIFY(!model.parent(site).isValid());
        QCOMPARE(model.rowCount(model.index(i, 0)), 0);
    }

    list.addLinkToList("hotfile.com/dl/1/a.rar", 7, nullptr);
    list.addLinkToList("hotfile.com/dl/2/b.rar", 7, nullptr);
    list.addLinkToList("rapidshare.com/files/3/c.zip", 1, nullptr);
    const QModelIndex hotFile = model.siteIndex(7);
    QCOMPARE(hotFile.row(), 6);
    QCOMPARE(model.rowCount(hotFile), 2);
    QCOMPARE(model.rowCount(model.siteIndex(1)), 1);
    // Children live under column 0 only.
    QCOMPARE(model.rowCount(model.siteIndex(7, DownloadListModel::SiteName)), 0);
    const QModelIndex second = model.index(1, kStatus, hotFile);
    QCOMPARE(second.data().toString(), QString("Waiting"));
    QCOMPARE(model.index(1, kLink, hotFile).data().toString(), QString("hotfile.com/dl/2/b.rar"));
    QCOMPARE(model.parent(second), hotFile);
    QCOMPARE(model.rowCount(second), 0);
    QCOMPARE(model.columnCount(second), 0);
    QCOMPARE(DownloadListModel::linkRowOf(second), list.childAt(7, 1));
    QCOMPARE(model.linkIndex(list.childAt(7, 1), kStatus), second);
}

void TestDownloadListModel::testerThroughChanges()
{
    DownloadList list;
    list.open();
    DownloadListModel model(&list);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);

    for (int i = 0; i < 5; ++i) {
        list.addLinkToList(QString("rapidshare.com/files/%1/a.zip").arg(i), 1, nullptr);
        list.addLinkToList(QString("depositfiles.com/files/%1").arg(i), 6, nullptr);
    }
    list.addLinkToList("mediafire.com/?abc", 5, nullptr);
    QCOMPARE(model.rowCount(model.siteIndex(1)), 5);
    QCOMPARE(model.rowCount(model.siteIndex(6)), 5);

    RowCursor rows = list.getSiteRecords(1);
    rows.moveNext();
    rows.setField(Field::Status, "45.67");
    rows.setField(Field::CheckBox, 1);
    QVERIFY(model.setData(model.index(3, int(Field::CheckBox), model.siteIndex(6)), Qt::Checked,
                          Qt::CheckStateRole));

    // Remove first, middle and last rows.
    list.removeRow(list.childAt(1, 0));
    list.removeRow(list.childAt(6, 2));
    list.removeRow(list.childAt(6, 3));
    list.removeRow(list.childAt(5, 0));
    QCOMPARE(model.rowCount(model.siteIndex(1)), 4);
    QCOMPARE(model.rowCount(model.siteIndex(6)), 3);
    QCOMPARE(model.rowCount(model.siteIndex(5)), 0);
    QCOMPARE(linkAt(model, 1, 0), QString("rapidshare.com/files/1/a.zip"));
    QCOMPARE(model.index(0, kStatus, model.siteIndex(1)).data().toString(), QString("45.67"));

    list.open();
    QCOMPARE(model.rowCount(), 8);
    QCOMPARE(model.rowCount(model.siteIndex(1)), 0);
    list.addLinkToList("rapidshare.com/files/9/z.zip", 1, nullptr);
    QCOMPARE(linkAt(model, 1, 0), QString("rapidshare.com/files/9/z.zip"));
}

void TestDownloadListModel::fieldWriteIsOneCell_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("value");
    QTest::newRow("Status") << kStatus << "Connecting...";
    QTest::newRow("LinkURL") << kLink << "hotfile.com/dl/5/e.rar";
    QTest::newRow("CheckBox") << int(Field::CheckBox) << "1";
    QTest::newRow("hidden ErrorDesc") << int(Field::ErrorDesc) << "gone";
    QTest::newRow("IsDownloading") << int(Field::IsDownloading) << "1";
}

void TestDownloadListModel::fieldWriteIsOneCell()
{
    QFETCH(int, field);
    QFETCH(QString, value);
    DownloadList list;
    list.open();
    DownloadListModel model(&list);
    for (int i = 0; i < 3; ++i)
        list.addLinkToList(QString("hotfile.com/dl/%1/x.rar").arg(i), 7, nullptr);
    list.addLinkToList("rapidshare.com/files/1/a.zip", 1, nullptr);

    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QSignalSpy layout(&model, &QAbstractItemModel::layoutChanged);
    LinkRow *row = list.childAt(7, 1);
    list.setField(row, Field(field), value);
    QCOMPARE(changed.count(), 1);
    const QModelIndex cell = model.index(1, field, model.siteIndex(7));
    QCOMPARE(changed.at(0).at(0).toModelIndex(), cell);
    QCOMPARE(changed.at(0).at(1).toModelIndex(), cell);
    QCOMPARE(reset.count(), 0);
    QCOMPARE(layout.count(), 0);
    if (Field(field) != Field::CheckBox)
        QCOMPARE(cell.data().toString(), value);

    // Writing the value a cell already holds repaints nothing.
    list.setField(row, Field(field), value);
    QCOMPARE(changed.count(), 1);
}

void TestDownloadListModel::persistentIndexesSurvive()
{
    DownloadList list;
    list.open();
    DownloadListModel model(&list);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    for (int i = 0; i < 4; ++i)
        list.addLinkToList(QString("hotfile.com/dl/%1/x.rar").arg(i), 7, nullptr);
    list.addLinkToList("rapidshare.com/files/1/a.zip", 1, nullptr);

    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);

    const QPersistentModelIndex third(model.index(2, kLink, model.siteIndex(7)));
    const QPersistentModelIndex last(model.index(3, kStatus, model.siteIndex(7)));
    const QPersistentModelIndex other(model.index(0, kLink, model.siteIndex(1)));
    const QPersistentModelIndex hotFile(model.siteIndex(7, DownloadListModel::SiteName));

    // A new row goes at the end of its site: nothing moves.
    list.addLinkToList("hotfile.com/dl/9/new.rar", 7, nullptr);
    QCOMPARE(inserted.count(), 1);
    QCOMPARE(inserted.at(0).at(0).toModelIndex(), model.siteIndex(7));
    QCOMPARE(inserted.at(0).at(1).toInt(), 4);
    QCOMPARE(inserted.at(0).at(2).toInt(), 4);
    QCOMPARE(third.row(), 2);
    QCOMPARE(third.data().toString(), QString("hotfile.com/dl/2/x.rar"));

    // Removing a row before it moves it up and keeps it on its link.
    list.removeRow(list.childAt(7, 0));
    QCOMPARE(removed.count(), 1);
    QCOMPARE(third.row(), 1);
    QCOMPARE(third.data().toString(), QString("hotfile.com/dl/2/x.rar"));
    QCOMPARE(last.row(), 2);
    QCOMPARE(last.column(), kStatus);
    QCOMPARE(DownloadListModel::linkRowOf(last), list.childAt(7, 2));
    QCOMPARE(other.data().toString(), QString("rapidshare.com/files/1/a.zip"));
    QCOMPARE(hotFile.data().toString(), QString("HotFile"));

    // Removing a row after it leaves it where it is; removing it drops it.
    list.removeRow(list.childAt(7, 3));
    QCOMPARE(third.row(), 1);
    QCOMPARE(last.row(), 2);
    list.removeRow(list.childAt(7, 1));
    QVERIFY(!third.isValid());
    QCOMPARE(last.row(), 1);
    QCOMPARE(last.data().toString(), QString("Waiting"));
    QCOMPARE(other.row(), 0);
    QCOMPARE(reset.count(), 0);
}

void TestDownloadListModel::resetOnlyOnReopen()
{
    DownloadList list;
    list.open();
    DownloadListModel model(&list);
    QSignalSpy aboutToReset(&model, &QAbstractItemModel::modelAboutToBeReset);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
    list.setField(list.childAt(7, 0), Field::Status, "Complete");
    list.removeRow(list.childAt(7, 0));
    QCOMPARE(reset.count(), 0);
    list.addLinkToList("hotfile.com/dl/1/x.rar", 7, nullptr);
    const QPersistentModelIndex row(model.index(0, kLink, model.siteIndex(7)));
    list.open();
    QCOMPARE(aboutToReset.count(), 1);
    QCOMPARE(reset.count(), 1);
    QVERIFY(!row.isValid());
    QCOMPARE(model.rowCount(model.siteIndex(7)), 0);
}

void TestDownloadListModel::checkBoxColumn()
{
    DownloadList list;
    list.open();
    DownloadListModel model(&list);
    list.addLinkToList("rapidshare.com/files/1/a.zip", 1, nullptr);
    const QModelIndex site = model.siteIndex(1);
    const QModelIndex box = model.index(0, int(Field::CheckBox), site);
    QCOMPARE(box.data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    QVERIFY(!box.data(Qt::DisplayRole).isValid());
    QVERIFY(model.flags(box) & Qt::ItemIsUserCheckable);

    QVERIFY(model.setData(box, Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(list.childAt(1, 0)->values[int(Field::CheckBox)], QString("1"));
    QCOMPARE(box.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QVERIFY(model.setData(box, Qt::Unchecked, Qt::CheckStateRole));
    QCOMPARE(list.childAt(1, 0)->values[int(Field::CheckBox)], QString("0"));
    // A tick written by code shows too.
    list.setField(list.childAt(1, 0), Field::CheckBox, "1");
    QCOMPARE(box.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));

    // No other cell can be edited yet, nor a site row.
    for (int column = 0; column < DownloadListModel::ColumnCount; ++column) {
        const QModelIndex cell = model.index(0, column, site);
        if (column == int(Field::CheckBox))
            continue;
        QVERIFY(!(model.flags(cell) & (Qt::ItemIsUserCheckable | Qt::ItemIsEditable)));
        const QString before = list.childAt(1, 0)->values[column];
        QVERIFY(!model.setData(cell, QString("1"), Qt::EditRole));
        QVERIFY(!model.setData(cell, Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(list.childAt(1, 0)->values[column], before);
    }
    QVERIFY(!model.setData(model.siteIndex(1, DownloadListModel::SiteName), "x", Qt::EditRole));
    QCOMPARE(model.siteIndex(1, DownloadListModel::SiteName).data().toString(),
             QString("RapidShare"));
}

void TestDownloadListModel::headerTexts_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("site");
    QTest::newRow("0") << 0 << " "
                       << " ";
    QTest::newRow("1") << 1 << " "
                       << "Sharing Site";
    QTest::newRow("2") << 2 << "Download URL"
                       << "Child Downloads";
    QTest::newRow("3") << 3 << "Local File Name"
                       << "Download Status";
    QTest::newRow("4") << 4 << "Download Status"
                       << "";
    QTest::newRow("5") << 5 << "File Size"
                       << "";
    QTest::newRow("6 keeps its field name") << 6 << "Speed"
                                            << "";
    QTest::newRow("7") << 7 << "Time Left"
                       << "";
    QTest::newRow("8") << 8 << "WaitTimeInSec"
                       << "";
    QTest::newRow("9") << 9 << "DirectURL"
                       << "";
    QTest::newRow("13") << 13 << "IsDownloading"
                        << "";
}

void TestDownloadListModel::headerTexts()
{
    QFETCH(int, column);
    QFETCH(QString, link);
    QFETCH(QString, site);
    DownloadList list;
    list.open();
    DownloadListModel model(&list);
    QCOMPARE(model.headerData(column, Qt::Horizontal).toString(), link);
    QCOMPARE(DownloadListModel::linkHeaderText(column), link);
    QCOMPARE(DownloadListModel::siteHeaderText(column), site);
}

QTEST_GUILESS_MAIN(TestDownloadListModel)
#include "tst_downloadlistmodel.moc"
