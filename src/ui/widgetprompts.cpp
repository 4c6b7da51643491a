#include "ui/widgetprompts.h"

#include "app/notifier.h"
#include "ui/captchadialog.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QSystemTrayIcon>
#include <QUrl>
#include <QWidget>

void WidgetPrompts::setWindow(QWidget *window)
{
    m_window = window;
    m_tray = window ? window->findChild<QSystemTrayIcon *>() : nullptr;
}

Prompts::Answer WidgetPrompts::messageBox(const QString &text, Icon icon, Buttons buttons,
                                          const QString &title)
{
    QMessageBox::Icon boxIcon = QMessageBox::NoIcon;
    switch (icon) {
    case Icon::None:
        break;
    case Icon::Critical:
        boxIcon = QMessageBox::Critical;
        break;
    case Icon::Question:
        boxIcon = QMessageBox::Question;
        break;
    case Icon::Exclamation:
        boxIcon = QMessageBox::Warning;
        break;
    case Icon::Information:
        boxIcon = QMessageBox::Information;
        break;
    }
    QMessageBox::StandardButtons standard = QMessageBox::Ok;
    switch (buttons) {
    case Buttons::Ok:
        break;
    case Buttons::OkCancel:
        standard = QMessageBox::Ok | QMessageBox::Cancel;
        break;
    case Buttons::YesNo:
        standard = QMessageBox::Yes | QMessageBox::No;
        break;
    case Buttons::YesNoCancel:
        standard = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
        break;
    }
    // A window that is hidden in the tray can't own a dialog that should be seen.
    QWidget *owner = m_window && m_window->isVisible() ? m_window.data() : nullptr;
    QMessageBox box(boxIcon, title, text, standard, owner);
    if (owner)
        box.setWindowModality(Qt::WindowModal);
    const int result = box.exec();
    switch (result) {
    case QMessageBox::Ok:
        return Answer::Ok;
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Cancel:
        return Answer::Cancel;
    default:
        // Closed without a button: what the box's escape would have given.
        return buttons == Buttons::Ok      ? Answer::Ok
               : buttons == Buttons::YesNo ? Answer::No
                                           : Answer::Cancel;
    }
}

void WidgetPrompts::balloon(int iconKind, const QString &text, const QString &title,
                            int milliseconds)
{
    // Without a tray the desktop's notifications show it, where they run.
    if (!m_tray || !QSystemTrayIcon::isSystemTrayAvailable() || !m_tray->isVisible()) {
        Notifier::notify(title, text, milliseconds);
        return;
    }
    QSystemTrayIcon::MessageIcon icon = QSystemTrayIcon::NoIcon;
    switch (iconKind) {
    case 1:
        icon = QSystemTrayIcon::Information;
        break;
    case 2:
        icon = QSystemTrayIcon::Warning;
        break;
    case 3:
        icon = QSystemTrayIcon::Critical;
        break;
    default:
        break;
    }
    m_tray->showMessage(title, text, icon, milliseconds);
}

QString WidgetPrompts::browseForFolder(const QString &title, const QString &startFolder)
{
    QWidget *owner = m_window && m_window->isVisible() ? m_window.data() : nullptr;
    return QFileDialog::getExistingDirectory(owner, title, startFolder);
}

void WidgetPrompts::copyToClipboard(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

bool WidgetPrompts::openExternal(const QString &target)
{
    if (target.isEmpty())
        return false;
    const QFileInfo info(target);
    const QUrl url =
        info.exists() ? QUrl::fromLocalFile(info.absoluteFilePath()) : QUrl::fromUserInput(target);
    return url.isValid() && QDesktopServices::openUrl(url);
}

std::optional<QString> WidgetPrompts::askCaptcha(const QString &pictureFile)
{
    // A window that is hidden in the tray can't own a dialog that should be seen.
    return CaptchaDialog::ask(pictureFile,
                              m_window && m_window->isVisible() ? m_window.data() : nullptr);
}
