// The main window: the link box, its controls, the start, stop and tray
// menus, link editing and the grid; the list bar, the wheel, a link row's
// context menu and dropped text.
#include "app/about.h"
#include "app/appcore.h"
#include "app/cregister.h"
#include "datatable.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlistmodel.h"
#include "listrows.h"
#include "sandbox.h"
#include "standin.h"
#include "ui/aboutdialog.h"
#include "ui/gridmodel.h"
#include "ui/mainwindow.h"
#include "ui/menuholder.h"
#include "ui/windowparts.h"

#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSystemTrayIcon>
#include <QTreeView>
#include <QtTest>

// The link in the cell, the text typed over it, the message shown (empty:
// none) and the link after ("<gone>": the row goes while the question is up).
using EditLinks = Table<QString, QString, QString, QString>;

class TestMainWindow : public QObject
{
    Q_OBJECT
    // What a test works on, made anew for each and gone in reverse order.
    struct Rig
    {
        Sandbox sandbox;
        FakePrompts prompts;
        QList<int> resolved; // the sites whose stand-in recipes ran, in order
        AppCore core{&prompts};
        MainWindow window{&core, &prompts};
    };

private slots:
    void init()
    {
        m = std::make_unique<Rig>();
        m->core.setLinkListPath(m->sandbox.path("LinkList.lq"));
        // Should anything start the sites of the links the tests add, nothing
        // leaves the machine.
        for (int site : {1, 2, 7})
            m->core.queues().setRecipe(site, std::make_unique<StandInRecipe>());
        m->window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m->window));
    }
    void cleanup() { m.reset(); }

    // The hint goes as the box takes the focus and comes back for blanks
    // when it loses it (line breaks stay; a pop-up menu takes the focus only
    // for a moment). The add button hands the box's lines, with CR LF
    // between them, to the intake and shows what comes back.
    void linkBox()
    {
        LinkTextBox *links = m->window.linksBox();
        QCOMPARE(links->text(), LinkHint::designText());
        auto focus = [links](const QString &text, QEvent::Type type,
                             Qt::FocusReason reason = Qt::TabFocusReason) {
            links->setText(text);
            QFocusEvent event(type, reason);
            QApplication::sendEvent(links, &event);
            return links->text();
        };
        QCOMPARE((QStringList{focus(LinkHint::designText(), QEvent::FocusIn),
                              focus("   ", QEvent::FocusOut), focus("\r\n\r\n", QEvent::FocusOut),
                              focus(" ", QEvent::FocusOut, Qt::PopupFocusReason)}),
                 (QStringList{"", LinkHint::lostFocusText(), "\r\n\r\n", " "}));

        links->setText("http://rapidshare.com/files/1/a.zip\r\nhttp://hotfile.com/dl/2/b.rar");
        click("cmdAddLinks");
        QCOMPARE(rowsOf(m->core.list()), (QStringList{"1|http://rapidshare.com/files/1/a.zip",
                                                      "7|http://hotfile.com/dl/2/b.rar"}));
        QCOMPARE(links->text(), LinkHint::shortText());
    }

    // The controls around the grid: the two boxes under it, the download
    // folder, and the title strip's buttons and band, with About, Help and
    // Update.
    void windowControls()
    {
        // After each click: the two boxes, then the sub-folder setting and a
        // shut-down one, which is no setting. A value read shows in the box.
        auto *create = m->window.findChild<QCheckBox *>("chkCreate");
        auto *shutDown = m->window.findChild<QCheckBox *>("chkShutDown");
        QStringList seen;
        for (const char *name :
             {"chkCreate", "lblCreate", "lblCreate", "chkShutDown", "lblShutdown", "lblShutdown"}) {
            click(name);
            seen << QString::number(create->isChecked()) + QString::number(shutDown->isChecked()) +
                        Settings::get("CreatSubDir", "-") + Settings::get("ShutDown", "-");
        }
        QCOMPARE(seen, (QStringList{"101-", "000-", "101-", "111-", "101-", "111-"}));
        Settings::save("CreatSubDir", "0");
        m->core.readSettings();
        QVERIFY(!create->isChecked());

        // The picker opens at the present folder, and again after each
        // refusal of the optical disc, with the next pick: the disc, then
        // cancelled, changes nothing; twice the disc, then another folder:
        // that one is taken. The label follows the core's folder, whoever
        // sets it.
        const QString disc = m->sandbox.path("cdrom"), good = m->sandbox.path("good");
        const QString before = m->core.downloadDir();
        m->window.setOpticalDriveTest([&](const QString &path) { return path == disc; });
        auto *label = m->window.findChild<QLabel *>("txtDownloadDir");
        m->prompts.folderAnswers = {disc, QString(), disc, disc, good};
        for (int i = 0; i < 2; ++i) {
            click("cmdBrowse");
            seen << label->text() + '|' + Settings::get("DownDir", "-");
        }
        QCOMPARE(seen.mid(6), (QStringList{before + "|-", good + '|' + good}));
        QCOMPARE(m->prompts.folderTitles,
                 QStringList(5, "Please, Select the download folder. at " + before));
        m->core.setDownloadDir(disc);
        QCOMPARE(label->text(), disc);

        // Update asks the maker's page about this version; Help opens the
        // guide beside the program, and nothing without one; About shows the
        // version and opens the maker's address.
        QCOMPARE(About::versionText(2, 5, 31), "2.5.0.31");
        click("lblUpdate");
        click("cmdHelp");
        QFile guide(QCoreApplication::applicationDirPath() + "/guide.html");
        QVERIFY(guide.open(QIODevice::WriteOnly));
        click("cmdHelp");
        guide.remove();
        AboutDialog about(&m->prompts);
        about.show();
        QCOMPARE(about.findChild<QLabel *>("lblVer")->text(), About::versionText());
        QTest::mouseClick(about.findChild<QLabel *>("lblOptions"), Qt::LeftButton);
        QCOMPARE(m->prompts.opened,
                 (QStringList{About::makerHost + "/updates.html?V=" + About::versionText() +
                                  "&N=TessalwickDownloadManager",
                              guide.fileName(), About::makerHost}));

        // Without a tray the window would be lost: it is minimised instead.
        MainWindow *window = &m->window;
        const bool tray = QSystemTrayIcon::isSystemTrayAvailable();
        QCOMPARE(window->trayIcon()->isVisible(), tray);
        click("cmdTray");
        QTRY_VERIFY(tray ? !window->isVisible() : window->isVisible() && window->isMinimized());
        window->showNormal();
        QTRY_VERIFY(!window->isMinimized());
        click("cmdMinimize");
        QTRY_VERIFY(window->isVisible() && window->isMinimized());

        // The window's top band, five pixels deep, drags it, with any button.
        QSignalSpy drag(window, &MainWindow::windowDragStarted);
        QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(100, 5));
        QTest::mouseClick(window, Qt::RightButton, {}, QPoint(300, 2));
        QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(100, 6));
        QCOMPARE(drag.count(), 2);

        // With nothing running, close saves the list and ends the program
        // without a word (its refusal is the tray's Exit in siteMenus()).
        // Each refusal of the optical disc was told.
        add(1, "rapidshare.com/files/1/a.zip");
        QSignalSpy quit(&m->core, &AppCore::quitRequested);
        click("cmdClose");
        QVERIFY(quit.count() == 1 && QFile::exists(m->sandbox.path("LinkList.lq")) &&
                !window->isVisible());
        QCOMPARE(m->prompts.told(),
                 QStringList(3, box("Selected drive is CD ROM, Please select another folder")));
    }

    // The menus' entry n starts or stops site n, after "All" and a separator;
    // MediaFire's can't be chosen. The drop-down part of each button opens
    // its menu, and is no click; the buttons' own parts start and stop every
    // site but MediaFire. The tray menu writes its captions at each opening;
    // an entry of Downloads acts by the caption it shows, Stop All Sites only
    // while something runs, and Exit is the close button.
    void siteMenus()
    {
        // A link under every site, each site with a recipe that records its
        // start and leaves the row as the queue marked it: nothing leaves the machine.
        for (int s = 1; s <= Sites::Count; ++s) {
            add(s, QString("http://host%1/file").arg(s));
            auto standIn = std::make_unique<StandInRecipe>();
            standIn->order = &m->resolved;
            m->core.queues().setRecipe(s, std::move(standIn));
        }
        QMenu *start = m->window.startMenu(), *stop = m->window.stopMenu();
        auto entry = [](QMenu *menu, int n) { return menu->actions().at(n ? n + 1 : 0); };
        for (QMenu *menu : {start, stop}) {
            QVERIFY(entry(menu, 4)->isEnabled() && !entry(menu, 5)->isEnabled());
            auto *button = m->window.findChild<SkinButton *>(menu == start ? "cmdStartDownload"
                                                                           : "cmdStopDownload");
            QTest::mouseClick(button, Qt::LeftButton, {}, button->dropDownRect().center());
            QTRY_VERIFY(menu->isVisible());
            menu->hide();
        }
        QVERIFY(m->resolved.isEmpty());

        click("cmdStartDownload", QPoint(20, 10));
        QCOMPARE(m->resolved, (QList<int>{1, 2, 3, 4, 6, 7, 8}));
        entry(stop, 7)->trigger();
        QVERIFY(!m->core.queues().isDownloading(7) && m->core.queues().isDownloading(1));
        click("cmdStopDownload", QPoint(20, 10));
        QVERIFY(!m->core.isAnyDownloading() && !start->isVisible() && !stop->isVisible());
        // Again site 7 first; "All" then starts the others.
        entry(start, 7)->trigger();
        entry(start, 0)->trigger();
        QCOMPARE(m->resolved, (QList<int>{1, 2, 3, 4, 6, 7, 8, 7, 1, 2, 3, 4, 6, 8}));
        entry(stop, 0)->trigger();

        // The tray, once "All" has stopped every site: Start All, Stop All
        // and MediaFire enabled or not, then the captions, as the menu opens.
        auto captions = [&] {
            m->window.menuHolder()->prepareTrayMenu();
            QString seen;
            for (const char *name : {"mnuStatAllSites", "mnuStopAllSites", "mnuStartMediaFire"})
                seen += action(name)->isEnabled() ? '1' : '0';
            for (const char *name : {"mnuStartRapidShare", "mnuStartHotFile", "mnuStartYoutube"})
                seen += '|' + action(name)->text();
            return seen;
        };
        QCOMPARE(captions(), "100|Start RapidShare|Start HotFile|Start Youtube");
        action("mnuStartHotFile")->trigger(); // "Start HotFile": the site starts
        QCOMPARE(captions(), "110|Start RapidShare|Stop HotFile|Start Youtube");
        // The caption is the only state: an old "Start" stops what doesn't run.
        action("mnuStartRapidShare")->setText("Stop RapidShare");
        action("mnuStartRapidShare")->trigger();
        QCOMPARE(m->resolved.mid(14), QList<int>{7});

        // Exit is refused while a site runs: it is told, the window stays
        // (the program would have closed it), the list isn't saved.
        action("mnuExit")->trigger();
        QCOMPARE(m->prompts.told(), QStringList{box("There is one download or more currently "
                                                    "running, Please Stop downloading first.")});
        QVERIFY(m->window.isVisible() && !QFile::exists(m->sandbox.path("LinkList.lq")));
        m->window.hide();
        action("mnuShow")->trigger();
        QVERIFY(m->window.isVisible());
    }

    // The question is answered yes where the link should change.
    void editLink_data()
    {
        const EditLinks row;
        const QString link("rapidshare.com/files/1/a.zip"), other("rapidshare.com/files/2/b.zip");
        const QString ask = box("Are you sure that you want to change the link?",
                                Prompts::Icon::Question, Prompts::Buttons::YesNo);
        row("yes", link, other, ask, other);
        row("empty", link, "", box("Link value can not be empty"), link);
        // A present 0 or 1 is a tick's value, whatever the column: it changes
        // without a question (the tick clicks show 0 too).
        row("present 1", "1", other, "", other);
        row("present 2, no", "2", other, ask, "2");
        row("row removed while asked", link, other, ask, "<gone>");
    }

    // The user's text for the link cell, which holds the present link: the
    // row's fields afterwards, where nothing but the link changes.
    void editLink()
    {
        const auto [present, typed, message, result] = EditLinks::fetch();
        DownloadList &list = m->core.list();
        add(1, present, "Complete");
        LinkRow *row = list.childAt(1, 0);
        list.setField(row, Field::DirectURL, "http://direct/a.zip");
        m->prompts.answers.enqueue(result != present ? Prompts::Answer::Yes : Prompts::Answer::No);
        QStringList after(row->values.begin(), row->values.end());
        after[int(Field::LinkURL)] = result;
        if (result == "<gone>") {
            m->prompts.whileAsking = [&] { list.removeRow(row); };
            after.clear();
        }
        const QModelIndex cell = cellAt(0, Field::LinkURL);
        QVERIFY(cell.flags() & Qt::ItemIsEditable);
        QCOMPARE(cell.data(Qt::EditRole).toString(), present);
        m->window.gridModel()->setData(cell, typed);
        QCOMPARE(m->prompts.told(), message.isEmpty() ? QStringList() : QStringList{message});
        QCOMPARE(list.childCount(1) ? QStringList(row->values.begin(), row->values.end())
                                    : QStringList(),
                 after);
    }

    // The grid's site rows; a click on the tick changes it without a
    // question; progress and new rows keep the view as the user left it.
    void gridRows()
    {
        QTreeView *grid = m->window.grid();
        // After a click on `button` if any, each site row: hidden (h),
        // expanded (+) or collapsed (-).
        QStringList seen;
        auto rows = [&](const char *button = nullptr) {
            if (button)
                click(button);
            QString s;
            for (int n = 1; n <= Sites::Count; ++n)
                s += grid->isRowHidden(n - 1, {}) ? 'h' : "-+"[grid->isExpanded(site(n))];
            seen << s;
        };
        // The MediaFire row never shows, while its links exist all the same:
        // not after a reopened list, nor after any walk of the link intake.
        add(5, "mediafire.com/?abc");
        QCOMPARE(m->window.model()->rowCount(m->window.model()->siteIndex(5)), 1);
        rows();
        m->core.list().open();
        rows();
        grid->setRowHidden(site(5).row(), QModelIndex(), false);
        m->core.parseLinks("some words without a single link", false);
        rows();
        // Expand/collapse all: the first row alone decides, whatever state
        // the others are in.
        rows("cmdExpandCollapse");
        grid->collapse(site(8));
        rows("cmdExpandCollapse");
        grid->expand(site(8));
        rows("cmdExpandCollapse");
        QCOMPARE(seen, (QStringList{"----h---", "----h---", "----h---", "++++h+++", "----h---",
                                    "++++h+++"}));

        // Site 1 is expanded now, as every row. Qt's check box sits at the
        // cell's left; a click there toggles it: the row's value and the
        // cell's state.
        add(1, "http://rapidshare.com/files/1/f.zip");
        const QModelIndex tick = cellAt(0, Field::CheckBox);
        const QRect cell = grid->visualRect(tick);
        auto clickTick = [&] {
            QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
                              QPoint(cell.left() + cell.height() / 2, cell.center().y()));
            return m->core.list().childAt(1, 0)->values[int(Field::CheckBox)] +
                   tick.data(Qt::CheckStateRole).toString();
        };
        QCOMPARE((QStringList{clickTick(), clickTick()}), (QStringList{"12", "00"}));
        QVERIFY(m->prompts.messages.isEmpty());

        // Neither progress nor a new link disturbs the selection or the
        // expansion (the list model's test holds to its signals: no reset, no
        // new layout).
        grid->setCurrentIndex(cellAt(0, Field::LinkURL));
        m->core.list().setField(m->core.list().childAt(1, 0), Field::Status, "45.5");
        add(1, "http://rapidshare.com/files/2/f.zip");
        QCoreApplication::processEvents(); // the grid paints them
        QCOMPARE(grid->selectionModel()->selectedRows(), QModelIndexList{cellAt(0, Field::ItemID)});
        QVERIFY(grid->isExpanded(site(1)));
    }

    // The wheel over the window scrolls the grid a line a turn while the
    // grid is active: towards the end for a turn towards the user, towards
    // the top otherwise, a zero turn included. With a button active it
    // doesn't. Then every button of the list bar acts on ticked rows and
    // keeps the grid where it was.
    void wheelAndListBar()
    {
        DownloadList &list = m->core.list();
        const char *status[] = {"Waiting", "Waiting", "Waiting", "Waiting",
                                "50",      "Waiting", "Complete"};
        for (int i = 0; i < 40; ++i)
            add(1, QString("http://rapidshare.com/files/%1/a.zip").arg(i),
                i < 7 ? status[i] : "Waiting", i >= 2 && i <= 4);
        list.setField(list.childAt(1, 4), Field::IsDownloading, "1");
        add(7, "http://hotfile.com/dl/1/e.rar", "Connection Error");
        add(7, "http://hotfile.com/dl/2/f.rar", "ERROR");
        add(7, "http://hotfile.com/dl/3/g.rar", "Error");
        QTreeView *grid = m->window.grid();
        grid->expandAll();
        m->window.setFirstVisibleRow(5);

        const QPoint body(20, m->window.height() - 20); // the foot, not the grid
        auto turn = [&](int delta) {
            QWheelEvent event(body, m->window.mapToGlobal(body), {}, QPoint(0, delta), Qt::NoButton,
                              {}, Qt::NoScrollPhase, false);
            QApplication::sendEvent(&m->window, &event);
            return m->window.firstVisibleRow();
        };
        grid->setFocus();
        QTRY_VERIFY(QApplication::focusWidget() == grid);
        QCOMPARE((QList<int>{turn(-120), turn(-360), turn(120), turn(0)}),
                 (QList<int>{6, 7, 6, 5}));
        m->window.findChild<SkinButton *>("cmdBrowse")->setFocus();
        QTRY_VERIFY(QApplication::focusWidget() != grid);
        QCOMPARE(turn(-120), 5);

        // Of two ticked waiting rows the upper moves up.
        auto files = [&](int from, int n) {
            QStringList names;
            for (const QString &row : rowsOf(list).mid(from, n))
                names << row.section('/', -2, -2);
            return names.join(' ');
        };
        click("cmdUp");
        QCOMPARE(files(1, 4), "2 1 3 4");
        // The running row stays; Remove tells of it.
        click("cmdRemoveSelected");
        QCOMPARE(files(1, 5), "1 4 5 6 7");
        QCOMPARE(m->prompts.messages.size(), 1);
        QCOMPARE(m->window.firstVisibleRow(), 5);
        // Down takes a ticked waiting row past the complete row below it.
        list.setField(list.childAt(1, 3), Field::CheckBox, "1");
        list.setField(list.childAt(7, 2), Field::CheckBox, "1");
        click("cmdDown");
        QCOMPARE(files(1, 5), "1 4 6 5 7");
        // Reset makes the ticked error row wait again, so Clear Errors keeps it.
        click("cmdRedownload");
        click("cmdClearError");
        QCOMPARE(list.childCount(7), 1);
        QCOMPARE(list.childAt(7, 0)->values[int(Field::Status)], "Waiting");
        click("cmdClearComplete");
        QCOMPARE(files(1, 4), "1 4 5 7");
        // Clear refuses while a row is in progress; then it asks.
        click("cmdClearList");
        QCOMPARE(list.childCount(1), 37);
        list.setField(list.childAt(1, 2), Field::IsDownloading, "0");
        click("cmdClearList");
        QCOMPARE(m->prompts.told().mid(1),
                 (QStringList{box("There is one download or more currently running, Please Stop "
                                  "downloading first."),
                              box("Are you sure that you want to remove all items?",
                                  Prompts::Icon::Question, Prompts::Buttons::YesNo)}));
        QCOMPARE(rowsOf(list), QStringList());
    }

    // A link row's menu opens a complete file and its folder and copies the
    // link; dropped text goes in as the add button takes it.
    void rowMenuAndDrop()
    {
        DownloadList &list = m->core.list();
        const QString folder = m->sandbox.home();
        QFile(folder + "/a.zip").open(QIODevice::WriteOnly);
        for (const char *file : {"a.zip", "b.zip"}) { // b.zip isn't there
            add(1, QString("http://rapidshare.com/files/") + file, "Complete");
            list.setField(list.childAt(1, list.childCount(1) - 1), Field::LocalFilePath, folder);
            list.setField(list.childAt(1, list.childCount(1) - 1), Field::LocalFile, file);
        }
        m->window.grid()->expandAll();
        // Each opening: its entries enabled or not, and the one chosen.
        QStringList offered;
        QString caption;
        m->window.setRowMenuChoice([&](QMenu *menu) {
            QAction *chosen = nullptr;
            offered << QString();
            for (QAction *a : menu->actions()) {
                offered.last() += a->isEnabled() ? '1' : '0';
                chosen = a->text() == caption ? a : chosen;
            }
            return chosen;
        });
        auto choose = [&](int row, const char *text) {
            caption = text;
            m->window.showRowMenu(
                m->window.grid()->visualRect(cellAt(row, Field::LinkURL)).center());
        };
        choose(0, "Open File");
        choose(0, "Open Containing Folder");
        choose(1, "Copy Link");
        QCOMPARE(offered, (QStringList{"111", "111", "011"}));
        QCOMPARE(m->prompts.opened, (QStringList{folder + "/a.zip", folder}));
        QCOMPARE(m->prompts.copied, QStringList{"http://rapidshare.com/files/b.zip"});

        QMimeData mime;
        mime.setText("see http://hotfile.com/dl/9/c.rar here");
        QDragEnterEvent enter(QPoint(100, 100), Qt::CopyAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&m->window, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(100, 100), Qt::CopyAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&m->window, &drop);
        QCOMPARE(rowsOf(list).last(), "7|http://hotfile.com/dl/9/c.rar");
    }

private:
    QAction *action(const char *name) const
    {
        return m->window.menuHolder()->findChild<QAction *>(QString::fromLatin1(name));
    }
    // A click on an enabled control, at its middle or at `at` (a split
    // button's own part is its left).
    void click(const QString &name, QPoint at = {})
    {
        auto *widget = m->window.findChild<QWidget *>(name);
        QVERIFY(widget && widget->isEnabled());
        QTest::mouseClick(widget, Qt::LeftButton, {}, at);
    }
    // Adds the link `u` under site `s`, with its status and tick.
    void add(int s, const QString &u, const char *status = "Waiting", bool ticked = false)
    {
        DownloadList &list = m->core.list();
        QVERIFY(list.addLinkToList(u, s, &m->prompts));
        list.setField(list.childAt(s, list.childCount(s) - 1), Field::Status, status);
        list.setField(list.childAt(s, list.childCount(s) - 1), Field::CheckBox, ticked ? "1" : "0");
    }
    // The grid's index of a site row (in number order), and of a cell of a
    // link row under site 1.
    QModelIndex site(int n) const { return m->window.gridModel()->index(n - 1, 0); }
    QModelIndex cellAt(int r, Field f) const { return site(1).model()->index(r, int(f), site(1)); }
    // A message box as FakePrompts::told() writes it: a warning with an Ok
    // button under the program's title unless told otherwise.
    static QString box(const QString &text, Prompts::Icon icon = Prompts::Icon::Exclamation,
                       Prompts::Buttons buttons = Prompts::Buttons::Ok)
    {
        return FakePrompts::message(text, icon, buttons, "Tessalwick");
    }

    std::unique_ptr<Rig> m;
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
