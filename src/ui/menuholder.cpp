#include "ui/menuholder.h"

#include "app/appcore.h"
#include "list/sitetable.h"

#include <QAction>
#include <QLabel>
#include <QMenu>

namespace {

QAction *addEntry(QMenu *menu, const char *name, const QString &caption, bool enabled = true)
{
    QAction *action = menu->addAction(caption);
    action->setObjectName(QString::fromLatin1(name));
    // The entries of a hidden site can't be chosen; their actions are wired
    // all the same.
    action->setEnabled(enabled);
    return action;
}

void addSeparator(QMenu *menu, const char *name)
{
    menu->addSeparator()->setObjectName(QString::fromLatin1(name));
}

QMenu *newMenu(QWidget *parent, const char *name, const char *title)
{
    auto *menu = new QMenu(parent);
    menu->setObjectName(QString::fromLatin1(name));
    menu->setTitle(QString::fromLatin1(title));
    return menu;
}

} // namespace

MenuHolder::MenuHolder(AppCore *core, std::function<void()> showWindow, QWidget *parent)
    : QWidget(parent, Qt::Window), m_core(core), m_showWindow(std::move(showWindow))
{
    setObjectName(QStringLiteral("frmMenu"));
    setWindowTitle(QStringLiteral("Menu Holder"));
    new QLabel(QStringLiteral("This form is just a menu holder"), this);
    m_start = buildStartStop(true);
    m_stop = buildStartStop(false);
    m_tray = buildTray();
}

QMenu *MenuHolder::buildStartStop(bool start)
{
    QMenu *menu = newMenu(this, start ? "mnuStart" : "mnuStop", start ? "Start" : "Stop");
    QAction *all = addEntry(menu, start ? "mnuAll" : "mnuSAll",
                            start ? QStringLiteral("Start All") : QStringLiteral("Stop All"));
    connect(all, &QAction::triggered, m_core,
            start ? &AppCore::startAllDownloads : &AppCore::stopAllDownloads);
    addSeparator(menu, start ? "mnuSep" : "mnuSep2");
    for (const Sites::Site &info : Sites::all()) {
        const Sites::MenuEntry &entry = start ? info.startEntry : info.stopEntry;
        QAction *action =
            addEntry(menu, entry.name, QString::fromLatin1(entry.caption), info.shown);
        const int site = info.number;
        connect(action, &QAction::triggered, m_core, [this, site, start] {
            if (start)
                m_core->startSite(site);
            else
                m_core->stopSite(site);
        });
    }
    return menu;
}

QMenu *MenuHolder::buildTray()
{
    QMenu *menu = newMenu(this, "TRAYMENU", "TRAYMENU");
    connect(addEntry(menu, "mnuShow", QStringLiteral("Show Tessalwick Download manager")),
            &QAction::triggered, this, [this] { m_showWindow(); });
    addSeparator(menu, "mnuSep3");
    QMenu *downloads = newMenu(menu, "mnuDownloads", "Downloads");
    menu->addMenu(downloads);
    connect(addEntry(downloads, "mnuStatAllSites", QStringLiteral("Start All Sites")),
            &QAction::triggered, m_core, &AppCore::startAllDownloads);
    connect(addEntry(downloads, "mnuStopAllSites", QStringLiteral("Stop All Sites")),
            &QAction::triggered, m_core, &AppCore::stopAllDownloads);
    addSeparator(downloads, "mnuSep4");
    for (const Sites::Site &info : Sites::all()) {
        QAction *action =
            addEntry(downloads, info.trayEntry,
                     QStringLiteral("Start ") + QString::fromLatin1(info.name), info.shown);
        const int site = info.number;
        // The caption is the entry's only state: written when the menu
        // opened, read at the click.
        connect(action, &QAction::triggered, m_core, [this, action, site] {
            if (action->text().left(5) == QLatin1String("Start"))
                m_core->startSite(site);
            else
                m_core->stopSite(site);
        });
    }
    addSeparator(menu, "mnuSep5");
    connect(addEntry(menu, "mnuExit", QStringLiteral("Exit Tessalwick Download manager")),
            &QAction::triggered, m_core, [this] { m_core->requestClose(); });
    connect(menu, &QMenu::aboutToShow, this, &MenuHolder::prepareTrayMenu);
    return menu;
}

void MenuHolder::prepareTrayMenu()
{
    auto *stopAll = m_tray->findChild<QAction *>(QStringLiteral("mnuStopAllSites"));
    stopAll->setEnabled(m_core->isAnyDownloading());
    for (const Sites::Site &info : Sites::all()) {
        auto *action = m_tray->findChild<QAction *>(QString::fromLatin1(info.trayEntry));
        const bool running = m_core->queues().isDownloading(info.number);
        action->setText((running ? QStringLiteral("Stop ") : QStringLiteral("Start ")) +
                        QString::fromLatin1(info.name));
    }
}
