#include "ui/griddelegate.h"

#include "ui/gridmodel.h"
#include "ui/progresscellpainter.h"

#include <QApplication>
#include <QPainter>
#include <QTreeView>

GridDelegate::GridDelegate(QTreeView *view) : QStyledItemDelegate(view), m_view(view) {}

void GridDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    QStyleOptionViewItem opt(option);
    initStyleOption(&opt, index);
    const bool selected = opt.state & QStyle::State_Selected;

    const QVariant percent = index.data(GridModel::ProgressRole);
    if (percent.isValid()) {
        const ProgressCellPainter::Colours colours{
            index.data(GridModel::BarColourRole).value<QColor>(),
            index.data(GridModel::FieldColourRole).value<QColor>(),
            index.data(GridModel::SelectedBackgroundRole).value<QColor>(),
            index.data(GridModel::SelectedForegroundRole).value<QColor>()};
        ProgressCellPainter(colours, opt.font).paint(painter, opt.rect, percent.toInt(), selected);
        return;
    }

    // The ground: the selection, the active row, or the row's own colour.
    QColor ground = index.data(Qt::BackgroundRole).value<QColor>();
    QColor ink = opt.palette.color(QPalette::Text);
    if (selected) {
        ground = index.data(GridModel::SelectedBackgroundRole).value<QColor>();
        ink = index.data(GridModel::SelectedForegroundRole).value<QColor>();
    } else if (m_view) {
        const QModelIndex current = m_view->currentIndex();
        if (current.isValid() && current.row() == index.row() &&
            current.parent() == index.parent()) {
            ground = index.data(GridModel::ActiveBackgroundRole).value<QColor>();
            ink = index.data(GridModel::SelectedForegroundRole).value<QColor>();
        }
    }
    painter->fillRect(opt.rect, ground);

    // The style draws check box and text on that ground, with no ground or
    // selection of its own.
    opt.backgroundBrush = Qt::NoBrush;
    opt.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
    opt.palette.setColor(QPalette::Text, ink);
    opt.palette.setColor(QPalette::WindowText, ink);
    // Check boxes on white, so that they read as boxes that can be ticked.
    opt.palette.setColor(QPalette::Base, Qt::white);
    opt.palette.setColor(QPalette::Window, Qt::white);
    QStyle *style = opt.widget ? opt.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &opt, painter, opt.widget);
}
