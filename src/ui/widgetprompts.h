#pragma once

#include "prompts/prompts.h"

#include <QPointer>

class QSystemTrayIcon;
class QWidget;

// The questions of the core as widgets: message boxes over the main window,
// balloons on its tray icon, the folder picker and the desktop's handler for
// files and addresses.
class WidgetPrompts : public Prompts
{
public:
    WidgetPrompts() = default;

    // The window that dialogs are modal over. Its tray icon, if it owns one,
    // carries the balloons.
    void setWindow(QWidget *window);
    QWidget *window() const { return m_window; }

    Answer messageBox(const QString &text, Icon icon, Buttons buttons,
                      const QString &title = QStringLiteral("Tessalwick")) override;
    void balloon(int iconKind, const QString &text, const QString &title,
                 int milliseconds) override;
    QString browseForFolder(const QString &title, const QString &startFolder) override;
    void copyToClipboard(const QString &text) override;
    bool openExternal(const QString &target) override;
    std::optional<QString> askCaptcha(const QString &pictureFile) override;

private:
    QPointer<QWidget> m_window;
    QPointer<QSystemTrayIcon> m_tray;
};
