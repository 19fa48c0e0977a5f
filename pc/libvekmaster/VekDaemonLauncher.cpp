#include "VekDaemonLauncher.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace vekmaster {

namespace {

using Clock = std::chrono::steady_clock;

const std::string kGreeting = "HELLO!\n";

long msLeft(Clock::time_point deadline) {
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count());
}

std::string failure(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

int openLog(const std::string& logPath, std::string& usedLog) {
    if (!logPath.empty()) {
        usedLog = logPath;
        return ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    }
    const char* tmp = std::getenv("TMPDIR");
    std::string name =
        std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/vek_tuner-XXXXXX.log";
    const int fd = mkostemps(name.data(), 4, O_CLOEXEC);
    usedLog = name;
    return fd;
}

// This process's environment with entries (NAME=VALUE) put in or replacing theirs.
std::vector<std::string> environmentWith(const std::vector<std::string>& entries) {
    std::vector<std::string> out;
    const auto named = [](const std::string& entry) {
        return entry.substr(0, entry.find('=') + 1);
    };
    for (char** at = environ; at != nullptr && *at != nullptr; ++at) {
        const std::string entry = *at;
        const bool replaced =
            std::any_of(entries.begin(), entries.end(),
                        [&](const std::string& e) { return named(e) == named(entry); });
        if (!replaced) {
            out.push_back(entry);
        }
    }
    out.insert(out.end(), entries.begin(), entries.end());
    return out;
}

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> out;
    for (std::string& word : words) {
        out.push_back(word.data());
    }
    out.push_back(nullptr);
    return out;
}

}  // namespace

VekDaemonLauncher::~VekDaemonLauncher() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    for (const int fd : {master_, slave_}) {
        if (fd >= 0) {
            ::close(fd);
        }
    }
}

std::string VekDaemonLauncher::start(const std::string& path, const std::vector<std::string>& args,
                                     const std::string& logPath, std::string& usedLog) {
    if (access(path.c_str(), X_OK) != 0) {
        return failure("cannot run " + path);
    }
    // Raw from the start: bytes must not be echoed or translated before the daemon has
    // configured its end.
    termios raw{};
    cfmakeraw(&raw);
    if (openpty(&master_, &slave_, nullptr, &raw, nullptr) != 0) {
        return failure("cannot open a pseudo-terminal");
    }
    // The child gets neither end: it opens the slave by name, and holding the master
    // would keep the line up after vek_master has gone.
    fcntl(master_, F_SETFD, FD_CLOEXEC);
    fcntl(slave_, F_SETFD, FD_CLOEXEC);
    fcntl(master_, F_SETFL, fcntl(master_, F_GETFL) | O_NONBLOCK);
    const char* slaveName = ptsname(master_);
    if (slaveName == nullptr) {
        return failure("cannot name the pseudo-terminal");
    }
    device_ = slaveName;

    const int log = openLog(logPath, usedLog);
    if (log < 0) {
        return failure("cannot open " + usedLog);
    }
    const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    // Our --device= comes last, so that it wins over one among the daemon's arguments.
    std::vector<std::string> words{path};
    words.insert(words.end(), args.begin(), args.end());
    words.push_back(std::string("--device=") + slaveName);
    std::vector<char*> argv = pointers(words);
    // Made before the fork: the child may only call what is safe after one.
    std::vector<std::string> environment = environmentWith(environment_);
    std::vector<char*> envp = pointers(environment);

    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(null, STDIN_FILENO);
        dup2(log, STDOUT_FILENO);
        dup2(log, STDERR_FILENO);
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    const int err = errno;
    ::close(log);
    ::close(null);
    if (pid_ < 0) {
        errno = err;
        return failure("cannot start " + path);
    }
    return "";
}

std::string VekDaemonLauncher::awaitGreeting(int timeoutMs, std::string& rest) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    std::string seen;
    while (!reap(false)) {
        const long left = msLeft(deadline);
        if (left <= 0) {
            return "the daemon did not greet within " + std::to_string(timeoutMs) + " ms";
        }
        // Short polls: a daemon that dies early is noticed at once.
        pollfd p{master_, POLLIN, 0};
        poll(&p, 1, static_cast<int>(std::min(left, 100L)));
        char buffer[1024];
        const ssize_t n = ::read(master_, buffer, sizeof(buffer));
        if (n > 0) {
            seen.append(buffer, static_cast<size_t>(n));
        }
        const size_t at = seen.find(kGreeting);
        if (at != std::string::npos) {
            rest = seen.substr(at + kGreeting.size());
            return "";
        }
        if (seen.size() > 4096) {
            seen.erase(0, seen.size() - kGreeting.size());
        }
    }
    return "the daemon ended before it greeted";
}

bool VekDaemonLauncher::stop(int timeoutMs, std::string& report) {
    if (pid_ > 0) {
        kill(pid_, SIGUSR1);
        const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
        while (!reap(false)) {
            if (msLeft(deadline) <= 0) {
                kill(pid_, SIGKILL);
                reap(true);
                report_ = "daemon did not stop within " + std::to_string(timeoutMs) +
                          " ms and was killed";
                exitedCleanly_ = false;
                break;
            }
            // Keep reading: a daemon blocked writing to a full line could not stop.
            pollfd p{master_, POLLIN, 0};
            poll(&p, 1, 50);
            char buffer[4096];
            while (::read(master_, buffer, sizeof(buffer)) > 0) {
            }
        }
    }
    report = report_;
    return exitedCleanly_;
}

bool VekDaemonLauncher::reap(bool wait) {
    if (pid_ <= 0) {
        return true;
    }
    int raw = 0;
    if (waitpid(pid_, &raw, wait ? 0 : WNOHANG) != pid_) {
        return false;
    }
    pid_ = -1;
    if (WIFEXITED(raw)) {
        report_ = "daemon exited with status " + std::to_string(WEXITSTATUS(raw));
        exitedCleanly_ = WEXITSTATUS(raw) == 0;
    } else {
        report_ = "daemon was killed by signal " + std::to_string(WTERMSIG(raw));
        exitedCleanly_ = false;
    }
    return true;
}

}  // namespace vekmaster
