#include "ui/skindialog.h"

#include "ui/windowparts.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>

SkinDialog::SkinDialog(const QString &name, const QString &title, const QSize &size,
                       int headerBottom, const QString &closeName, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_headerBottom(headerBottom)
{
    setObjectName(name);
    setWindowTitle(title);
    setFixedSize(size);
    setModal(true);
    auto *close =
        new SkinButton(closeName, SkinButton::Glyph::Close, SkinButton::titleColours(), this);
    close->setGeometry(size.width() - 19, 5, 12, 12);
    close->setToolTip(QStringLiteral("Close"));
    close->setFocusPolicy(Qt::NoFocus);
    connect(close, &QAbstractButton::clicked, this, &QDialog::reject);
}

QLabel *SkinDialog::label(const char *name, const QString &text, const QRect &place,
                          const QString &style)
{
    auto *l = new QLabel(text, this);
    l->setObjectName(QString::fromLatin1(name));
    l->setGeometry(place);
    l->setWordWrap(true);
    l->setStyleSheet(style.isEmpty() ? QStringLiteral("color: white;") : style);
    return l;
}

void SkinDialog::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    // The main window's body, header band, title strip and their lines.
    QLinearGradient body(0, m_headerBottom, 0, height());
    body.setColorAt(0, QColor(96, 101, 108));
    body.setColorAt(1, QColor(66, 70, 76));
    p.fillRect(rect(), body);
    QLinearGradient band(0, kTitleStripHeight, 0, m_headerBottom);
    band.setColorAt(0, QColor(44, 62, 86));
    band.setColorAt(1, QColor(30, 42, 60));
    p.fillRect(QRectF(0, kTitleStripHeight, width(), m_headerBottom - kTitleStripHeight), band);
    p.setPen(QColor(251, 140, 60));
    p.drawLine(QPointF(0, m_headerBottom - 0.5), QPointF(width(), m_headerBottom - 0.5));
    p.fillRect(QRectF(0, 0, width(), kTitleStripHeight), QColor(231, 234, 238));
    p.setPen(QColor(180, 186, 194));
    p.drawLine(QPointF(0, kTitleStripHeight - 0.5), QPointF(width(), kTitleStripHeight - 0.5));
    QFont caption = font();
    caption.setPixelSize(12);
    caption.setBold(true);
    p.setFont(caption);
    p.setPen(QColor(50, 56, 64));
    p.drawText(QRectF(10, 0, 300, kTitleStripHeight), Qt::AlignVCenter | Qt::AlignLeft,
               windowTitle());
    p.setPen(QPen(QColor(40, 44, 50), 1));
    p.setBrush(QColor(80, 85, 92));
    for (const QRect &panel : m_panels)
        p.drawRoundedRect(QRectF(panel).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
    // A thin outline around the whole dialog, as it has no frame of the desktop's.
    p.setBrush(Qt::NoBrush);
    p.setPen(QColor(30, 34, 40));
    p.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

void SkinDialog::mousePressEvent(QMouseEvent *event)
{
    if (event->position().y() < kTitleStripHeight)
        m_dragFrom = event->globalPosition().toPoint() - frameGeometry().topLeft();
    else
        m_dragFrom = QPoint();
    QDialog::mousePressEvent(event);
}

void SkinDialog::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragFrom.isNull() && (event->buttons() & Qt::LeftButton))
        move(event->globalPosition().toPoint() - m_dragFrom);
    QDialog::mouseMoveEvent(event);
}
