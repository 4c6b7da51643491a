#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QString>

// RapidShare: the link's page holds a form; posting "dl.start=Free" to it
// gives the page with the wait, the direct address and the size.
class RapidShareRecipe : public SiteRecipe
{
public:
    // Fetches the link's page and posts its form. A run-time failure here is
    // not caught: it reaches the caller (the start command or the countdown).
    void resolve(RecipeSite &site) override;

    // Reads the answer to the post into the row and starts the countdown.
    static void parseRapidSharePage(RecipeSite &site, const QString &page);

    // What the link's own page says.
    struct FirstPage
    {
        enum class Kind { FileGone, NoForm, Form };
        Kind kind = Kind::NoForm;
        QString formAddress; // the form's action, for Kind::Form
    };
    // Throws where the form's markers stand in an impossible order.
    static FirstPage readFirstPage(const QString &page);
    // What the answer to the post says, for a row of this link whose files go
    // to `folder`. A run-time failure gives "Error".
    static Reading readDownloadPage(const QString &page, const QString &link,
                                    const QString &folder);
};
