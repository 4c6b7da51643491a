#pragma once

#include <QStyledItemDelegate>

class QTreeView;

// Paints the rows of the download grid: white rows that let the grid's ground
// show through (more through link rows than through site rows), the active row
// and the selection in their own greys, and a link's status as a progress bar
// with its percentage whenever the status is a number.
class GridDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit GridDelegate(QTreeView *view);

    // The whole percent a numeric status stands for, limited to 0..100;
    // -1 for a status that is no number. Halves go to the even neighbour.
    static int statusPercent(const QString &status);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

private:
    void drawProgressCell(QPainter *painter, const QStyleOptionViewItem &option, int percent) const;

    QTreeView *m_view;
};
