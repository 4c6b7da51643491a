#include "app/appcore.h"

#include "app/cregister.h"
#include "app/power.h"
#include "intake/linkextraction.h"
#include "list/linklistfile.h"
#include "prompts/prompts.h"
#include "scheduling/numbertext.h"
#include "system/apppaths.h"

#include <QFileInfo>

const QString AppCore::capturePrefix = QStringLiteral(":KELDOVARPINE:");

QString AppCore::designDownloadDir()
{
    return AppPaths::defaultDownloadDir();
}

AppCore::AppCore(Prompts *prompts, QObject *parent)
    : QObject(parent), m_prompts(prompts), m_queues(m_list, prompts),
      m_downloadDir(designDownloadDir())
{
    m_list.open();
    m_queues.setFolder({[this] { return downloadDir(); }, [this] { return createSubDir(); },
                        [this] {
                            return QFileInfo(m_linkListPath.isEmpty() ? AppPaths::linkListFile()
                                                                      : m_linkListPath)
                                .absolutePath();
                        }});
    for (const Sites::Site &site : Sites::all()) {
        if (site.makeRecipe)
            m_queues.setRecipe(site.number, site.makeRecipe());
    }
    connect(&m_queues, &SiteQueues::queueRanOut, this, &AppCore::queueRanOut);
    connect(&m_queues, &SiteQueues::queueRanOut, this, &AppCore::checkShutdown);
}

AppCore::~AppCore() = default;

void AppCore::setDownloadDir(const QString &dir)
{
    if (m_downloadDir == dir)
        return;
    m_downloadDir = dir;
    emit downloadDirChanged(dir);
}

void AppCore::chooseDownloadDir(const QString &dir)
{
    setDownloadDir(dir);
    Settings::save(QStringLiteral("DownDir"), dir);
}

void AppCore::setCreateSubDir(int value)
{
    const bool changed = m_createSubDir != value;
    m_createSubDir = value;
    Settings::save(QStringLiteral("CreatSubDir"), QString::number(value));
    if (changed)
        emit createSubDirChanged(value);
}

void AppCore::readSettings()
{
    setDownloadDir(Settings::get(QStringLiteral("DownDir"), designDownloadDir()));
    // A value that doesn't convert is a run-time failure, which ends the
    // start-up with its message.
    const int sub =
        NumberText::toInt32(Settings::get(QStringLiteral("CreatSubDir"), QStringLiteral("0")));
    if (sub != m_createSubDir) {
        m_createSubDir = sub;
        emit createSubDirChanged(sub);
    }
    m_startAfterCatch =
        Settings::toBool(Settings::get(QStringLiteral("StartAfterCatch"), QStringLiteral("False")));
    m_doNothing =
        Settings::toBool(Settings::get(QStringLiteral("DoNothing"), QStringLiteral("True")));
}

void AppCore::parseLinks(const QString &text, bool isCommand)
{
    if (::parseLinks(text, isCommand, m_list, m_prompts) >= 0)
        emit listRebound();
}

void AppCore::addLinksClicked(const QString &linksText,
                              const std::function<void(const QString &)> &setLinksText)
{
    parseLinks(linksText, false);
    if (setLinksText)
        setLinksText(LinkHint::shortText());
    if (m_startAfterCatch)
        startAllDownloads();
}

void AppCore::setCaptureText(const QString &text)
{
    m_captureText = text;
    // The change handling runs for every change of the text, its own included.
    if (m_captureText.isEmpty())
        return;
    const bool prefixed = m_captureText.left(14).toUpper() == capturePrefix;
    if (!(prefixed && m_doNothing))
        parseLinks(prefixed ? m_captureText.mid(14) : m_captureText, true);
    setCaptureText(QString());
    if (m_startAfterCatch)
        startAllDownloads();
}

bool AppCore::isAnyDownloading() const
{
    return m_queues.isAnyDownloading();
}

void AppCore::startAllDownloads()
{
    ignoreFailure([this] { m_queues.startAllDownloads(); });
}

void AppCore::stopAllDownloads()
{
    ignoreFailure([this] { m_queues.stopAllDownloads(); });
}

void AppCore::startDownloadClicked()
{
    ignoreFailure([this] { m_queues.startDownloadClicked(); });
}

void AppCore::stopDownloadClicked()
{
    ignoreFailure([this] { m_queues.stopDownloadClicked(); });
}

void AppCore::startSite(int site)
{
    ignoreFailure([this, site] { m_queues.startDownloadLinks(site, true); });
}

void AppCore::stopSite(int site)
{
    ignoreFailure([this, site] { m_queues.stopDownloads(site); });
}

bool AppCore::saveLinkList()
{
    if (m_linkListPath.isEmpty())
        m_linkListPath = AppPaths::linkListFile();
    return LinkListFile::saveLinkList(m_list, m_linkListPath);
}

void AppCore::loadLinkList()
{
    if (m_linkListPath.isEmpty())
        m_linkListPath = AppPaths::linkListFile();
    LinkListFile::loadLinkList(m_list, m_linkListPath, m_prompts);
    emit listRebound();
}

bool AppCore::refuseWhileDownloading()
{
    if (!isAnyDownloading())
        return false;
    if (m_prompts)
        m_prompts->messageBox(QStringLiteral("There is one download or more currently "
                                             "running, Please Stop downloading first."),
                              Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
    return true;
}

void AppCore::clearList()
{
    if (refuseWhileDownloading() || !m_prompts ||
        m_prompts->messageBox(QStringLiteral("Are you sure that you want to remove all items?"),
                              Prompts::Icon::Question,
                              Prompts::Buttons::YesNo) != Prompts::Answer::Yes)
        return;
    stopAllDownloads();
    m_list.open();
    emit listRebound();
}

bool AppCore::requestClose()
{
    if (refuseWhileDownloading())
        return false;
    saveLinkList();
    emit quitRequested();
    return true;
}

void AppCore::checkShutdown()
{
    const bool running = isAnyDownloading();
    if (!m_shutDown || !running)
        return;
    saveLinkList();
    if (m_power)
        m_power->shutdownWindows(Power::PowerOff);
    emit quitRequested();
}

void AppCore::saveBeforeForcedEnd()
{
    saveLinkList();
}
