#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QString>

#include <optional>

// 4Shared: the link's file page, turned into the site's download page, holds
// a countdown and the direct address. A page without the countdown is asked
// for once more.
class FourSharedRecipe : public SiteRecipe
{
public:
    // Fetches the download page, twice at most. A status other than 200 leaves
    // the queue resting on the row; any other run-time failure here is a
    // connection failure.
    void resolve(RecipeSite &site) override;

    // Reads the download page into the row. False: the page holds no
    // countdown and is worth asking for again.
    static bool parse4SharedPage(RecipeSite &site, const QString &page);

    // The address asked for: the link without its query, with each "/file"
    // behind the site's `host` turned into "/get".
    static QString downloadPageAddress(const QString &link, const QString &host);
    // What the download page says, for files going to `folder`; nothing for a
    // page without a countdown. A run-time failure gives "Error".
    static std::optional<Reading> readDownloadPage(const QString &page, const QString &folder);
};
