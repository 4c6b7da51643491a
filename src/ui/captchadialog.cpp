#include "ui/captchadialog.h"

#include "ui/windowparts.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>

namespace {

constexpr int kWidth = 420;
constexpr int kHeight = 300;
constexpr int kTitleStripHeight = 22;
constexpr int kHeaderBottom = 64;
const QRect kFrame(20, 78, 380, 116); // the panel that holds the picture and the box

QLabel *label(QWidget *parent, const char *name, const QString &text, const QRect &place,
              const QString &style)
{
    auto *l = new QLabel(text, parent);
    l->setObjectName(QString::fromLatin1(name));
    l->setGeometry(place);
    l->setWordWrap(true);
    l->setStyleSheet(style);
    return l;
}

} // namespace

CaptchaDialog::CaptchaDialog(const QString &pictureFile, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_pictureFile(pictureFile)
{
    setObjectName(QStringLiteral("frmCaptcha"));
    setWindowTitle(QStringLiteral("Captcha"));
    setFixedSize(kWidth, kHeight);
    setModal(true);

    auto *close = new SkinButton(QStringLiteral("cmdClose"), SkinButton::Glyph::Close,
                                 SkinButton::titleColours(), this);
    close->setGeometry(kWidth - 19, 5, 12, 12);
    close->setToolTip(QStringLiteral("Close"));
    connect(close, &QAbstractButton::clicked, this, &QDialog::reject);

    label(this, "lblCaptchaCode", QStringLiteral("Captcha Code Required"),
          QRect(16, kTitleStripHeight, kWidth - 32, kHeaderBottom - kTitleStripHeight),
          QStringLiteral("color: white; font-weight: bold; font-size: 17px;"));

    auto *frame = new QWidget(this);
    frame->setObjectName(QStringLiteral("fraMain"));
    frame->setGeometry(kFrame);
    m_picture = new QLabel(frame);
    m_picture->setObjectName(QStringLiteral("picCaptcha"));
    m_picture->setGeometry(12, 10, kFrame.width() - 24, 60);
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setStyleSheet(QStringLiteral("background-color: white; border: 1px solid "
                                            "rgb(104, 104, 104);"));
    m_text = new QLineEdit(frame);
    m_text->setObjectName(QStringLiteral("txtCaptcha"));
    m_text->setGeometry(12, 78, kFrame.width() - 24, 26);
    m_text->setStyleSheet(QStringLiteral("color: white; background-color: rgb(64, 64, 64); "
                                         "border: 1px solid rgb(120, 120, 120); padding: 2px;"));
    m_text->installEventFilter(this);

    const QString note = QStringLiteral("color: rgb(220, 224, 230);");
    label(this, "Label1",
          QStringLiteral("MegaUpload requires that you enter the above captcha to continue "
                         "download"),
          QRect(22, 200, kWidth - 44, 36), note);
    label(this, "Label2",
          QStringLiteral("* Note:- MegaUpload offers each user 3 files to download without "
                         "captcha until the internet IP changes"),
          QRect(22, 234, kWidth - 150, 48), note + QStringLiteral(" font-size: 11px;"));

    auto *proceed = new SkinButton(QStringLiteral("cmdProceed"), SkinButton::Glyph::None,
                                   SkinButton::greyColours(), this);
    proceed->setText(QStringLiteral("&Proceed"));
    proceed->setGeometry(kWidth - 118, 246, 96, 30);
    connect(proceed, &QAbstractButton::clicked, this, &CaptchaDialog::proceed);
}

std::optional<QString> CaptchaDialog::ask(const QString &pictureFile, QWidget *parent)
{
    CaptchaDialog dialog(pictureFile, parent);
    // Modal over the main window only: timers, sockets and the other sites go
    // on under it.
    dialog.setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    dialog.exec();
    return dialog.answer();
}

void CaptchaDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    // The box has the focus, then the picture shows, as it is now on disk.
    m_text->setFocus();
    QPixmap picture(m_pictureFile);
    if (!picture.isNull() && picture.height() > m_picture->height())
        picture = picture.scaledToHeight(m_picture->height(), Qt::SmoothTransformation);
    m_picture->setPixmap(picture);
}

void CaptchaDialog::proceed()
{
    m_answer = m_text->text();
    accept();
}

bool CaptchaDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_text && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            // Enter proceeds only with something typed; it never closes the
            // dialog otherwise.
            if (!m_text->text().isEmpty())
                proceed();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void CaptchaDialog::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    // The main window's body, header band, title strip and their lines.
    QLinearGradient body(0, kHeaderBottom, 0, height());
    body.setColorAt(0, QColor(96, 101, 108));
    body.setColorAt(1, QColor(66, 70, 76));
    p.fillRect(rect(), body);
    QLinearGradient band(0, kTitleStripHeight, 0, kHeaderBottom);
    band.setColorAt(0, QColor(44, 62, 86));
    band.setColorAt(1, QColor(30, 42, 60));
    p.fillRect(QRectF(0, kTitleStripHeight, width(), kHeaderBottom - kTitleStripHeight), band);
    p.setPen(QColor(251, 140, 60));
    p.drawLine(QPointF(0, kHeaderBottom - 0.5), QPointF(width(), kHeaderBottom - 0.5));
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
    // The panel of the picture and the box.
    p.setPen(QPen(QColor(40, 44, 50), 1));
    p.setBrush(QColor(80, 85, 92));
    p.drawRoundedRect(QRectF(kFrame).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
    // A thin outline around the whole dialog, as it has no frame of the desktop's.
    p.setBrush(Qt::NoBrush);
    p.setPen(QColor(30, 34, 40));
    p.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

void CaptchaDialog::mousePressEvent(QMouseEvent *event)
{
    if (event->position().y() < kTitleStripHeight)
        m_dragFrom = event->globalPosition().toPoint() - frameGeometry().topLeft();
    else
        m_dragFrom = QPoint();
    QDialog::mousePressEvent(event);
}

void CaptchaDialog::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragFrom.isNull() && (event->buttons() & Qt::LeftButton))
        move(event->globalPosition().toPoint() - m_dragFrom);
    QDialog::mouseMoveEvent(event);
}
