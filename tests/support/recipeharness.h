#pragma once

#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "scheduling/sitequeues.h"
#include "standin.h"
#include "system/logicaltimer.h"

#include <QFile>
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
    explicit RecipeHarness(std::initializer_list<int> realRecipes = {})
    {
        list.open();
        RecipeTable recipes;
        for (int i = 0; i < Sites::Count; ++i)
            recipes[i].reset(m_standIns[i] = new StandInRecipe);
        queues = std::make_unique<SiteQueues>(list, &prompts, std::move(recipes));
        for (int site : realRecipes)
            queues->setRecipe(site, Sites::site(site).makeRecipe());
        queues->setFolder({[this] { return folder(); }, [this] { return createSubDir; },
                           [this] { return folder(); }});
        QObject::connect(queues.get(), &SiteQueues::queueRanOut, [this](int s) { ranOut << s; });
        QObject::connect(&list, &DownloadList::fieldChanged, [this](int site, int index, Field f) {
            if (f == Field::Status)
                m_history[row(site, index)] << at(site, index);
        });
    }

    // The logical periods of the countdown (1000), the request time-out
    // (50000) and the minute (60000, also the transfer's silence) as real
    // periods for the whole process.
    static void setPeriods(int secondMs, int timeOutMs = 3600000, int minuteMs = 3600000)
    {
        LogicalTimer::clearRealPeriods();
        LogicalTimer::setRealPeriod(1000, secondMs);
        LogicalTimer::setRealPeriod(50000, timeOutMs);
        LogicalTimer::setRealPeriod(60000, minuteMs);
    }

    StandInRecipe &standIn(int site) { return *m_standIns.at(site - 1); }
    SiteContext &context(int site) { return queues->context(site); }
    QString folder() const { return m_dir.path(); }

    LinkRow *add(int site, const QString &link, const QString &status = QStringLiteral("Waiting"),
                 int isDownloading = 0)
    {
        if (!list.addLinkToList(link, site, &prompts))
            return nullptr;
        LinkRow *added = row(site, list.childCount(site) - 1);
        m_history[added] << QStringLiteral("Waiting");
        list.setField(added, Field::Status, status);
        list.setField(added, Field::IsDownloading, QString::number(isDownloading));
        return added;
    }
    LinkRow *row(int site, int index) const { return list.childAt(site, index); }
    QString at(int site, int index, Field field = Field::Status) const
    {
        return row(site, index) ? row(site, index)->values[int(field)] : QStringLiteral("<no row>");
    }
    QStringList statuses(int site, Field field = Field::Status) const
    {
        QStringList values;
        for (int i = 0; i < list.childCount(site); ++i)
            values << at(site, i, field);
        return values;
    }
    // Some fields of one row as one text, "Complete||0".
    QString fields(int site, int index, std::initializer_list<Field> which) const
    {
        QStringList values;
        for (Field f : which)
            values << at(site, index, f);
        return values.join(u'|');
    }
    // How the row's last run ended: "Not Found|0|" for Status|WaitTimeInSec|ErrorDesc.
    QString outcome(int site, int index = 0) const
    {
        return fields(site, index, {Field::Status, Field::WaitTimeInSec, Field::ErrorDesc});
    }
    // The rows' IsDownloading flags as one text, "010".
    QString flags(int site) const { return statuses(site, Field::IsDownloading).join(QString()); }
    // Every Status the row has had since it was added, the first "Waiting" included.
    QStringList history(int site, int index) const { return m_history.value(row(site, index)); }
    // The same as one text, "Waiting,Starting...,Complete".
    QString trail(int site, int index) const { return history(site, index).join(u','); }

    void start(int site) { queues->startDownloadLinks(site, true); }
    // The site's countdown ticked `times` times, as its timer would.
    void tick(int site, int times)
    {
        for (int i = 0; i < times; ++i)
            emit queues->siteTimer(site)->timeout();
    }

    // A view of the site as its recipe gets it, the cursor on its first row.
    RecipeSite view(int site)
    {
        context(site).cursor = list.getSiteRecords(site);
        return RecipeSite(context(site));
    }
    QByteArray fileIn(const QString &relativePath) const
    {
        QFile file(m_dir.filePath(relativePath));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }

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
