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
    void changesAndReopen();
    void fieldWriteIsOneCell_data();
    void fieldWriteIsOneCell();
    void persistentIndexesSurvive();
    void checkBoxColumn();
    void headerTexts_data();
    void headerTexts();
};

namespace {
const int kLink = int(Field::LinkURL);
const int kStatus = int(Field::Status);

// An opened, empty list and its model, watched throughout by Qt's model tester.
struct Fixture
{
    Fixture() { list.open(); }
    QModelIndex site(int number, int column = 0) const { return model.siteIndex(number, column); }
    // A cell of a link row, or with row -1 of the site row itself.
    QString text(int number, int row, int column) const
    {
        const QModelIndex cell =
            row < 0 ? site(number, column) : model.index(row, column, site(number));
        return cell.data().toString();
    }
    QList<int> counts(std::initializer_list<int> sites) const
    {
        QList<int> result;
        for (int number : sites)
            result << model.rowCount(site(number));
        return result;
    }
    // One link, or with copies the pattern's %1 filled with 0, 1, ...
    void add(int number, const QString &link, int copies = 0)
    {
        for (int i = 0; i < qMax(copies, 1); ++i)
            list.addLinkToList(copies ? link.arg(i) : link, number, nullptr);
    }

    DownloadList list;
    DownloadListModel model{&list};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};
} // namespace

void TestDownloadListModel::treeShape()
{
    Fixture f;
    QCOMPARE(f.model.rowCount(), 8);
    for (int i = 0; i < 8; ++i) {
        const QModelIndex site = f.model.index(i, DownloadListModel::SiteName);
        QCOMPARE((QStringList{site.data().toString(), f.text(i + 1, -1, DownloadListModel::SiteId),
                              f.text(i + 1, -1, DownloadListModel::SiteActiveTotal)}),
                 (QStringList{f.list.siteRowAt(i)->siteName, QString::number(i + 1),
                              "0 Active, 0 Total"}));
        QVERIFY(!f.model.parent(site).isValid());
        QCOMPARE(f.model.rowCount(f.model.index(i, 0)), 0);
    }

    f.add(7, "hotfile.com/dl/1/a.rar");
    f.add(7, "hotfile.com/dl/2/b.rar");
    f.add(1, "rapidshare.com/files/3/c.zip");
    const QModelIndex hotFile = f.site(7);
    // Children live under column 0 only.
    QCOMPARE((QList<int>{hotFile.row(), f.model.rowCount(hotFile), f.model.rowCount(f.site(1)),
                         f.model.rowCount(f.site(7, DownloadListModel::SiteName))}),
             (QList<int>{6, 2, 1, 0}));
    const QModelIndex second = f.model.index(1, kStatus, hotFile);
    QCOMPARE((QStringList{second.data().toString(), f.text(7, 1, kLink)}),
             (QStringList{"Waiting", "hotfile.com/dl/2/b.rar"}));
    QCOMPARE(f.model.parent(second), hotFile);
    QCOMPARE(f.model.rowCount(second) + f.model.columnCount(second), 0);
    QCOMPARE(DownloadListModel::linkRowOf(second), f.list.childAt(7, 1));
    QCOMPARE(f.model.linkIndex(f.list.childAt(7, 1), kStatus), second);
}

void TestDownloadListModel::changesAndReopen()
{
    Fixture f;
    QSignalSpy aboutToReset(&f.model, &QAbstractItemModel::modelAboutToBeReset);
    QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
    f.add(1, "rapidshare.com/files/%1/a.zip", 5);
    f.add(6, "depositfiles.com/files/%1", 5);
    f.add(5, "mediafire.com/?abc");

    RowCursor rows = f.list.getSiteRecords(1);
    rows.moveNext();
    rows.setField(Field::Status, "45.67");
    rows.setField(Field::CheckBox, 1);
    QVERIFY(f.model.setData(f.model.index(3, int(Field::CheckBox), f.site(6)), Qt::Checked,
                            Qt::CheckStateRole));

    // Remove first, middle and last rows.
    f.list.removeRow(f.list.childAt(1, 0));
    f.list.removeRow(f.list.childAt(6, 2));
    f.list.removeRow(f.list.childAt(6, 3));
    f.list.removeRow(f.list.childAt(5, 0));
    QCOMPARE(f.counts({1, 6, 5}), (QList<int>{4, 3, 0}));
    QCOMPARE((QStringList{f.text(1, 0, kLink), f.text(1, 0, kStatus)}),
             (QStringList{"rapidshare.com/files/1/a.zip", "45.67"}));
    QCOMPARE(reset.count(), 0);

    // Only reopening the list resets the model, and drops every link row.
    const QPersistentModelIndex row(f.model.index(0, kLink, f.site(6)));
    f.list.open();
    QCOMPARE((QList<qsizetype>{aboutToReset.count(), reset.count()}), (QList<qsizetype>{1, 1}));
    QVERIFY(!row.isValid());
    QCOMPARE(f.model.rowCount(), 8);
    QCOMPARE(f.counts({1, 6}), (QList<int>{0, 0}));
    f.add(1, "rapidshare.com/files/9/z.zip");
    QCOMPARE(f.text(1, 0, kLink), QString("rapidshare.com/files/9/z.zip"));
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
    Fixture f;
    f.add(7, "hotfile.com/dl/%1/x.rar", 3);
    f.add(1, "rapidshare.com/files/1/a.zip");

    QSignalSpy changed(&f.model, &QAbstractItemModel::dataChanged);
    QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
    QSignalSpy layout(&f.model, &QAbstractItemModel::layoutChanged);
    LinkRow *row = f.list.childAt(7, 1);
    f.list.setField(row, Field(field), value);
    const QModelIndex cell = f.model.index(1, field, f.site(7));
    QCOMPARE((QList<qsizetype>{changed.count(), reset.count(), layout.count()}),
             (QList<qsizetype>{1, 0, 0}));
    QCOMPARE(changed.at(0).mid(0, 2), (QVariantList{cell, cell}));
    if (Field(field) != Field::CheckBox)
        QCOMPARE(cell.data().toString(), value);

    // Writing the value a cell already holds repaints nothing.
    f.list.setField(row, Field(field), value);
    QCOMPARE(changed.count(), 1);
}

void TestDownloadListModel::persistentIndexesSurvive()
{
    Fixture f;
    f.add(7, "hotfile.com/dl/%1/x.rar", 4);
    f.add(1, "rapidshare.com/files/1/a.zip");

    QSignalSpy inserted(&f.model, &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(&f.model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
    const QPersistentModelIndex third(f.model.index(2, kLink, f.site(7)));
    const QPersistentModelIndex last(f.model.index(3, kStatus, f.site(7)));
    const QPersistentModelIndex other(f.model.index(0, kLink, f.site(1)));
    const QPersistentModelIndex hotFile(f.site(7, DownloadListModel::SiteName));
    // Row and text of a kept index.
    auto at = [](const QPersistentModelIndex &index) {
        return QString("%1 %2").arg(index.row()).arg(index.data().toString());
    };

    // A new row goes at the end of its site: nothing moves.
    f.add(7, "hotfile.com/dl/9/new.rar");
    QCOMPARE(QList<QVariantList>(inserted), (QList<QVariantList>{{f.site(7), 4, 4}}));
    QCOMPARE(at(third), QString("2 hotfile.com/dl/2/x.rar"));

    // Removing a row before it moves it up and keeps it on its link.
    f.list.removeRow(f.list.childAt(7, 0));
    QCOMPARE(removed.count(), 1);
    QCOMPARE((QStringList{at(third), at(last), at(other), at(hotFile)}),
             (QStringList{"1 hotfile.com/dl/2/x.rar", "2 Waiting", "0 rapidshare.com/files/1/a.zip",
                          "6 HotFile"}));
    QCOMPARE(last.column(), kStatus);
    QCOMPARE(DownloadListModel::linkRowOf(last), f.list.childAt(7, 2));

    // Removing a row after it leaves it where it is; removing it drops it.
    f.list.removeRow(f.list.childAt(7, 3));
    QCOMPARE((QList<int>{third.row(), last.row()}), (QList<int>{1, 2}));
    f.list.removeRow(f.list.childAt(7, 1));
    QVERIFY(!third.isValid());
    QCOMPARE((QStringList{at(last), at(other)}),
             (QStringList{"1 Waiting", "0 rapidshare.com/files/1/a.zip"}));
    QCOMPARE(reset.count(), 0);
}

void TestDownloadListModel::checkBoxColumn()
{
    Fixture f;
    f.add(1, "rapidshare.com/files/1/a.zip");
    LinkRow *row = f.list.childAt(1, 0);
    const QModelIndex box = f.model.index(0, int(Field::CheckBox), f.site(1));
    auto tick = [&] { return box.data(Qt::CheckStateRole).toInt(); };
    QCOMPARE(tick(), int(Qt::Unchecked));
    QVERIFY(!box.data(Qt::DisplayRole).isValid());
    QVERIFY(f.model.flags(box) & Qt::ItemIsUserCheckable);

    for (Qt::CheckState state : {Qt::Checked, Qt::Unchecked}) {
        QVERIFY(f.model.setData(box, state, Qt::CheckStateRole));
        QCOMPARE(row->values[int(Field::CheckBox)], QString(state == Qt::Checked ? "1" : "0"));
        QCOMPARE(tick(), int(state));
    }
    // A tick written by code shows too.
    f.list.setField(row, Field::CheckBox, "1");
    QCOMPARE(tick(), int(Qt::Checked));

    // No other cell can be edited yet, nor a site row.
    for (int column = 0; column < DownloadListModel::ColumnCount; ++column) {
        if (column == int(Field::CheckBox))
            continue;
        const QModelIndex cell = f.model.index(0, column, f.site(1));
        const QString before = row->values[column];
        QVERIFY(!(f.model.flags(cell) & (Qt::ItemIsUserCheckable | Qt::ItemIsEditable)));
        QVERIFY(!f.model.setData(cell, QString("1"), Qt::EditRole));
        QVERIFY(!f.model.setData(cell, Qt::Checked, Qt::CheckStateRole));
        QCOMPARE(row->values[column], before);
    }
    QVERIFY(!f.model.setData(f.site(1, DownloadListModel::SiteName), "x", Qt::EditRole));
    QCOMPARE(f.site(1, DownloadListModel::SiteName).data().toString(), QString("RapidShare"));
}

void TestDownloadListModel::headerTexts_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("site");
    auto row = [](int column, const char *link, const char *site) {
        QTest::addRow("%d", column) << column << QString(link) << QString(site);
    };
    row(0, " ", " ");
    row(1, " ", "Sharing Site");
    row(2, "Download URL", "Child Downloads");
    row(3, "Local File Name", "Download Status");
    row(4, "Download Status", "");
    row(5, "File Size", "");
    row(6, "Speed", ""); // keeps its field name
    row(7, "Time Left", "");
    row(8, "WaitTimeInSec", "");
    row(9, "DirectURL", "");
    row(13, "IsDownloading", "");
}

void TestDownloadListModel::headerTexts()
{
    QFETCH(int, column);
    QFETCH(QString, link);
    QFETCH(QString, site);
    Fixture f;
    const QStringList seen{f.model.headerData(column, Qt::Horizontal).toString(),
                           DownloadListModel::linkHeaderText(column),
                           DownloadListModel::siteHeaderText(column)};
    QCOMPARE(seen, (QStringList{link, link, site}));
}

QTEST_GUILESS_MAIN(TestDownloadListModel)
#include "tst_downloadlistmodel.moc"
