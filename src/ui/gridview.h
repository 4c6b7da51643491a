#pragma once

#include <QTreeView>

// The download grid's view: a tree of site rows and their link rows over a
// drawn background picture, which shows through the translucent rows.
class GridView : public QTreeView
{
    Q_OBJECT
public:
    explicit GridView(QWidget *parent = nullptr);

    // The background picture, drawn to fill the given rectangle.
    static void paintBackground(QPainter &p, const QRectF &area);

protected:
    void paintEvent(QPaintEvent *event) override;
    // The expand arrows sit on the row's own colour, not on a grey gutter.
    void drawBranches(QPainter *painter, const QRect &rect,
                      const QModelIndex &index) const override;
    // A thin line under every row keeps neighbouring bars apart.
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option,
                 const QModelIndex &index) const override;
    // A cell whose text is cut shows all of it as its tool tip.
    bool viewportEvent(QEvent *event) override;
};
