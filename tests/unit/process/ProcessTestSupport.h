#pragma once

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

// What the platform log received in this process, one "<priority> <tag> <message>" each.
std::vector<std::string>& platformLogRecords();

struct ChildResult {
    std::string output;  // the child's standard output
    int status;          // exit status, 128 + signal, or -1 when it hung and was killed
};

// Runs body in a forked child with its standard output on a pipe; the child exits 0
// when body returns. A child still writing or alive after timeoutMs counts as hung.
inline ChildResult runInChild(const std::function<void()>& body, int timeoutMs = 10000) {
    int fds[2];
    if (pipe(fds) != 0) return {"", -1};
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(fds[1], STDOUT_FILENO);
        body();
        _exit(0);
    }
    ::close(fds[1]);
    ChildResult result{"", -1};
    char chunk[4096];
    ssize_t n = 1;
    pollfd p{fds[0], POLLIN, 0};
    while (poll(&p, 1, timeoutMs) > 0 && (n = ::read(fds[0], chunk, sizeof(chunk))) > 0) {
        result.output.append(chunk, n);
    }
    ::close(fds[0]);
    if (n != 0) kill(pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
    if (n == 0) result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}
