// The window's menus and what acts on its list: the tray menu, the list
// bar's buttons, the wheel, a link row's context menu and dropped text.
#include "app/about.h"
#include "app/appcore.h"
#include "fakeprompts.h"
#include "list/downloadlistmodel.h"
#include "listrows.h"
#include "sandbox.h"
#include "standin.h"
#include "ui/aboutdialog.h"
#include "ui/gridmodel.h"
#include "ui/mainwindow.h"
#include "ui/menuholder.h"
#include "ui/windowparts.h"

#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QTreeView>
#include <QtTest>

class TestMenus : public QObject
{
    Q_OBJECT
    struct Rig
    {
        Sandbox sandbox;
        FakePrompts prompts;
        AppCore core{&prompts};
        MainWindow window{&core, &prompts};
    };
    std::unique_ptr<Rig> m;

    QAction *action(const char *name) const
    {
        return m->window.menuHolder()->findChild<QAction *>(QString::fromLatin1(name));
    }
    void add(int site, const QString &link, const char *status = "Waiting", bool ticked = false)
    {
        DownloadList &list = m->core.list();
        QVERIFY(list.addLinkToList(link, site, nullptr));
        LinkRow *row = list.childAt(site, list.childCount(site) - 1);
        list.setField(row, Field::Status, status);
        list.setField(row, Field::CheckBox, ticked ? "1" : "0");
    }
    void click(const char *name)
    {
        auto *button = m->window.findChild<SkinButton *>(QString::fromLatin1(name));
        QVERIFY(button && button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton, {}, button->rect().center() - QPoint(4, 0));
    }

private slots:
    void init()
    {
        m = std::make_unique<Rig>();
        for (int site : {1, 2, 7})
            m->core.queues().setRecipe(site, std::make_unique<StandInRecipe>());
        m->window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m->window));
    }
    void cleanup() { m.reset(); }

    // Each opening writes the captions; an entry of Downloads acts by the
    // caption it shows, Stop All Sites only while something runs, and Exit
    // is the close button.
    void trayMenu()
    {
        add(1, "http://rapidshare.com/files/1/a.zip");
        add(7, "http://hotfile.com/dl/2/b.rar");
        // Start All, Stop All and MediaFire enabled or not, then the captions.
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
        QCOMPARE(m->core.list().childAt(7, 0)->values[int(Field::Status)], "Starting...");
        QCOMPARE(captions(), "110|Start RapidShare|Stop HotFile|Start Youtube");
        // The caption is the only state: an old "Start" starts what runs.
        action("mnuStartRapidShare")->setText("Stop RapidShare");
        action("mnuStartRapidShare")->trigger();
        QCOMPARE(m->core.list().childAt(1, 0)->values[int(Field::Status)], "Waiting");

        action("mnuExit")->trigger();
        QCOMPARE(m->prompts.messages.value(0).text, "There is one download or more currently "
                                                    "running, Please Stop downloading first.");
        QVERIFY(m->window.isVisible());
        m->window.hide();
        action("mnuShow")->trigger();
        QVERIFY(m->window.isVisible());
    }

    // The buttons act on ticked rows and keep the grid where it was.
    void listButtons()
    {
        DownloadList &list = m->core.list();
        for (int i = 0; i < 40; ++i)
            add(1, QString("http://rapidshare.com/files/%1/a.zip").arg(i),
                i == 3 ? "50" : "Waiting", i == 2 || i == 3);
        list.setField(list.childAt(1, 3), Field::IsDownloading, "1");
        add(7, "http://hotfile.com/dl/1/e.rar", "Connection Error");
        m->window.grid()->expandAll();
        m->window.setFirstVisibleRow(5);
        click("cmdUp");
        QCOMPARE(rowsOf(list).mid(1, 2), (QStringList{"1|http://rapidshare.com/files/2/a.zip",
                                                      "1|http://rapidshare.com/files/1/a.zip"}));
        // The running row stays; Remove tells of it.
        click("cmdRemoveSelected");
        QCOMPARE(list.childCount(1), 39);
        QCOMPARE(m->prompts.messages.size(), 1);
        QCOMPARE(m->window.firstVisibleRow(), 5);
        click("cmdClearError");
        QCOMPARE(list.childCount(7), 0);
    }

    // The wheel over the window scrolls the grid a line a turn while the grid
    // is active: towards the end for a turn towards the user, towards the
    // top otherwise, a zero turn included. With a button active it doesn't.
    void wheel()
    {
        for (int i = 0; i < 60; ++i)
            add(1, QString("http://rapidshare.com/files/%1/a.zip").arg(i));
        m->window.grid()->expandAll();
        QScrollBar *bar = m->window.grid()->verticalScrollBar();
        bar->setValue(10);
        const QPoint body(20, m->window.height() - 20); // the foot, not the grid
        auto turn = [&](int delta) {
            QWheelEvent event(body, m->window.mapToGlobal(body), {}, QPoint(0, delta), Qt::NoButton,
                              {}, Qt::NoScrollPhase, false);
            QApplication::sendEvent(&m->window, &event);
            return bar->value();
        };
        m->window.grid()->setFocus();
        QTRY_VERIFY(QApplication::focusWidget() == m->window.grid());
        QCOMPARE((QList<int>{turn(-120), turn(-360), turn(120), turn(0)}),
                 (QList<int>{11, 12, 11, 10}));
        m->window.findChild<SkinButton *>("cmdBrowse")->setFocus();
        QTRY_VERIFY(QApplication::focusWidget() != m->window.grid());
        QCOMPARE(turn(-120), 10);
    }

    // Update asks the maker's page about this version; Help opens the
    // guide beside the program, and nothing without one; About shows the
    // version and opens the maker's address.
    void aboutHelpUpdate()
    {
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
    }

    // A link row's menu opens a complete file and its folder and copies the
    // link; dropped text goes in as the add button takes it.
    void rowMenuAndDrop()
    {
        add(1, "http://rapidshare.com/files/1/a.zip", "Complete");
        add(1, "http://rapidshare.com/files/2/b.zip", "Complete");
        DownloadList &list = m->core.list();
        const QString folder = m->sandbox.path("downloads");
        QDir().mkpath(folder);
        QFile(folder + "/a.zip").open(QIODevice::WriteOnly);
        for (int i : {0, 1}) {
            list.setField(list.childAt(1, i), Field::LocalFilePath, folder);
            list.setField(list.childAt(1, i), Field::LocalFile, i ? "b.zip" : "a.zip");
        }
        m->window.grid()->expandAll();
        QStringList offered;
        auto choose = [&](int row, const char *caption) {
            m->window.setRowMenuChoice([&, caption](QMenu *menu) -> QAction * {
                QString enabled;
                for (QAction *a : menu->actions())
                    enabled += a->isEnabled() ? '1' : '0';
                offered << enabled;
                for (QAction *a : menu->actions())
                    if (a->text() == caption)
                        return a;
                return nullptr;
            });
            const QModelIndex site = m->window.gridModel()->index(0, 0);
            const QModelIndex cell = m->window.gridModel()->index(row, int(Field::LinkURL), site);
            m->window.showRowMenu(m->window.grid()->visualRect(cell).center());
        };
        choose(0, "Open File");
        choose(0, "Open Containing Folder");
        choose(1, "Copy Link");
        QCOMPARE(offered, (QStringList{"111", "111", "011"})); // b.zip isn't there
        QCOMPARE(m->prompts.opened, (QStringList{folder + "/a.zip", folder}));
        QCOMPARE(m->prompts.copied, QStringList{"http://rapidshare.com/files/2/b.zip"});

        QMimeData mime;
        mime.setText("see http://hotfile.com/dl/9/c.rar here");
        QDragEnterEvent enter(QPoint(100, 100), Qt::CopyAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&m->window, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(100, 100), Qt::CopyAction, &mime, Qt::LeftButton, {});
        QApplication::sendEvent(&m->window, &drop);
        QCOMPARE(rowsOf(list).last(), "7|http://hotfile.com/dl/9/c.rar");
    }
};

QTEST_MAIN(TestMenus)
#include "tst_menus.moc"
