#pragma once

// A file server for the benchmarks, in a child process of its own (start it
// before Qt starts). It answers every request on 127.0.0.1 with a
// Content-Length header and `size` bytes of a repeating pseudo-random pattern,
// generated as it is sent, then closes the connection. One connection at a
// time, or, with `concurrent`, each in a child of its own.
#include <QtGlobal>

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

namespace PatternServer {

struct Handle
{
    pid_t pid = -1;
    int port = 0;
};

namespace detail {

constexpr size_t kBlock = 1 << 20;

inline std::vector<char> patternBlock()
{
    std::vector<char> block(kBlock);
    quint64 x = 0x9E3779B97F4A7C15ull;
    for (char &c : block) {
        x ^= x << 13;
        x ^= x >> 7;
        x ^= x << 17;
        c = static_cast<char>(x >> 56);
    }
    return block;
}

// Reads the request, sends the header and the body, closes.
inline void serveConnection(int fd, const std::vector<char> &block, qint64 size)
{
    std::string request;
    char buf[4096];
    while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t n = recv(fd, buf, sizeof buf, 0);
        if (n <= 0) {
            close(fd);
            return;
        }
        request.append(buf, size_t(n));
    }
    const std::string header = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(size) +
                               "\r\nContent-Type: application/octet-stream\r\n"
                               "Connection: close\r\n\r\n";
    bool ok = send(fd, header.data(), header.size(), MSG_NOSIGNAL) == ssize_t(header.size());
    for (qint64 sent = 0; ok && sent < size;) {
        const size_t offset = size_t(sent % qint64(kBlock));
        const size_t want = size_t(std::min<qint64>(qint64(kBlock - offset), size - sent));
        const ssize_t n = send(fd, block.data() + offset, want, MSG_NOSIGNAL);
        if (n <= 0)
            ok = false;
        else
            sent += n;
    }
    close(fd);
}

[[noreturn]] inline void serve(int listener, qint64 size, bool concurrent)
{
    const std::vector<char> block = patternBlock();
    if (concurrent)
        signal(SIGCHLD, SIG_IGN); // no zombies
    for (;;) {
        const int fd = accept(listener, nullptr, nullptr);
        if (fd < 0)
            continue;
        if (!concurrent) {
            serveConnection(fd, block, size);
            continue;
        }
        if (fork() == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            close(listener);
            serveConnection(fd, block, size);
            _exit(0);
        }
        close(fd);
    }
}

} // namespace detail

// Starts the server; a handle with pid -1 when it could not listen.
inline Handle start(qint64 size, bool concurrent)
{
    Handle handle;
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof addr;
    if (listener < 0 || bind(listener, reinterpret_cast<sockaddr *>(&addr), sizeof addr) != 0 ||
        listen(listener, 16) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr *>(&addr), &len) != 0) {
        std::perror("listen");
        return handle;
    }
    handle.port = ntohs(addr.sin_port);
    handle.pid = fork();
    if (handle.pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        detail::serve(listener, size, concurrent);
    }
    close(listener);
    return handle;
}

inline void stop(const Handle &handle)
{
    if (handle.pid > 0) {
        kill(handle.pid, SIGTERM);
        waitpid(handle.pid, nullptr, 0);
    }
}

} // namespace PatternServer
