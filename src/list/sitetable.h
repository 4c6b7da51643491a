#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

// The eight sites by number. Array-like things (cursors, transfer controls,
// timers) are indexed by the number less one.
namespace Sites {

constexpr int Count = 8;

enum Number {
    RapidShare = 1,
    Youtube = 2,
    MegaUpload = 3,
    FourShared = 4,
    MediaFire = 5,
    DepositFiles = 6,
    HotFile = 7,
    FileFactory = 8,
};

// "RapidShare", "Youtube", ... as shown in the parent rows; zero-based.
const QStringList &siteNames();
QString siteName(int site);
inline bool isSite(int site)
{
    return site >= 1 && site <= Count;
}

} // namespace Sites

// Host names the program builds site addresses with and recognises links by.
// Keys are lower-case site words ("rapidshare", "youtube", ...). Tests and the
// environment variable TESSALWICK_SITE_HOSTS point entries at 127.0.0.1:port.
class SiteHosts
{
public:
    static SiteHosts &instance();

    QString host(const QString &key) const;
    void setHost(const QString &key, const QString &host);
    // "youtube=127.0.0.1:8081,mediafire=127.0.0.1:8082"; unknown keys are added.
    void applyOverrides(const QString &overrides);
    // Back to the built-in table, then the environment's overrides.
    void reset();

    // The key of a site number ("rapidshare" for 1), empty outside 1..8.
    static QString keyOf(int site);

private:
    SiteHosts();
    QHash<QString, QString> m_hosts;
};
