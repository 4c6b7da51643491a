#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QString>

// DepositFiles: the link's page, asked for in English, is answered with the
// site's gateway form; posting "gateway_result=1" to it chooses the free
// download and gives the page with the download form and the site's
// countdown.
class DepositFilesRecipe : public SiteRecipe
{
public:
    // Posts the gateway's answer and reads the page that comes back. A
    // run-time failure here gives "Connection Error".
    void resolve(RecipeSite &site) override;

    // Reads the page into the row and goes on as it says.
    static void parseDepositFilesPage(RecipeSite &site, const QString &page);

    // The link of the site's English pages: "/ru/", "/de/", "/es/" and "/pt/"
    // become "/en/" in any case; other languages stay as they are.
    static QString englishLink(const QString &link);
    // What the page says, for a row whose files go to `folder`. A run-time
    // failure gives "Error".
    static Reading readDownloadPage(const QString &page, const QString &folder);
};
