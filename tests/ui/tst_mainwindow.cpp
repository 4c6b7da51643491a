#include "app/appcore.h"
#include "app/cregister.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlistmodel.h"
#include "listrows.h"
#include "sandbox.h"
#include "standin.h"
#include "ui/gridmodel.h"
#include "ui/mainwindow.h"
#include "ui/windowparts.h"

#include <QCheckBox>
#include <QMenu>
#include <QScrollBar>
#include <QSystemTrayIcon>
#include <QTreeView>
#include <QtTest>

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
        m->window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&m->window));
    }
    void cleanup() { m.reset(); }

    void linkBoxHint()
    {
        LinkTextBox *links = m->window.linksBox();
        QCOMPARE(links->text(), LinkHint::designText());
        // The box's text after a focus event finds it holding `text`.
        auto focus = [links](const QString &text, QEvent::Type type,
                             Qt::FocusReason reason = Qt::TabFocusReason) {
            links->setText(text);
            QFocusEvent event(type, reason);
            QApplication::sendEvent(links, &event);
            return links->text();
        };
        QCOMPARE(focus(LinkHint::designText(), QEvent::FocusIn), QString());
        // Blanks count as empty, and bring the hint back; line breaks stay.
        QCOMPARE(focus("   ", QEvent::FocusOut), LinkHint::lostFocusText());
        QCOMPARE(focus("\r\n\r\n", QEvent::FocusOut), QString("\r\n\r\n"));
        // A pop-up menu takes the focus only for a moment.
        QCOMPARE(focus(" ", QEvent::FocusOut, Qt::PopupFocusReason), QString(" "));

        // The add button hands the box's lines, with CR LF between them, to
        // the intake and shows what comes back.
        links->setText("http://rapidshare.com/files/1/a.zip\r\nhttp://hotfile.com/dl/2/b.rar");
        click("cmdAddLinks");
        QCOMPARE(rowsOf(m->core.list()), (QStringList{"1|http://rapidshare.com/files/1/a.zip",
                                                      "7|http://hotfile.com/dl/2/b.rar"}));
        QCOMPARE(links->text(), LinkHint::shortText());
    }

    // The controls around the grid: the download folder and the two boxes
    // under it, the title strip's buttons and band.
    void windowControls()
    {
        auto *create = m->window.findChild<QCheckBox *>("chkCreate");
        auto *shutDown = m->window.findChild<QCheckBox *>("chkShutDown");
        // After each click: the two boxes, then the sub-folder setting and a
        // shut-down one, which is no setting.
        QStringList seen;
        for (const char *name :
             {"chkCreate", "lblCreate", "lblCreate", "chkShutDown", "lblShutdown", "lblShutdown"}) {
            click(name);
            seen << QString::number(create->isChecked()) + QString::number(shutDown->isChecked()) +
                        Settings::get("CreatSubDir", "-") + Settings::get("ShutDown", "-");
        }
        QCOMPARE(seen, (QStringList{"101-", "000-", "101-", "111-", "101-", "111-"}));
        // A value read from the settings shows in the box.
        Settings::save("CreatSubDir", "0");
        m->core.readSettings();
        QVERIFY(!create->isChecked());

        const QString disc = m->sandbox.path("cdrom"), good = m->sandbox.path("good");
        m->window.setOpticalDriveTest([&](const QString &path) { return path == disc; });
        auto *label = m->window.findChild<QLabel *>("txtDownloadDir");
        const QString before = m->core.downloadDir();
        auto shown = [&] { return QStringList{label->text(), Settings::get("DownDir", "-")}; };
        // The picker opens again after each refusal, with the next pick.
        QStringList picks{QString(), disc, good};
        m->prompts.whileAsking = [&] { m->prompts.folderAnswer = picks.takeFirst(); };

        // The optical disc, refused, then cancelled: nothing changes.
        m->prompts.folderAnswer = disc;
        click("cmdBrowse");
        QCOMPARE(shown(), (QStringList{before, "-"}));
        // Twice the disc, then another folder: that one is taken.
        m->prompts.folderAnswer = disc;
        click("cmdBrowse");
        QCOMPARE(m->prompts.folderTitles, QStringList(5, "Please, Select the download folder."));
        QCOMPARE(shown(), (QStringList{good, good}));
        // The label follows the core's folder, whoever sets it.
        m->core.setDownloadDir(disc);
        QCOMPARE(label->text(), disc);

        m->prompts.whileAsking = nullptr;

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
        QList<qsizetype> drags;
        for (const QPoint at : {QPoint(100, 5), QPoint(300, 2), QPoint(100, 6)}) {
            QTest::mouseClick(window, at.x() == 300 ? Qt::RightButton : Qt::LeftButton, {}, at);
            drags << drag.count();
        }
        QCOMPARE(drags, (QList<qsizetype>{1, 2, 2}));

        // Close is refused while a row downloads; once nothing runs, the list
        // is saved and the program ends.
        add("rapidshare.com/files/1/a.zip", 1);
        QSignalSpy quit(&m->core, &AppCore::quitRequested);
        for (const bool downloading : {true, false}) {
            m->core.list().setField(m->core.list().childAt(1, 0), Field::IsDownloading,
                                    QString::number(downloading));
            click("cmdClose");
            QCOMPARE((QList<bool>{quit.count() == 1, QFile::exists(m->sandbox.path("LinkList.lq")),
                                  window->isVisible()}),
                     (QList<bool>{!downloading, !downloading, downloading}));
        }
        // Each refusal was told: three of the optical disc, one of the close.
        const QVariantList cdRom = box("Selected drive is CD ROM, Please select another folder");
        QCOMPARE(said(), (QList<QVariantList>{cdRom, cdRom, cdRom,
                                              box("There is one download or more currently "
                                                  "running, Please Stop downloading first.")}));
    }

    void startStopMenus()
    {
        // A link under every site, each site with a recipe that records its
        // start and leaves the row as the queue marked it: nothing leaves the machine.
        for (int s = 1; s <= Sites::Count; ++s) {
            add(QString("http://host%1/file").arg(s), s);
            auto standIn = std::make_unique<StandInRecipe>();
            standIn->order = &m->resolved;
            m->core.queues().setRecipe(s, std::move(standIn));
        }
        QMenu *start = m->window.startMenu(), *stop = m->window.stopMenu();
        for (QMenu *menu : {start, stop}) {
            const QString verb = menu == start ? "Start" : "Stop";
            // The entries in order, a separator after the first; MediaFire's is off.
            QStringList seen;
            for (const QAction *a : menu->actions())
                seen << (a->isSeparator() ? "-" : a->text() + (a->isEnabled() ? "" : " (off)"));
            QCOMPARE(seen.join('|'),
                     QString("%1 All|-|%1 Rapidshare|%1 Youtube|%1 Megaupload|%1 4Shared|"
                             "%1 Mediafire (off)|%1 DepositeFiles|%1 Hotfile|%1 FileFactory")
                         .arg(verb));
            // The drop-down part of the button opens the menu; it is no click.
            auto *button = m->window.findChild<SkinButton *>("cmd" + verb + "Download");
            QTest::mouseClick(button, Qt::LeftButton, {}, button->dropDownRect().center());
            QTRY_VERIFY(menu->isVisible());
            menu->hide();
        }
        QVERIFY(m->resolved.isEmpty());

        // The buttons' own parts start and stop every site but MediaFire.
        click("cmdStartDownload", QPoint(20, 10));
        QCOMPARE(m->resolved, (QList<int>{1, 2, 3, 4, 6, 7, 8}));
        // The entry of site n follows "All" and the separator.
        auto entry = [](QMenu *menu, int n) { menu->actions().at(n ? n + 1 : 0)->trigger(); };
        entry(stop, 7);
        QVERIFY(!m->core.queues().isDownloading(7) && m->core.queues().isDownloading(1));
        click("cmdStopDownload", QPoint(20, 10));
        QVERIFY(!m->core.isAnyDownloading() && !start->isVisible() && !stop->isVisible());
        // Again site 7 first; "All" then starts the others.
        entry(start, 7);
        entry(start, 0);
        QCOMPARE(m->resolved, (QList<int>{1, 2, 3, 4, 6, 7, 8, 7, 1, 2, 3, 4, 6, 8}));
        entry(stop, 0);
        QVERIFY(!m->core.isAnyDownloading());
    }

    void editLink_data()
    {
        QTest::addColumn<QString>("present");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QVariantList>("message"); // empty: none
        QTest::addColumn<QString>("result");
        const QString link("rapidshare.com/files/1/a.zip"), other("rapidshare.com/files/2/b.zip");
        const QVariantList ask = box("Are you sure that you want to change the link?",
                                     Prompts::Icon::Question, Prompts::Buttons::YesNo);
        QTest::newRow("yes") << link << other << true << ask << other;
        QTest::newRow("empty") << link << "" << true << box("Link value can not be empty") << link;
        // A present 0 or 1 is a tick's value, whatever the column: it changes
        // without a question (the tick clicks show 0 too).
        QTest::newRow("present 1") << "1" << other << false << QVariantList() << other;
        QTest::newRow("present 2, no") << "2" << other << false << ask << "2";
        QTest::newRow("row removed while asked") << link << other << true << ask << "<gone>";
    }

    void editLink()
    {
        QFETCH(QString, present);
        QFETCH(QString, typed);
        QFETCH(bool, yes);
        QFETCH(QVariantList, message);
        QFETCH(QString, result);
        DownloadList &list = m->core.list();
        add(present, 1);
        LinkRow *row = list.childAt(1, 0);
        list.setField(row, Field::DirectURL, "http://direct/a.zip");
        list.setField(row, Field::Status, "Complete");
        m->prompts.answers.enqueue(yes ? Prompts::Answer::Yes : Prompts::Answer::No);
        if (result == "<gone>")
            m->prompts.whileAsking = [&] { list.removeRow(row); };

        // The row's fields now, and as they should end: nothing but the link changes.
        auto now = [row] { return QStringList(row->values.begin(), row->values.end()); };
        QStringList after = now();
        after[int(Field::LinkURL)] = result;
        // The user's text for the link cell, which holds the present link.
        const QModelIndex cell = cellAt(0, Field::LinkURL);
        QVERIFY(cell.flags() & Qt::ItemIsEditable);
        QCOMPARE(cell.data(Qt::EditRole).toString(), present);
        m->window.gridModel()->setData(cell, typed);
        QCOMPARE(said(), QList<QVariantList>(!message.isEmpty(), message));
        QCOMPARE(list.childCount(1) ? now() : QStringList(),
                 result == "<gone>" ? QStringList() : after);
    }

    // The grid's site rows; a click on the tick changes it without a
    // question; progress updates keep the view as the user left it.
    void gridRows()
    {
        QTreeView *grid = m->window.grid();
        // Each site row: hidden (h), expanded (+) or collapsed (-).
        auto rows = [&] {
            QString s;
            for (int n = 1; n <= Sites::Count; ++n)
                s += grid->isRowHidden(n - 1, {}) ? 'h' : "-+"[grid->isExpanded(site(n))];
            return s;
        };
        // The MediaFire row never shows, while its links exist all the same:
        // not after a reopened list, nor after any walk of the link intake.
        add("mediafire.com/?abc", 5);
        QCOMPARE(m->window.model()->rowCount(m->window.model()->siteIndex(5)), 1);
        QCOMPARE(rows(), "----h---");
        m->core.list().open();
        QCOMPARE(rows(), "----h---");
        grid->setRowHidden(site(5).row(), QModelIndex(), false);
        m->core.parseLinks("some words without a single link", false);
        QCOMPARE(rows(), "----h---");

        // Expand/collapse all: the first row alone decides, whatever state
        // the others are in.
        click("cmdExpandCollapse");
        QCOMPARE(rows(), "++++h+++");
        grid->collapse(site(8));
        click("cmdExpandCollapse");
        QCOMPARE(rows(), "----h---");
        grid->expand(site(8));
        click("cmdExpandCollapse");
        QCOMPARE(rows(), "++++h+++");

        // Site 1 is expanded now, as every row.
        for (int i = 0; i < 60; ++i)
            add(QString("http://rapidshare.com/files/%1/f.zip").arg(i), 1);
        const QModelIndex tick = cellAt(0, Field::CheckBox);
        const QRect cell = grid->visualRect(tick);
        // Qt's check box sits at the cell's left; a click there toggles it:
        // the row's value and the cell's state.
        auto clickTick = [&] {
            QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
                              QPoint(cell.left() + cell.height() / 2, cell.center().y()));
            return m->core.list().childAt(1, 0)->values[int(Field::CheckBox)] +
                   tick.data(Qt::CheckStateRole).toString();
        };
        QCOMPARE((QStringList{clickTick(), clickTick()}), (QStringList{"12", "00"}));
        QVERIFY(m->prompts.messages.isEmpty());

        const QModelIndex chosen = cellAt(25, Field::LinkURL);
        grid->setCurrentIndex(chosen);
        grid->verticalScrollBar()->setValue(20);
        QCoreApplication::processEvents();
        for (int step = 1; step <= 20; ++step)
            m->core.list().setField(m->core.list().childAt(1, 40), Field::Status,
                                    QString::number(step * 4.5));
        QCoreApplication::processEvents();
        // A new link disturbs nothing either: selection (of a row in sight),
        // expansion and scroll position stay.
        add("http://rapidshare.com/files/60/f.zip", 1);
        QCOMPARE(grid->selectionModel()->selectedRows(),
                 QModelIndexList{cellAt(25, Field::ItemID)});
        QVERIFY(grid->isExpanded(site(1)));
        QCOMPARE(grid->verticalScrollBar()->value(), 20);
    }

private:
    // A click at the middle, or at `at`: a split button's own part is its left.
    void click(const QString &name, QPoint at = {})
    {
        QTest::mouseClick(m->window.findChild<QWidget *>(name), Qt::LeftButton, {}, at);
    }
    // Adds the link `u` under site `s`.
    void add(const QString &u, int s) { QVERIFY(m->core.list().addLinkToList(u, s, &m->prompts)); }
    // The grid's index of a site row (in number order), and of a cell of a
    // link row under site 1.
    QModelIndex site(int n) const { return m->window.gridModel()->index(n - 1, 0); }
    QModelIndex cellAt(int r, Field f) const { return site(1).model()->index(r, int(f), site(1)); }
    // A message box as text, icon and buttons: a warning with an Ok button
    // unless told otherwise.
    static QVariantList box(const QString &text, Prompts::Icon icon = Prompts::Icon::Exclamation,
                            Prompts::Buttons buttons = Prompts::Buttons::Ok)
    {
        return {text, int(icon), int(buttons)};
    }
    // Every message box shown so far, as text, icon and buttons.
    QList<QVariantList> said() const
    {
        QList<QVariantList> all;
        for (const FakePrompts::Message &message : m->prompts.messages)
            all << box(message.text, message.icon, message.buttons);
        return all;
    }

    std::unique_ptr<Rig> m;
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
