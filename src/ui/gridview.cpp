#include "ui/gridview.h"

#include <QHelpEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

GridView::GridView(QWidget *parent) : QTreeView(parent) {}

void GridView::paintBackground(QPainter &p, const QRectF &area)
{
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.setClipRect(area);

    // A soft grey ground, lighter at the top.
    QLinearGradient ground(area.topLeft(), area.bottomLeft());
    ground.setColorAt(0, QColor(204, 206, 210));
    ground.setColorAt(1, QColor(176, 178, 182));
    p.fillRect(area, ground);

    // Fine diagonal hatching.
    p.setPen(QPen(QColor(255, 255, 255, 28), 1));
    for (qreal x = area.left() - area.height(); x < area.right(); x += 14)
        p.drawLine(QPointF(x, area.bottom()), QPointF(x + area.height(), area.top()));

    // An emblem at the right: a disc with an arrow into a tray.
    const qreal s = qMin(area.height() * 0.8, area.width() * 0.3);
    const QRectF disc(area.right() - s * 1.25, area.center().y() - s / 2, s, s);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 60));
    p.drawEllipse(disc);
    p.setBrush(QColor(120, 126, 134, 70));
    const qreal cx = disc.center().x();
    const qreal top = disc.top();
    QPainterPath arrow;
    arrow.moveTo(cx - s * 0.08, top + s * 0.18);
    arrow.lineTo(cx + s * 0.08, top + s * 0.18);
    arrow.lineTo(cx + s * 0.08, top + s * 0.45);
    arrow.lineTo(cx + s * 0.24, top + s * 0.45);
    arrow.lineTo(cx, top + s * 0.70);
    arrow.lineTo(cx - s * 0.24, top + s * 0.45);
    arrow.lineTo(cx - s * 0.08, top + s * 0.45);
    arrow.closeSubpath();
    p.drawPath(arrow);
    p.drawRoundedRect(QRectF(cx - s * 0.26, top + s * 0.76, s * 0.52, s * 0.07), s * 0.02,
                      s * 0.02);
    p.restore();
}

void GridView::drawBranches(QPainter *painter, const QRect &rect, const QModelIndex &index) const
{
    painter->fillRect(rect, index.data(Qt::BackgroundRole).value<QColor>());
    QTreeView::drawBranches(painter, rect, index);
}

void GridView::drawRow(QPainter *painter, const QStyleOptionViewItem &option,
                       const QModelIndex &index) const
{
    QTreeView::drawRow(painter, option, index);
    painter->save();
    painter->setPen(QColor(0, 0, 0, 46));
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    painter->restore();
}

bool GridView::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QTreeView::viewportEvent(event);
    auto *help = static_cast<QHelpEvent *>(event);
    const QModelIndex index = indexAt(help->pos());
    const QString text = index.data(Qt::DisplayRole).toString();
    const QRect cell = visualRect(index);
    // Some room is the cell's margin; a text wider than the rest is cut.
    if (!text.isEmpty() && fontMetrics().horizontalAdvance(text) > cell.width() - 8)
        QToolTip::showText(help->globalPos(), text, viewport(), cell);
    else
        QToolTip::hideText();
    return true;
}

void GridView::paintEvent(QPaintEvent *event)
{
    {
        QPainter p(viewport());
        paintBackground(p, QRectF(viewport()->rect()));
    }
    QTreeView::paintEvent(event);
}
