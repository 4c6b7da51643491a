#pragma once

#include "list/sitetable.h"

#include <array>

// What a site's countdown timer does once the wait has run out.
enum class WaitEnd {
    // Hand the row to the site's transfer control.
    HandOff,
    // Hand off if the site's resolver has ever produced a ready link in this
    // run of the program, otherwise fetch the link again through the resolver.
    HandOffIfLinkReady,
    // Fetch again through the resolver when its step is 1, otherwise nothing:
    // such a site's resolver starts the transfer itself.
    ResolveIfStepOne,
};

// When the queue resets the resolver's step counter as it starts a row.
enum class StepReset {
    None,
    BeforeStarting, // before the row is marked "Starting..."
    AfterStarting,  // after the row is marked "Starting..."
};

// How one site's queue differs from the others. The queue engine asks this
// table and knows nothing else of a site.
struct SiteTraits
{
    int site;
    const char *word; // the site's word in command and timer names
    bool hasTimer;    // a countdown timer of its own
    // Start-all and stop-all take the site. MediaFire is left out: its links
    // are never recognised, and its queue stays at rest.
    bool inAllCommands;
    int transferIndex;     // the site's transfer control
    StepReset stepReset;   // the resolver step counter the start resets
    bool stopClosesSocket; // the resolver holds a socket of its own that stop closes
    WaitEnd waitEnd;
    // The row field the hand-off reads the direct address from. MediaFire's
    // names a field the list doesn't have, so its hand-off would fail; its
    // link-ready flag is never set, so that branch doesn't run.
    const char *directUrlField;
};

namespace SiteTable {

// By site number less one.
const std::array<SiteTraits, Sites::Count> &all();
const SiteTraits &traits(int site); // throws RuntimeFailure outside 1..8

// The order of start-all (by number) and of stop-all (by name); both keep
// only the sites with inAllCommands.
const std::array<int, Sites::Count> &startAllOrder();
const std::array<int, Sites::Count> &stopAllOrder();

} // namespace SiteTable
