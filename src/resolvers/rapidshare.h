#pragma once

#include "resolvers/resolverframe.h"
#include "scheduling/sitequeues.h"

#include <QString>

// RapidShare: the link's page holds a form; posting "dl.start=Free" to it
// gives the page with the wait, the direct address and the size.
class RapidShareResolver : public SiteResolver
{
public:
    explicit RapidShareResolver(FolderSettings folder);

    // Fetches the link's page and posts its form. A run-time failure here is
    // not caught: it reaches the caller (the start command or the countdown).
    void resolve(SiteContext &site) override;

    // Reads the answer to the post into the row and starts the countdown; a
    // run-time failure ends in "Error".
    void parseRapidSharePage(SiteContext &site, const QString &page);

    // What the link's own page says.
    struct FirstPage
    {
        enum class Kind { FileGone, NoForm, Form };
        Kind kind = Kind::NoForm;
        QString formAddress; // the form's action, for Kind::Form
    };
    // Throws where the form's markers stand in an impossible order.
    static FirstPage readFirstPage(const QString &page);

    static const QString subFolder; // "RapidShare Files"

private:
    FolderSettings m_folder;
};
