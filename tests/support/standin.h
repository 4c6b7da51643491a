#pragma once

#include "list/sitetable.h"
#include "resolvers/recipesite.h"

#include <QStringList>

// Takes the place of a site's recipe, for tests of the queues and for the
// benchmarks. It records each run and leaves the row in the outcome the test
// asks for, as a real recipe would.
class StandInRecipe : public SiteRecipe
{
public:
    enum class Mode {
        Record,  // leaves the row "Starting..."
        Resolve, // the link is its own direct address: a countdown, or the
                 // transfer at once where the site's timer wouldn't hand off
        Hold,    // waits in the poll of a request to `holdUrl` until stopped
        Fail,    // "Connection Error", then the next row
    };

    void resolve(RecipeSite &site) override;

    Mode mode = Mode::Record;
    QString fileSize = QStringLiteral("?");
    int wait = 0;
    QString holdUrl;
    QList<int> *order = nullptr; // sites in the order their runs began

    QStringList calls;        // the link of each run
    QStringList statusAtCall; // the row's Status as each run began
    int depth = 0;            // runs of this recipe on the stack now
    int maxDepth = 0;         // and at most
};
