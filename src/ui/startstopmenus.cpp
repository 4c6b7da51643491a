#include "ui/startstopmenus.h"

#include "app/appcore.h"
#include "list/sitetable.h"

#include <QAction>
#include <QMenu>

namespace {

QAction *addEntry(QMenu *menu, const char *name, const char *caption, bool enabled = true)
{
    QAction *action = menu->addAction(QString::fromLatin1(caption));
    action->setObjectName(QString::fromLatin1(name));
    // The entries of a hidden site can't be chosen; their actions are wired
    // all the same.
    action->setEnabled(enabled);
    return action;
}

QMenu *buildMenu(AppCore *core, QWidget *parent, bool start)
{
    auto *menu = new QMenu(parent);
    menu->setObjectName(QString::fromLatin1(start ? "mnuStart" : "mnuStop"));
    menu->setTitle(QString::fromLatin1(start ? "Start" : "Stop"));

    QAction *all = addEntry(menu, start ? "mnuAll" : "mnuSAll", start ? "Start All" : "Stop All");
    QObject::connect(all, &QAction::triggered, core,
                     start ? &AppCore::startAllDownloads : &AppCore::stopAllDownloads);
    menu->addSeparator()->setObjectName(QString::fromLatin1(start ? "mnuSep" : "mnuSep2"));

    for (const Sites::Site &info : Sites::all()) {
        const Sites::MenuEntry &entry = start ? info.startEntry : info.stopEntry;
        QAction *action = addEntry(menu, entry.name, entry.caption, info.shown);
        const int site = info.number;
        if (start)
            QObject::connect(action, &QAction::triggered, core,
                             [core, site] { core->startSite(site); });
        else
            QObject::connect(action, &QAction::triggered, core,
                             [core, site] { core->stopSite(site); });
    }
    return menu;
}

} // namespace

QMenu *StartStopMenus::buildStartMenu(AppCore *core, QWidget *parent)
{
    return buildMenu(core, parent, true);
}

QMenu *StartStopMenus::buildStopMenu(AppCore *core, QWidget *parent)
{
    return buildMenu(core, parent, false);
}
