#include "recipeharness.h"

#include "system/logicaltimer.h"

#include <QFile>

RecipeHarness::RecipeHarness(std::initializer_list<int> realRecipes)
{
    list.open();
    RecipeTable recipes;
    for (const Sites::Site &site : Sites::all()) {
        const int i = site.number - 1;
        if (site.makeRecipe && std::ranges::count(realRecipes, site.number) > 0)
            recipes[i] = site.makeRecipe();
        else
            recipes[i].reset(m_standIns[i] = new StandInRecipe);
    }
    queues = std::make_unique<SiteQueues>(list, &prompts, std::move(recipes));
    queues->setFolder({[this] { return folder(); }, [this] { return createSubDir; },
                       [this] { return folder(); }});
    QObject::connect(queues.get(), &SiteQueues::queueRanOut, [this](int site) { ranOut << site; });
    QObject::connect(&list, &DownloadList::fieldChanged, [this](int site, int index, Field f) {
        if (f == Field::Status)
            m_history[row(site, index)] << at(site, index);
    });
}

void RecipeHarness::setPeriods(int secondMs, int timeOutMs, int minuteMs)
{
    LogicalTimer::clearRealPeriods();
    LogicalTimer::setRealPeriod(1000, secondMs);
    LogicalTimer::setRealPeriod(50000, timeOutMs);
    LogicalTimer::setRealPeriod(60000, minuteMs);
}

LinkRow *RecipeHarness::add(int site, const QString &link, const QString &status, int isDownloading)
{
    if (!list.addLinkToList(link, site, &prompts))
        return nullptr;
    LinkRow *added = row(site, list.childCount(site) - 1);
    m_history[added] << QStringLiteral("Waiting");
    list.setField(added, Field::Status, status);
    list.setField(added, Field::IsDownloading, QString::number(isDownloading));
    return added;
}

void RecipeHarness::tick(int site, int times)
{
    for (int i = 0; i < times; ++i)
        emit queues->siteTimer(site)->timeout();
}

QStringList RecipeHarness::statuses(int site, Field field) const
{
    QStringList result;
    for (int i = 0; i < list.childCount(site); ++i)
        result << at(site, i, field);
    return result;
}

QString RecipeHarness::overview(Field field) const
{
    QStringList sites;
    for (int site = 1; site <= Sites::Count; ++site) {
        if (list.childCount(site) > 0)
            sites << QString::number(site) + u':' + statuses(site, field).join(u',');
    }
    return sites.join(u' ');
}

QString RecipeHarness::fields(int site, int index, std::initializer_list<Field> which) const
{
    QStringList values;
    for (Field f : which)
        values << at(site, index, f);
    return values.join(u'|');
}

RecipeSite RecipeHarness::view(int site, int index)
{
    SiteContext &ctx = context(site);
    ctx.cursor = list.getSiteRecords(site);
    ctx.cursor.moveToIndex(index);
    return RecipeSite(ctx);
}

QByteArray RecipeHarness::fileIn(const QString &relativePath) const
{
    QFile file(m_dir.filePath(relativePath));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}
