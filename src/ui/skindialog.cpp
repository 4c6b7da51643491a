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
    paintWindowSkin(p, *this, m_headerBottom, false);
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
