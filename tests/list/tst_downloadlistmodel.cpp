#include "list/downloadlist.h"
#include "list/downloadlistmodel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

namespace {
const int kLink = int(Field::LinkURL);
const int kStatus = int(Field::Status);
const int kBox = int(Field::CheckBox);

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

class TestDownloadListModel : public QObject
{
    Q_OBJECT
private slots:
    void treeShape()
    {
        Fixture f;
        QCOMPARE(f.model.rowCount(), 8);
        QCOMPARE((QStringList{f.text(7, -1, DownloadListModel::SiteId),
                              f.text(7, -1, DownloadListModel::SiteName),
                              f.text(7, -1, DownloadListModel::SiteActiveTotal)}),
                 (QStringList{"7", "HotFile", "0 Active, 0 Total"}));
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
        QCOMPARE(f.model.rowCount(second) + f.model.columnCount(second), 0);
        QCOMPARE(DownloadListModel::linkRowOf(second), f.list.childAt(7, 1));
        QCOMPARE(f.model.linkIndex(f.list.childAt(7, 1), kStatus), second);
        // A column without a header text of its own shows its field's name.
        QCOMPARE((QStringList{f.model.headerData(6, Qt::Horizontal).toString(),
                              f.model.headerData(3, Qt::Horizontal).toString(),
                              DownloadListModel::siteHeaderText(1),
                              DownloadListModel::siteHeaderText(4)}),
                 (QStringList{"Speed", "Local File Name", "Sharing Site", ""}));
    }

    // Rows come and go without a reset: kept indexes follow their links.
    // Only reopening the list resets the model and drops every link row.
    void rowsComeAndGo()
    {
        Fixture f;
        f.add(7, "hotfile.com/dl/%1/x.rar", 4);
        f.add(1, "rapidshare.com/files/1/a.zip");
        QSignalSpy inserted(&f.model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&f.model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy aboutToReset(&f.model, &QAbstractItemModel::modelAboutToBeReset);
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
        f.list.setField(f.list.childAt(7, 3), Field::Status, "45.67");
        f.list.removeRow(f.list.childAt(7, 0));
        QCOMPARE((QStringList{at(third), at(last), at(other), at(hotFile)}),
                 (QStringList{"1 hotfile.com/dl/2/x.rar", "2 45.67",
                              "0 rapidshare.com/files/1/a.zip", "6 HotFile"}));
        QCOMPARE(last.column(), kStatus);
        QCOMPARE(DownloadListModel::linkRowOf(last), f.list.childAt(7, 2));

        // Removing a row after it leaves it where it is; removing it drops it.
        f.list.removeRow(f.list.childAt(7, 3));
        QCOMPARE((QList<int>{third.row(), last.row()}), (QList<int>{1, 2}));
        f.list.removeRow(f.list.childAt(7, 1));
        QVERIFY(!third.isValid());
        QCOMPARE((QStringList{at(last), at(other)}),
                 (QStringList{"1 45.67", "0 rapidshare.com/files/1/a.zip"}));
        QCOMPARE((QList<qsizetype>{removed.count(), aboutToReset.count(), reset.count()}),
                 (QList<qsizetype>{3, 0, 0}));

        f.list.open();
        QCOMPARE((QList<qsizetype>{aboutToReset.count(), reset.count()}), (QList<qsizetype>{1, 1}));
        QVERIFY(!last.isValid() && !other.isValid());
        QCOMPARE((QList<int>{f.model.rowCount(), f.model.rowCount(f.site(1)),
                             f.model.rowCount(f.site(7))}),
                 (QList<int>{8, 0, 0}));
        f.add(1, "rapidshare.com/files/9/z.zip");
        QCOMPARE(f.text(1, 0, kLink), QString("rapidshare.com/files/9/z.zip"));
    }

    void fieldWriteIsOneCell_data()
    {
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("value");
        QTest::newRow("Status") << kStatus << "Connecting...";
        QTest::newRow("LinkURL") << kLink << "hotfile.com/dl/5/e.rar";
        QTest::newRow("CheckBox") << kBox << "1";
        QTest::newRow("hidden ErrorDesc") << int(Field::ErrorDesc) << "gone";
        QTest::newRow("IsDownloading") << int(Field::IsDownloading) << "1";
    }
    void fieldWriteIsOneCell()
    {
        QFETCH(int, field);
        QFETCH(QString, value);
        Fixture f;
        f.add(7, "hotfile.com/dl/%1/x.rar", 3);
        f.add(1, "rapidshare.com/files/1/a.zip");
        QSignalSpy changed(&f.model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
        QSignalSpy layout(&f.model, &QAbstractItemModel::layoutChanged);
        f.list.setField(f.list.childAt(7, 1), Field(field), value);
        const QModelIndex cell = f.model.index(1, field, f.site(7));
        QCOMPARE((QList<qsizetype>{changed.count(), reset.count(), layout.count()}),
                 (QList<qsizetype>{1, 0, 0}));
        QCOMPARE(changed.at(0).mid(0, 2), (QVariantList{cell, cell}));
        QCOMPARE(cell.data(field == kBox ? Qt::EditRole : Qt::DisplayRole).toString(), value);
        // Writing the value a cell already holds repaints nothing.
        f.list.setField(f.list.childAt(7, 1), Field(field), value);
        QCOMPARE(changed.count(), 1);
    }

    void checkBoxColumn()
    {
        Fixture f;
        f.add(1, "rapidshare.com/files/1/a.zip");
        LinkRow *row = f.list.childAt(1, 0);
        const QModelIndex box = f.model.index(0, kBox, f.site(1));
        auto tick = [&] { return box.data(Qt::CheckStateRole).toInt(); };
        QCOMPARE(tick(), int(Qt::Unchecked));
        QVERIFY(!box.data(Qt::DisplayRole).isValid());
        QVERIFY(f.model.flags(box) & Qt::ItemIsUserCheckable);
        for (Qt::CheckState state : {Qt::Checked, Qt::Unchecked}) {
            QVERIFY(f.model.setData(box, state, Qt::CheckStateRole));
            QCOMPARE(row->values[kBox], QString(state == Qt::Checked ? "1" : "0"));
            QCOMPARE(tick(), int(state));
        }
        // A tick written by code shows too.
        f.list.setField(row, Field::CheckBox, "1");
        QCOMPARE(tick(), int(Qt::Checked));

        // No other cell can be edited yet, nor a site row.
        for (int column = 0; column < DownloadListModel::ColumnCount; ++column) {
            if (column == kBox)
                continue;
            const QModelIndex cell = f.model.index(0, column, f.site(1));
            const QString before = row->values[column];
            QVERIFY(!(f.model.flags(cell) & (Qt::ItemIsUserCheckable | Qt::ItemIsEditable)));
            QVERIFY(!f.model.setData(cell, QString("1"), Qt::EditRole));
            QVERIFY(!f.model.setData(cell, Qt::Checked, Qt::CheckStateRole));
            QCOMPARE(row->values[column], before);
        }
        QVERIFY(!f.model.setData(f.site(1, DownloadListModel::SiteName), "x", Qt::EditRole));
        QCOMPARE(f.text(1, -1, DownloadListModel::SiteName), QString("RapidShare"));
    }
};

QTEST_GUILESS_MAIN(TestDownloadListModel)
#include "tst_downloadlistmodel.moc"
