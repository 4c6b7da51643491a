#pragma once

#include "list/downloadlist.h"

#include <QAbstractItemModel>

// The two-level list as an item model for a tree view. Top-level rows are the
// site rows, their children the link rows. Columns go by position: a site row
// has ID, Site_Name, ActiveTotal and the column that stands for its child rows;
// a link row has its fields in their defined order. The horizontal header gives
// the texts of the link columns, as the grid shows them. The model follows the
// list's own change signals, so a field write repaints one cell and a new row
// is one insertion; only reopening the list resets the model.
class DownloadListModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    // Columns of a site row.
    enum SiteColumn { SiteId, SiteName, SiteActiveTotal, SiteSubItem, SiteColumnCount };
    // Every row has this many columns: one per field of a link row.
    static constexpr int ColumnCount = FieldCount;

    explicit DownloadListModel(DownloadList *list, QObject *parent = nullptr);

    DownloadList *list() const { return m_list; }

    // Header texts of the grid; a column without a header of its own
    // shows its field's name.
    static QString linkHeaderText(int column);

    // Indexes of a site row and of a link row, column as given.
    QModelIndex siteIndex(int site, int column = 0) const;
    QModelIndex linkIndex(const LinkRow *row, int column = 0) const;
    // The list node behind an index, nullptr for the root.
    static SiteRow *siteRowOf(const QModelIndex &index);
    static LinkRow *linkRowOf(const QModelIndex &index);

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    static ListNode *nodeOf(const QModelIndex &index);
    int sitePosition(int site) const;

    DownloadList *m_list;
};
