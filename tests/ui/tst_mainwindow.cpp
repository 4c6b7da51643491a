#include "app/appcore.h"
#include "app/cregister.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlistmodel.h"
#include "listrows.h"
#include "sandbox.h"
#include "scheduling/sitequeues.h"
#include "standin.h"
#include "ui/gridmodel.h"
#include "ui/mainwindow.h"
#include "ui/windowparts.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTreeView>
#include <QtTest>

#include <memory>

class TestMainWindow : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_sandbox = std::make_unique<Sandbox>();
        m_prompts = std::make_unique<FakePrompts>();
        m_resolved.clear();
        m_core = std::make_unique<AppCore>(m_prompts.get());
        m_core->setLinkListPath(m_sandbox->path("LinkList.lq"));
        m_window = std::make_unique<MainWindow>(m_core.get(), m_prompts.get());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup()
    {
        m_window.reset();
        m_core.reset();
        m_prompts.reset();
        m_sandbox.reset();
    }

    void linkBoxHint()
    {
        LinkTextBox *links = m_window->linksBox();
        QCOMPARE(links->text(), LinkHint::designText());
        // Lines reach the program with CR LF between them, and come back.
        QVERIFY(links->text().contains("\r\n") && !links->toPlainText().contains('\r'));
        // The box's text after a focus event finds it holding `text`.
        auto focus = [links](const QString &text, QEvent::Type type,
                             Qt::FocusReason reason = Qt::TabFocusReason) {
            links->setText(text);
            QFocusEvent event(type, reason);
            QApplication::sendEvent(links, &event);
            return links->text();
        };
        QCOMPARE(focus(LinkHint::designText(), QEvent::FocusIn), QString());
        QCOMPARE(focus("", QEvent::FocusOut), LinkHint::lostFocusText());
        // A text that holds the hint among real links is emptied too.
        const QString mixed = "rapidshare.com/files/1/a.zip\r\n" + LinkHint::shortText();
        QCOMPARE(focus(mixed, QEvent::FocusIn), QString());
        // Only blanks count as empty: line breaks stay.
        QCOMPARE(focus("   ", QEvent::FocusOut), LinkHint::lostFocusText());
        QCOMPARE(focus("\r\n\r\n", QEvent::FocusOut), QString("\r\n\r\n"));
        // A pop-up menu takes the focus only for a moment.
        QCOMPARE(focus(" ", QEvent::FocusOut, Qt::PopupFocusReason), QString(" "));

        // The add button hands the box's text to the intake and shows what
        // comes back.
        links->setText("Files:\r\nhttp://rapidshare.com/files/11/a.zip  "
                       "http://www.hotfile.com/dl/22/b.rar\r\n"
                       "mediafire.com/?xyz HTTP://RAPIDSHARE.COM/FILES/11/A.ZIP\r\n");
        click("cmdAddLinks");
        QCOMPARE(rowsOf(m_core->list()), (QStringList{"1|http://rapidshare.com/files/11/a.zip",
                                                      "7|http://www.hotfile.com/dl/22/b.rar"}));
        QCOMPARE(links->text(), LinkHint::shortText());
    }

    void siteRows()
    {
        QTreeView *grid = m_window->grid();
        const int rows = m_window->gridModel()->rowCount();
        const QList<int> mediaFire{site(5).row()};
        auto hidden = [&] {
            QList<int> found;
            for (int row = 0; row < rows; ++row)
                if (grid->isRowHidden(row, QModelIndex()))
                    found << row;
            return found;
        };
        // The MediaFire row never shows, while its links exist all the same:
        // not after a reopened list, nor after any walk of the link intake.
        add("mediafire.com/?abc", 5);
        QCOMPARE(m_window->gridModel()->rowCount(site(5)), 1);
        QCOMPARE(hidden(), mediaFire);
        m_core->list().open();
        QCOMPARE(hidden(), mediaFire);
        grid->setRowHidden(mediaFire[0], QModelIndex(), false);
        m_core->parseLinks("some words without a single link", false);
        QCOMPARE(hidden(), mediaFire);

        // Expand/collapse all: the first row alone decides, whatever state
        // the others are in.
        auto clickAndCount = [&] {
            click("cmdExpandCollapse");
            int expanded = 0;
            for (int row = 0; row < rows; ++row)
                expanded += grid->isExpanded(m_window->gridModel()->index(row, 0));
            return expanded;
        };
        QCOMPARE(clickAndCount(), rows);
        grid->collapse(site(2));
        QCOMPARE(clickAndCount(), 0);
        grid->expand(site(3));
        QCOMPARE(clickAndCount(), rows);
    }

    void checkBoxes_data()
    {
        QTest::addColumn<QStringList>("clicks");
        // The two boxes and the sub-folder setting; shutting down is no setting.
        QTest::addColumn<QVariantList>("state");
        auto row = [](const char *name, const QStringList &clicks, const QVariantList &state) {
            QTest::newRow(name) << clicks << state;
        };
        row("sub-folder box", {"chkCreate"}, {true, false, "1"});
        row("sub-folder label", {"lblCreate"}, {true, false, "1"});
        row("sub-folder box, label", {"chkCreate", "lblCreate"}, {false, false, "0"});
        row("shutdown box", {"chkShutDown"}, {false, true, "-"});
        row("shutdown label", {"lblShutdown"}, {false, true, "-"});
        row("shutdown box, label", {"chkShutDown", "lblShutdown"}, {false, false, "-"});
    }

    void checkBoxes()
    {
        QFETCH(QStringList, clicks);
        QFETCH(QVariantList, state);
        auto *create = m_window->findChild<QCheckBox *>("chkCreate");
        for (const QString &name : clicks)
            click(name);
        QCOMPARE((QVariantList{create->isChecked(),
                               m_window->findChild<QCheckBox *>("chkShutDown")->isChecked(),
                               Settings::get("CreatSubDir", "-")}),
                 state);
        QCOMPARE(Settings::get("ShutDown", "-"), QString("-"));
        // A value read from the settings shows in the box.
        const bool was = create->isChecked();
        Settings::save("CreatSubDir", was ? "0" : "1");
        m_core->readSettings();
        QCOMPARE(create->isChecked(), !was);
    }

    void titleStripButtons()
    {
        // Without a tray the window would be lost: it is minimised instead.
        const bool tray = QSystemTrayIcon::isSystemTrayAvailable();
        QCOMPARE(m_window->trayIcon()->isVisible(), tray);
        click("cmdTray");
        QTRY_VERIFY(tray ? !m_window->isVisible()
                         : m_window->isVisible() && m_window->isMinimized());
        m_window->showNormal();
        QTRY_VERIFY(!m_window->isMinimized());
        click("cmdMinimize");
        QTRY_VERIFY(m_window->isVisible() && m_window->isMinimized());

        // The window's top band, five pixels deep, drags it, with any button.
        QSignalSpy drag(m_window.get(), &MainWindow::windowDragStarted);
        QList<qsizetype> drags;
        for (const QPoint at : {QPoint(100, 5), QPoint(300, 2), QPoint(100, 6)}) {
            const Qt::MouseButton button = at.x() == 300 ? Qt::RightButton : Qt::LeftButton;
            QCOMPARE(m_window->childAt(at), nullptr);
            QTest::mousePress(m_window.get(), button, {}, at);
            QTest::mouseRelease(m_window.get(), button, {}, at);
            drags << drag.count();
        }
        QCOMPARE(drags, (QList<qsizetype>{1, 2, 2}));

        // Close is refused while a row downloads; once nothing runs, the list
        // is saved and the program ends.
        DownloadList &list = m_core->list();
        add("rapidshare.com/files/1/a.zip", 1);
        QSignalSpy quit(m_core.get(), &AppCore::quitRequested);
        const QList<QVariantList> refusal{
            box("There is one download or more currently running, Please Stop downloading first.",
                Prompts::Icon::Exclamation, Prompts::Buttons::Ok)};
        for (const bool downloading : {true, false}) {
            list.setField(list.childAt(1, 0), Field::IsDownloading, QString::number(downloading));
            click("cmdClose");
            QCOMPARE(said(), refusal);
            QCOMPARE((QList<bool>{quit.count() == 1, QFile::exists(m_sandbox->path("LinkList.lq")),
                                  m_window->isVisible()}),
                     (QList<bool>{!downloading, !downloading, downloading}));
        }
    }

    void browseFolder()
    {
        const QString disc = m_sandbox->path("cdrom"), good = m_sandbox->path("good");
        m_window->setOpticalDriveTest([&](const QString &path) { return path == disc; });
        auto *label = m_window->findChild<QLabel *>("txtDownloadDir");
        const QString before = m_core->downloadDir();
        auto shown = [&] { return QStringList{label->text(), Settings::get("DownDir", "-")}; };
        const QVariantList refusal = box("Selected drive is CD ROM, Please select another folder",
                                         Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
        // The picker opens again after each refusal, with the next pick.
        QStringList picks{QString(), disc, good};
        m_prompts->whileAsking = [&] { m_prompts->folderAnswer = picks.takeFirst(); };

        // Cancelled; then the optical disc, refused, and cancelled: nothing changes.
        click("cmdBrowse");
        m_prompts->folderAnswer = disc;
        click("cmdBrowse");
        QCOMPARE(said(), QList<QVariantList>{refusal});
        QCOMPARE(shown(), (QStringList{before, "-"}));
        // Twice the disc, then another folder: that one is taken.
        m_prompts->folderAnswer = disc;
        click("cmdBrowse");
        QCOMPARE(m_prompts->folderTitles, QStringList(6, "Please, Select the download folder."));
        QCOMPARE(said(), QList<QVariantList>(3, refusal));
        QCOMPARE(shown(), (QStringList{good, good}));
        // The label follows the core's folder, whoever sets it.
        m_core->setDownloadDir(disc);
        QCOMPARE(label->text(), disc);
    }

    void startStop_data()
    {
        QTest::addColumn<bool>("start");
        QTest::newRow("start") << true;
        QTest::newRow("stop") << false;
    }

    void startStop()
    {
        QFETCH(bool, start);
        seedLinks();
        QMenu *menu = start ? m_window->startMenu() : m_window->stopMenu();

        // The entries in order, a separator after the first; MediaFire's is off.
        QStringList seen;
        const QList<QAction *> actions = menu->actions();
        for (QAction *action : actions)
            seen << (action->isSeparator()
                         ? "-"
                         : action->text() + (action->isEnabled() ? "" : " (off)"));
        QCOMPARE(seen.join('|'),
                 QString("%1 All|-|%1 Rapidshare|%1 Youtube|%1 Megaupload|%1 4Shared|"
                         "%1 Mediafire (off)|%1 DepositeFiles|%1 Hotfile|%1 FileFactory")
                     .arg(start ? "Start" : "Stop"));

        // The drop-down part of the button opens the menu at its top right
        // corner, or as far down as fits on the screen; it is no click.
        auto *button =
            m_window->findChild<SkinButton *>(start ? "cmdStartDownload" : "cmdStopDownload");
        QTest::mouseClick(button, Qt::LeftButton, {}, button->dropDownRect().center());
        QTRY_VERIFY(menu->isVisible());
        const QPoint corner =
            m_window->mapToGlobal(QPoint(button->x() + button->width(), button->y()));
        QCOMPARE(menu->x(), corner.x());
        const int screenBottom = m_window->screen()->availableGeometry().bottom();
        QVERIFY(menu->y() == corner.y() ||
                (menu->y() < corner.y() && menu->geometry().bottom() == screenBottom));
        QVERIFY(m_resolved.isEmpty());
        menu->hide();

        // The entry of site n follows "All" and the separator.
        auto entry = [&](int site) { actions.at(site ? site + 1 : 0)->trigger(); };
        if (start) {
            entry(7);
            QCOMPARE(m_resolved, QList<int>{7});
            entry(0);
            QCOMPARE(m_resolved, (QList<int>{7, 1, 2, 3, 4, 6, 8}));
            return;
        }
        // The buttons' own parts start and stop every site but MediaFire.
        click("cmdStartDownload", QPoint(20, 10));
        QCOMPARE(m_resolved, (QList<int>{1, 2, 3, 4, 6, 7, 8}));
        entry(7);
        QVERIFY(!m_core->queues().isDownloading(7) && m_core->queues().isDownloading(1));
        click("cmdStopDownload", QPoint(20, 10));
        QVERIFY(!m_core->isAnyDownloading());
        QVERIFY(!m_window->startMenu()->isVisible() && !menu->isVisible());
        m_core->startAllDownloads();
        QVERIFY(m_core->isAnyDownloading());
        entry(0);
        QVERIFY(!m_core->isAnyDownloading());
    }

    void editLink_data()
    {
        QTest::addColumn<QString>("present");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QVariantList>("message"); // empty: none
        QTest::addColumn<QString>("result");
        const QString link("http://rapidshare.com/files/1/a.zip");
        const QString other("http://rapidshare.com/files/2/b.zip");
        const QVariantList ask = box("Are you sure that you want to change the link?",
                                     Prompts::Icon::Question, Prompts::Buttons::YesNo);
        const QVariantList empty =
            box("Link value can not be empty", Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
        QTest::newRow("yes") << link << other << true << ask << other;
        QTest::newRow("no") << link << other << false << ask << link;
        QTest::newRow("emptied") << link << "" << true << empty << link;
        // A present 0 or 1 is a tick's value: it changes without a question.
        QTest::newRow("present 0") << "0" << other << false << QVariantList() << other;
        QTest::newRow("present 1") << "1" << other << false << QVariantList() << other;
        QTest::newRow("present 2") << "2" << other << false << ask << "2";
        QTest::newRow("row removed while asked") << link << other << true << ask << "<gone>";
    }

    void editLink()
    {
        QFETCH(QString, present);
        QFETCH(QString, typed);
        QFETCH(bool, yes);
        QFETCH(QVariantList, message);
        QFETCH(QString, result);
        DownloadList &list = m_core->list();
        add(present, 1);
        LinkRow *row = list.childAt(1, 0);
        list.setField(row, Field::DirectURL, "http://direct/a.zip");
        list.setField(row, Field::Status, "Complete");
        m_prompts->answers.enqueue(yes ? Prompts::Answer::Yes : Prompts::Answer::No);
        const bool removed = result == "<gone>";
        if (removed)
            m_prompts->whileAsking = [&] { list.removeRow(row); };

        // The user types into the link cell and presses Enter.
        QTreeView *grid = m_window->grid();
        grid->expand(site(1));
        const QModelIndex cell = linkCell(1, 0, Field::LinkURL);
        grid->setCurrentIndex(cell);
        grid->edit(cell);
        auto *editor = grid->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        QCOMPARE(editor->text(), present);
        editor->selectAll();
        QTest::keyClick(editor, Qt::Key_Delete);
        QTest::keyClicks(editor, typed);
        QTest::keyClick(editor, Qt::Key_Return);
        // The delegate commits from the event queue.
        QTRY_VERIFY(!grid->viewport()->findChild<QLineEdit *>());

        QCOMPARE(said(), message.isEmpty() ? QList<QVariantList>() : QList<QVariantList>{message});
        QCOMPARE(list.childCount(1), removed ? 0 : 1);
        if (removed)
            return;
        // Nothing else of the row changes.
        QCOMPARE((QStringList{row->values[int(Field::LinkURL)], cell.data().toString(),
                              row->values[int(Field::DirectURL)], row->values[int(Field::Status)]}),
                 (QStringList{result, result, "http://direct/a.zip", "Complete"}));
    }

    void tickNeedsNoQuestion()
    {
        add("http://rapidshare.com/files/1/a.zip", 1);
        const LinkRow *row = m_core->list().childAt(1, 0);
        QTreeView *grid = m_window->grid();
        grid->expand(site(1));
        const QModelIndex tick = linkCell(1, 0, Field::CheckBox);
        const QRect cell = grid->visualRect(tick);
        // Qt's check box sits at the cell's left; a click there toggles it.
        const QPoint at(cell.left() + cell.height() / 2, cell.center().y());
        for (const Qt::CheckState state : {Qt::Checked, Qt::Unchecked}) {
            QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
            QCOMPARE(row->values[int(Field::CheckBox)], QString::number(state == Qt::Checked));
            QCOMPARE(tick.data(Qt::CheckStateRole).toInt(), int(state));
        }
        QVERIFY(m_prompts->messages.isEmpty());
    }

    void progressUpdatesKeepViewState()
    {
        for (int i = 0; i < 60; ++i)
            add(QString("http://rapidshare.com/files/%1/f.zip").arg(i), 1);
        add("http://www.hotfile.com/dl/1/a.rar", 7);
        QTreeView *grid = m_window->grid();
        grid->expand(site(1));
        grid->expand(site(7));
        const QModelIndex chosen = linkCell(1, 5, Field::LinkURL);
        grid->setCurrentIndex(chosen);
        grid->verticalScrollBar()->setValue(20);
        QCoreApplication::processEvents();
        // Selection, expansion and scroll position as the user left them.
        auto viewState = [&] {
            return QVariantList{grid->selectionModel()->isSelected(chosen),
                                int(grid->selectionModel()->selectedRows().size()),
                                grid->isExpanded(site(1)) && grid->isExpanded(site(7)),
                                grid->verticalScrollBar()->value()};
        };
        const QVariantList before = viewState();
        QCOMPARE(before, (QVariantList{true, 1, true, 20}));

        QSignalSpy changes(m_window->gridModel(), &QAbstractItemModel::dataChanged);
        LinkRow *hot = m_core->list().childAt(7, 0);
        for (int step = 1; step <= 20; ++step) {
            m_core->list().setField(hot, Field::Status, QString::number(step * 4.5));
            m_core->list().setField(hot, Field::Speed, QString("%1 KB/s").arg(step));
            QCoreApplication::processEvents();
        }
        // One change per cell, naming that cell; a new link disturbs nothing either.
        const QModelIndex statusCell = linkCell(7, 0, Field::Status);
        QCOMPARE(changes.count(), 40);
        QCOMPARE(changes.at(0).mid(0, 2), (QVariantList{statusCell, statusCell}));
        QCOMPARE(viewState(), before);
        add("http://www.hotfile.com/dl/2/b.rar", 7);
        QCOMPARE(viewState(), before);
    }

private:
    // A click at the middle, or at `at`: a split button's own part is its left.
    void click(const QString &name, QPoint at = {})
    {
        QTest::mouseClick(m_window->findChild<QWidget *>(name), Qt::LeftButton, {}, at);
    }
    void add(const QString &link, int site)
    {
        QVERIFY(m_core->list().addLinkToList(link, site, m_prompts.get()));
    }
    // The grid's index of a site row, and of a link row's cell.
    QModelIndex site(int number) const
    {
        return m_window->gridModel()->mapFromSource(m_window->model()->siteIndex(number));
    }
    QModelIndex linkCell(int number, int row, Field field) const
    {
        return m_window->gridModel()->index(row, int(field), site(number));
    }
    static QVariantList box(const QString &text, Prompts::Icon icon, Prompts::Buttons buttons)
    {
        return {text, int(icon), int(buttons)};
    }
    // Every message box shown so far, as text, icon and buttons.
    QList<QVariantList> said() const
    {
        QList<QVariantList> all;
        for (const FakePrompts::Message &m : m_prompts->messages)
            all << box(m.text, m.icon, m.buttons);
        return all;
    }
    // Puts a link under every site, each site with a recipe that records its
    // start and leaves the row as the queue marked it: nothing leaves the machine.
    void seedLinks()
    {
        for (int s = 1; s <= Sites::Count; ++s) {
            add(QString("http://host%1/file").arg(s), s);
            auto standIn = std::make_unique<StandInRecipe>();
            standIn->order = &m_resolved;
            m_core->queues().setRecipe(s, std::move(standIn));
        }
    }

    QList<int> m_resolved;
    std::unique_ptr<Sandbox> m_sandbox;
    std::unique_ptr<FakePrompts> m_prompts;
    std::unique_ptr<AppCore> m_core;
    std::unique_ptr<MainWindow> m_window;
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
