// How long the window's event handling can stall while seven sites transfer.
//
// A server in a child process of its own (forked before Qt starts, one
// grandchild per connection) answers every request on 127.0.0.1 with a
// Content-Length of 256 MiB and that many bytes of a repeating pattern. The
// real main window runs over the real AppCore; seven sites (all but
// MediaFire) get forty rows each, enough to keep every site busy throughout,
// and a stand-in recipe per site puts the test server's address into the
// row, as a site's recipe would, after which the real queues, countdown
// timers and transfer controls carry the rows. The files go to memory
// (/dev/shm where the machine has it) and each is removed, by a process of its
// own, once its transfer is complete, so the disk stays out of it. For 30 seconds a
// 10 ms timer measures how late it fires: the largest lateness is the
// longest time the event loop was kept from handling a posted event. The
// last line says max_delay_ms=...
#include "app/appcore.h"
#include "fakeprompts.h"
#include "list/sitetable.h"
#include "patternserver.h"
#include "scheduling/sitequeues.h"
#include "standin.h"
#include "transfer/downloadasynch.h"
#include "ui/mainwindow.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <netinet/in.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr qint64 kFileSize = qint64(256) << 20;
constexpr int kSeconds = 30;
constexpr int kRowsPerSite = 40;
constexpr int kTickMs = 10;

// A child process that removes the files whose paths it is sent, one a line.
class Sweeper
{
public:
    Sweeper()
    {
        int ends[2];
        if (::pipe(ends) != 0)
            return;
        m_pid = ::fork();
        if (m_pid == 0) {
            ::close(ends[1]);
            std::string line;
            char c;
            while (::read(ends[0], &c, 1) == 1) {
                if (c != '\n') {
                    line += c;
                    continue;
                }
                ::unlink(line.c_str());
                line.clear();
            }
            ::_exit(0);
        }
        ::close(ends[0]);
        m_fd = ends[1];
    }
    ~Sweeper()
    {
        if (m_fd >= 0)
            ::close(m_fd);
        if (m_pid > 0)
            ::waitpid(m_pid, nullptr, 0);
    }
    void remove(const QString &path)
    {
        const QByteArray line = QFile::encodeName(path) + '\n';
        if (m_fd < 0 || ::write(m_fd, line.constData(), size_t(line.size())) != line.size())
            QFile::remove(path);
    }

private:
    pid_t m_pid = -1;
    int m_fd = -1;
};

} // namespace

int main(int argc, char **argv)
{
    const PatternServer::Handle server = PatternServer::start(kFileSize, true);
    if (server.pid < 0)
        return 1;
    const int port = server.port;
    Sweeper sweeper;

    // A private home for settings and the list; no screen needed.
    QTemporaryDir home;
    for (const char *var : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        qputenv(var, home.path().toLocal8Bit());
    const QString runtime = home.filePath(QStringLiteral("runtime"));
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", runtime.toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication app(argc, argv);
    FakePrompts prompts;
    AppCore core(&prompts);
    core.setLinkListPath(home.filePath(QStringLiteral("LinkList.lq")));
    const QString memory = QStringLiteral("/dev/shm");
    QTemporaryDir files(QFileInfo(memory).isWritable()
                            ? memory + QStringLiteral("/bench_ui-XXXXXX")
                            : home.filePath(QStringLiteral("dl-XXXXXX")));
    const QString folder = files.path();
    core.setDownloadDir(folder);

    MainWindow window(&core, &prompts);
    window.show();

    std::vector<int> sites;
    for (int site = 1; site <= Sites::Count; ++site) {
        if (site == Sites::MediaFire)
            continue;
        sites.push_back(site);
        // The link is the file's own address on the server; its size is
        // announced.
        auto standIn = std::make_unique<StandInRecipe>();
        standIn->mode = StandInRecipe::Mode::Resolve;
        standIn->fileSize = QStringLiteral("256 MB");
        core.queues().setRecipe(site, std::move(standIn));
        for (int k = 0; k < kRowsPerSite; ++k) {
            const QString name = QStringLiteral("site%1_%2.bin").arg(site).arg(k);
            core.list().addLinkToList(QStringLiteral("http://127.0.0.1:%1/%2").arg(port).arg(name),
                                      site, &prompts);
        }
    }
    window.expandCollapseAll();

    // Bytes received, summed over every transfer.
    double received = 0;
    std::vector<double> current(Sites::Count + 1, 0);
    int completed = 0;
    for (int site : sites) {
        DownloadAsynch &d = core.queues().downloader(site);
        QObject::connect(
            &d, &DownloadAsynch::progress, &app,
            [&current, site](double, int, float bytes, float, float) { current[site] = bytes; });
        QObject::connect(&d, &DownloadAsynch::fileBegin, &app, [&, site](float) {
            received += current[site];
            current[site] = 0;
        });
        QObject::connect(&d, &DownloadAsynch::complete, &app, [&, site] {
            ++completed;
            // The site's finished files go; its next transfer hasn't opened one yet.
            // Freeing a file of 256 MiB takes the system some 40 ms; a
            // process of its own does it, so that the measure is the window's.
            const QString pattern = QStringLiteral("site%1_*").arg(site);
            for (const QString &name : QDir(folder).entryList({pattern}, QDir::Files))
                sweeper.remove(folder + u'/' + name);
        });
    }

    // The probe: a 10 ms timer and how late each of its ticks comes.
    QElapsedTimer clock;
    double maxDelay = 0;
    qint64 ticks = 0;
    qint64 last = 0;
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    probe.setInterval(kTickMs);
    QObject::connect(&probe, &QTimer::timeout, &app, [&] {
        const qint64 now = clock.nsecsElapsed();
        const double late = (now - last) / 1e6 - kTickMs;
        maxDelay = std::max(maxDelay, late);
        last = now;
        ++ticks;
    });

    QTimer::singleShot(0, &app, [&] {
        clock.start();
        last = clock.nsecsElapsed();
        probe.start();
        // The start button, as a user clicks it.
        core.startDownloadClicked();
    });
    int activeAtEnd = 0;
    QTimer::singleShot(kSeconds * 1000, &app, [&] {
        probe.stop();
        for (int site : sites)
            activeAtEnd += core.queues().isDownloading(site);
        core.stopAllDownloads();
        QTimer::singleShot(200, &app, [] { QCoreApplication::exit(0); });
    });
    app.exec();

    for (int site : sites)
        received += current[site];
    const double seconds = clock.nsecsElapsed() / 1e9;
    PatternServer::stop(server);

    std::printf("sites=%zu seconds=%.1f received_mib=%.0f throughput_mib_s=%.1f completed=%d "
                "busy_at_end=%d ticks=%lld\n",
                sites.size(), seconds, received / (1 << 20), received / (1 << 20) / seconds,
                completed, activeAtEnd, static_cast<long long>(ticks));
    std::printf("max_delay_ms=%.1f\n", maxDelay);
    return 0;
}
