#pragma once

#include <QWidget>

#include <functional>

class AppCore;
class QMenu;

// The window that holds the program's three menus and is never shown: the
// start and stop buttons' drop-downs mnuStart and mnuStop, and the tray's
// TRAYMENU. Made once at start-up, it lives as long as the main window.
class MenuHolder : public QWidget
{
    Q_OBJECT
public:
    // `showWindow` brings the main window back in its normal state.
    MenuHolder(AppCore *core, std::function<void()> showWindow, QWidget *parent = nullptr);

    QMenu *startMenu() const { return m_start; }
    QMenu *stopMenu() const { return m_stop; }
    QMenu *trayMenu() const { return m_tray; }

    // What each opening of the tray menu writes: "Stop All Sites" can be
    // chosen only while something runs, and each site's entry of Downloads
    // says "Stop" and the site's name while the site runs, "Start" otherwise.
    void prepareTrayMenu();

private:
    QMenu *buildStartStop(bool start);
    QMenu *buildTray();

    AppCore *m_core;
    std::function<void()> m_showWindow;
    QMenu *m_start;
    QMenu *m_stop;
    QMenu *m_tray;
};
