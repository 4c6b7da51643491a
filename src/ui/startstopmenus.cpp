#include "ui/startstopmenus.h"

#include "app/appcore.h"
#include "list/sitetable.h"

#include <QAction>
#include <QMenu>

namespace {

struct SiteEntry
{
    int site;
    const char *startName;
    const char *startCaption;
    const char *stopName;
    const char *stopCaption;
};

// The captions spell the site names their own way, and each form stays.
const SiteEntry kSiteEntries[] = {
    {Sites::RapidShare, "mnuRapidshare", "Start Rapidshare", "mnuSRapidshare", "Stop Rapidshare"},
    {Sites::Youtube, "mnuYoutube", "Start Youtube", "mnuSYoutube", "Stop Youtube"},
    {Sites::MegaUpload, "mnuMegaUpload", "Start Megaupload", "mnuSMegaUpload", "Stop Megaupload"},
    {Sites::FourShared, "mnu4Shared", "Start 4Shared", "mnuS4Shared", "Stop 4Shared"},
    {Sites::MediaFire, "mnuMediaFire", "Start Mediafire", "mnuSMediaFire", "Stop Mediafire"},
    {Sites::DepositFiles, "mnuDepositeFiles", "Start DepositeFiles", "mnuSDepositeFiles",
     "Stop DepositeFiles"},
    {Sites::HotFile, "mnuHotFile", "Start Hotfile", "mnuSHotFile", "Stop Hotfile"},
    {Sites::FileFactory, "mnuFileFactory", "Start FileFactory", "mnuSFileFactory",
     "Stop FileFactory"},
};

QAction *addEntry(QMenu *menu, const char *name, const char *caption)
{
    QAction *action = menu->addAction(QString::fromLatin1(caption));
    action->setObjectName(QString::fromLatin1(name));
    // MediaFire's entries can't be reached; their actions are wired all the same.
    action->setEnabled(QByteArrayView(name).indexOf("MediaFire") < 0);
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

    for (const SiteEntry &entry : kSiteEntries) {
        QAction *action = start ? addEntry(menu, entry.startName, entry.startCaption)
                                : addEntry(menu, entry.stopName, entry.stopCaption);
        const int site = entry.site;
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
