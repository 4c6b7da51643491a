#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QString>

// MediaFire: the link's page only shows that the download script is there;
// the site's dynamic page, asked for with the link's quick key, holds the
// pieces of the direct address in a script that would assemble it in the
// browser. The recipe takes the script apart as text, assembles the address
// and starts the transfer at once. Its rows come only from a saved list.
class MediaFireRecipe : public SiteRecipe
{
public:
    // The two requests and the reading of the script. A bad status and any
    // run-time failure end in "Error".
    void resolve(RecipeSite &site) override;

    // The link's page holds the site's download script.
    static bool hasDownloadScript(const QString &page);
    // The dynamic page for the quick key behind the link's first "?" (the
    // whole link where there is none), on the site's www host.
    static QString scriptAddress(const QString &link, const QString &wwwHost);
    // What the dynamic page's script says, for a row of this link whose
    // files go to `folder`.
    static Reading readScriptPage(const QString &page, const QString &link, const QString &folder);
};
