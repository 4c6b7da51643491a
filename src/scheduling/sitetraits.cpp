#include "scheduling/sitetraits.h"

#include "list/downloadlist.h"

namespace SiteTable {

namespace {

using enum WaitEnd;
using enum StepReset;

// clang-format off
const std::array<SiteTraits, Sites::Count> kTraits = {{
    // site                 word            timer  all    index  step reset      own socket  wait end            address field
    {Sites::RapidShare,    "RapidShare",    true,  true,  0,     None,           false,      HandOffIfLinkReady, "DirectURL"},
    {Sites::Youtube,       "Youtube",       false, true,  1,     None,           false,      HandOff,            "DirectURL"},
    {Sites::MegaUpload,    "MegaUpload",    true,  true,  2,     BeforeStarting, true,       HandOff,            "DirectURL"},
    {Sites::FourShared,    "4Shared",       true,  true,  3,     None,           false,      HandOffIfLinkReady, "DirectURL"},
    {Sites::MediaFire,     "MediaFire",     true,  false, 4,     None,           false,      HandOffIfLinkReady, "DirectDownURL"},
    {Sites::DepositFiles,  "DepositFiles",  true,  true,  5,     None,           false,      HandOff,            "DirectURL"},
    {Sites::HotFile,       "HotFile",       true,  true,  6,     AfterStarting,  false,      ResolveIfStepOne,   "DirectURL"},
    {Sites::FileFactory,   "FileFactory",   true,  true,  7,     None,           false,      HandOff,            "DirectURL"},
}};
// clang-format on

// Both lists end in MediaFire, which the commands pass by.
const std::array<int, Sites::Count> kStartAll = {
    Sites::RapidShare,   Sites::Youtube, Sites::MegaUpload,  Sites::FourShared,
    Sites::DepositFiles, Sites::HotFile, Sites::FileFactory, Sites::MediaFire};
const std::array<int, Sites::Count> kStopAll = {
    Sites::FourShared, Sites::DepositFiles, Sites::FileFactory, Sites::HotFile,
    Sites::MegaUpload, Sites::RapidShare,   Sites::Youtube,     Sites::MediaFire};

} // namespace

const std::array<SiteTraits, Sites::Count> &all()
{
    return kTraits;
}

const SiteTraits &traits(int site)
{
    if (!Sites::isSite(site))
        throw RuntimeFailure("Subscript out of range");
    return kTraits[site - 1];
}

const std::array<int, Sites::Count> &startAllOrder()
{
    return kStartAll;
}

const std::array<int, Sites::Count> &stopAllOrder()
{
    return kStopAll;
}

} // namespace SiteTable
