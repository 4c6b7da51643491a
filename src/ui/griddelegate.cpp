#include "ui/griddelegate.h"

#include "list/downloadlist.h"
#include "list/downloadlistmodel.h"

#include <QGuiApplication>
#include <QLocale>
#include <QPainter>
#include <QTreeView>

#include <cmath>

namespace {
const QColor kSelectedBack(189, 189, 189);
const QColor kSelectedText(0, 0, 0);
const QColor kActiveBack(194, 194, 194);
constexpr int kSiteRowAlpha = 220;
constexpr int kLinkRowAlpha = 180;
} // namespace

GridDelegate::GridDelegate(QTreeView *view) : QStyledItemDelegate(view), m_view(view) {}

int GridDelegate::statusPercent(const QString &status)
{
    const QString text = status.trimmed();
    if (text.isEmpty())
        return -1;
    bool ok = false;
    double value = QLocale().toDouble(text, &ok);
    if (!ok)
        value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return -1;
    const double whole = std::nearbyint(value); // the default rounding: ties to even
    return int(std::clamp(whole, 0.0, 100.0));
}

void GridDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    const bool linkRow = index.parent().isValid();
    const bool selected = option.state & QStyle::State_Selected;
    if (!selected) {
        const QModelIndex current = m_view ? m_view->currentIndex() : QModelIndex();
        const bool active =
            current.isValid() && current.row() == index.row() && current.parent() == index.parent();
        painter->fillRect(option.rect,
                          active ? kActiveBack
                                 : QColor(255, 255, 255, linkRow ? kLinkRowAlpha : kSiteRowAlpha));
    }
    if (!linkRow && index.column() == DownloadListModel::SiteId) {
        // A site row spans from its first cell and shows its site's name.
        QStyleOptionViewItem site(option);
        site.font.setBold(true);
        QStyledItemDelegate::paint(painter, site,
                                   index.siblingAtColumn(DownloadListModel::SiteName));
        return;
    }
    if (linkRow && index.column() == int(Field::Status)) {
        const int percent = statusPercent(index.data().toString());
        if (percent >= 0) {
            drawProgressCell(painter, option, percent);
            return;
        }
    }
    QStyledItemDelegate::paint(painter, option, index);
}

void GridDelegate::drawProgressCell(QPainter *painter, const QStyleOptionViewItem &option,
                                    int percent) const
{
    const QString text = QString::number(percent) + u'%';
    const QRect r = option.rect;
    painter->save();
    painter->setFont(option.font);
    if (option.state & QStyle::State_Selected) {
        // No bar in a selected cell: its selected colours only.
        painter->fillRect(r, kSelectedBack);
        painter->setPen(kSelectedText);
        painter->drawText(r, Qt::AlignCenter, text);
        painter->restore();
        return;
    }
    const QPalette system = QGuiApplication::palette();
    const QColor bar = system.color(QPalette::Highlight);
    const QColor field = system.color(QPalette::HighlightedText);
    const int barWidth = int(std::nearbyint(percent / 100.0 * r.width()));
    const QRect barRect(r.left(), r.top(), barWidth, r.height());
    painter->fillRect(r, field);
    painter->fillRect(barRect, bar);
    // The digits change colour exactly at the bar's edge.
    painter->save();
    painter->setClipRegion(QRegion(r).subtracted(barRect), Qt::IntersectClip);
    painter->setPen(bar);
    painter->drawText(r, Qt::AlignCenter, text);
    painter->restore();
    if (barWidth > 0) {
        painter->setClipRect(barRect, Qt::IntersectClip);
        painter->setPen(field);
        painter->drawText(r, Qt::AlignCenter, text);
    }
    painter->restore();
}
