#include "ui/gridmodel.h"

#include "list/downloadlistmodel.h"
#include "prompts/prompts.h"
#include "ui/progresscellpainter.h"

#include <QColor>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>

namespace {
const QColor kSelectedBack(189, 189, 189);
const QColor kSelectedText(0, 0, 0);
const QColor kActiveBack(194, 194, 194);

// A present cell value that is the number 0 or 1: a tick, which passes
// without a question. The test goes by the value, whatever the column.
bool isTickValue(const QVariant &present)
{
    bool ok = false;
    const double number = present.toString().trimmed().toDouble(&ok);
    return ok && (number == 0 || number == 1);
}
} // namespace

GridModel::GridModel(DownloadListModel *source, Prompts *prompts, QObject *parent)
    : QIdentityProxyModel(parent), m_prompts(prompts)
{
    setSourceModel(source);
}

DownloadListModel *GridModel::listModel() const
{
    return static_cast<DownloadListModel *>(sourceModel());
}

QVariant GridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const QModelIndex source = mapToSource(index);
    const bool linkRow = DownloadListModel::linkRowOf(source) != nullptr;

    switch (role) {
    case Qt::BackgroundRole:
        return QColor(255, 255, 255, linkRow ? LinkRowAlpha : SiteRowAlpha);
    case SelectedBackgroundRole:
        return kSelectedBack;
    case SelectedForegroundRole:
        return kSelectedText;
    case ActiveBackgroundRole:
        return kActiveBack;
    case BarColourRole:
        return QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight);
    case FieldColourRole:
        return QGuiApplication::palette().color(QPalette::Active, QPalette::HighlightedText);
    case ProgressRole: {
        if (!linkRow || index.column() != int(Field::Status))
            return QVariant();
        const std::optional<int> percent =
            ProgressCellPainter::percentOf(source.data(Qt::DisplayRole).toString());
        return percent ? QVariant(*percent) : QVariant();
    }
    default:
        break;
    }

    if (!linkRow && index.column() == DownloadListModel::SiteId) {
        // A site row is one cell across the grid that shows the site's name.
        const QModelIndex name = source.siblingAtColumn(DownloadListModel::SiteName);
        switch (role) {
        case Qt::DisplayRole:
            return name.data(Qt::DisplayRole);
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(Qt::Alignment(Qt::AlignCenter));
        case Qt::FontRole: {
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        default:
            break;
        }
    }
    return QIdentityProxyModel::data(index, role);
}

Qt::ItemFlags GridModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QIdentityProxyModel::flags(index);
    if (index.isValid() && index.column() == int(Field::LinkURL) &&
        DownloadListModel::linkRowOf(mapToSource(index)))
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool GridModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const QModelIndex source = mapToSource(index);
    if (!DownloadListModel::linkRowOf(source))
        return false;
    const bool tick = index.column() == int(Field::CheckBox) &&
                      (role == Qt::CheckStateRole || role == Qt::EditRole);
    const bool link = index.column() == int(Field::LinkURL) && role == Qt::EditRole;
    if (!tick && !link)
        return false;
    return commitLinkCell(index, value, role);
}

// The user's new value of an editable cell, before it is written.
bool GridModel::commitLinkCell(const QModelIndex &index, const QVariant &value, int role)
{
    // The question below runs the event queue: rows may go meanwhile, so the
    // cell is held by a persistent index and looked at again afterwards.
    const QPersistentModelIndex source = mapToSource(index);
    const int column = index.column();
    // An emptied cell has no value to take.
    if (value.isNull() || (value.typeId() == QMetaType::QString && value.toString().isEmpty())) {
        if (m_prompts)
            m_prompts->messageBox(QStringLiteral("Link value can not be empty"),
                                  Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
        return false;
    }
    const QVariant present = source.data(Qt::EditRole);
    if (!isTickValue(present)) {
        const Prompts::Answer answer =
            m_prompts ? m_prompts->messageBox(
                            QStringLiteral("Are you sure that you want to change the link?"),
                            Prompts::Icon::Question, Prompts::Buttons::YesNo)
                      : Prompts::Answer::No;
        if (answer != Prompts::Answer::Yes || !source.isValid())
            return false;
    }
    if (role == Qt::CheckStateRole || column == int(Field::CheckBox))
        return sourceModel()->setData(source, value, role);
    // The new link stands; nothing else of the row changes.
    LinkRow *row = DownloadListModel::linkRowOf(source);
    if (!row)
        return false;
    DownloadList *list = listModel()->list();
    return ignoreFailure([&] { list->setField(row, Field::LinkURL, value.toString()); });
}
