#pragma once

#include <QStyledItemDelegate>

class QTreeView;

// Paints the cells of the download grid from what the model's roles say:
// the row's translucent ground, the active row and the selection in their
// own colours, and a cell that carries a percentage as a progress bar.
class GridDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit GridDelegate(QTreeView *view);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

private:
    QTreeView *m_view;
};
