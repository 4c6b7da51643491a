#pragma once

#include "list/listcommands.h"

#include <QWidget>

#include <functional>

class AppCore;
class ClickLabel;
class DownloadListModel;
class GridModel;
class LinkTextBox;
class MenuHolder;
class QAction;
class QMenu;
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
class MainWindow : public QWidget, public ListCommands::View
{
    Q_OBJECT
public:
    MainWindow(AppCore *core, Prompts *prompts, QWidget *parent = nullptr);
    ~MainWindow() override;

    AppCore *core() const { return m_core; }
    DownloadListModel *model() const { return m_model; }
    // The grid's own model over model(): what the grid's indexes belong to.
    GridModel *gridModel() const { return m_gridModel; }
    QMenu *startMenu() const;
    QMenu *stopMenu() const;
    QMenu *trayMenu() const;
    MenuHolder *menuHolder() const { return m_menus; }
    QTreeView *grid() const { return m_grid; }
    LinkTextBox *linksBox() const { return m_links; }
    QSystemTrayIcon *trayIcon() const { return m_tray; }

    // Hides the window behind its tray icon where the desktop has a tray, and
    // minimises it otherwise. True when it went to the tray.
    bool hideToTrayOrMinimise();
    // A click on the tray icon, or its menu's Show: the window comes back
    // in its normal state.
    void showFromTray();
    // The Options dialog, modal over this window.
    void showOptions();

    // The grid's scroll position, which the list commands keep.
    int firstVisibleRow() const override;
    void setFirstVisibleRow(int row) override;

    // The context menu of a link row at a point of the grid's viewport.
    // Tests choose from it through `choose` instead of the user.
    void showRowMenu(const QPoint &at);
    using MenuChoice = std::function<QAction *(QMenu *)>;
    void setRowMenuChoice(MenuChoice choose) { m_rowMenuChoice = std::move(choose); }

    // The MediaFire site row never shows, while its links exist all the same.
    void hideMediaFireRow();
    // The first site row's state decides for all: expanded rows collapse,
    // otherwise every site row expands.
    void expandCollapseAll();

    // Whether a chosen folder lies on an optical disc, which can't take
    // downloads; the folder picker opens again for such a folder.
    using OpticalDriveTest = std::function<bool(const QString &path)>;
    void setOpticalDriveTest(OpticalDriveTest test) { m_isOpticalDrive = std::move(test); }

signals:
    // A press on the window's top band: the desktop drags the window now.
    void windowDragStarted();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildTitleStrip();
    void buildButtonRow();
    void buildGrid();
    void buildFoot();
    void buildTray();
    void buildListCommands();
    void formatSiteRows();
    void browseForDownloadDir();
    void createLabelClicked();
    void popUpMenu(QMenu *menu, QWidget *button);
    Prompts *prompts() const;

    AppCore *m_core;
    Prompts *m_prompts;
    DownloadListModel *m_model = nullptr;
    GridModel *m_gridModel = nullptr;
    MenuHolder *m_menus = nullptr;
    MenuChoice m_rowMenuChoice;
    OpticalDriveTest m_isOpticalDrive;
    LinkTextBox *m_links = nullptr;
    QTreeView *m_grid = nullptr;
    QLabel *m_downloadDir = nullptr;
    QCheckBox *m_createSubDir = nullptr;
    QCheckBox *m_shutDown = nullptr;
    QSystemTrayIcon *m_tray = nullptr;
    bool m_closing = false;
};
