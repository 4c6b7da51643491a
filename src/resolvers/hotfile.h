#pragma once

#include "resolvers/reading.h"
#include "resolvers/recipesite.h"

#include <QString>

class XmlHttpRequest;

// HotFile: the link's page holds a hidden form and a countdown in a script.
// The recipe runs twice for one link: the first run reads the form and starts
// the countdown; at its end the site's timer runs the recipe again, which
// posts the form back to the link. The answer holds the download link, and
// the recipe starts the transfer itself. The site's step tells the runs
// apart: 0 for a new link, 1 while the post is due, 2 once the link was found.
class HotFileRecipe : public SiteRecipe
{
public:
    // The first or the second run, by the site's step. A run-time failure
    // here gives "Connection Error".
    void resolve(RecipeSite &site) override;

    // Reads the answer to the post into the row and goes on as it says.
    static void parseHotFilePage(RecipeSite &site, const QString &page);

    // What the link's page says.
    struct FormPage
    {
        bool hasForm = false;
        QString postData; // the hidden inputs as a form body
        QString wait;     // seconds, as text; fractions kept
    };
    // Positions here are kept in 16 bits: a marker behind position 32,767
    // throws, as does a form too short to cut.
    static FormPage readFormPage(const QString &page);
    // What the answer to the post says, for a row of `link` that holds
    // `directUrl` and whose files go to `folder`. Moves `step` on where the
    // answer says so. A run-time failure gives "Error".
    static Reading readPostAnswer(const QString &page, const QString &link,
                                  const QString &directUrl, const QString &folder, int &step);

private:
    void fetchForm(RecipeSite &site, XmlHttpRequest &request);
    void postForm(RecipeSite &site, XmlHttpRequest &request);

    // The form body gathered by the first run, posted by every second run.
    QString sHotFilePostData;
};
