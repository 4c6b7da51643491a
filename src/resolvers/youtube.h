#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QString>

// YouTube: the watch page holds the video's id and a token; the file's
// address is built from them and fetched at once, without a wait or a
// countdown. The file is saved as ".flv" whatever its real type.
class YoutubeRecipe : public SiteRecipe
{
public:
    // Fetches the watch page; a failure here ends in "Connection Error".
    void resolve(RecipeSite &site) override;

    // Reads the watch page into the row and starts the transfer. Each step
    // of the page stands on its own: one that fails is skipped, a value that
    // can't be written is left out, and the transfer starts all the same.
    static void parseYoutubePage(RecipeSite &site, const QString &page);

    // What the watch page says, for a site served at `host` whose files go
    // to `folder`.
    static Reading readWatchPage(const QString &page, const QString &host, const QString &folder);

    // Undoes the percent escapes of an address fragment: "%2F" becomes "/",
    // an escape that isn't two hex digits stays as it stands. Empty for an
    // empty text and for a result longer than 1024 characters.
    static QString unescapeUrl(const QString &text);
};
