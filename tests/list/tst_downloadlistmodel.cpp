#include "list/downloadlist.h"
#include "list/downloadlistmodel.h"

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
        f.add(7, "hotfile.com/dl/%1/b.rar", 2);
        f.add(1, "rapidshare.com/files/3/c.zip");
        // A site row shows its number and its counts.
        QCOMPARE(f.site(7).data().toString() + '|' +
                     f.site(7, DownloadListModel::SiteActiveTotal).data().toString(),
                 "7|0 Active, 0 Total");
        const QModelIndex second = f.model.index(1, kStatus, f.site(7));
        // Children live under column 0 only; a link row has none, nor columns.
        QCOMPARE((QList<int>{f.model.rowCount(f.site(7)), f.model.rowCount(f.site(1)),
                             f.model.rowCount(f.site(7, DownloadListModel::SiteName)),
                             f.model.rowCount(second) + f.model.columnCount(second)}),
                 (QList<int>{2, 1, 0, 0}));
        QVERIFY(DownloadListModel::linkRowOf(second) == f.list.childAt(7, 1) &&
                f.model.linkIndex(f.list.childAt(7, 1), kStatus) == second);

        // The tick is a check box, by the user and by code: each step as the
        // stored field, the check state and the edit value.
        LinkRow *row = f.list.childAt(1, 0);
        const QModelIndex box = f.model.index(0, kBox, f.site(1));
        QVERIFY(!box.data(Qt::DisplayRole).isValid() &&
                (f.model.flags(box) & Qt::ItemIsUserCheckable));
        auto step = [&] {
            return row->values[kBox] + box.data(Qt::CheckStateRole).toString() +
                   box.data(Qt::EditRole).toString();
        };
        QStringList steps{step()};
        for (Qt::CheckState state : {Qt::Checked, Qt::Unchecked}) {
            QVERIFY(f.model.setData(box, state, Qt::CheckStateRole));
            steps << step();
        }
        f.list.setField(row, Field::CheckBox, "1");
        QCOMPARE(steps << step(), (QStringList{"000", "121", "000", "121"}));
        // No other cell can be edited yet, nor a site row.
        for (int column = 0; column < DownloadListModel::ColumnCount; ++column) {
            const QModelIndex cell = box.siblingAtColumn(column);
            QVERIFY(column == kBox ||
                    (!(f.model.flags(cell) & (Qt::ItemIsUserCheckable | Qt::ItemIsEditable)) &&
                     !f.model.setData(cell, QString("1"))));
        }
        QVERIFY(!f.model.setData(f.site(1, DownloadListModel::SiteName), "x", Qt::EditRole));
    }

    // Rows come and go without a reset and a field write repaints its one
    // cell: kept indexes follow their links. Only reopening the list resets
    // the model and drops every link row.
    void rowsComeAndGo()
    {
        Fixture f;
        f.add(7, "hotfile.com/dl/%1/x.rar", 4);
        f.add(1, "rapidshare.com/files/1/a.zip");
        QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
        QSignalSpy layout(&f.model, &QAbstractItemModel::layoutChanged);
        const QPersistentModelIndex third(f.model.index(2, kLink, f.site(7)));
        const QPersistentModelIndex last(f.model.index(3, kStatus, f.site(7)));
        const QPersistentModelIndex other(f.model.index(0, kLink, f.site(1)));
        const QPersistentModelIndex hotFile(f.site(7, DownloadListModel::SiteName));
        // Row and text of each kept index, "-" for one that is gone.
        auto kept = [&] {
            QStringList out;
            for (const QPersistentModelIndex *i : {&third, &last, &other, &hotFile})
                out << (i->isValid() ? QString::number(i->row()) + ' ' + i->data().toString()
                                     : "-");
            return out.join(", ");
        };

        // A new row goes at the end of its site: nothing moves.
        f.add(7, "hotfile.com/dl/9/new.rar");
        // Writing the value a cell already holds repaints nothing.
        QSignalSpy changed(&f.model, &QAbstractItemModel::dataChanged);
        for (int twice = 0; twice < 2; ++twice) {
            f.list.setField(f.list.childAt(7, 3), Field::Status, "45.67");
            f.list.setField(f.list.childAt(7, 2), Field::LinkURL, "hotfile.com/dl/5/e.rar");
        }
        QVariantList cells;
        for (const QVariantList &arguments : changed)
            cells << arguments.mid(0, 2);
        QCOMPARE(cells, QVariantList(2, QModelIndex(last)) + QVariantList(2, QModelIndex(third)));
        QCOMPARE(kept(),
                 "2 hotfile.com/dl/5/e.rar, 3 45.67, 0 rapidshare.com/files/1/a.zip, 6 HotFile");
        // Removing a row before one moves it up and keeps it on its link.
        f.list.removeRow(f.list.childAt(7, 0));
        QCOMPARE(kept(),
                 "1 hotfile.com/dl/5/e.rar, 2 45.67, 0 rapidshare.com/files/1/a.zip, 6 HotFile");
        // Removing a row after one leaves it where it is; removing it drops it.
        f.list.removeRow(f.list.childAt(7, 3));
        f.list.removeRow(f.list.childAt(7, 1));
        QCOMPARE(kept(), "-, 1 45.67, 0 rapidshare.com/files/1/a.zip, 6 HotFile");
        QCOMPARE(reset.count() + layout.count(), 0);

        f.list.open();
        f.add(1, "rapidshare.com/files/9/z.zip");
        QCOMPARE(kept() + ' ' + QString::number(reset.count()), "-, -, -, - 1");
        QCOMPARE(f.model.rowCount(f.site(1)) + f.model.rowCount(f.site(7)), 1);
        QCOMPARE(f.model.index(0, kLink, f.site(1)).data(), "rapidshare.com/files/9/z.zip");
    }
};

QTEST_GUILESS_MAIN(TestDownloadListModel)
#include "tst_downloadlistmodel.moc"
