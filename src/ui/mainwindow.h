#pragma once

#include <QWidget>

class AppCore;
class ClickLabel;
class DownloadListModel;
class LinkTextBox;
class Prompts;
class QCheckBox;
class QLabel;
class QSystemTrayIcon;
class QTreeView;
class SkinButton;

// The one working window: a fixed, frameless, painted panel with the title
// strip buttons, the big command buttons, the link box, the download grid and
// the foot with the download folder. It presents an AppCore and forwards the
// user's clicks to it; what a person is asked goes through the Prompts given.
class MainWindow : public QWidget
{
    Q_OBJECT
public:
    MainWindow(AppCore *core, Prompts *prompts, QWidget *parent = nullptr);
    ~MainWindow() override;

    AppCore *core() const { return m_core; }
    DownloadListModel *model() const { return m_model; }
    QTreeView *grid() const { return m_grid; }
    LinkTextBox *linksBox() const { return m_links; }
    QSystemTrayIcon *trayIcon() const { return m_tray; }

    // Hides the window behind its tray icon where the desktop has a tray, and
    // minimises it otherwise. True when it went to the tray.
    bool hideToTrayOrMinimise();

    // The MediaFire site row never shows, while its links exist all the same.
    void hideMediaFireRow();
    // The first site row's state decides for all: expanded rows collapse,
    // otherwise every site row expands.
    void expandCollapseAll();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void buildTitleStrip();
    void buildButtonRow();
    void buildGrid();
    void buildFoot();
    void buildTray();
    void formatSiteRows();
    void browseForDownloadDir();
    void createLabelClicked();
    Prompts *prompts() const;

    AppCore *m_core;
    Prompts *m_prompts;
    DownloadListModel *m_model = nullptr;
    LinkTextBox *m_links = nullptr;
    QTreeView *m_grid = nullptr;
    QLabel *m_downloadDir = nullptr;
    QCheckBox *m_createSubDir = nullptr;
    QCheckBox *m_shutDown = nullptr;
    QSystemTrayIcon *m_tray = nullptr;
    bool m_closing = false;
};
