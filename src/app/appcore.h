#pragma once

#include "list/downloadlist.h"
#include "scheduling/sitequeues.h"

#include <QObject>
#include <QString>

#include <functional>

class Power;
class Prompts;

// The program's state and its commands, apart from any widget: the list, the
// settings it runs on, the hand-over box and the list file. The main window
// presents it and forwards the user's clicks to it.
class AppCore : public QObject
{
    Q_OBJECT
public:
    // The default caption of the folder label before any setting is read.
    static QString designDownloadDir();
    // The capture prefix of a handed-over message.
    static const QString capturePrefix; // ":KELDOVARPINE:"

    explicit AppCore(Prompts *prompts, QObject *parent = nullptr);
    ~AppCore() override;

    DownloadList &list() { return m_list; }
    const DownloadList &list() const { return m_list; }
    Prompts *prompts() const { return m_prompts; }

    // The folder label's caption, the sub-folder box and the two capture switches.
    QString downloadDir() const { return m_downloadDir; }
    void setDownloadDir(const QString &dir);    // the caption only
    void chooseDownloadDir(const QString &dir); // caption and setting DownDir
    int createSubDir() const { return m_createSubDir; }
    void setCreateSubDir(int value); // writes CreatSubDir
    bool startAfterCatch() const { return m_startAfterCatch; }
    void setStartAfterCatch(bool on) { m_startAfterCatch = on; }
    bool doNothing() const { return m_doNothing; }
    void setDoNothing(bool on) { m_doNothing = on; }
    // Reads DownDir, CreatSubDir, StartAfterCatch and DoNothing with their defaults.
    void readSettings();

    // Link intake: the add button, the hand-over box, a command line.
    void parseLinks(const QString &text, bool isCommand);
    // The add button: takes the link box's text, puts the short hint into the
    // box through setLinksText, then starts all downloads if StartAfterCatch
    // is on (the box already shows the hint while the starts run).
    void addLinksClicked(const QString &linksText,
                         const std::function<void(const QString &)> &setLinksText);
    // Text put into the hand-over box runs its change handling; the box is
    // empty again afterwards.
    void setCaptureText(const QString &text);
    QString captureText() const { return m_captureText; }

    // Queues. A failure that escapes a start or a stop (a recipe without a
    // guard of its own) ends that command and nothing else.
    SiteQueues &queues() { return m_queues; }
    bool isAnyDownloading() const;
    void startAllDownloads();
    void stopAllDownloads();
    void startDownloadClicked();
    void stopDownloadClicked();
    void startSite(int site);
    void stopSite(int site);

    // The list file.
    QString linkListPath() const { return m_linkListPath; }
    void setLinkListPath(const QString &path) { m_linkListPath = path; }
    bool saveLinkList();
    void loadLinkList();

    // "Shutdown after all downloads complete": no setting, clear at each start.
    bool shutDown() const { return m_shutDown; }
    void setShutDown(bool on) { m_shutDown = on; }
    // What powers the machine off; none by default, so nothing can.
    void setPower(Power *power) { m_power = power; }
    // Where a site's queue runs out: with the box ticked and a row of any
    // site still in progress, the list is saved, the machine powers off and
    // the program ends. The last transfer of all never powers off, since no
    // row is in progress any more when its queue runs out.
    void checkShutdown();

    // The list bar's "Clear": refused while anything downloads, asked about,
    // then every queue stops and the list starts anew, empty.
    void clearList();

    // The close button: refused with a message while anything downloads,
    // otherwise the list is saved and quitRequested() is emitted.
    bool requestClose();
    // The desktop session ends or the process is asked to terminate: the list
    // is saved whatever runs.
    void saveBeforeForcedEnd();

signals:
    // The list was walked and possibly grew: a view hides the MediaFire row again.
    void listRebound();
    void downloadDirChanged(const QString &dir);
    void createSubDirChanged(int value);
    void quitRequested();
    // A site's queue ran out of rows: where a shutdown after all downloads is
    // decided.
    void queueRanOut(int site);

private:
    // The message that nothing may go while a download runs; true when it was shown.
    bool refuseWhileDownloading();

    Prompts *m_prompts;
    DownloadList m_list;
    SiteQueues m_queues;
    QString m_downloadDir;
    int m_createSubDir = 0;
    bool m_startAfterCatch = false;
    bool m_doNothing = true;
    bool m_shutDown = false;
    Power *m_power = nullptr;
    QString m_captureText;
    QString m_linkListPath;
};
