#include "ui/progresscellpainter.h"

#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <cmath>

ProgressCellPainter::ProgressCellPainter(const Colours &colours, const QFont &font)
    : m_colours(colours), m_font(font)
{
}

std::optional<int> ProgressCellPainter::percentOf(const QString &status)
{
    const QString text = status.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    // The transfer writes the number in the locale's own form; a plain C
    // form counts as a number too.
    bool ok = false;
    double value = QLocale().toDouble(text, &ok);
    if (!ok)
        value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    // The default rounding mode takes halves to the even neighbour.
    const double whole = std::nearbyint(std::clamp(value, -1e9, 1e9));
    return clampPercent(int(whole));
}

int ProgressCellPainter::clampPercent(int percent)
{
    return std::min(std::max(percent, 0), 100);
}

int ProgressCellPainter::barRight(int left, int width, int percent)
{
    const double edge = double(left) + (clampPercent(percent) / 100.0) * double(width);
    return int(std::nearbyint(edge));
}

void ProgressCellPainter::paint(QPainter *painter, const QRect &cell, int percent,
                                bool selected) const
{
    const int p = clampPercent(percent);
    const QString text = QString::number(p) + u'%';
    painter->save();
    painter->setFont(m_font);
    painter->setRenderHint(QPainter::Antialiasing, false);

    if (selected) {
        // The whole width swaps to the selected colours: no bar.
        painter->fillRect(cell, m_colours.selectedBack);
        painter->setPen(m_colours.selectedText);
        painter->drawText(cell, Qt::AlignCenter | Qt::TextSingleLine, text);
        painter->restore();
        return;
    }

    const int edge = barRight(cell.left(), cell.width(), p);
    const QRect bar(cell.left(), cell.top(), edge - cell.left(), cell.height());
    const QRect rest(edge, cell.top(), cell.left() + cell.width() - edge, cell.height());

    // Two clipped passes: the bare field with text in the bar colour, the bar
    // with text in the field colour.
    if (!rest.isEmpty()) {
        painter->save();
        painter->setClipRect(rest, Qt::IntersectClip);
        painter->fillRect(rest, m_colours.field);
        painter->setPen(m_colours.bar);
        painter->drawText(cell, Qt::AlignCenter | Qt::TextSingleLine, text);
        painter->restore();
    }
    if (!bar.isEmpty()) {
        painter->save();
        painter->setClipRect(bar, Qt::IntersectClip);
        painter->fillRect(bar, m_colours.bar);
        painter->setPen(m_colours.field);
        painter->drawText(cell, Qt::AlignCenter | Qt::TextSingleLine, text);
        painter->restore();
    }
    painter->restore();
}
