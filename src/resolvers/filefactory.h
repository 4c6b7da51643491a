#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QString>

// FileFactory: the link's page has a "Download Now" button whose address,
// taken relative to the site's www host, gives the page with the direct
// address and the countdown. The site's timer never fetches again: whatever
// wait a row gets, its end hands the row to the transfer.
class FileFactoryRecipe : public SiteRecipe
{
public:
    // Fetches the link's page and the button's page. Positions in the link's
    // page are kept in 16 bits: a marker behind position 32,767 is a run-time
    // failure, which like any other here is a connection failure.
    void resolve(RecipeSite &site) override;

    // Reads the button's page into the row and starts the countdown.
    static void parseFileFactoryPage(RecipeSite &site, const QString &page);

    // What the link's own page says.
    struct FirstPage
    {
        enum class Kind { FileGone, NoSlots, NoButton, Button };
        Kind kind = Kind::NoButton;
        QString path; // the button's address, relative to the site, for Kind::Button
    };
    // Throws for a marker behind position 32,767.
    static FirstPage readFirstPage(const QString &page);
    // The button's page: "http://", the site's www host, a backslash and the
    // button's path; the request object takes the backslash as a slash.
    static QString buttonAddress(const QString &wwwHost, const QString &path);
    // What the button's page says, for a row of this link with this DirectURL
    // whose files go to `folder`. A run-time failure gives "Error".
    static Reading readDownloadPage(const QString &page, const QString &link,
                                    const QString &directUrl, const QString &folder);
};
