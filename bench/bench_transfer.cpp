// Times the transfer control against curl on the same 1 GiB file.
//
// A server in a child process of its own (forked before Qt starts) answers
// every request on 127.0.0.1 with a Content-Length header and 1 GiB of a
// repeating pseudo-random pattern, generated as it is sent, then closes the
// connection. The control runs in this process's event loop and writes to a
// temporary file; curl writes to one too. Each client runs several times, in
// turn; the medians of wall time and CPU time (user + system of the client
// alone) are printed, and on the last line the ratios ours / curl's.
#include "patternserver.h"
#include "transfer/downloadasynch.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr qint64 kFileSize = qint64(1) << 30;
constexpr int kRuns = 5;

double cpuSeconds(const rusage &ru)
{
    return ru.ru_utime.tv_sec + ru.ru_utime.tv_usec / 1e6 + ru.ru_stime.tv_sec +
           ru.ru_stime.tv_usec / 1e6;
}

double now()
{
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec + ts.tv_nsec / 1e9;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    const PatternServer::Handle server = PatternServer::start(kFileSize, false);
    if (server.pid < 0)
        return 1;
    const int port = server.port;

    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString url = QStringLiteral("127.0.0.1:%1/big.bin").arg(port);
    std::vector<double> oursWall, oursCpu, curlWall, curlCpu;
    bool failed = false;
    double maxGap = 0;

    for (int run = 0; run < kRuns && !failed; ++run) {
        // Ours, in this process's event loop.
        {
            const QString path = dir.filePath(QStringLiteral("ours.bin"));
            DownloadAsynch d;
            QEventLoop loop;
            QString error;
            QObject::connect(&d, &DownloadAsynch::complete, &loop, &QEventLoop::quit);
            QObject::connect(&d, &DownloadAsynch::error, &loop, [&](const QString &desc) {
                error = desc;
                loop.quit();
            });
            d.setUrl(url);
            d.setLocalFilePath(path);
            // A 10 ms timer shows how long the event loop is ever kept away.
            QTimer pulse;
            double lastPulse = now();
            QObject::connect(&pulse, &QTimer::timeout, [&] {
                const double t = now();
                maxGap = std::max(maxGap, t - lastPulse);
                lastPulse = t;
            });
            pulse.start(10);
            rusage before, after;
            getrusage(RUSAGE_SELF, &before);
            const double start = now();
            d.startDownload();
            loop.exec();
            const double wall = now() - start;
            getrusage(RUSAGE_SELF, &after);
            const qint64 got = QFileInfo(path).size();
            if (!error.isEmpty() || got != kFileSize) {
                std::fprintf(stderr, "ours failed: %s, %lld bytes\n", qPrintable(error),
                             static_cast<long long>(got));
                failed = true;
            }
            oursWall.push_back(wall);
            oursCpu.push_back(cpuSeconds(after) - cpuSeconds(before));
            d.stopDownload(); // closes the socket and deletes the file
            QFile::remove(path);
        }
        // curl, in a child process.
        {
            const QByteArray path = dir.filePath(QStringLiteral("curl.bin")).toLocal8Bit();
            const QByteArray target = "http://" + url.toLatin1();
            const double start = now();
            const pid_t pid = fork();
            if (pid == 0) {
                execlp("curl", "curl", "-s", "--noproxy", "*", "-o", path.constData(),
                       target.constData(), static_cast<char *>(nullptr));
                _exit(127);
            }
            int status = 0;
            rusage ru{};
            wait4(pid, &status, 0, &ru);
            const double wall = now() - start;
            const qint64 got = QFileInfo(QString::fromLocal8Bit(path)).size();
            if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || got != kFileSize) {
                std::fprintf(stderr, "curl failed: status %d, %lld bytes\n", status,
                             static_cast<long long>(got));
                failed = true;
            }
            curlWall.push_back(wall);
            curlCpu.push_back(cpuSeconds(ru));
            QFile::remove(QString::fromLocal8Bit(path));
        }
    }

    PatternServer::stop(server);
    if (failed)
        return 1;

    const double ow = median(oursWall), oc = median(oursCpu);
    const double cw = median(curlWall), cc = median(curlCpu);
    std::printf("bytes=%lld runs=%d\n", static_cast<long long>(kFileSize), kRuns);
    for (int run = 0; run < kRuns; ++run)
        std::printf("run=%d ours_wall_s=%.3f ours_cpu_s=%.3f curl_wall_s=%.3f curl_cpu_s=%.3f\n",
                    run, oursWall[run], oursCpu[run], curlWall[run], curlCpu[run]);
    std::printf("ours_longest_event_loop_gap_ms=%.1f\n", maxGap * 1000);
    std::printf("ours_wall_s=%.3f ours_cpu_s=%.3f\n", ow, oc);
    std::printf("curl_wall_s=%.3f curl_cpu_s=%.3f\n", cw, cc);
    std::printf("wall_ratio=%.3f cpu_ratio=%.3f\n", ow / cw, oc / cc);
    return 0;
}
