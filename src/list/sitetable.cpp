#include "list/sitetable.h"

namespace Sites {

const QStringList &siteNames()
{
    static const QStringList names = {"RapidShare", "Youtube",      "MegaUpload", "4Shared",
                                      "MediaFire",  "DepositFiles", "HotFile",    "FileFactory"};
    return names;
}

QString siteName(int site)
{
    return isSite(site) ? siteNames().at(site - 1) : QString();
}

} // namespace Sites

namespace {
const char *const kKeys[Sites::Count] = {"rapidshare", "youtube",      "megaupload", "4shared",
                                         "mediafire",  "depositfiles", "hotfile",    "filefactory"};
}

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
    m_hosts = {
        {"rapidshare", "rapidshare.com"}, {"youtube", "youtube.com"},
        {"megaupload", "megaupload.com"}, {"4shared", "4shared.com"},
        {"mediafire", "mediafire.com"},   {"depositfiles", "depositfiles.com"},
        {"hotfile", "hotfile.com"},       {"filefactory", "filefactory.com"},
    };
    applyOverrides(qEnvironmentVariable("TESSALWICK_SITE_HOSTS"));
}

QString SiteHosts::host(const QString &key) const
{
    return m_hosts.value(key.toLower());
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

QString SiteHosts::keyOf(int site)
{
    return Sites::isSite(site) ? QString::fromLatin1(kKeys[site - 1]) : QString();
}
