#include "app/termination.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int g_pipe[2] = {-1, -1};

extern "C" void onTerminationSignal(int number)
{
    const char byte = char(number);
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[0], &byte, 1);
}
} // namespace

TerminationWatcher::TerminationWatcher(QObject *parent) : QObject(parent)
{
    if (g_pipe[0] < 0 && ::socketpair(AF_UNIX, SOCK_STREAM, 0, g_pipe) != 0)
        return;
    m_notifier = new QSocketNotifier(g_pipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        if (::read(g_pipe[1], &byte, 1) == 1)
            emit terminationRequested(int(byte));
    });
    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
}

TerminationWatcher::~TerminationWatcher()
{
    signal(SIGTERM, SIG_DFL);
    signal(SIGHUP, SIG_DFL);
}
