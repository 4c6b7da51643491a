#include "app/appcore.h"
#include "app/cregister.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlistmodel.h"
#include "list/sitetable.h"
#include "sandbox.h"
#include "scheduling/sitequeues.h"
#include "ui/gridmodel.h"
#include "ui/mainwindow.h"
#include "ui/windowparts.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTreeView>
#include <QtTest>

#include <memory>

namespace {

// Answers the folder picker from a queue of folders (empty: cancelled).
class FolderQueuePrompts : public FakePrompts
{
public:
    QString browseForFolder(const QString &title) override
    {
        folderTitles.append(title);
        if (!folders.isEmpty())
            return folders.dequeue();
        return folderAnswer;
    }
    QQueue<QString> folders;
};

// Stands in for a site's recipe: records the call and leaves the row as the
// queue marked it, so no request leaves the machine.
class RecordingResolver : public SiteResolver
{
public:
    explicit RecordingResolver(QList<int> *calls) : m_calls(calls) {}
    void resolve(SiteContext &site) override { m_calls->append(site.site); }

private:
    QList<int> *m_calls;
};

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void windowShape();
    void controls_data();
    void controls();
    void linkBoxHint();
    void addLinks();
    void mediaFireRowStaysHidden();
    void createSubDirSetting();
    void shutdownLabelToggles();
    void closeRefusedWhileDownloading();
    void browseFolder();
    void expandCollapseAll();
    void hideToTrayOrMinimise();
    void startStopButtons();
    void siteMenus_data();
    void siteMenus();
    void trayAndMinimiseButtons();
    void dragBand_data();
    void dragBand();
    void browseRefusesOpticalDisc();
    void gridLayout();
    void gridRowPresentation();
    void editLink_data();
    void editLink();
    void tickNeedsNoQuestion();
    void progressUpdatesKeepViewState();

private:
    template <typename T = QWidget> T *control(const char *name)
    {
        T *found = m_window->findChild<T *>(QString::fromLatin1(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
    }
    QModelIndex site(int number) const { return m_window->model()->siteIndex(number); }
    // The grid's index of a core model index.
    QModelIndex view(const QModelIndex &index) const
    {
        return m_window->gridModel()->mapFromSource(index);
    }
    // Puts a link under every site, and gives every site a recording recipe.
    void seedLinks();
    void installRecorders();
    QList<int> m_resolved;

    std::unique_ptr<Sandbox> m_sandbox;
    std::unique_ptr<FolderQueuePrompts> m_prompts;
    std::unique_ptr<AppCore> m_core;
    std::unique_ptr<MainWindow> m_window;
};

void TestMainWindow::init()
{
    m_sandbox = std::make_unique<Sandbox>();
    m_prompts = std::make_unique<FolderQueuePrompts>();
    m_resolved.clear();
    m_core = std::make_unique<AppCore>(m_prompts.get());
    m_core->setLinkListPath(m_sandbox->path("LinkList.lq"));
    m_window = std::make_unique<MainWindow>(m_core.get(), m_prompts.get());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestMainWindow::cleanup()
{
    m_window.reset();
    m_core.reset();
    m_prompts.reset();
    m_sandbox.reset();
}

void TestMainWindow::windowShape()
{
    QCOMPARE(m_window->size(), QSize(800, 495));
    QCOMPARE(m_window->minimumSize(), QSize(800, 495));
    QCOMPARE(m_window->maximumSize(), QSize(800, 495));
    QVERIFY(m_window->windowFlags() & Qt::FramelessWindowHint);
    QCOMPARE(m_window->windowTitle(), QString("Tessalwick"));
    QVERIFY(m_window->trayIcon());
    QCOMPARE(m_window->trayIcon()->parent(), m_window.get());
    QVERIFY(!m_window->trayIcon()->icon().isNull());
}

void TestMainWindow::controls_data()
{
    // Name, tool tip, and the position of the design in twips.
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<QRect>("twips");
    QTest::newRow("cmdHelp") << "cmdHelp"
                             << "Help" << QRect(10890, 75, 180, 180);
    QTest::newRow("cmdAbout") << "cmdAbout"
                              << "About" << QRect(11070, 75, 180, 180);
    QTest::newRow("cmdTray") << "cmdTray"
                             << "Minimize to system tray" << QRect(11370, 75, 180, 180);
    QTest::newRow("cmdMinimize") << "cmdMinimize"
                                 << "Minimize" << QRect(11550, 75, 180, 180);
    QTest::newRow("cmdClose") << "cmdClose"
                              << "Close" << QRect(11715, 75, 180, 180);
    QTest::newRow("lblOptions") << "lblOptions"
                                << "Options" << QRect(10410, 495, 765, 660);
    QTest::newRow("lblUpdate") << "lblUpdate"
                               << "Update" << QRect(11175, 510, 765, 660);
    QTest::newRow("cmdAddLinks") << "cmdAddLinks"
                                 << "Add To Download List" << QRect(11175, 1260, 765, 660);
    QTest::newRow("cmdUp") << "cmdUp"
                           << "Move Selected Waiting Item Up" << QRect(6540, 1980, 765, 660);
    QTest::newRow("cmdDown") << "cmdDown"
                             << "Move Selected Waiting Item Down" << QRect(7320, 1980, 765, 660);
    QTest::newRow("cmdRemoveSelected") << "cmdRemoveSelected"
                                       << "Remove Selected Item(s)" << QRect(8085, 1980, 765, 660);
    QTest::newRow("cmdClearList") << "cmdClearList"
                                  << "Clear List (Remove All Items)" << QRect(8850, 1980, 765, 660);
    QTest::newRow("cmdClearComplete") << "cmdClearComplete"
                                      << "Remove All Complete items" << QRect(9630, 1980, 765, 660);
    QTest::newRow("cmdClearError") << "cmdClearError"
                                   << "Remove All Error items" << QRect(10380, 1965, 765, 660);
    QTest::newRow("cmdRedownload")
        << "cmdRedownload"
        << "Reset selected item(s) status to be downloaded next time you start download"
        << QRect(11175, 1980, 765, 660);
    QTest::newRow("txtLinks") << "txtLinks"
                              << "" << QRect(30, 1215, 11115, 735);
    QTest::newRow("cmdExpandCollapse") << "cmdExpandCollapse"
                                       << "Expand/Collapse All" << QRect(165, 2445, 345, 165);
    QTest::newRow("DownloadGrid") << "DownloadGrid"
                                  << "" << QRect(120, 2640, 11700, 3600);
    QTest::newRow("txtDownloadDir") << "txtDownloadDir"
                                    << "" << QRect(1410, 6375, 9450, 315);
    QTest::newRow("cmdBrowse") << "cmdBrowse"
                               << "" << QRect(10935, 6345, 915, 420);
    QTest::newRow("chkCreate") << "chkCreate"
                               << "" << QRect(90, 6810, 195, 195);
    QTest::newRow("lblCreate") << "lblCreate"
                               << "" << QRect(345, 6810, 2355, 180);
    QTest::newRow("chkShutDown") << "chkShutDown"
                                 << "" << QRect(90, 7080, 195, 195);
    QTest::newRow("cmdStartDownload")
        << "cmdStartDownload"
        << "Complete and Error items will be skipped" << QRect(3480, 6750, 1845, 450);
    QTest::newRow("cmdStopDownload") << "cmdStopDownload"
                                     << "" << QRect(6660, 6765, 1845, 450);
}

void TestMainWindow::controls()
{
    QFETCH(QString, name);
    QFETCH(QString, toolTip);
    QFETCH(QRect, twips);
    QWidget *widget = m_window->findChild<QWidget *>(name);
    QVERIFY2(widget, qPrintable(name));
    QCOMPARE(widget->toolTip(), toolTip);
    const QRect pixels(qRound(twips.x() / 15.0), qRound(twips.y() / 15.0),
                       qRound(twips.width() / 15.0), qRound(twips.height() / 15.0));
    QCOMPARE(widget->geometry(), pixels);
}

void TestMainWindow::linkBoxHint()
{
    auto *box = control<LinkTextBox>("txtLinks");
    QCOMPARE(box->text(), LinkHint::designText());
    // Lines reach the program with CR LF between them, and come back.
    QVERIFY(box->text().contains("\r\n"));
    QCOMPARE(box->toPlainText().count('\r'), 0);

    QFocusEvent in(QEvent::FocusIn, Qt::TabFocusReason);
    QFocusEvent out(QEvent::FocusOut, Qt::TabFocusReason);
    QApplication::sendEvent(box, &in);
    QCOMPARE(box->text(), QString());
    QApplication::sendEvent(box, &out);
    QCOMPARE(box->text(), LinkHint::lostFocusText());

    // A text that holds the hint among real links is emptied too.
    box->setText("rapidshare.com/files/1/a.zip\r\n" + LinkHint::shortText());
    QApplication::sendEvent(box, &in);
    QCOMPARE(box->text(), QString());

    // Only blanks count as empty: line breaks stay.
    box->setText("   ");
    QApplication::sendEvent(box, &out);
    QCOMPARE(box->text(), LinkHint::lostFocusText());
    box->setText("\r\n\r\n");
    QApplication::sendEvent(box, &out);
    QCOMPARE(box->text(), QString("\r\n\r\n"));

    // A pop-up menu takes the focus only for a moment.
    box->setText(" ");
    QFocusEvent popup(QEvent::FocusOut, Qt::PopupFocusReason);
    QApplication::sendEvent(box, &popup);
    QCOMPARE(box->text(), QString(" "));
}

void TestMainWindow::addLinks()
{
    auto *box = control<LinkTextBox>("txtLinks");
    box->setText("Files:\r\nhttp://rapidshare.com/files/11/a.zip  "
                 "http://www.hotfile.com/dl/22/b.rar\r\n"
                 "mediafire.com/?xyz HTTP://RAPIDSHARE.COM/FILES/11/A.ZIP\r\n");
    QTest::mouseClick(control<QAbstractButton>("cmdAddLinks"), Qt::LeftButton);

    DownloadListModel *model = m_window->model();
    const int link = int(Field::LinkURL);
    QCOMPARE(model->rowCount(site(1)), 1);
    QCOMPARE(model->index(0, link, site(1)).data().toString(),
             QString("http://rapidshare.com/files/11/a.zip"));
    QCOMPARE(model->rowCount(site(7)), 1);
    QCOMPARE(model->index(0, link, site(7)).data().toString(),
             QString("http://www.hotfile.com/dl/22/b.rar"));
    QCOMPARE(model->index(0, int(Field::Status), site(7)).data().toString(), QString("Waiting"));
    QCOMPARE(model->rowCount(site(5)), 0);
    QCOMPARE(box->text(), LinkHint::shortText());
    QCOMPARE(m_prompts->balloons.size(), 1);
    QCOMPARE(m_prompts->balloons.at(0).text, QString("2 Links Added"));
    QVERIFY(m_prompts->messages.isEmpty());

    // The grid shows the new rows under their sites.
    QTreeView *grid = m_window->grid();
    grid->expand(view(site(7)));
    QVERIFY(grid->visualRect(view(model->index(0, link, site(7)))).isValid());

    // Clicking again with the hint in the box adds nothing and says nothing.
    m_prompts->clear();
    QTest::mouseClick(control<QAbstractButton>("cmdAddLinks"), Qt::LeftButton);
    QCOMPARE(model->rowCount(site(1)), 1);
    QVERIFY(m_prompts->messages.isEmpty());
    QVERIFY(m_prompts->balloons.isEmpty());
    QCOMPARE(box->text(), LinkHint::shortText());

    // Too short a text is a message.
    box->setText("abcd");
    QTest::mouseClick(control<QAbstractButton>("cmdAddLinks"), Qt::LeftButton);
    QCOMPARE(m_prompts->messages.size(), 1);
    QCOMPARE(m_prompts->messages.at(0).text, QString("No Supported links Found."));
}

void TestMainWindow::mediaFireRowStaysHidden()
{
    QTreeView *grid = m_window->grid();
    const int mediaFire = site(5).row();
    auto onlyMediaFireHidden = [&] {
        for (int row = 0; row < m_window->model()->rowCount(); ++row) {
            if (grid->isRowHidden(row, QModelIndex()) != (row == mediaFire))
                return false;
        }
        return true;
    };
    QVERIFY(onlyMediaFireHidden());

    // Its links exist all the same.
    QVERIFY(m_core->list().addLinkToList("mediafire.com/?abc", 5, m_prompts.get()));
    QCOMPARE(m_window->model()->rowCount(site(5)), 1);

    // A reopened list and every walk of the link intake hide it again.
    m_core->list().open();
    QVERIFY(onlyMediaFireHidden());
    grid->setRowHidden(mediaFire, QModelIndex(), false);
    m_core->parseLinks("some words without a single link", false, false);
    QVERIFY(onlyMediaFireHidden());
}

void TestMainWindow::createSubDirSetting()
{
    auto *box = control<QCheckBox>("chkCreate");
    auto *label = control<QLabel>("lblCreate");
    QCOMPARE(label->text(), QString("Create sub folder for each site"));
    QVERIFY(!box->isChecked());
    QCOMPARE(Settings::get("CreatSubDir", "unset"), QString("unset"));

    QTest::mouseClick(box, Qt::LeftButton);
    QVERIFY(box->isChecked());
    QCOMPARE(Settings::get("CreatSubDir", "unset"), QString("1"));
    QCOMPARE(m_core->createSubDir(), 1);

    QTest::mouseClick(label, Qt::LeftButton);
    QVERIFY(!box->isChecked());
    QCOMPARE(Settings::get("CreatSubDir", "unset"), QString("0"));
    QCOMPARE(m_core->createSubDir(), 0);

    QTest::mouseClick(label, Qt::LeftButton);
    QVERIFY(box->isChecked());
    QCOMPARE(Settings::get("CreatSubDir", "unset"), QString("1"));

    QTest::mouseClick(box, Qt::LeftButton);
    QCOMPARE(Settings::get("CreatSubDir", "unset"), QString("0"));

    // A value read from the settings shows in the box without a write of its own.
    Settings::save("CreatSubDir", "1");
    m_core->readSettings();
    QVERIFY(box->isChecked());
}

void TestMainWindow::shutdownLabelToggles()
{
    auto *box = control<QCheckBox>("chkShutDown");
    QVERIFY(!box->isChecked());
    QTest::mouseClick(control<QLabel>("lblShutdown"), Qt::LeftButton);
    QVERIFY(box->isChecked());
    QTest::mouseClick(control<QLabel>("lblShutdown"), Qt::LeftButton);
    QVERIFY(!box->isChecked());
    // Nothing of it is a setting.
    QCOMPARE(Settings::get("ShutDown", "unset"), QString("unset"));
}

void TestMainWindow::closeRefusedWhileDownloading()
{
    DownloadList &list = m_core->list();
    QVERIFY(list.addLinkToList("rapidshare.com/files/1/a.zip", 1, m_prompts.get()));
    list.setField(list.childAt(1, 0), Field::IsDownloading, "1");
    QSignalSpy quit(m_core.get(), &AppCore::quitRequested);

    QTest::mouseClick(control<QAbstractButton>("cmdClose"), Qt::LeftButton);
    QCOMPARE(m_prompts->messages.size(), 1);
    QCOMPARE(m_prompts->messages.at(0).text,
             QString("There is one download or more currently running, Please Stop downloading "
                     "first."));
    QCOMPARE(m_prompts->messages.at(0).icon, Prompts::Icon::Exclamation);
    QCOMPARE(m_prompts->messages.at(0).buttons, Prompts::Buttons::Ok);
    QCOMPARE(quit.count(), 0);
    QVERIFY(m_window->isVisible());
    QVERIFY(!QFile::exists(m_sandbox->path("LinkList.lq")));

    // Once nothing runs, the list is saved and the program ends.
    list.setField(list.childAt(1, 0), Field::IsDownloading, "0");
    QTest::mouseClick(control<QAbstractButton>("cmdClose"), Qt::LeftButton);
    QCOMPARE(m_prompts->messages.size(), 1);
    QCOMPARE(quit.count(), 1);
    QVERIFY(QFile::exists(m_sandbox->path("LinkList.lq")));
    QVERIFY(!m_window->isVisible());
}

void TestMainWindow::browseFolder()
{
    auto *label = control<QLabel>("txtDownloadDir");
    QCOMPARE(label->text(), m_core->downloadDir());
    const QString before = m_core->downloadDir();

    // Cancelled: nothing changes.
    m_prompts->folderAnswer.clear();
    QTest::mouseClick(control<QAbstractButton>("cmdBrowse"), Qt::LeftButton);
    QCOMPARE(m_prompts->folderTitles, QStringList{"Please, Select the download folder."});
    QCOMPARE(label->text(), before);
    QCOMPARE(Settings::get("DownDir", "unset"), QString("unset"));

    const QString chosen = m_sandbox->path("downloads");
    QDir().mkpath(chosen);
    m_prompts->folderAnswer = chosen;
    QTest::mouseClick(control<QAbstractButton>("cmdBrowse"), Qt::LeftButton);
    QCOMPARE(label->text(), chosen);
    QCOMPARE(Settings::get("DownDir", "unset"), chosen);

    // The label follows the core's folder, whoever sets it.
    m_core->setDownloadDir(m_sandbox->path("other"));
    QCOMPARE(label->text(), m_sandbox->path("other"));
}

void TestMainWindow::expandCollapseAll()
{
    QTreeView *grid = m_window->grid();
    auto *button = control<QAbstractButton>("cmdExpandCollapse");
    QCOMPARE(button->text(), QString("+\\-"));
    const int rows = m_window->model()->rowCount();
    auto count = [&] {
        int expanded = 0;
        for (int row = 0; row < rows; ++row)
            expanded += grid->isExpanded(m_window->gridModel()->index(row, 0));
        return expanded;
    };
    QCOMPARE(count(), 0);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(count(), rows);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(count(), 0);

    // The first row alone decides, whatever state the others are in.
    grid->expand(view(site(3)));
    grid->expand(view(site(8)));
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(count(), rows);
    grid->collapse(view(site(2)));
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(count(), 0);
}

void TestMainWindow::hideToTrayOrMinimise()
{
    const bool toTray = m_window->hideToTrayOrMinimise();
    QCOMPARE(toTray, QSystemTrayIcon::isSystemTrayAvailable());
    if (toTray)
        QVERIFY(!m_window->isVisible());
    else
        QTRY_VERIFY(m_window->windowState() & Qt::WindowMinimized);
}

void TestMainWindow::seedLinks()
{
    DownloadList &list = m_core->list();
    const struct
    {
        int site;
        const char *link;
    } links[] = {
        {1, "http://rapidshare.com/files/1/a.zip"}, {2, "http://www.youtube.com/watch?v=abc"},
        {3, "http://www.megaupload.com/?d=XYZ"},    {4, "http://www.4shared.com/file/1/b.html"},
        {5, "http://www.mediafire.com/?xyz"},       {6, "http://depositfiles.com/files/abc"},
        {7, "http://www.hotfile.com/dl/22/b.rar"},  {8, "http://www.filefactory.com/file/abc"}};
    for (const auto &entry : links)
        QVERIFY(list.addLinkToList(entry.link, entry.site, m_prompts.get()));
}

void TestMainWindow::installRecorders()
{
    for (int s = 1; s <= Sites::Count; ++s)
        m_core->queues().setResolver(s, std::make_unique<RecordingResolver>(&m_resolved));
}

void TestMainWindow::startStopButtons()
{
    seedLinks();
    installRecorders();
    auto *start = control<SkinButton>("cmdStartDownload");
    auto *stop = control<SkinButton>("cmdStopDownload");

    // The button's own part starts every site but MediaFire.
    QTest::mouseClick(start, Qt::LeftButton, {}, QPoint(20, start->height() / 2));
    QCOMPARE(m_resolved, (QList<int>{1, 2, 3, 4, 6, 7, 8}));
    QVERIFY(!m_window->startMenu()->isVisible());
    QCOMPARE(m_core->list().childAt(5, 0)->values[int(Field::Status)], QString("Waiting"));
    for (int s : {1, 2, 3, 4, 6, 7, 8})
        QVERIFY(m_core->queues().isDownloading(s));

    QTest::mouseClick(stop, Qt::LeftButton, {}, QPoint(20, stop->height() / 2));
    QVERIFY(!m_window->stopMenu()->isVisible());
    QVERIFY(!m_core->isAnyDownloading());
    QVERIFY(m_core->list().childAt(1, 0)->values[int(Field::Status)].startsWith("Stopped"));
}

void TestMainWindow::siteMenus_data()
{
    QTest::addColumn<bool>("start");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("captions");
    QTest::newRow("mnuStart") << true
                              << QStringList{"mnuAll",           "mnuRapidshare", "mnuYoutube",
                                             "mnuMegaUpload",    "mnu4Shared",    "mnuMediaFire",
                                             "mnuDepositeFiles", "mnuHotFile",    "mnuFileFactory"}
                              << QStringList{"Start All",           "Start Rapidshare",
                                             "Start Youtube",       "Start Megaupload",
                                             "Start 4Shared",       "Start Mediafire",
                                             "Start DepositeFiles", "Start Hotfile",
                                             "Start FileFactory"};
    QTest::newRow("mnuStop")
        << false << QStringList{"mnuSAll",           "mnuSRapidshare", "mnuSYoutube",
                                "mnuSMegaUpload",    "mnuS4Shared",    "mnuSMediaFire",
                                "mnuSDepositeFiles", "mnuSHotFile",    "mnuSFileFactory"}
        << QStringList{"Stop All",           "Stop Rapidshare", "Stop Youtube",
                       "Stop Megaupload",    "Stop 4Shared",    "Stop Mediafire",
                       "Stop DepositeFiles", "Stop Hotfile",    "Stop FileFactory"};
}

void TestMainWindow::siteMenus()
{
    QFETCH(bool, start);
    QFETCH(QStringList, names);
    QFETCH(QStringList, captions);
    seedLinks();
    installRecorders();
    QMenu *menu = start ? m_window->startMenu() : m_window->stopMenu();
    QCOMPARE(menu->objectName(), QString(start ? "mnuStart" : "mnuStop"));

    // The entries in order, with a separator after the first; MediaFire's is off.
    QStringList seenNames, seenCaptions;
    const QList<QAction *> actions = menu->actions();
    QVERIFY(actions.size() == 10);
    QVERIFY(actions.at(1)->isSeparator());
    for (QAction *action : actions) {
        if (action->isSeparator())
            continue;
        seenNames << action->objectName();
        seenCaptions << action->text();
        QCOMPARE(action->isEnabled(), !action->objectName().contains("MediaFire"));
    }
    QCOMPARE(seenNames, names);
    QCOMPARE(seenCaptions, captions);

    // The drop-down part of the button opens the menu at its top right corner.
    auto *button = control<SkinButton>(start ? "cmdStartDownload" : "cmdStopDownload");
    const QRect drop = button->dropDownRect();
    QVERIFY(!drop.isEmpty());
    QTest::mouseClick(button, Qt::LeftButton, {}, drop.center());
    QTRY_VERIFY(menu->isVisible());
    // The menu stays on the screen: it opens at the corner, or as far down as fits.
    const QPoint corner = m_window->mapToGlobal(QPoint(button->x() + button->width(), button->y()));
    QCOMPARE(menu->x(), corner.x());
    const int screenBottom = m_window->screen()->availableGeometry().bottom();
    QVERIFY2(
        menu->y() == corner.y() ||
            (menu->y() < corner.y() && menu->geometry().bottom() == screenBottom),
        qPrintable(
            QString("%1 %2 %3").arg(menu->y()).arg(menu->geometry().bottom()).arg(screenBottom)));
    QVERIFY(m_resolved.isEmpty()); // the drop-down part is no click of the button
    menu->hide();

    auto entry = [&](const QString &name) { return menu->findChild<QAction *>(name); };
    if (start) {
        entry("mnuHotFile")->trigger();
        QCOMPARE(m_resolved, QList<int>{7});
        QCOMPARE(m_core->list().childAt(7, 0)->values[int(Field::Status)], QString("Starting..."));
        QVERIFY(!m_core->queues().isDownloading(1));
        // The switched-off entry can't be reached.
        entry("mnuMediaFire")->trigger();
        QCOMPARE(m_resolved, QList<int>{7});
        QCOMPARE(m_core->list().childAt(5, 0)->values[int(Field::Status)], QString("Waiting"));
        entry("mnuAll")->trigger();
        QCOMPARE(m_resolved, (QList<int>{7, 1, 2, 3, 4, 6, 8}));
    } else {
        m_core->startAllDownloads();
        QVERIFY(m_core->queues().isDownloading(7));
        entry("mnuSHotFile")->trigger();
        QVERIFY(!m_core->queues().isDownloading(7));
        QVERIFY(m_core->queues().isDownloading(1));
        entry("mnuSAll")->trigger();
        QVERIFY(!m_core->isAnyDownloading());
    }
}

void TestMainWindow::trayAndMinimiseButtons()
{
    QTest::mouseClick(control<QAbstractButton>("cmdTray"), Qt::LeftButton);
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
        QVERIFY(!m_window->isVisible());
    } else {
        // Without a tray the window would be lost: it is minimised instead.
        QVERIFY(m_window->isVisible());
        QTRY_VERIFY(m_window->windowState() & Qt::WindowMinimized);
    }
    m_window->showNormal();
    QTRY_VERIFY(!(m_window->windowState() & Qt::WindowMinimized));
    QTest::mouseClick(control<QAbstractButton>("cmdMinimize"), Qt::LeftButton);
    QTRY_VERIFY(m_window->windowState() & Qt::WindowMinimized);
    QVERIFY(m_window->isVisible());
}

void TestMainWindow::dragBand_data()
{
    QTest::addColumn<QPoint>("where");
    QTest::addColumn<bool>("drags");
    QTest::addColumn<int>("button");
    QTest::newRow("top edge") << QPoint(100, 0) << true << int(Qt::LeftButton);
    QTest::newRow("five pixels down") << QPoint(100, 5) << true << int(Qt::LeftButton);
    QTest::newRow("right button") << QPoint(300, 2) << true << int(Qt::RightButton);
    QTest::newRow("six pixels down") << QPoint(100, 6) << false << int(Qt::LeftButton);
    QTest::newRow("title strip") << QPoint(100, 15) << false << int(Qt::LeftButton);
}

void TestMainWindow::dragBand()
{
    QFETCH(QPoint, where);
    QFETCH(bool, drags);
    QFETCH(int, button);
    QSignalSpy drag(m_window.get(), &MainWindow::windowDragStarted);
    QCOMPARE(m_window->childAt(where), nullptr);
    QTest::mousePress(m_window.get(), Qt::MouseButton(button), {}, where);
    QTest::mouseRelease(m_window.get(), Qt::MouseButton(button), {}, where);
    QCOMPARE(drag.count(), drags ? 1 : 0);
}

void TestMainWindow::browseRefusesOpticalDisc()
{
    const QString disc = m_sandbox->path("cdrom");
    const QString good = m_sandbox->path("good");
    QDir().mkpath(disc);
    QDir().mkpath(good);
    QStringList tested;
    m_window->setOpticalDriveTest([&](const QString &path) {
        tested << path;
        return path == disc;
    });
    auto *label = control<QLabel>("txtDownloadDir");
    const QString before = label->text();
    const QString refusal("Selected drive is CD ROM, Please select another folder");

    // The optical disc, then a cancel: the picker opened twice, the old folder stays.
    m_prompts->folders << disc << QString();
    QTest::mouseClick(control<QAbstractButton>("cmdBrowse"), Qt::LeftButton);
    QCOMPARE(m_prompts->folderTitles.size(), 2);
    QCOMPARE(m_prompts->messages.size(), 1);
    QCOMPARE(m_prompts->messages.at(0).text, refusal);
    QCOMPARE(m_prompts->messages.at(0).icon, Prompts::Icon::Exclamation);
    QCOMPARE(m_prompts->messages.at(0).buttons, Prompts::Buttons::Ok);
    QCOMPARE(label->text(), before);
    QCOMPARE(Settings::get("DownDir", "unset"), QString("unset"));

    // Twice the disc, then another folder: that one is taken.
    m_prompts->clear();
    m_prompts->folders << disc << disc << good;
    QTest::mouseClick(control<QAbstractButton>("cmdBrowse"), Qt::LeftButton);
    QCOMPARE(m_prompts->folderTitles.size(), 3);
    QCOMPARE(m_prompts->messages.size(), 2);
    QCOMPARE(label->text(), good);
    QCOMPARE(Settings::get("DownDir", "unset"), good);
    QCOMPARE(tested, (QStringList{disc, disc, disc, good}));
}

void TestMainWindow::gridLayout()
{
    QTreeView *grid = m_window->grid();
    QAbstractItemModel *model = grid->model();
    QCOMPARE(model, static_cast<QAbstractItemModel *>(m_window->gridModel()));

    // Shown link columns: header text, width; the rest hidden.
    const struct
    {
        Field field;
        const char *header;
        int width;
    } shown[] = {{Field::CheckBox, " ", 20},
                 {Field::LinkURL, "Download URL", 247},
                 {Field::LocalFile, "Local File Name", 100},
                 {Field::Status, "Download Status", 100},
                 {Field::FileSize, "File Size", 54},
                 {Field::Speed, "Speed", 67},
                 {Field::TimeLeft, "Time Left", 67}};
    int total = 0;
    for (const auto &column : shown) {
        const int c = int(column.field);
        QVERIFY(!grid->isColumnHidden(c));
        QCOMPARE(model->headerData(c, Qt::Horizontal).toString(), QString(column.header));
        QCOMPARE(grid->columnWidth(c), column.width);
        total += grid->columnWidth(c);
    }
    QCOMPARE(total, 655);
    for (Field hidden : {Field::WaitTimeInSec, Field::DirectURL, Field::LocalFilePath,
                         Field::IsResume, Field::ErrorDesc, Field::IsDownloading})
        QVERIFY(grid->isColumnHidden(int(hidden)));
    QVERIFY(!grid->header()->sectionsMovable());

    // Editability: the tick and the link only.
    seedLinks();
    const QModelIndex siteRow = view(site(1));
    for (int c = 0; c < model->columnCount(siteRow); ++c) {
        const QModelIndex cell = model->index(0, c, siteRow);
        QCOMPARE(bool(model->flags(cell) & Qt::ItemIsEditable), c == int(Field::LinkURL));
        QCOMPARE(bool(model->flags(cell) & Qt::ItemIsUserCheckable), c == int(Field::CheckBox));
    }
    QVERIFY(!(model->flags(model->index(0, 1)) & Qt::ItemIsEditable));

    // A site row is one cell across the grid with its name, centred.
    for (int row = 0; row < model->rowCount(); ++row) {
        QVERIFY(grid->isFirstColumnSpanned(row, QModelIndex()));
        QCOMPARE(model->index(row, 0).data().toString(), Sites::siteName(row + 1));
        QCOMPARE(model->index(row, 0).data(Qt::TextAlignmentRole).value<Qt::Alignment>(),
                 Qt::Alignment(Qt::AlignCenter));
    }
}

void TestMainWindow::gridRowPresentation()
{
    seedLinks();
    QAbstractItemModel *model = m_window->gridModel();
    const QModelIndex siteRow = view(site(1));
    const QColor siteGround = model->index(0, 1).data(Qt::BackgroundRole).value<QColor>();
    const QColor linkGround = model->index(0, 2, siteRow).data(Qt::BackgroundRole).value<QColor>();
    QCOMPARE(siteGround, QColor(255, 255, 255, 220));
    QCOMPARE(linkGround, QColor(255, 255, 255, 180));
    QCOMPARE(model->index(0, 2, siteRow).data(GridModel::SelectedBackgroundRole).value<QColor>(),
             QColor(189, 189, 189));
    QCOMPARE(model->index(0, 2, siteRow).data(GridModel::ActiveBackgroundRole).value<QColor>(),
             QColor(194, 194, 194));

    // The percentage goes with a numeric status only.
    const QModelIndex status = model->index(0, int(Field::Status), siteRow);
    LinkRow *row = m_core->list().childAt(1, 0);
    const struct
    {
        const char *status;
        QVariant percent;
    } cases[] = {{"Waiting", QVariant()},
                 {"45.67", 46},
                 {"12.5", 12},
                 {"13.5", 14},
                 {"150", 100},
                 {"-5", 0},
                 {"Stopped(45%)", QVariant()},
                 {"1.5 MB so far", QVariant()}};
    for (const auto &c : cases) {
        m_core->list().setField(row, Field::Status, c.status);
        QCOMPARE(status.data(GridModel::ProgressRole), c.percent);
    }
    QVERIFY(!model->index(0, int(Field::LinkURL), siteRow).data(GridModel::ProgressRole).isValid());
}

void TestMainWindow::editLink_data()
{
    QTest::addColumn<QString>("present");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("result");
    const QString link("http://rapidshare.com/files/1/a.zip");
    const QString other("http://rapidshare.com/files/2/b.zip");
    const QString ask("Are you sure that you want to change the link?");
    QTest::newRow("yes") << link << other << int(Prompts::Answer::Yes) << ask << other;
    QTest::newRow("no") << link << other << int(Prompts::Answer::No) << ask << link;
    QTest::newRow("emptied") << link << "" << int(Prompts::Answer::Yes)
                             << "Link value can not be empty" << link;
    QTest::newRow("present 0") << "0" << other << int(Prompts::Answer::No) << "" << other;
    QTest::newRow("present 1") << "1" << other << int(Prompts::Answer::No) << "" << other;
    QTest::newRow("present 2") << "2" << other << int(Prompts::Answer::No) << ask << "2";
}

void TestMainWindow::editLink()
{
    QFETCH(QString, present);
    QFETCH(QString, typed);
    QFETCH(int, answer);
    QFETCH(QString, message);
    QFETCH(QString, result);
    DownloadList &list = m_core->list();
    QVERIFY(list.addLinkToList(present, 1, m_prompts.get()));
    LinkRow *row = list.childAt(1, 0);
    list.setField(row, Field::DirectURL, "http://direct/a.zip");
    list.setField(row, Field::Status, "Complete");
    list.setField(row, Field::LocalFile, "a.zip");
    m_prompts->answers.enqueue(Prompts::Answer(answer));

    // The user types into the link cell and presses Enter.
    QTreeView *grid = m_window->grid();
    grid->expand(view(site(1)));
    const QModelIndex cell = view(m_window->model()->index(0, int(Field::LinkURL), site(1)));
    grid->setCurrentIndex(cell);
    grid->edit(cell);
    auto *editor = grid->viewport()->findChild<QLineEdit *>();
    QVERIFY(editor);
    QCOMPARE(editor->text(), present);
    editor->selectAll();
    if (typed.isEmpty())
        QTest::keyClick(editor, Qt::Key_Delete);
    else
        QTest::keyClicks(editor, typed);
    QTest::keyClick(editor, Qt::Key_Return);
    // The delegate commits from the event queue.
    QTRY_VERIFY(!grid->viewport()->findChild<QLineEdit *>());

    if (message.isEmpty()) {
        QVERIFY(m_prompts->messages.isEmpty());
    } else {
        QCOMPARE(m_prompts->messages.size(), 1);
        QCOMPARE(m_prompts->messages.at(0).text, message);
        const bool empty = typed.isEmpty();
        QCOMPARE(m_prompts->messages.at(0).icon,
                 empty ? Prompts::Icon::Exclamation : Prompts::Icon::Question);
        QCOMPARE(m_prompts->messages.at(0).buttons,
                 empty ? Prompts::Buttons::Ok : Prompts::Buttons::YesNo);
    }
    QCOMPARE(row->values[int(Field::LinkURL)], result);
    QCOMPARE(cell.data().toString(), result);
    // Nothing else of the row changes.
    QCOMPARE(row->values[int(Field::DirectURL)], QString("http://direct/a.zip"));
    QCOMPARE(row->values[int(Field::Status)], QString("Complete"));
    QCOMPARE(row->values[int(Field::LocalFile)], QString("a.zip"));
}

void TestMainWindow::tickNeedsNoQuestion()
{
    seedLinks();
    QTreeView *grid = m_window->grid();
    grid->expand(view(site(1)));
    const QModelIndex tick = view(m_window->model()->index(0, int(Field::CheckBox), site(1)));
    const QRect box = grid->visualRect(tick);
    QVERIFY(box.isValid());
    LinkRow *row = m_core->list().childAt(1, 0);
    QCOMPARE(row->values[int(Field::CheckBox)], QString("0"));
    // Qt's check box sits at the cell's left; a click there toggles it.
    const QPoint at(box.left() + box.height() / 2, box.center().y());
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(row->values[int(Field::CheckBox)], QString("1"));
    QCOMPARE(tick.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(row->values[int(Field::CheckBox)], QString("0"));
    QVERIFY(m_prompts->messages.isEmpty());
}

void TestMainWindow::progressUpdatesKeepViewState()
{
    DownloadList &list = m_core->list();
    for (int i = 0; i < 60; ++i)
        QVERIFY(list.addLinkToList(QString("http://rapidshare.com/files/%1/f.zip").arg(i), 1,
                                   m_prompts.get()));
    QVERIFY(list.addLinkToList("http://www.hotfile.com/dl/1/a.rar", 7, m_prompts.get()));
    QTreeView *grid = m_window->grid();
    grid->expand(view(site(1)));
    grid->expand(view(site(7)));
    const QModelIndex chosen = view(m_window->model()->index(5, int(Field::LinkURL), site(1)));
    grid->selectionModel()->select(chosen,
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    grid->verticalScrollBar()->setValue(20);
    QCoreApplication::processEvents();
    const int scroll = grid->verticalScrollBar()->value();
    QVERIFY(scroll > 0);

    QSignalSpy resets(m_window->gridModel(), &QAbstractItemModel::modelReset);
    QSignalSpy layouts(m_window->gridModel(), &QAbstractItemModel::layoutChanged);
    QSignalSpy changes(m_window->gridModel(), &QAbstractItemModel::dataChanged);
    LinkRow *hot = list.childAt(7, 0);
    for (int step = 1; step <= 20; ++step) {
        list.setField(hot, Field::Status, QString::number(step * 4.5));
        list.setField(hot, Field::Speed, QString("%1 KB/s").arg(step));
        QCoreApplication::processEvents();
    }
    QCOMPARE(resets.count(), 0);
    QCOMPARE(layouts.count(), 0);
    QCOMPARE(changes.count(), 40);
    // Each change names its one cell.
    const QModelIndex statusCell = view(m_window->model()->index(0, int(Field::Status), site(7)));
    QCOMPARE(changes.at(0).at(0).value<QModelIndex>(), statusCell);
    QCOMPARE(changes.at(0).at(1).value<QModelIndex>(), statusCell);

    QVERIFY(grid->selectionModel()->isSelected(chosen));
    QCOMPARE(grid->selectionModel()->selectedRows().size(), 1);
    QVERIFY(grid->isExpanded(view(site(1))));
    QVERIFY(grid->isExpanded(view(site(7))));
    QCOMPARE(grid->verticalScrollBar()->value(), scroll);

    // A new link is one insertion too.
    QVERIFY(list.addLinkToList("http://www.hotfile.com/dl/2/b.rar", 7, m_prompts.get()));
    QCOMPARE(resets.count(), 0);
    QVERIFY(grid->selectionModel()->isSelected(chosen));
    QCOMPARE(grid->verticalScrollBar()->value(), scroll);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
