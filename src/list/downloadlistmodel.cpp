#include "list/downloadlistmodel.h"

namespace {

// The grid's header texts by column. Columns that the grid never gives a text
// keep their field's name; "Speed" is one of them although it is shown.
const char *const kLinkHeaders[FieldCount] = {
    " ",     " ",         "Download URL", "Local File Name", "Download Status", "File Size",
    nullptr, "Time Left", nullptr,        nullptr,           nullptr,           nullptr,
    nullptr, nullptr};

bool validColumn(int column)
{
    return column >= 0 && column < DownloadListModel::ColumnCount;
}

} // namespace

DownloadListModel::DownloadListModel(DownloadList *list, QObject *parent)
    : QAbstractItemModel(parent), m_list(list)
{
    connect(list, &DownloadList::aboutToReset, this, [this] { beginResetModel(); });
    connect(list, &DownloadList::resetDone, this, [this] { endResetModel(); });
    connect(
        list, &DownloadList::rowsAboutToBeInserted, this,
        [this](int site, int first, int last) { beginInsertRows(siteIndex(site), first, last); });
    connect(list, &DownloadList::rowsInserted, this, [this] { endInsertRows(); });
    connect(list, &DownloadList::rowAboutToBeRemoved, this,
            [this](int site, int index) { beginRemoveRows(siteIndex(site), index, index); });
    connect(list, &DownloadList::rowRemoved, this, [this] { endRemoveRows(); });
    connect(list, &DownloadList::fieldChanged, this, [this](int site, int row, Field field) {
        const QModelIndex cell = index(row, int(field), siteIndex(site));
        if (cell.isValid())
            emit dataChanged(cell, cell);
    });
}

QString DownloadListModel::linkHeaderText(int column)
{
    if (!validColumn(column))
        return QString();
    const char *text = kLinkHeaders[column];
    return QString::fromLatin1(text ? text : fieldInfo(Field(column)).name);
}

ListNode *DownloadListModel::nodeOf(const QModelIndex &index)
{
    return index.isValid() ? static_cast<ListNode *>(index.internalPointer()) : nullptr;
}

SiteRow *DownloadListModel::siteRowOf(const QModelIndex &index)
{
    ListNode *node = nodeOf(index);
    return node && node->isSite ? static_cast<SiteRow *>(node) : nullptr;
}

LinkRow *DownloadListModel::linkRowOf(const QModelIndex &index)
{
    ListNode *node = nodeOf(index);
    return node && !node->isSite ? static_cast<LinkRow *>(node) : nullptr;
}

int DownloadListModel::sitePosition(int site) const
{
    for (int i = 0; i < m_list->siteRowCount(); ++i) {
        if (m_list->siteRowAt(i)->id == site)
            return i;
    }
    return -1;
}

QModelIndex DownloadListModel::siteIndex(int site, int column) const
{
    const int position = sitePosition(site);
    if (position < 0 || !validColumn(column))
        return QModelIndex();
    return createIndex(position, column, static_cast<ListNode *>(m_list->siteRowAt(position)));
}

QModelIndex DownloadListModel::linkIndex(const LinkRow *row, int column) const
{
    const int position = m_list->indexOf(row);
    if (position < 0 || !validColumn(column))
        return QModelIndex();
    return createIndex(position, column, static_cast<ListNode *>(const_cast<LinkRow *>(row)));
}

QModelIndex DownloadListModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!validColumn(column) || row < 0)
        return QModelIndex();
    if (!parent.isValid()) {
        SiteRow *site = m_list->siteRowAt(row);
        return site ? createIndex(row, column, static_cast<ListNode *>(site)) : QModelIndex();
    }
    const SiteRow *site = siteRowOf(parent);
    if (!site || parent.column() != 0)
        return QModelIndex();
    LinkRow *link = m_list->childAt(site->id, row);
    return link ? createIndex(row, column, static_cast<ListNode *>(link)) : QModelIndex();
}

QModelIndex DownloadListModel::parent(const QModelIndex &child) const
{
    const LinkRow *link = linkRowOf(child);
    return link ? siteIndex(link->site) : QModelIndex();
}

int DownloadListModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return m_list->siteRowCount();
    const SiteRow *site = siteRowOf(parent);
    if (!site || parent.column() != 0)
        return 0;
    return int(site->children.size());
}

int DownloadListModel::columnCount(const QModelIndex &parent) const
{
    return linkRowOf(parent) ? 0 : ColumnCount;
}

bool DownloadListModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0;
}

QVariant DownloadListModel::data(const QModelIndex &index, int role) const
{
    if (const SiteRow *site = siteRowOf(index)) {
        if (role == Qt::TextAlignmentRole && index.column() == SiteName)
            return QVariant::fromValue(Qt::Alignment(Qt::AlignCenter));
        if (role != Qt::DisplayRole && role != Qt::EditRole)
            return QVariant();
        switch (index.column()) {
        case SiteId:
            return site->id;
        case SiteName:
            return site->siteName;
        case SiteActiveTotal:
            return site->activeTotal;
        default:
            return QVariant(); // the link to the child rows has no text
        }
    }
    const LinkRow *link = linkRowOf(index);
    if (!link)
        return QVariant();
    const Field field = Field(index.column());
    const QString &value = link->values[index.column()];
    if (field == Field::CheckBox) {
        // The tick is a check box, not a number.
        if (role == Qt::CheckStateRole)
            return value.toInt() != 0 ? Qt::Checked : Qt::Unchecked;
        if (role == Qt::EditRole)
            return value.toInt();
        return QVariant();
    }
    if (role == Qt::DisplayRole || role == Qt::EditRole)
        return value;
    return QVariant();
}

bool DownloadListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    LinkRow *link = linkRowOf(index);
    if (!link || index.column() != int(Field::CheckBox))
        return false;
    int tick = 0;
    if (role == Qt::CheckStateRole)
        tick = value.toInt() == Qt::Checked ? 1 : 0;
    else if (role == Qt::EditRole)
        tick = value.toInt() != 0 ? 1 : 0;
    else
        return false;
    return ignoreFailure([&] { m_list->setField(link, Field::CheckBox, QString::number(tick)); });
}

Qt::ItemFlags DownloadListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (linkRowOf(index)) {
        flags |= Qt::ItemNeverHasChildren;
        if (index.column() == int(Field::CheckBox))
            flags |= Qt::ItemIsUserCheckable;
    }
    return flags;
}

QVariant DownloadListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || !validColumn(section))
        return QVariant();
    return linkHeaderText(section);
}
