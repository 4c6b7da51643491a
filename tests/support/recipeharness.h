#pragma once

#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "scheduling/sitequeues.h"
#include "standin.h"

#include <QHash>
#include <QStringList>
#include <QTemporaryDir>

#include <initializer_list>
#include <memory>

// What a test of the queues or of a recipe works with: a list, the real
// queues over it, fake prompts and a download folder of the test's own.
// Every site gets a stand-in recipe but the sites whose real recipe the test
// asks for. Each row's Status texts are recorded in the order written.
class RecipeHarness
{
public:
    explicit RecipeHarness(std::initializer_list<int> realRecipes = {});

    // The logical periods of the countdown (1000), the request time-out
    // (50000) and the minute (60000, also the transfer's silence) as real
    // periods for the whole process.
    static void setPeriods(int secondMs, int timeOutMs = 3600000, int minuteMs = 3600000);

    StandInRecipe &standIn(int site) { return *m_standIns.at(site - 1); }
    SiteContext &context(int site) { return queues->context(site); }
    QString folder() const { return m_dir.path(); }

    LinkRow *add(int site, const QString &link, const QString &status = QStringLiteral("Waiting"),
                 int isDownloading = 0);
    LinkRow *row(int site, int index) const { return list.childAt(site, index); }
    QString at(int site, int index, Field field = Field::Status) const
    {
        return row(site, index) ? row(site, index)->values[int(field)] : QStringLiteral("<no row>");
    }
    QStringList statuses(int site, Field field = Field::Status) const;
    // Some fields of one row as one text, "Complete||0".
    QString fields(int site, int index, std::initializer_list<Field> which) const;
    // Every site's rows in one text, "1:Complete,Waiting 4:Stopped"; sites
    // without rows are left out.
    QString overview(Field field = Field::Status) const;
    // The rows' IsDownloading flags as one text, "010".
    QString flags(int site) const { return statuses(site, Field::IsDownloading).join(QString()); }
    // Every Status the row has had since it was added, the first "Waiting" included.
    QStringList history(int site, int index) const { return m_history.value(row(site, index)); }
    // The same as one text, "Waiting,Starting...,Complete".
    QString trail(int site, int index) const { return history(site, index).join(u','); }

    void start(int site) { queues->startDownloadLinks(site, true); }
    // The site's countdown ticked `times` times, as its timer would.
    void tick(int site, int times);

    // A view of the site as its recipe gets it, the cursor on the row at `index`.
    RecipeSite view(int site, int index = 0);
    QByteArray fileIn(const QString &relativePath) const;

    FakePrompts prompts;
    DownloadList list;
    std::unique_ptr<SiteQueues> queues;
    int createSubDir = 0;
    QList<int> ranOut; // sites whose queue ran out, in order

private:
    QTemporaryDir m_dir;
    std::array<StandInRecipe *, Sites::Count> m_standIns{};
    QHash<const LinkRow *, QStringList> m_history;
};
