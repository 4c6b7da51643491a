#include "app/appcore.h"
#include "app/cregister.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlistmodel.h"
#include "sandbox.h"
#include "ui/griddelegate.h"
#include "ui/mainwindow.h"
#include "ui/windowparts.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QSignalSpy>
#include <QSystemTrayIcon>
#include <QTreeView>
#include <QtTest>

#include <memory>

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
    void progressPercent_data();
    void progressPercent();

private:
    template <typename T = QWidget> T *control(const char *name)
    {
        T *found = m_window->findChild<T *>(QString::fromLatin1(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
    }
    QModelIndex site(int number) const { return m_window->model()->siteIndex(number); }

    std::unique_ptr<Sandbox> m_sandbox;
    std::unique_ptr<FakePrompts> m_prompts;
    std::unique_ptr<AppCore> m_core;
    std::unique_ptr<MainWindow> m_window;
};

void TestMainWindow::init()
{
    m_sandbox = std::make_unique<Sandbox>();
    m_prompts = std::make_unique<FakePrompts>();
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
    grid->expand(site(7));
    QVERIFY(grid->visualRect(model->index(0, link, site(7))).isValid());

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
            expanded += grid->isExpanded(m_window->model()->index(row, 0));
        return expanded;
    };
    QCOMPARE(count(), 0);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(count(), rows);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(count(), 0);

    // The first row alone decides, whatever state the others are in.
    grid->expand(site(3));
    grid->expand(site(8));
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(count(), rows);
    grid->collapse(site(2));
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

void TestMainWindow::progressPercent_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("percent");
    QTest::newRow("zero") << "0" << 0;
    QTest::newRow("full") << "100" << 100;
    QTest::newRow("above") << "150" << 100;
    QTest::newRow("below") << "-5" << 0;
    QTest::newRow("fraction") << "45.67" << 46;
    QTest::newRow("half to even down") << "12.5" << 12;
    QTest::newRow("half to even up") << "13.5" << 14;
    QTest::newRow("word") << "Waiting" << -1;
    QTest::newRow("stopped") << "Stopped(45%)" << -1;
    QTest::newRow("so far") << "1.5 MB so far" << -1;
    QTest::newRow("empty") << "" << -1;
}

void TestMainWindow::progressPercent()
{
    QFETCH(QString, status);
    QFETCH(int, percent);
    QCOMPARE(GridDelegate::statusPercent(status), percent);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
