#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

#include <array>
#include <memory>

class SiteRecipe;

// The eight sites and everything the program knows of each, in one table.
// Every other place asks here: the list for its parent rows, link intake for
// its recognition rules, the queues for their traits, the menus for their
// captions, the start-up for the recipes. Array-like things (cursors,
// transfer controls, timers) are indexed by the site's number less one.
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

// What a site's countdown timer does once the wait has run out.
enum class WaitEnd {
    // Hand the row to the site's transfer control.
    HandOff,
    // Hand off if the site's recipe has ever produced a ready link in this
    // run of the program, otherwise fetch the link again through the recipe.
    HandOffIfLinkReady,
    // Fetch again through the recipe when its step is 1, otherwise nothing:
    // such a site's recipe starts the transfer itself.
    ResolveIfStepOne,
};

// When the queue resets the recipe's step counter as it starts a row.
enum class StepReset {
    None,
    BeforeStarting, // before the row is marked "Starting..."
    AfterStarting,  // after the row is marked "Starting..."
};

// Which words of pasted text are the site's links. A word holding the site's
// host followed by "/" is decided by the site's rule alone: refused when its
// path holds an excluded fragment or lacks the required one.
struct Recognition
{
    bool recognised;                     // false: intake never gives the site a row
    std::array<QStringView, 4> excluded; // unused entries are empty
    QStringView required;                // empty: nothing required
};

// An entry of the site menus: object name and caption.
struct MenuEntry
{
    const char *name;
    const char *caption;
};

using RecipeFactory = std::unique_ptr<SiteRecipe> (*)();

struct Site
{
    int number;
    // The parent row's Site_Name, which is also the site's word in command
    // and timer names.
    const char *name;
    const char *key;         // lower case, for host overrides ("rapidshare")
    const char *defaultHost; // where the site's addresses are built and recognised
    const char *subFolder;   // the site's own folder, when each site gets one
    Recognition recognition;
    MenuEntry startEntry;
    MenuEntry stopEntry;
    // The site's entry of the tray menu's Downloads list; its caption is
    // written at each opening.
    const char *trayEntry;
    // The parent row shows in the grid and the menu entries can be chosen.
    bool shown;

    // How the site's queue differs from the others.
    bool hasTimer;      // a countdown timer of its own
    bool inAllCommands; // start-all and stop-all take the site
    StepReset stepReset;
    bool stopClosesSocket; // the recipe holds a socket of its own that stop closes
    WaitEnd waitEnd;
    // The row field the hand-off reads the direct address from. MediaFire's
    // names a field the list doesn't have, so its hand-off would fail; its
    // link-ready flag is never set, so that branch doesn't run.
    const char *directUrlField;
    // The site's recipe; nullptr for a site without one.
    RecipeFactory makeRecipe;
};

// By number less one.
const std::array<Site, Count> &all();
inline bool isSite(int number)
{
    return number >= 1 && number <= Count;
}
// Throws RuntimeFailure outside 1..8.
const Site &site(int number);
// The parent row's name; empty outside 1..8.
QString name(int number);
// The order of stop-all, by the names of the stop commands; start-all goes by
// number. Both take only the sites in the commands.
const std::array<int, Count> &stopAllOrder();

} // namespace Sites

// Host names the program builds site addresses with and recognises links by,
// by the sites' keys. Tests and the environment variable TESSALWICK_SITE_HOSTS
// point entries at 127.0.0.1:port.
class SiteHosts
{
public:
    static SiteHosts &instance();

    QString host(const QString &key) const;
    QString host(int site) const;
    // The name the site serves its pages at: the host with "www." in front.
    // An address given by number has no such name and stays as it is.
    QString wwwHost(int site) const;
    void setHost(const QString &key, const QString &host);
    // "youtube=127.0.0.1:8081,mediafire=127.0.0.1:8082"; unknown keys are added.
    void applyOverrides(const QString &overrides);
    // Back to the table's hosts, then the environment's overrides.
    void reset();

private:
    SiteHosts();
    QHash<QString, QString> m_hosts;
};
