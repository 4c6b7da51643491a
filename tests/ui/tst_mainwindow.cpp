#include "app/appcore.h"
#include "app/cregister.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlistmodel.h"
#include "list/sitetable.h"
#include "sandbox.h"
#include "scheduling/sitequeues.h"
#include "standin.h"
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

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void windowShape();
    void linkBoxHint();
    void addLinks();
    void mediaFireRowStaysHidden();
    void checkBoxLabels_data();
    void checkBoxLabels();
    void closeRefusedWhileDownloading();
    void browseFolder();
    void expandCollapseAll();
    void trayAndMinimiseButtons();
    void startStopButtons();
    void siteMenus_data();
    void siteMenus();
    void dragBand_data();
    void dragBand();
    void gridPresentation();
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
    void click(const char *name) { QTest::mouseClick(control(name), Qt::LeftButton); }
    QModelIndex site(int number) const { return m_window->model()->siteIndex(number); }
    // The grid's index of a core model index.
    QModelIndex view(const QModelIndex &index) const
    {
        return m_window->gridModel()->mapFromSource(index);
    }
    // The grid's index of a link row's cell.
    QModelIndex linkCell(int number, int row, Field field) const
    {
        return view(m_window->model()->index(row, int(field), site(number)));
    }
    QString value(int number, int row, Field field) const
    {
        return m_core->list().childAt(number, row)->values[int(field)];
    }
    // Every message box shown so far, as text, icon and buttons.
    QList<QVariantList> said() const
    {
        QList<QVariantList> all;
        for (const FakePrompts::Message &m : m_prompts->messages)
            all << QVariantList{m.text, int(m.icon), int(m.buttons)};
        return all;
    }
    static QVariantList box(const QString &text, Prompts::Icon icon, Prompts::Buttons buttons)
    {
        return {text, int(icon), int(buttons)};
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

void TestMainWindow::seedLinks()
{
    int number = 0;
    for (const char *link :
         {"http://rapidshare.com/files/1/a.zip", "http://www.youtube.com/watch?v=abc",
          "http://www.megaupload.com/?d=XYZ", "http://www.4shared.com/file/1/b.html",
          "http://www.mediafire.com/?xyz", "http://depositfiles.com/files/abc",
          "http://www.hotfile.com/dl/22/b.rar", "http://www.filefactory.com/file/abc"})
        QVERIFY(m_core->list().addLinkToList(link, ++number, m_prompts.get()));
}

void TestMainWindow::installRecorders()
{
    for (int s = 1; s <= Sites::Count; ++s) {
        // Records the start and leaves the row as the queue marked it, so no
        // request leaves the machine.
        auto standIn = std::make_unique<StandInRecipe>();
        standIn->order = &m_resolved;
        m_core->queues().setRecipe(s, std::move(standIn));
    }
}

void TestMainWindow::windowShape()
{
    QCOMPARE((QList<QSize>{m_window->size(), m_window->minimumSize(), m_window->maximumSize()}),
             QList<QSize>(3, QSize(800, 495)));
    QVERIFY(m_window->windowFlags() & Qt::FramelessWindowHint);
    QCOMPARE(m_window->windowTitle(), QString("Tessalwick"));
    QVERIFY(m_window->trayIcon() && !m_window->trayIcon()->icon().isNull());
    QCOMPARE(m_window->trayIcon()->parent(), m_window.get());
}

void TestMainWindow::linkBoxHint()
{
    auto *box = control<LinkTextBox>("txtLinks");
    QCOMPARE(box->text(), LinkHint::designText());
    // Lines reach the program with CR LF between them, and come back.
    QVERIFY(box->text().contains("\r\n"));
    QCOMPARE(box->toPlainText().count('\r'), 0);

    auto focus = [box](QEvent::Type type, Qt::FocusReason reason = Qt::TabFocusReason) {
        QFocusEvent event(type, reason);
        QApplication::sendEvent(box, &event);
        return box->text();
    };
    QCOMPARE(focus(QEvent::FocusIn), QString());
    QCOMPARE(focus(QEvent::FocusOut), LinkHint::lostFocusText());
    // A text that holds the hint among real links is emptied too.
    box->setText("rapidshare.com/files/1/a.zip\r\n" + LinkHint::shortText());
    QCOMPARE(focus(QEvent::FocusIn), QString());
    // Only blanks count as empty: line breaks stay.
    box->setText("   ");
    QCOMPARE(focus(QEvent::FocusOut), LinkHint::lostFocusText());
    box->setText("\r\n\r\n");
    QCOMPARE(focus(QEvent::FocusOut), QString("\r\n\r\n"));
    // A pop-up menu takes the focus only for a moment.
    box->setText(" ");
    QCOMPARE(focus(QEvent::FocusOut, Qt::PopupFocusReason), QString(" "));
}

void TestMainWindow::addLinks()
{
    auto *box = control<LinkTextBox>("txtLinks");
    box->setText("Files:\r\nhttp://rapidshare.com/files/11/a.zip  "
                 "http://www.hotfile.com/dl/22/b.rar\r\n"
                 "mediafire.com/?xyz HTTP://RAPIDSHARE.COM/FILES/11/A.ZIP\r\n");
    click("cmdAddLinks");
    DownloadListModel *model = m_window->model();
    QCOMPARE(
        (QList<int>{model->rowCount(site(1)), model->rowCount(site(7)), model->rowCount(site(5))}),
        (QList<int>{1, 1, 0}));
    QCOMPARE((QStringList{value(1, 0, Field::LinkURL), value(7, 0, Field::LinkURL),
                          value(7, 0, Field::Status), box->text()}),
             (QStringList{"http://rapidshare.com/files/11/a.zip",
                          "http://www.hotfile.com/dl/22/b.rar", "Waiting", LinkHint::shortText()}));
    QCOMPARE(m_prompts->balloons.size(), 1);
    QCOMPARE(m_prompts->balloons.at(0).text, QString("2 Links Added"));
    QVERIFY(m_prompts->messages.isEmpty());
    // The grid shows the new rows under their sites.
    m_window->grid()->expand(view(site(7)));
    QVERIFY(m_window->grid()->visualRect(linkCell(7, 0, Field::LinkURL)).isValid());

    // Clicking again with the hint in the box adds nothing and says nothing.
    m_prompts->clear();
    click("cmdAddLinks");
    QCOMPARE(model->rowCount(site(1)), 1);
    QVERIFY(m_prompts->messages.isEmpty() && m_prompts->balloons.isEmpty());
    QCOMPARE(box->text(), LinkHint::shortText());
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
    m_core->parseLinks("some words without a single link", false);
    QVERIFY(onlyMediaFireHidden());
}

void TestMainWindow::checkBoxLabels_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("setting"); // empty: the box is no setting
    QTest::newRow("chkCreate") << "lblCreate"
                               << "Create sub folder for each site"
                               << "CreatSubDir";
    QTest::newRow("chkShutDown") << "lblShutdown"
                                 << "Shutdown after all downloads complete" << QString();
}

void TestMainWindow::checkBoxLabels()
{
    QFETCH(QString, label);
    QFETCH(QString, caption);
    QFETCH(QString, setting);
    auto *box = m_window->findChild<QCheckBox *>(QTest::currentDataTag());
    auto *text = m_window->findChild<QLabel *>(label);
    QVERIFY(box && text);
    QCOMPARE(text->text(), caption);
    QVERIFY(!box->isChecked());
    QCOMPARE(Settings::get(setting, "unset"), QString("unset"));

    // The box and its label both toggle it; a setting follows every change.
    bool on = false;
    for (QWidget *target : {(QWidget *)box, (QWidget *)text, (QWidget *)text, (QWidget *)box}) {
        QTest::mouseClick(target, Qt::LeftButton);
        on = !on;
        QCOMPARE(box->isChecked(), on);
        QCOMPARE(Settings::get(setting.isEmpty() ? "ShutDown" : setting, "unset"),
                 setting.isEmpty() ? QString("unset") : QString::number(on));
        if (!setting.isEmpty())
            QCOMPARE(m_core->createSubDir(), int(on));
    }
    // A value read from the settings shows in the box without a write of its own.
    if (!setting.isEmpty()) {
        Settings::save(setting, "1");
        m_core->readSettings();
        QVERIFY(box->isChecked());
    }
}

void TestMainWindow::closeRefusedWhileDownloading()
{
    DownloadList &list = m_core->list();
    QVERIFY(list.addLinkToList("rapidshare.com/files/1/a.zip", 1, m_prompts.get()));
    list.setField(list.childAt(1, 0), Field::IsDownloading, "1");
    QSignalSpy quit(m_core.get(), &AppCore::quitRequested);
    const QList<QVariantList> refusal{
        box("There is one download or more currently running, Please Stop downloading first.",
            Prompts::Icon::Exclamation, Prompts::Buttons::Ok)};

    click("cmdClose");
    QCOMPARE(said(), refusal);
    QCOMPARE(quit.count(), 0);
    QVERIFY(m_window->isVisible());
    QVERIFY(!QFile::exists(m_sandbox->path("LinkList.lq")));

    // Once nothing runs, the list is saved and the program ends.
    list.setField(list.childAt(1, 0), Field::IsDownloading, "0");
    click("cmdClose");
    QCOMPARE(said(), refusal);
    QCOMPARE(quit.count(), 1);
    QVERIFY(QFile::exists(m_sandbox->path("LinkList.lq")));
    QVERIFY(!m_window->isVisible());
}

void TestMainWindow::browseFolder()
{
    const QString disc = m_sandbox->path("cdrom"), good = m_sandbox->path("good");
    QVERIFY(QDir().mkpath(disc) && QDir().mkpath(good));
    QStringList tested;
    m_window->setOpticalDriveTest([&](const QString &path) {
        tested << path;
        return path == disc;
    });
    auto *label = control<QLabel>("txtDownloadDir");
    const QString before = m_core->downloadDir();
    QCOMPARE(label->text(), before);

    // Cancelled; then the optical disc, refused, and cancelled: nothing changes.
    m_prompts->folders << QString() << disc << QString();
    click("cmdBrowse");
    click("cmdBrowse");
    QCOMPARE(m_prompts->folderTitles, QStringList(3, "Please, Select the download folder."));
    QCOMPARE(said(),
             QList<QVariantList>{box("Selected drive is CD ROM, Please select another folder",
                                     Prompts::Icon::Exclamation, Prompts::Buttons::Ok)});
    QCOMPARE((QStringList{label->text(), Settings::get("DownDir", "unset")}),
             (QStringList{before, "unset"}));

    // Twice the disc, then another folder: that one is taken.
    m_prompts->clear();
    m_prompts->folders << disc << disc << good;
    click("cmdBrowse");
    QCOMPARE(m_prompts->folderTitles.size(), 3);
    QCOMPARE(m_prompts->messages.size(), 2);
    QCOMPARE((QStringList{label->text(), Settings::get("DownDir", "unset")}),
             (QStringList{good, good}));
    QCOMPARE(tested, (QStringList{disc, disc, disc, good}));

    // The label follows the core's folder, whoever sets it.
    m_core->setDownloadDir(m_sandbox->path("other"));
    QCOMPARE(label->text(), m_sandbox->path("other"));
}

void TestMainWindow::expandCollapseAll()
{
    QTreeView *grid = m_window->grid();
    QCOMPARE(control<QAbstractButton>("cmdExpandCollapse")->text(), QString("+\\-"));
    const int rows = m_window->model()->rowCount();
    // Clicks the button and counts the expanded site rows.
    auto clickAndCount = [&] {
        click("cmdExpandCollapse");
        int expanded = 0;
        for (int row = 0; row < rows; ++row)
            expanded += grid->isExpanded(m_window->gridModel()->index(row, 0));
        return expanded;
    };
    QCOMPARE(clickAndCount(), rows);
    QCOMPARE(clickAndCount(), 0);
    // The first row alone decides, whatever state the others are in.
    grid->expand(view(site(3)));
    grid->expand(view(site(8)));
    QCOMPARE(clickAndCount(), rows);
    grid->collapse(view(site(2)));
    QCOMPARE(clickAndCount(), 0);
}

void TestMainWindow::trayAndMinimiseButtons()
{
    // Without a tray the window would be lost: it is minimised instead.
    const bool tray = QSystemTrayIcon::isSystemTrayAvailable();
    auto hiddenOrMinimised = [&] {
        if (tray)
            QTRY_VERIFY(!m_window->isVisible());
        else
            QTRY_VERIFY(m_window->isVisible() && (m_window->windowState() & Qt::WindowMinimized));
    };
    auto restore = [&] {
        m_window->showNormal();
        QTRY_VERIFY(!(m_window->windowState() & Qt::WindowMinimized));
    };
    click("cmdTray");
    hiddenOrMinimised();
    restore();
    QCOMPARE(m_window->hideToTrayOrMinimise(), tray);
    hiddenOrMinimised();
    restore();
    click("cmdMinimize");
    QTRY_VERIFY(m_window->windowState() & Qt::WindowMinimized);
    QVERIFY(m_window->isVisible());
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
    QCOMPARE(value(5, 0, Field::Status), QString("Waiting"));
    for (int s : {1, 2, 3, 4, 6, 7, 8})
        QVERIFY(m_core->queues().isDownloading(s));

    QTest::mouseClick(stop, Qt::LeftButton, {}, QPoint(20, stop->height() / 2));
    QVERIFY(!m_window->stopMenu()->isVisible());
    QVERIFY(!m_core->isAnyDownloading());
    QVERIFY(value(1, 0, Field::Status).startsWith("Stopped"));
}

void TestMainWindow::siteMenus_data()
{
    QTest::addColumn<bool>("start");
    QTest::addColumn<QString>("namePrefix");
    QTest::addColumn<QString>("captionWord");
    QTest::newRow("mnuStart") << true << "mnu"
                              << "Start";
    QTest::newRow("mnuStop") << false << "mnuS"
                             << "Stop";
}

void TestMainWindow::siteMenus()
{
    QFETCH(bool, start);
    QFETCH(QString, namePrefix);
    QFETCH(QString, captionWord);
    seedLinks();
    installRecorders();
    QMenu *menu = start ? m_window->startMenu() : m_window->stopMenu();
    QCOMPARE(menu->objectName(), QString(QTest::currentDataTag()));

    // The entries in order, with a separator after the first; MediaFire's is off.
    const QStringList names{"All",       "Rapidshare",    "Youtube", "MegaUpload", "4Shared",
                            "MediaFire", "DepositeFiles", "HotFile", "FileFactory"};
    const QStringList captions{"All",       "Rapidshare",    "Youtube", "Megaupload", "4Shared",
                               "Mediafire", "DepositeFiles", "Hotfile", "FileFactory"};
    QStringList expected, seen;
    for (int i = 0; i < names.size(); ++i)
        expected << namePrefix + names[i] + "|" + captionWord + " " + captions[i] + "|" +
                        QString::number(i != 5);
    const QList<QAction *> actions = menu->actions();
    QVERIFY(actions.size() == 10 && actions.at(1)->isSeparator());
    for (QAction *action : actions) {
        if (!action->isSeparator())
            seen << action->objectName() + "|" + action->text() + "|" +
                        QString::number(action->isEnabled());
    }
    QCOMPARE(seen, expected);

    // The drop-down part of the button opens the menu at its top right corner,
    // or as far down as fits on the screen.
    auto *button = control<SkinButton>(start ? "cmdStartDownload" : "cmdStopDownload");
    const QRect drop = button->dropDownRect();
    QVERIFY(!drop.isEmpty());
    QTest::mouseClick(button, Qt::LeftButton, {}, drop.center());
    QTRY_VERIFY(menu->isVisible());
    const QPoint corner = m_window->mapToGlobal(QPoint(button->x() + button->width(), button->y()));
    QCOMPARE(menu->x(), corner.x());
    const int screenBottom = m_window->screen()->availableGeometry().bottom();
    QVERIFY(menu->y() == corner.y() ||
            (menu->y() < corner.y() && menu->geometry().bottom() == screenBottom));
    QVERIFY(m_resolved.isEmpty()); // the drop-down part is no click of the button
    menu->hide();

    auto entry = [&](const QString &name) {
        menu->findChild<QAction *>(namePrefix + name)->trigger();
    };
    if (start) {
        entry("HotFile");
        QCOMPARE(m_resolved, QList<int>{7});
        QCOMPARE(value(7, 0, Field::Status), QString("Starting..."));
        QVERIFY(!m_core->queues().isDownloading(1));
        // The switched-off entry can't be reached.
        entry("MediaFire");
        QCOMPARE(m_resolved, QList<int>{7});
        QCOMPARE(value(5, 0, Field::Status), QString("Waiting"));
        entry("All");
        QCOMPARE(m_resolved, (QList<int>{7, 1, 2, 3, 4, 6, 8}));
    } else {
        m_core->startAllDownloads();
        QVERIFY(m_core->queues().isDownloading(7));
        entry("HotFile");
        QVERIFY(!m_core->queues().isDownloading(7));
        QVERIFY(m_core->queues().isDownloading(1));
        entry("All");
        QVERIFY(!m_core->isAnyDownloading());
    }
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

void TestMainWindow::gridPresentation()
{
    seedLinks();
    QTreeView *grid = m_window->grid();
    QAbstractItemModel *model = grid->model();
    QCOMPARE(model, static_cast<QAbstractItemModel *>(m_window->gridModel()));
    QVERIFY(!grid->header()->sectionsMovable());

    // The link columns that show past the tree's own column 0; the rest are hidden.
    QList<Field> shown;
    for (int c = 1; c < model->columnCount(); ++c) {
        if (!grid->isColumnHidden(c))
            shown << Field(c);
    }
    QCOMPARE(shown, (QList<Field>{Field::CheckBox, Field::LinkURL, Field::LocalFile, Field::Status,
                                  Field::FileSize, Field::Speed, Field::TimeLeft}));

    // Editability: the tick and the link only.
    const QModelIndex siteRow = view(site(1));
    for (int c = 0; c < model->columnCount(siteRow); ++c) {
        const Qt::ItemFlags flags = model->flags(model->index(0, c, siteRow));
        QCOMPARE(bool(flags & Qt::ItemIsEditable), c == int(Field::LinkURL));
        QCOMPARE(bool(flags & Qt::ItemIsUserCheckable), c == int(Field::CheckBox));
    }
    QVERIFY(!(model->flags(model->index(0, 1)) & Qt::ItemIsEditable));

    // A site row is one cell across the grid with its name, centred.
    for (int row = 0; row < model->rowCount(); ++row) {
        QVERIFY(grid->isFirstColumnSpanned(row, QModelIndex()));
        QCOMPARE(model->index(row, 0).data().toString(), Sites::name(row + 1));
        QCOMPARE(model->index(row, 0).data(Qt::TextAlignmentRole).value<Qt::Alignment>(),
                 Qt::Alignment(Qt::AlignCenter));
    }

    const QModelIndex linkRow = model->index(0, 2, siteRow);
    // A numeric status comes with its percentage; no other cell does.
    const QModelIndex status = model->index(0, int(Field::Status), siteRow);
    for (const auto &[text, percent] :
         {std::pair<const char *, QVariant>{"45.67", 46}, {"Waiting", QVariant()}, {"150", 100}}) {
        m_core->list().setField(m_core->list().childAt(1, 0), Field::Status, text);
        QCOMPARE(status.data(GridModel::ProgressRole), percent);
    }
    QVERIFY(!linkRow.data(GridModel::ProgressRole).isValid());
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
    const int yes = int(Prompts::Answer::Yes), no = int(Prompts::Answer::No);
    QTest::newRow("yes") << link << other << yes << ask << other;
    QTest::newRow("no") << link << other << no << ask << link;
    QTest::newRow("emptied") << link << "" << yes << "Link value can not be empty" << link;
    QTest::newRow("present 0") << "0" << other << no << "" << other;
    QTest::newRow("present 1") << "1" << other << no << "" << other;
    QTest::newRow("present 2") << "2" << other << no << ask << "2";
    QTest::newRow("row removed while asked") << link << other << yes << ask << "<gone>";
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
    const bool removed = result == "<gone>";
    if (removed)
        m_prompts->whileAsking = [&] { list.removeRow(row); };

    // The user types into the link cell and presses Enter.
    QTreeView *grid = m_window->grid();
    grid->expand(view(site(1)));
    const QModelIndex cell = linkCell(1, 0, Field::LinkURL);
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

    QList<QVariantList> expected;
    if (typed.isEmpty())
        expected << box(message, Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
    else if (!message.isEmpty())
        expected << box(message, Prompts::Icon::Question, Prompts::Buttons::YesNo);
    QCOMPARE(said(), expected);
    if (removed) {
        QCOMPARE(list.childCount(1), 0);
        return;
    }
    // Nothing else of the row changes.
    QCOMPARE((QStringList{row->values[int(Field::LinkURL)], cell.data().toString(),
                          row->values[int(Field::DirectURL)], row->values[int(Field::Status)],
                          row->values[int(Field::LocalFile)]}),
             (QStringList{result, result, "http://direct/a.zip", "Complete", "a.zip"}));
}

void TestMainWindow::tickNeedsNoQuestion()
{
    seedLinks();
    QTreeView *grid = m_window->grid();
    grid->expand(view(site(1)));
    const QModelIndex tick = linkCell(1, 0, Field::CheckBox);
    const QRect box = grid->visualRect(tick);
    QVERIFY(box.isValid());
    QCOMPARE(value(1, 0, Field::CheckBox), QString("0"));
    // Qt's check box sits at the cell's left; a click there toggles it.
    const QPoint at(box.left() + box.height() / 2, box.center().y());
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(value(1, 0, Field::CheckBox), QString("1"));
    QCOMPARE(tick.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
    QCOMPARE(value(1, 0, Field::CheckBox), QString("0"));
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
    const QModelIndex chosen = linkCell(1, 5, Field::LinkURL);
    grid->selectionModel()->select(chosen,
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    grid->verticalScrollBar()->setValue(20);
    QCoreApplication::processEvents();
    const int scroll = grid->verticalScrollBar()->value();
    QVERIFY(scroll > 0);
    // Selection, expansion and scroll position as the user left them.
    auto viewState = [&] {
        return QVariantList{grid->selectionModel()->isSelected(chosen),
                            int(grid->selectionModel()->selectedRows().size()),
                            grid->isExpanded(view(site(1))) && grid->isExpanded(view(site(7))),
                            grid->verticalScrollBar()->value()};
    };
    const QVariantList before = viewState();
    QCOMPARE(before, (QVariantList{true, 1, true, scroll}));

    QSignalSpy resets(m_window->gridModel(), &QAbstractItemModel::modelReset);
    QSignalSpy layouts(m_window->gridModel(), &QAbstractItemModel::layoutChanged);
    QSignalSpy changes(m_window->gridModel(), &QAbstractItemModel::dataChanged);
    LinkRow *hot = list.childAt(7, 0);
    for (int step = 1; step <= 20; ++step) {
        list.setField(hot, Field::Status, QString::number(step * 4.5));
        list.setField(hot, Field::Speed, QString("%1 KB/s").arg(step));
        QCoreApplication::processEvents();
    }
    QCOMPARE((QList<qsizetype>{resets.count(), layouts.count(), changes.count()}),
             (QList<qsizetype>{0, 0, 40}));
    // Each change names its one cell.
    const QModelIndex statusCell = linkCell(7, 0, Field::Status);
    QCOMPARE(changes.at(0).mid(0, 2), (QVariantList{statusCell, statusCell}));
    QCOMPARE(viewState(), before);

    // A new link is one insertion too.
    QVERIFY(list.addLinkToList("http://www.hotfile.com/dl/2/b.rar", 7, m_prompts.get()));
    QCOMPARE(resets.count(), 0);
    QCOMPARE(viewState(), before);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
