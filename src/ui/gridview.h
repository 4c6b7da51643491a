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
};
