#include "resolvers/recipesite.h"

#include "list/statustext.h"
#include "prompts/prompts.h"
#include "resolvers/reading.h"
#include "scheduling/sitequeues.h"

int RecipeSite::number() const
{
    return m_site.site;
}

QString RecipeSite::field(Field field) const
{
    return m_site.cursor.field(field);
}

void RecipeSite::setField(Field field, const QString &value)
{
    m_site.cursor.setField(field, value);
}

bool RecipeSite::stopAsked() const
{
    return m_site.bStop;
}

int &RecipeSite::step()
{
    return m_site.iStep;
}

bool RecipeSite::linkReady() const
{
    return m_site.bLinkReady;
}

void RecipeSite::setLinkReady(bool ready)
{
    m_site.bLinkReady = ready;
}

RequestGuard &RecipeSite::requestGuard()
{
    return m_site.queues->requestGuard();
}

QString RecipeSite::localFolder() const
{
    const FolderSettings &folder = m_site.queues->folder();
    QString path = folder.downloadDir ? folder.downloadDir() : QString();
    if (folder.createSubDir && folder.createSubDir() == 1)
        path += QLatin1Char('/') + QString::fromLatin1(m_site.info->subFolder);
    return path;
}

QString RecipeSite::captchaFile() const
{
    const FolderSettings &folder = m_site.queues->folder();
    return (folder.dataDir ? folder.dataDir() : QString()) + QStringLiteral("/CAP.gif");
}

std::optional<QString> RecipeSite::askCaptcha(const QString &pictureFile)
{
    Prompts *prompts = m_site.queues->prompts();
    return prompts ? prompts->askCaptcha(pictureFile) : std::nullopt;
}

void RecipeSite::runEvent(const std::function<void(RecipeSite &)> &event)
{
    SiteContext &context = m_site;
    m_site.queues->runEvent(m_site.site, [&context, &event] {
        RecipeSite site(context);
        ignoreFailure([&] { event(site); });
    });
}

void RecipeSite::stopped()
{
    writeFailure(StatusText::Stopped);
}

void RecipeSite::connectionError()
{
    write(*this, Reading().fail(StatusText::ConnectionError));
}

void RecipeSite::notFound()
{
    write(*this, Reading().fail(StatusText::NotFound));
}

void RecipeSite::pageError()
{
    write(*this, Reading().fail(StatusText::Error));
}

void RecipeSite::longWait(const QString &minutes)
{
    write(*this, Reading().waitMinutes(minutes));
}

void RecipeSite::writeFailure(const QString &word)
{
    setField(Field::Status, word);
    setField(Field::WaitTimeInSec, QStringLiteral("0"));
}

void RecipeSite::startTimer(int intervalMs)
{
    m_site.startTimer(intervalMs);
}

void RecipeSite::continueQueue()
{
    m_site.continueQueue();
}

void RecipeSite::startTransfer()
{
    m_site.startTransfer(field(Field::DirectURL),
                         field(Field::LocalFilePath) + QLatin1Char('/') + field(Field::LocalFile),
                         0);
}
