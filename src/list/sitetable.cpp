#include "list/sitetable.h"

#include "resolvers/recipes.h"
#include "system/failure.h"

#include <QHostAddress>

namespace Sites {

namespace {

using enum WaitEnd;
using enum StepReset;

// The second 4Shared "zoneid" fragment can never decide anything after the
// first one; the pair is kept as the table has always had it. The menu
// captions spell the site names their own way, and each form stays.
// clang-format off
const std::array<Site, Count> kSites = {{
    {RapidShare, "RapidShare", "rapidshare", "rapidshare.com", "RapidShare Files",
     {true, {u"progress.html?uploadid"}, {}},
     {"mnuRapidshare", "Start Rapidshare"}, {"mnuSRapidshare", "Stop Rapidshare"}, "mnuStartRapidShare", true,
     true, true, None, false, HandOffIfLinkReady, "DirectURL", &makeRapidShareRecipe},
    {Youtube, "Youtube", "youtube", "youtube.com", "Youtube Files",
     {true, {u"results?search_query", u"action_handle_legacy_signin", u"adsense_script.html"},
      u"watch?"},
     {"mnuYoutube", "Start Youtube"}, {"mnuSYoutube", "Stop Youtube"}, "mnuStartYoutube", true,
     false, true, None, false, HandOff, "DirectURL", &makeYoutubeRecipe},
    {MegaUpload, "MegaUpload", "megaupload", "megaupload.com", "MegaUpload Files",
     {true, {u"mc.php?l="}, {}},
     {"mnuMegaUpload", "Start Megaupload"}, {"mnuSMegaUpload", "Stop Megaupload"}, "mnuStartMegaUpload", true,
     true, true, BeforeStarting, true, HandOff, "DirectURL", &makeMegaUploadRecipe},
    {FourShared, "4Shared", "4shared", "4shared.com", "4Shared Files",
     {true, {u"advertise/banners", u"www/delivery/afr.php?zoneid", u"www/delivery/afr.php?zoneid=",
             u"main/frameanonuploadprogressbar.jsp"}, {}},
     {"mnu4Shared", "Start 4Shared"}, {"mnuS4Shared", "Stop 4Shared"}, "mnuStart4Shared", true,
     true, true, None, false, HandOffIfLinkReady, "DirectURL", &makeFourSharedRecipe},
    // Intake never gives MediaFire a row, its parent row stays hidden and the
    // commands for all sites pass it by: its rows come only from a saved list.
    {MediaFire, "MediaFire", "mediafire", "mediafire.com", "MediaFire Files",
     {false, {}, {}},
     {"mnuMediaFire", "Start Mediafire"}, {"mnuSMediaFire", "Stop Mediafire"}, "mnuStartMediaFire", false,
     true, false, None, false, HandOffIfLinkReady, "DirectDownURL", &makeMediaFireRecipe},
    {DepositFiles, "DepositFiles", "depositfiles", "depositfiles.com", "DepositFiles Files",
     {true, {}, {}},
     {"mnuDepositeFiles", "Start DepositeFiles"}, {"mnuSDepositeFiles", "Stop DepositeFiles"}, "mnuStartDepoSitFiles", true,
     true, true, None, false, HandOff, "DirectURL", &makeDepositFilesRecipe},
    {HotFile, "HotFile", "hotfile", "hotfile.com", "HotFile Files",
     {true, {}, {}},
     {"mnuHotFile", "Start Hotfile"}, {"mnuSHotFile", "Stop Hotfile"}, "mnuStartHotFile", true,
     true, true, AfterStarting, false, ResolveIfStepOne, "DirectURL", &makeHotFileRecipe},
    {FileFactory, "FileFactory", "filefactory", "filefactory.com", "FileFactory Files",
     {true, {u"upload/", u"ads/", u"premium/index.php?", u"takeoverad.html?"}, {}},
     {"mnuFileFactory", "Start FileFactory"}, {"mnuSFileFactory", "Stop FileFactory"}, "mnuStartFileFactory", true,
     true, true, None, false, HandOff, "DirectURL", &makeFileFactoryRecipe},
}};
// clang-format on

const std::array<int, Count> kStopAll = {FourShared, DepositFiles, FileFactory, HotFile,
                                         MegaUpload, RapidShare,   Youtube,     MediaFire};

} // namespace

const std::array<Site, Count> &all()
{
    return kSites;
}

const Site &site(int number)
{
    if (!isSite(number))
        throw RuntimeFailure("Subscript out of range");
    return kSites[number - 1];
}

QString name(int number)
{
    return isSite(number) ? QString::fromLatin1(kSites[number - 1].name) : QString();
}

const std::array<int, Count> &stopAllOrder()
{
    return kStopAll;
}

} // namespace Sites

SiteHosts::SiteHosts()
{
    reset();
}

SiteHosts &SiteHosts::instance()
{
    static SiteHosts hosts;
    return hosts;
}

void SiteHosts::reset()
{
    m_hosts.clear();
    for (const Sites::Site &site : Sites::all())
        m_hosts.insert(QString::fromLatin1(site.key), QString::fromLatin1(site.defaultHost));
    applyOverrides(qEnvironmentVariable("TESSALWICK_SITE_HOSTS"));
}

QString SiteHosts::host(const QString &key) const
{
    return m_hosts.value(key.toLower());
}

QString SiteHosts::host(int site) const
{
    return Sites::isSite(site) ? host(QString::fromLatin1(Sites::site(site).key)) : QString();
}

QString SiteHosts::wwwHost(int site) const
{
    const QString name = host(site);
    const bool byNumber = !QHostAddress(name.section(u':', 0, 0)).isNull();
    if (byNumber || name.startsWith(QStringLiteral("www."), Qt::CaseInsensitive))
        return name;
    return QStringLiteral("www.") + name;
}

void SiteHosts::setHost(const QString &key, const QString &host)
{
    m_hosts.insert(key.toLower(), host);
}

void SiteHosts::applyOverrides(const QString &overrides)
{
    const QStringList entries = overrides.split(',', Qt::SkipEmptyParts);
    for (const QString &entry : entries) {
        const qsizetype eq = entry.indexOf('=');
        if (eq <= 0)
            continue;
        const QString key = entry.left(eq).trimmed();
        const QString value = entry.mid(eq + 1).trimmed();
        if (!value.isEmpty())
            setHost(key, value);
    }
}
