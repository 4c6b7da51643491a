#include "list/downloadlist.h"
#include "list/downloadlistmodel.h"

#include <QtTest>

class TestDownloadListModel : public QObject
{
    Q_OBJECT
private slots:
    // One list, watched throughout by Qt's model tester: the tree and its
    // check box column, then rows that come and go without a reset and a
    // field write that repaints its one cell, while kept indexes follow their
    // links. Only reopening the list resets the model and drops every link row.
    void treeAndChanges()
    {
        const int kLink = int(Field::LinkURL), kStatus = int(Field::Status);
        DownloadList list;
        list.open();
        DownloadListModel model(&list);
        QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
        auto site = [&](int number, int column = 0) { return model.siteIndex(number, column); };
        for (int i = 0; i < 4; ++i)
            list.addLinkToList(QString("hotfile.com/dl/%1/x.rar").arg(i), 7, nullptr);
        list.addLinkToList("rapidshare.com/files/1/a.zip", 1, nullptr);

        // A site row shows its number, name and counts; its last column, which
        // stands for its child rows, has no text.
        QStringList cells;
        for (int column = 0; column < DownloadListModel::SiteColumnCount; ++column)
            cells << site(7, column).data().toString();
        QCOMPARE(cells.join('|'), "7|HotFile|0 Active, 0 Total|");
        const QModelIndex second = model.index(1, kStatus, site(7));
        // Children live under column 0 only; a link row has none, nor columns.
        QCOMPARE((QList<int>{model.rowCount(site(7)),
                             model.rowCount(site(7, DownloadListModel::SiteName)),
                             model.rowCount(second) + model.columnCount(second)}),
                 (QList<int>{4, 0, 0}));
        QVERIFY(DownloadListModel::linkRowOf(second) == list.childAt(7, 1) &&
                model.linkIndex(list.childAt(7, 1), kStatus) == second);

        // The tick is a check box: as the stored field, the check state and the
        // edit value. No other cell can be ticked or edited, nor a site row.
        LinkRow *row = list.childAt(1, 0);
        const QModelIndex box = model.index(0, int(Field::CheckBox), site(1));
        QVERIFY(!box.data(Qt::DisplayRole).isValid() &&
                (model.flags(box) & Qt::ItemIsUserCheckable));
        auto tick = [&] {
            return row->values[int(Field::CheckBox)] + box.data(Qt::CheckStateRole).toString() +
                   box.data(Qt::EditRole).toString();
        };
        const QString before = tick();
        list.setField(row, Field::CheckBox, "1");
        QCOMPARE(before + ' ' + tick(), "000 121");
        QVERIFY(!(model.flags(second) & (Qt::ItemIsUserCheckable | Qt::ItemIsEditable)) &&
                !model.setData(second, QString("1")) &&
                !model.setData(site(1, DownloadListModel::SiteName), "x", Qt::EditRole));

        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy layout(&model, &QAbstractItemModel::layoutChanged);
        const QPersistentModelIndex third(model.index(2, kLink, site(7)));
        const QPersistentModelIndex last(model.index(3, kStatus, site(7)));
        // Row and text of each kept index, "-" for one that is gone.
        auto kept = [&] {
            QStringList out;
            for (const QPersistentModelIndex *i : {&third, &last})
                out << (i->isValid() ? QString::number(i->row()) + ' ' + i->data().toString()
                                     : "-");
            return out.join(", ");
        };
        // A new row goes at the end of its site: nothing moves. Writing the
        // value a cell already holds repaints nothing.
        list.addLinkToList("hotfile.com/dl/9/new.rar", 7, nullptr);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        for (int twice = 0; twice < 2; ++twice)
            list.setField(list.childAt(7, 3), Field::Status, "45.67");
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed[0].mid(0, 2), QVariantList(2, QModelIndex(last)));
        // Removing a row before one moves it up and keeps it on its link;
        // removing a row after one leaves it where it is; removing it drops it.
        list.removeRow(list.childAt(7, 0));
        QCOMPARE(kept(), "1 hotfile.com/dl/2/x.rar, 2 45.67");
        list.removeRow(list.childAt(7, 3));
        list.removeRow(list.childAt(7, 1));
        QCOMPARE(kept(), "-, 1 45.67");
        QCOMPARE(reset.count() + layout.count(), 0);

        list.open();
        list.addLinkToList("rapidshare.com/files/9/z.zip", 1, nullptr);
        QCOMPARE(kept() + ' ' + QString::number(reset.count()), "-, - 1");
        QCOMPARE(model.index(0, kLink, site(1)).data(), "rapidshare.com/files/9/z.zip");
    }
};

QTEST_GUILESS_MAIN(TestDownloadListModel)
#include "tst_downloadlistmodel.moc"
