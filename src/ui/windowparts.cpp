#include "ui/windowparts.h"

#include "intake/linkextraction.h"

#include <QCursor>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

SkinButton::Colours SkinButton::titleColours()
{
    return {QColor(231, 234, 238), QColor(255, 215, 103), QColor(251, 140, 60),
            QColor(231, 234, 238), QColor(60, 64, 70)};
}

SkinButton::Colours SkinButton::greyColours()
{
    return {QColor(128, 128, 128), QColor(192, 192, 192), QColor(64, 64, 64), QColor(224, 224, 224),
            QColor(255, 255, 255)};
}

SkinButton::Colours SkinButton::bigColours()
{
    // The big buttons share the title strip's hover and pressed colours on a
    // darker face, so that they read on the window's body.
    return {QColor(86, 92, 100), QColor(255, 215, 103), QColor(251, 140, 60), QColor(140, 140, 140),
            QColor(255, 255, 255)};
}

SkinButton::SkinButton(const QString &name, Glyph glyph, const Colours &colours, QWidget *parent)
    : QAbstractButton(parent), m_glyph(glyph), m_colours(colours)
{
    setObjectName(name);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
}

void SkinButton::enterEvent(QEnterEvent *event)
{
    m_hover = true;
    update();
    QAbstractButton::enterEvent(event);
}

void SkinButton::leaveEvent(QEvent *event)
{
    m_hover = false;
    update();
    QAbstractButton::leaveEvent(event);
}

void SkinButton::refreshHover()
{
    m_hover = isVisible() && rect().contains(mapFromGlobal(QCursor::pos()));
    update();
}

void SkinButton::setDropDownWidth(int width)
{
    m_dropDownWidth = qMax(0, width);
    update();
}

QRect SkinButton::dropDownRect() const
{
    if (m_dropDownWidth <= 0)
        return QRect();
    return QRect(width() - m_dropDownWidth, 0, m_dropDownWidth, height());
}

void SkinButton::mousePressEvent(QMouseEvent *event)
{
    if (isEnabled() && dropDownRect().contains(event->position().toPoint())) {
        event->accept();
        emit dropDownClicked();
        return;
    }
    QAbstractButton::mousePressEvent(event);
}

bool SkinButton::hitButton(const QPoint &pos) const
{
    return QAbstractButton::hitButton(pos) && !dropDownRect().contains(pos);
}

void SkinButton::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    QColor face = m_colours.back;
    if (!isEnabled())
        face = m_colours.disabled;
    else if (isDown())
        face = m_colours.pressed;
    else if (m_hover)
        face = m_colours.hover;
    QColor ink = m_colours.text;
    if (isEnabled() && (isDown() || m_hover) && m_colours.hover.lightness() > 150 &&
        m_colours.text.lightness() > 150)
        ink = QColor(40, 40, 40); // white on the yellow hover would not read
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const qreal radius = qMin(width(), height()) > 20 ? 5 : 2;
    p.setPen(QPen(face.darker(130), 1));
    p.setBrush(face);
    p.drawRoundedRect(box, radius, radius);
    if (hasFocus()) {
        // The focus ring: a dotted line inside the edge, in the window's orange.
        p.setPen(QPen(QColor(251, 140, 60), 1, Qt::DotLine));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(box.adjusted(2, 2, -2, -2), radius, radius);
    }

    QRect captionRect = rect();
    if (m_dropDownWidth > 0) {
        // The drop-down part: a divider and a small triangle pointing down.
        const QRectF part = dropDownRect();
        captionRect.setRight(int(part.left()) - 1);
        p.setPen(QPen(face.darker(140), 1));
        p.drawLine(QPointF(part.left() + 0.5, box.top() + 4),
                   QPointF(part.left() + 0.5, box.bottom() - 4));
        const qreal t = qMin(part.width(), part.height()) * 0.22;
        const QPointF c = part.center() + QPointF(0.5, 0.5);
        p.setPen(Qt::NoPen);
        p.setBrush(ink);
        p.drawPolygon(
            QPolygonF({QPointF(c.x() - t, c.y() - t / 2), QPointF(c.x() + t, c.y() - t / 2),
                       QPointF(c.x(), c.y() + t / 2 + 1)}));
    }

    if (m_glyph == Glyph::None || height() < 20 || text().isEmpty()) {
        if (m_glyph != Glyph::None) {
            drawGlyph(p, box, ink);
        } else {
            p.setPen(ink);
            p.drawText(captionRect, Qt::AlignCenter, text().remove(u'&'));
        }
        return;
    }
    // Glyph above, caption below.
    QFont small = font();
    small.setPixelSize(9);
    p.setFont(small);
    const QRectF glyphBox(box.left(), box.top() + 2, box.width(), box.height() - 15);
    drawGlyph(p, glyphBox, ink);
    p.setPen(ink);
    p.drawText(QRectF(box.left(), box.bottom() - 14, box.width(), 13), Qt::AlignCenter, text());
}

void SkinButton::drawGlyph(QPainter &p, const QRectF &area, const QColor &ink) const
{
    const qreal side = qMin(area.width(), area.height()) * (area.height() > 20 ? 0.62 : 0.7);
    const QRectF g(area.center().x() - side / 2, area.center().y() - side / 2, side, side);
    const qreal w = qMax<qreal>(1.2, side / 9);
    p.save();
    p.setPen(QPen(ink, w, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    const QPointF c = g.center();
    auto arrow = [&](bool up) {
        const qreal dir = up ? -1 : 1;
        QPainterPath path;
        path.moveTo(c.x(), c.y() + dir * side / 2);
        path.lineTo(c.x() - side / 2, c.y());
        path.lineTo(c.x() - side / 5, c.y());
        path.lineTo(c.x() - side / 5, c.y() - dir * side / 2);
        path.lineTo(c.x() + side / 5, c.y() - dir * side / 2);
        path.lineTo(c.x() + side / 5, c.y());
        path.lineTo(c.x() + side / 2, c.y());
        path.closeSubpath();
        p.setBrush(ink);
        p.setPen(Qt::NoPen);
        p.drawPath(path);
    };
    auto cross = [&](const QRectF &r) {
        p.drawLine(r.topLeft(), r.bottomRight());
        p.drawLine(r.topRight(), r.bottomLeft());
    };
    switch (m_glyph) {
    case Glyph::None:
        break;
    case Glyph::Help:
    case Glyph::About: {
        QFont f = p.font();
        f.setPixelSize(int(area.height()) - 1);
        f.setBold(true);
        p.setFont(f);
        p.drawText(area, Qt::AlignCenter, m_glyph == Glyph::Help ? "?" : "i");
        break;
    }
    case Glyph::Tray:
        p.drawRect(g.adjusted(0, side / 3, 0, 0));
        p.setBrush(ink);
        p.drawRect(QRectF(g.right() - side / 3, g.bottom() - side / 4, side / 4, side / 6));
        break;
    case Glyph::Minimize:
        p.drawLine(QPointF(g.left(), g.bottom()), QPointF(g.right(), g.bottom()));
        break;
    case Glyph::Close:
        cross(g);
        break;
    case Glyph::Options: {
        p.setBrush(ink);
        p.setPen(Qt::NoPen);
        for (int i = 0; i < 8; ++i) {
            p.save();
            p.translate(c);
            p.rotate(i * 45);
            p.drawRect(QRectF(-side / 10, -side / 2, side / 5, side / 4));
            p.restore();
        }
        p.drawEllipse(c, side * 0.34, side * 0.34);
        p.setBrush(m_colours.back);
        p.drawEllipse(c, side * 0.14, side * 0.14);
        break;
    }
    case Glyph::Update:
        p.drawArc(g, 30 * 16, 300 * 16);
        p.setBrush(ink);
        p.drawPolygon(QPolygonF({QPointF(g.right() + w, c.y() - side * 0.25),
                                 QPointF(g.right() - side * 0.25, c.y() - side * 0.3),
                                 QPointF(g.right() - side * 0.02, c.y() + side * 0.05)}));
        break;
    case Glyph::Add:
        p.setPen(QPen(ink, w * 1.6, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(c.x(), g.top()), QPointF(c.x(), g.bottom()));
        p.drawLine(QPointF(g.left(), c.y()), QPointF(g.right(), c.y()));
        break;
    case Glyph::Up:
        arrow(true);
        break;
    case Glyph::Down:
        arrow(false);
        break;
    case Glyph::Remove:
        p.setPen(QPen(ink, w * 1.6, Qt::SolidLine, Qt::RoundCap));
        cross(g.adjusted(side / 8, side / 8, -side / 8, -side / 8));
        break;
    case Glyph::ClearList:
        for (int i = 0; i < 4; ++i) {
            const qreal y = g.top() + side * (0.1 + i * 0.27);
            p.drawLine(QPointF(g.left(), y), QPointF(g.right() - side * 0.35, y));
        }
        cross(QRectF(g.right() - side * 0.3, g.bottom() - side * 0.3, side * 0.3, side * 0.3));
        break;
    case Glyph::ClearComplete:
        p.setPen(QPen(ink, w * 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.drawPolyline(QPolygonF({QPointF(g.left(), c.y()),
                                  QPointF(c.x() - side * 0.12, g.bottom() - side * 0.1),
                                  QPointF(g.right(), g.top() + side * 0.1)}));
        break;
    case Glyph::ClearError:
        p.drawEllipse(g);
        p.drawLine(QPointF(c.x(), g.top() + side * 0.2), QPointF(c.x(), c.y() + side * 0.1));
        p.setBrush(ink);
        p.drawEllipse(QPointF(c.x(), g.bottom() - side * 0.2), w / 2, w / 2);
        break;
    case Glyph::Redownload: {
        p.drawArc(g, 60 * 16, 270 * 16);
        const qreal a = qDegreesToRadians(60.0);
        const QPointF tip(c.x() + std::cos(a) * side / 2, c.y() - std::sin(a) * side / 2);
        p.setBrush(ink);
        p.drawPolygon(QPolygonF({tip + QPointF(side * 0.22, -side * 0.05),
                                 tip + QPointF(-side * 0.12, -side * 0.2),
                                 tip + QPointF(-side * 0.02, side * 0.2)}));
        break;
    }
    }
    p.restore();
}

ClickLabel::ClickLabel(const QString &name, const QString &text, QWidget *parent)
    : QLabel(text, parent)
{
    setObjectName(name);
}

void ClickLabel::mousePressEvent(QMouseEvent *event)
{
    m_pressed = event->button() == Qt::LeftButton;
    QLabel::mousePressEvent(event);
}

void ClickLabel::mouseReleaseEvent(QMouseEvent *event)
{
    const bool click = m_pressed && event->button() == Qt::LeftButton &&
                       rect().contains(event->position().toPoint());
    m_pressed = false;
    QLabel::mouseReleaseEvent(event);
    if (click)
        emit clicked();
}

LinkTextBox::LinkTextBox(const QString &name, QWidget *parent) : QPlainTextEdit(parent)
{
    setObjectName(name);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
}

// A pop-up menu or a switch to another window leaves the focus where it is
// within this window; only a real move of the focus counts.
bool LinkTextBox::movesWithinWindow(const QFocusEvent *event)
{
    return event->reason() != Qt::PopupFocusReason &&
           event->reason() != Qt::ActiveWindowFocusReason;
}

QString LinkTextBox::text() const
{
    QString text = toPlainText();
    text.replace(u'\n', QStringLiteral("\r\n"));
    return text;
}

void LinkTextBox::setText(const QString &text)
{
    QString plain = text;
    plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    setPlainText(plain);
}

void LinkTextBox::focusInEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusInEvent(event);
    if (!movesWithinWindow(event))
        return;
    if (LinkHint::holdsHint(text()))
        setText(QString());
}

void LinkTextBox::focusOutEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusOutEvent(event);
    if (!movesWithinWindow(event))
        return;
    // Only blanks count as empty: a box holding line breaks keeps them.
    if (text().count(u' ') == text().size())
        setText(LinkHint::lostFocusText());
}

void paintWindowSkin(QPainter &p, const QWidget &window, int headerBottom, bool withIcon)
{
    const qreal width = window.width();
    QLinearGradient body(0, headerBottom, 0, window.height());
    body.setColorAt(0, QColor(96, 101, 108));
    body.setColorAt(1, QColor(66, 70, 76));
    p.fillRect(window.rect(), body);
    QLinearGradient band(0, kTitleStripHeight, 0, headerBottom);
    band.setColorAt(0, QColor(44, 62, 86));
    band.setColorAt(1, QColor(30, 42, 60));
    p.fillRect(QRectF(0, kTitleStripHeight, width, headerBottom - kTitleStripHeight), band);
    p.setPen(QColor(251, 140, 60));
    p.drawLine(QPointF(0, headerBottom - 0.5), QPointF(width, headerBottom - 0.5));

    p.fillRect(QRectF(0, 0, width, kTitleStripHeight), QColor(231, 234, 238));
    p.setPen(QColor(180, 186, 194));
    p.drawLine(QPointF(0, kTitleStripHeight - 0.5), QPointF(width, kTitleStripHeight - 0.5));
    if (withIcon)
        window.windowIcon().paint(&p, QRect(6, 3, 16, 16));
    QFont caption = window.font();
    caption.setPixelSize(12);
    caption.setBold(true);
    p.setFont(caption);
    p.setPen(QColor(50, 56, 64));
    p.drawText(QRectF(withIcon ? 28 : 10, 0, 300, kTitleStripHeight),
               Qt::AlignVCenter | Qt::AlignLeft, window.windowTitle());
}
