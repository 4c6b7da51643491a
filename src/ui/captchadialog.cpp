#include "ui/captchadialog.h"

#include "ui/windowparts.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>

namespace {

constexpr int kWidth = 420;
constexpr int kHeaderBottom = 64;
const QRect kFrame(20, 78, 380, 116); // the panel that holds the picture and the box

} // namespace

CaptchaDialog::CaptchaDialog(const QString &pictureFile, QWidget *parent)
    : SkinDialog(QStringLiteral("frmCaptcha"), QStringLiteral("Captcha"), QSize(kWidth, 300),
                 kHeaderBottom, QStringLiteral("cmdClose"), parent),
      m_pictureFile(pictureFile)
{
    label("lblCaptchaCode", QStringLiteral("Captcha Code Required"),
          QRect(16, kTitleStripHeight, kWidth - 32, kHeaderBottom - kTitleStripHeight),
          QStringLiteral("color: white; font-weight: bold; font-size: 17px;"));

    addPanel(kFrame);
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
    label("Label1",
          QStringLiteral("MegaUpload requires that you enter the above captcha to continue "
                         "download"),
          QRect(22, 200, kWidth - 44, 36), note);
    label("Label2",
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
