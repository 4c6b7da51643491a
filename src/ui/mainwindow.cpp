#include "ui/mainwindow.h"

#include "app/about.h"
#include "app/appcore.h"
#include "intake/linkextraction.h"
#include "list/downloadlistmodel.h"
#include "list/listcommands.h"
#include "list/sitetable.h"
#include "prompts/prompts.h"
#include "system/failure.h"
#include "ui/aboutdialog.h"
#include "ui/griddelegate.h"
#include "ui/gridmodel.h"
#include "ui/gridview.h"
#include "ui/menuholder.h"
#include "ui/optionsdialog.h"
#include "ui/windowparts.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLinearGradient>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QProcess>
#include <QScreen>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStorageInfo>
#include <QSystemTrayIcon>
#include <QTreeView>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>

namespace {

// Positions of the window's design are in twips, 15 to the pixel.
QRect twips(int left, int top, int width, int height)
{
    auto px = [](int t) { return qRound(t / 15.0); };
    return QRect(px(left), px(top), px(width), px(height));
}

// The top of the window that drags it: 80 twips, about five pixels.
constexpr int kDragBandTwips = 80;
constexpr int kHeaderBottom = 80;

const QColor kLinksBack(64, 64, 64);
const QColor kGridBack(189, 189, 189);
const QColor kGridBorder(104, 104, 104);
const QColor kHeaderBack(80, 80, 80);

// The program's icon: a blue disc with a white arrow into a tray.
QIcon drawnIcon()
{
    QIcon icon;
    for (int size : {16, 32, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        const qreal s = size;
        QLinearGradient ground(0, 0, 0, s);
        ground.setColorAt(0, QColor(70, 150, 220));
        ground.setColorAt(1, QColor(25, 80, 150));
        p.setPen(Qt::NoPen);
        p.setBrush(ground);
        p.drawEllipse(QRectF(0.5, 0.5, s - 1, s - 1));
        p.setBrush(Qt::white);
        QPainterPath arrow;
        arrow.moveTo(s * 0.42, s * 0.18);
        arrow.lineTo(s * 0.58, s * 0.18);
        arrow.lineTo(s * 0.58, s * 0.45);
        arrow.lineTo(s * 0.74, s * 0.45);
        arrow.lineTo(s * 0.5, s * 0.70);
        arrow.lineTo(s * 0.26, s * 0.45);
        arrow.lineTo(s * 0.42, s * 0.45);
        arrow.closeSubpath();
        p.drawPath(arrow);
        p.drawRect(QRectF(s * 0.24, s * 0.76, s * 0.52, s * 0.07));
        icon.addPixmap(pixmap);
    }
    return icon;
}

// One font size for a group of labels: the largest at which each one's line
// of text fits its width.
void fitTogether(const QList<QLabel *> &labels)
{
    QFont f = labels.first()->font();
    for (int size = f.pixelSize(); size > 8; --size) {
        f.setPixelSize(size);
        const QFontMetrics metrics(f);
        if (std::all_of(labels.begin(), labels.end(), [&](const QLabel *l) {
                return metrics.horizontalAdvance(l->text()) <= l->width();
            }))
            break;
    }
    for (QLabel *label : labels)
        label->setFont(f);
}

// Scroll bars for the dark link box and grid, instead of the style's light ones.
QString darkScrollBars()
{
    return QStringLiteral(
        "QScrollBar { background: rgb(58, 60, 64); border: none; }"
        "QScrollBar:vertical { width: 12px; } QScrollBar:horizontal { height: 12px; }"
        "QScrollBar::handle { background: rgb(120, 124, 130); border-radius: 4px; margin: 2px; }"
        "QScrollBar::handle:hover { background: rgb(251, 140, 60); }"
        "QScrollBar::handle:vertical { min-height: 20px; }"
        "QScrollBar::handle:horizontal { min-width: 20px; }"
        "QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }"
        "QScrollBar::add-page, QScrollBar::sub-page { background: none; }");
}

// A folder on an optical disc can't take downloads.
bool onOpticalDisc(const QString &path)
{
    const QStorageInfo storage(path);
    const QByteArray type = storage.fileSystemType().toLower();
    return storage.isValid() && (type == "iso9660" || type == "udf");
}

} // namespace

MainWindow::MainWindow(AppCore *core, Prompts *prompts, QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint), m_core(core), m_prompts(prompts),
      m_isOpticalDrive(onOpticalDisc)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Tessalwick"));
    setWindowIcon(drawnIcon());
    setFixedSize(800, 495);
    QFont base = font();
    base.setPixelSize(11);
    setFont(base);

    m_menus = new MenuHolder(
        m_core, [this] { showFromTray(); }, this);
    buildTitleStrip();
    buildButtonRow();
    buildGrid();
    buildFoot();
    buildTray();
    buildListCommands();
    setAcceptDrops(true);

    connect(m_core, &AppCore::quitRequested, this, [this] {
        m_closing = true;
        if (m_tray)
            m_tray->hide();
        close();
    });

    // The window opens in the middle of the screen.
    if (QScreen *screen = this->screen())
        move(screen->availableGeometry().center() - rect().center());
}

MainWindow::~MainWindow() = default;

Prompts *MainWindow::prompts() const
{
    return m_prompts ? m_prompts : m_core->prompts();
}

void MainWindow::buildTitleStrip()
{
    struct ButtonDef
    {
        const char *name;
        SkinButton::Glyph glyph;
        int left;
        const char *tip;
    };
    const ButtonDef buttons[] = {
        {"cmdHelp", SkinButton::Glyph::Help, 10890, "Help"},
        {"cmdAbout", SkinButton::Glyph::About, 11070, "About"},
        {"cmdTray", SkinButton::Glyph::Tray, 11370, "Minimize to system tray"},
        {"cmdMinimize", SkinButton::Glyph::Minimize, 11550, "Minimize"},
        {"cmdClose", SkinButton::Glyph::Close, 11715, "Close"},
    };
    for (const ButtonDef &def : buttons) {
        auto *button = new SkinButton(QString::fromLatin1(def.name), def.glyph,
                                      SkinButton::titleColours(), this);
        button->setGeometry(twips(def.left, 75, 180, 180));
        button->setToolTip(QString::fromLatin1(def.tip));
        button->setFocusPolicy(Qt::NoFocus);
    }
    connect(findChild<SkinButton *>(QStringLiteral("cmdAbout")), &QAbstractButton::clicked, this,
            [this] {
                AboutDialog about(prompts(), this);
                about.setWindowModality(Qt::WindowModal);
                about.exec();
            });
    // The user guide opens in the browser; without one nothing shows.
    connect(findChild<SkinButton *>(QStringLiteral("cmdHelp")), &QAbstractButton::clicked, this,
            [this] {
                const QString guide = About::helpFile();
                if (!guide.isEmpty() && prompts())
                    prompts()->openExternal(guide);
            });
    connect(findChild<SkinButton *>(QStringLiteral("cmdTray")), &QAbstractButton::clicked, this,
            &MainWindow::hideToTrayOrMinimise);
    connect(findChild<SkinButton *>(QStringLiteral("cmdMinimize")), &QAbstractButton::clicked, this,
            &QWidget::showMinimized);
    connect(findChild<SkinButton *>(QStringLiteral("cmdClose")), &QAbstractButton::clicked, this,
            [this] { m_core->requestClose(); });

    auto *supported = new QLabel(QStringLiteral("List of Supported sites"), this);
    supported->setObjectName(QStringLiteral("lblSupported"));
    supported->setGeometry(twips(5160, 0, 1335, 1200));
    supported->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    supported->setWordWrap(true);
    supported->setStyleSheet(QStringLiteral("color: rgb(200, 206, 214); padding-bottom: 6px;"));
    QStringList names;
    for (const Sites::Site &site : Sites::all()) {
        if (site.shown)
            names << QString::fromLatin1(site.name);
    }
    supported->setToolTip(names.join(QStringLiteral(", ")));
}

void MainWindow::buildButtonRow()
{
    struct ButtonDef
    {
        const char *name;
        SkinButton::Glyph glyph;
        int left, top;
        const char *caption;
        const char *tip;
    };
    const ButtonDef buttons[] = {
        {"lblOptions", SkinButton::Glyph::Options, 10410, 495, "Options", "Options"},
        {"lblUpdate", SkinButton::Glyph::Update, 11175, 510, "Update", "Update"},
        {"cmdAddLinks", SkinButton::Glyph::Add, 11175, 1260, "Add", "Add To Download List"},
        {"cmdUp", SkinButton::Glyph::Up, 6540, 1980, "Up", "Move Selected Waiting Item Up"},
        {"cmdDown", SkinButton::Glyph::Down, 7320, 1980, "Down", "Move Selected Waiting Item Down"},
        {"cmdRemoveSelected", SkinButton::Glyph::Remove, 8085, 1980, "Remove",
         "Remove Selected Item(s)"},
        {"cmdClearList", SkinButton::Glyph::ClearList, 8850, 1980, "Clear",
         "Clear List (Remove All Items)"},
        {"cmdClearComplete", SkinButton::Glyph::ClearComplete, 9630, 1980, "Done",
         "Remove All Complete items"},
        {"cmdClearError", SkinButton::Glyph::ClearError, 10380, 1965, "Errors",
         "Remove All Error items"},
        {"cmdRedownload", SkinButton::Glyph::Redownload, 11175, 1980, "Reset",
         "Reset selected item(s) status to be downloaded next time you start download"},
    };
    for (const ButtonDef &def : buttons) {
        auto *button = new SkinButton(QString::fromLatin1(def.name), def.glyph,
                                      SkinButton::bigColours(), this);
        button->setGeometry(twips(def.left, def.top, 765, 660));
        button->setText(QString::fromLatin1(def.caption));
        button->setToolTip(QString::fromLatin1(def.tip));
    }

    // The maker's page says whether there is a newer version.
    connect(findChild<SkinButton *>(QStringLiteral("lblUpdate")), &QAbstractButton::clicked, this,
            [this] {
                if (prompts())
                    prompts()->openExternal(About::updateAddress(About::versionText()));
            });
    connect(findChild<SkinButton *>(QStringLiteral("lblOptions")), &QAbstractButton::clicked, this,
            &MainWindow::showOptions);

    m_links = new LinkTextBox(QStringLiteral("txtLinks"), this);
    m_links->setGeometry(twips(30, 1215, 11115, 735));
    m_links->setStyleSheet(QStringLiteral("QPlainTextEdit { background-color: rgb(64, 64, 64); "
                                          "color: white; border: 1px solid rgb(104, 104, 104); "
                                          "selection-background-color: rgb(251, 140, 60); }") +
                           darkScrollBars());
    m_links->setText(LinkHint::designText());

    connect(findChild<SkinButton *>(QStringLiteral("cmdAddLinks")), &QAbstractButton::clicked, this,
            [this] {
                m_core->addLinksClicked(m_links->text(),
                                        [this](const QString &text) { m_links->setText(text); });
            });
}

void MainWindow::buildGrid()
{
    auto *expand = new SkinButton(QStringLiteral("cmdExpandCollapse"), SkinButton::Glyph::None,
                                  SkinButton::greyColours(), this);
    expand->setGeometry(twips(165, 2445, 345, 165));
    expand->setText(QStringLiteral("+\\-"));
    expand->setToolTip(QStringLiteral("Expand/Collapse All"));
    QFont sign = expand->font();
    sign.setPixelSize(11);
    sign.setBold(true);
    expand->setFont(sign);
    connect(expand, &QAbstractButton::clicked, this, &MainWindow::expandCollapseAll);

    m_model = new DownloadListModel(&m_core->list(), this);
    m_gridModel = new GridModel(m_model, prompts(), this);
    m_grid = new GridView(this);
    m_grid->setObjectName(QStringLiteral("DownloadGrid"));
    m_grid->setGeometry(twips(120, 2640, 11700, 3600));
    m_grid->setModel(m_gridModel);
    m_grid->setItemDelegate(new GridDelegate(m_grid));
    m_grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    // Only the link cell takes typing; the check box takes clicks.
    m_grid->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::SelectedClicked);
    m_grid->setUniformRowHeights(true);
    m_grid->setAllColumnsShowFocus(true);
    m_grid->setExpandsOnDoubleClick(true);
    m_grid->setIndentation(14);
    m_grid->viewport()->setAutoFillBackground(false);

    QHeaderView *header = m_grid->header();
    header->setSectionsMovable(false);
    header->setStretchLastSection(false);
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setMinimumSectionSize(0);
    // A site row spans from the first column, which the view keeps for the
    // tree. So the first column is not hidden but has no width: a site row
    // shows its name across the row, a link row shows nothing of its site
    // number.
    header->resizeSection(0, 0);
    header->setSectionResizeMode(0, QHeaderView::Fixed);
    const struct
    {
        Field field;
        int width;
    } widths[] = {{Field::CheckBox, 20}, {Field::LinkURL, 247}, {Field::LocalFile, 100},
                  {Field::Status, 100},  {Field::FileSize, 54}, {Field::Speed, 67},
                  {Field::TimeLeft, 67}};
    for (const auto &column : widths)
        header->resizeSection(int(column.field), column.width);
    for (Field hidden : {Field::WaitTimeInSec, Field::DirectURL, Field::LocalFilePath,
                         Field::IsResume, Field::ErrorDesc, Field::IsDownloading})
        m_grid->setColumnHidden(int(hidden), true);

    m_grid->setStyleSheet(
        QStringLiteral(
            "QTreeView#DownloadGrid { background-color: rgb(189, 189, 189); color: black; "
            "border: 1px solid rgb(104, 104, 104); selection-background-color: rgb(189, 189, 189); "
            "selection-color: black; }"
            "QTreeView#DownloadGrid QHeaderView { background-color: rgb(80, 80, 80); }"
            "QTreeView#DownloadGrid QHeaderView::section { background-color: rgb(80, 80, 80); "
            "color: white; border: none; border-right: 1px solid rgb(104, 104, 104); "
            "padding: 2px 4px; }") +
        darkScrollBars());

    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QWidget::customContextMenuRequested, this, &MainWindow::showRowMenu);
    qApp->installEventFilter(this);

    connect(m_gridModel, &QAbstractItemModel::modelReset, this, &MainWindow::formatSiteRows);
    connect(m_core, &AppCore::listRebound, this, &MainWindow::hideMediaFireRow);
    formatSiteRows();
}

void MainWindow::formatSiteRows()
{
    // A site row shows its name across the whole width.
    for (int row = 0; row < m_gridModel->rowCount(); ++row)
        m_grid->setFirstColumnSpanned(row, QModelIndex(), true);
    hideMediaFireRow();
}

void MainWindow::hideMediaFireRow()
{
    for (int row = 0; row < m_gridModel->rowCount(); ++row) {
        const SiteRow *site =
            DownloadListModel::siteRowOf(m_gridModel->mapToSource(m_gridModel->index(row, 0)));
        if (site && Sites::isSite(site->id) && !Sites::site(site->id).shown)
            m_grid->setRowHidden(row, QModelIndex(), true);
    }
}

void MainWindow::expandCollapseAll()
{
    // Hidden rows count: while the MediaFire row comes first, it decides.
    if (m_gridModel->rowCount() == 0)
        return;
    const bool collapse = m_grid->isExpanded(m_gridModel->index(0, 0));
    for (int row = 0; row < m_gridModel->rowCount(); ++row) {
        const QModelIndex site = m_gridModel->index(row, 0);
        if (collapse)
            m_grid->collapse(site);
        else
            m_grid->expand(site);
    }
}

void MainWindow::buildFoot()
{
    auto label = [this](const char *name, const QString &text, const QRect &where) {
        auto *l = new QLabel(text, this);
        l->setObjectName(QString::fromLatin1(name));
        l->setGeometry(where);
        l->setStyleSheet(QStringLiteral("color: white;"));
        return l;
    };
    // The design keeps this caption under the grid, where it never shows.
    label("Label3", QStringLiteral("Download Directory:"), twips(255, 5625, 2115, 195))->lower();
    QLabel *folderLabel =
        label("Label1", QStringLiteral("Download Folder:"), twips(90, 6420, 1320, 195));

    m_downloadDir = label("txtDownloadDir", m_core->downloadDir(), twips(1410, 6375, 9450, 315));
    m_downloadDir->setStyleSheet(
        QStringLiteral("color: white; background-color: rgb(52, 56, 62); "
                       "border: 1px solid rgb(104, 104, 104); padding-left: 4px;"));
    m_downloadDir->setTextInteractionFlags(Qt::TextSelectableByMouse);
    connect(m_core, &AppCore::downloadDirChanged, m_downloadDir, &QLabel::setText);

    auto *browse = new SkinButton(QStringLiteral("cmdBrowse"), SkinButton::Glyph::None,
                                  SkinButton::greyColours(), this);
    browse->setGeometry(twips(10935, 6345, 915, 420));
    browse->setText(QStringLiteral("&Browse"));
    connect(browse, &QAbstractButton::clicked, this, &MainWindow::browseForDownloadDir);

    m_createSubDir = new QCheckBox(this);
    m_createSubDir->setObjectName(QStringLiteral("chkCreate"));
    m_createSubDir->setGeometry(twips(90, 6810, 195, 195));
    m_createSubDir->setChecked(m_core->createSubDir() != 0);
    // The box's value is written whenever it changes, by a click or by code.
    connect(m_createSubDir, &QCheckBox::toggled, this,
            [this](bool on) { m_core->setCreateSubDir(on ? 1 : 0); });
    connect(m_core, &AppCore::createSubDirChanged, m_createSubDir, [this](int value) {
        const QSignalBlocker quiet(m_createSubDir);
        m_createSubDir->setChecked(value != 0);
    });
    auto *createLabel = new ClickLabel(QStringLiteral("lblCreate"),
                                       QStringLiteral("Create sub folder for each site"), this);
    createLabel->setGeometry(twips(345, 6810, 2355, 180));
    createLabel->setStyleSheet(QStringLiteral("color: white;"));
    connect(createLabel, &ClickLabel::clicked, this, &MainWindow::createLabelClicked);

    m_shutDown = new QCheckBox(this);
    m_shutDown->setObjectName(QStringLiteral("chkShutDown"));
    m_shutDown->setGeometry(twips(90, 7080, 195, 195));
    m_shutDown->setChecked(m_core->shutDown());
    connect(m_shutDown, &QCheckBox::toggled, m_core, &AppCore::setShutDown);
    auto *shutdownLabel =
        new ClickLabel(QStringLiteral("lblShutdown"),
                       QStringLiteral("Shutdown after all downloads complete"), this);
    shutdownLabel->setGeometry(twips(345, 7065, 2790, 210));
    shutdownLabel->setStyleSheet(QStringLiteral("color: white;"));
    fitTogether({folderLabel, createLabel, shutdownLabel});
    connect(shutdownLabel, &ClickLabel::clicked, m_shutDown, &QCheckBox::toggle);

    auto *start = new SkinButton(QStringLiteral("cmdStartDownload"), SkinButton::Glyph::None,
                                 SkinButton::greyColours(), this);
    start->setGeometry(twips(3480, 6750, 1845, 450));
    start->setText(QStringLiteral("Start Download"));
    start->setToolTip(QStringLiteral("Complete and Error items will be skipped"));
    auto *stop = new SkinButton(QStringLiteral("cmdStopDownload"), SkinButton::Glyph::None,
                                SkinButton::greyColours(), this);
    stop->setGeometry(twips(6660, 6765, 1845, 450));
    stop->setText(QStringLiteral("Stop Download"));
    connect(start, &SkinButton::clicked, m_core, &AppCore::startDownloadClicked);
    connect(stop, &SkinButton::clicked, m_core, &AppCore::stopDownloadClicked);

    // Each is a split button whose drop-down part opens its site menu.
    start->setDropDownWidth(16);
    stop->setDropDownWidth(16);
    connect(start, &SkinButton::dropDownClicked, this,
            [this, start] { popUpMenu(startMenu(), start); });
    connect(stop, &SkinButton::dropDownClicked, this,
            [this, stop] { popUpMenu(stopMenu(), stop); });

    QLabel *skipped = label("Label2", QStringLiteral("Complete and Error items will be skipped"),
                            twips(3720, 7230, 2145, 390));
    skipped->setStyleSheet(QStringLiteral("color: rgb(200, 206, 214);"));
    // Two lines would run past the window's foot: one line, as wide as it needs.
    skipped->resize(skipped->sizeHint().width(), skipped->height());
    skipped->setAlignment(Qt::AlignLeft | Qt::AlignTop);
}

void MainWindow::popUpMenu(QMenu *menu, QWidget *button)
{
    // Pending events run first, so that the button has drawn itself up again.
    QCoreApplication::processEvents();
    // The menu opens at the button's top right corner; when it closes, the
    // button lets go of its hover colour unless the pointer is on it.
    if (auto *skin = qobject_cast<SkinButton *>(button))
        connect(menu, &QMenu::aboutToHide, skin, &SkinButton::refreshHover,
                Qt::SingleShotConnection);
    menu->popup(mapToGlobal(QPoint(button->x() + button->width(), button->y())));
}

void MainWindow::createLabelClicked()
{
    // Setting the box raises its own write; the label then writes once more.
    m_createSubDir->setChecked(!m_createSubDir->isChecked());
    m_core->setCreateSubDir(m_createSubDir->isChecked() ? 1 : 0);
}

void MainWindow::browseForDownloadDir()
{
    Prompts *ask = prompts();
    if (!ask)
        return;
    for (;;) {
        const QString dir = ask->browseForFolder(
            QStringLiteral("Please, Select the download folder."), m_core->downloadDir());
        if (dir.isEmpty())
            return;
        if (m_isOpticalDrive && m_isOpticalDrive(dir)) {
            ask->messageBox(
                QStringLiteral("Selected drive is CD ROM, Please select another folder"),
                Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
            continue;
        }
        m_core->chooseDownloadDir(dir);
        return;
    }
}

void MainWindow::buildTray()
{
    m_tray = new QSystemTrayIcon(windowIcon(), this);
    m_tray->setObjectName(QStringLiteral("SystemTray"));
    m_tray->setToolTip(QStringLiteral("Tessalwick"));
    // A right click opens the tray menu, which writes its captions as it opens.
    m_tray->setContextMenu(m_menus->trayMenu());
    connect(m_tray, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                    showFromTray();
            });
    if (QSystemTrayIcon::isSystemTrayAvailable())
        m_tray->show();
}

void MainWindow::showOptions()
{
    // Settings that don't convert keep the dialog shut, as they kept the
    // start-up from reading them.
    ignoreFailure([this] {
        OptionsDialog dialog(
            m_core,
            [](const QString &program, const QStringList &arguments) {
                QProcess::startDetached(program, arguments, QDir::rootPath());
            },
            this);
        // Modal over this window only: timers and transfers go on behind it.
        dialog.setWindowModality(Qt::WindowModal);
        dialog.exec();
    });
}

void MainWindow::showFromTray()
{
    showNormal();
    raise();
    activateWindow();
}

QMenu *MainWindow::startMenu() const
{
    return m_menus->startMenu();
}

QMenu *MainWindow::stopMenu() const
{
    return m_menus->stopMenu();
}

QMenu *MainWindow::trayMenu() const
{
    return m_menus->trayMenu();
}

int MainWindow::firstVisibleRow() const
{
    return m_grid->verticalScrollBar()->value();
}

void MainWindow::setFirstVisibleRow(int row)
{
    m_grid->verticalScrollBar()->setValue(row);
}

void MainWindow::buildListCommands()
{
    using namespace ListCommands;
    DownloadList &list = m_core->list();
    const struct
    {
        const char *name;
        std::function<void()> run;
    } commands[] = {
        // A failure in a move ends it where it stands, without a word.
        {"cmdUp", [this, &list] { ignoreFailure([&] { moveUp(list, this); }); }},
        {"cmdDown", [this, &list] { ignoreFailure([&] { moveDown(list, this); }); }},
        {"cmdRemoveSelected", [this, &list] { removeSelected(list, prompts(), this); }},
        {"cmdRedownload", [this, &list] { redownload(list, this); }},
        {"cmdClearComplete", [&list] { clearComplete(list); }},
        {"cmdClearError", [&list] { clearError(list); }},
        {"cmdClearList", [this] { m_core->clearList(); }},
    };
    for (const auto &command : commands)
        connect(findChild<SkinButton *>(QString::fromLatin1(command.name)),
                &QAbstractButton::clicked, this, command.run);
}

void MainWindow::showRowMenu(const QPoint &at)
{
    const LinkRow *row =
        DownloadListModel::linkRowOf(m_gridModel->mapToSource(m_grid->indexAt(at)));
    if (!row)
        return;
    const QString link = row->values[int(Field::LinkURL)];
    const QString folder = row->values[int(Field::LocalFilePath)];
    const QString file = QDir(folder).filePath(row->values[int(Field::LocalFile)]);
    const bool complete =
        row->values[int(Field::Status)] == QLatin1String("Complete") && QFileInfo(file).isFile();
    Prompts *ask = prompts();
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("mnuRow"));
    QAction *open = menu.addAction(QStringLiteral("Open File"));
    open->setEnabled(complete && ask);
    QAction *reveal = menu.addAction(QStringLiteral("Open Containing Folder"));
    reveal->setEnabled(!folder.isEmpty() && QFileInfo(folder).isDir() && ask);
    QAction *copy = menu.addAction(QStringLiteral("Copy Link"));
    copy->setEnabled(ask);
    const QAction *chosen =
        m_rowMenuChoice ? m_rowMenuChoice(&menu) : menu.exec(m_grid->viewport()->mapToGlobal(at));
    if (!chosen || !ask)
        return;
    if (chosen == open)
        ask->openExternal(file);
    else if (chosen == reveal)
        ask->openExternal(folder);
    else if (chosen == copy)
        ask->copyToClipboard(link);
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    // The wheel over any part of the window scrolls the list one line a
    // turn while the grid is the active control: towards the end for a
    // turn towards the user, towards the top otherwise. The event goes on
    // as it came.
    if (event->type() == QEvent::Wheel && QApplication::focusWidget() == m_grid) {
        auto *widget = qobject_cast<QWidget *>(watched);
        if (widget && widget->window() == this) {
            const int delta = static_cast<QWheelEvent *>(event)->angleDelta().y();
            m_grid->verticalScrollBar()->triggerAction(delta < 0
                                                           ? QAbstractSlider::SliderSingleStepAdd
                                                           : QAbstractSlider::SliderSingleStepSub);
            // The grid itself doesn't scroll on the wheel: one line a turn.
            return watched == m_grid->viewport() || watched == m_grid;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasText() || event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    // Dropped text or links go in as the add button takes the link box's text.
    const QMimeData *mime = event->mimeData();
    QStringList words;
    if (!mime->hasText()) {
        for (const QUrl &url : mime->urls())
            words << url.toString();
    }
    const QString text = mime->hasText() ? mime->text() : words.join(QStringLiteral("\r\n"));
    if (text.isEmpty())
        return;
    event->acceptProposedAction();
    m_core->parseLinks(text, false);
}

bool MainWindow::hideToTrayOrMinimise()
{
    if (m_tray && m_tray->isVisible() && QSystemTrayIcon::isSystemTrayAvailable()) {
        hide();
        return true;
    }
    showMinimized();
    return false;
}

void MainWindow::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF all = rect();

    paintWindowSkin(p, *this, kHeaderBottom, true);

    // The program's name on the header band.
    QFont name = font();
    name.setPixelSize(30);
    name.setBold(true);
    p.setFont(name);
    p.setPen(Qt::white);
    const QString program = QStringLiteral("Tessalwick");
    const QRectF nameBox(16, kTitleStripHeight, 320, kHeaderBottom - kTitleStripHeight);
    p.drawText(nameBox, Qt::AlignVCenter | Qt::AlignLeft, program);
    const qreal nameEnd = nameBox.left() + QFontMetricsF(name).horizontalAdvance(program);
    QFont sub = font();
    sub.setPixelSize(11);
    p.setFont(sub);
    p.setPen(QColor(200, 206, 214));
    p.drawText(QRectF(nameEnd + 10, kTitleStripHeight + 9, 140, kHeaderBottom - kTitleStripHeight),
               Qt::AlignVCenter | Qt::AlignLeft, QStringLiteral("Download Manager"));

    // Frame.
    p.setPen(QColor(40, 44, 50));
    p.setBrush(Qt::NoBrush);
    p.drawRect(all.adjusted(0.5, 0.5, -0.5, -0.5));
}

void MainWindow::mousePressEvent(QMouseEvent *event)
{
    // Any button drags, but only on the window's very top.
    if (event->position().y() * 15 < kDragBandTwips) {
        emit windowDragStarted();
        if (windowHandle())
            windowHandle()->startSystemMove();
        return;
    }
    QWidget::mousePressEvent(event);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // A close from the desktop goes the way of the close button.
    if (m_closing) {
        event->accept();
        return;
    }
    event->ignore();
    m_core->requestClose();
}
